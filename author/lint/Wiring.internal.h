#pragma once

#include "author/lint/lint.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/netlist/HDNTExpansion.h"

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hdnt::author {

/// One thing that is wrong with what came out of a mapping for one setting.
struct WiringFault {
    LintCode code;
    yyltype at;
    std::vector<std::string> arguments; ///< of the wording, without what is said of the settings

    bool operator<(const WiringFault& other) const;
};

/// Who drives whom on one level of an expansion. Borrows it.
class Wiring {
public:
    explicit Wiring(const HDNTExpansion::Level& level);

    /// Pins of the block that were asked for and found open need no driver.
    std::vector<WiringFault> faults(const std::set<std::string>& openPins) const;
    /// Whether one of the block's own pins is connected to something.
    bool uses(const HDNTBus& bus) const { return used_.contains(&bus); }
    /// Whether a signal joins two pins or more.
    bool joins(const std::string& signal) const;

private:
    using Connection = HDNTExpansion::Connection;
    struct Net {
        yyltype at{};
        std::vector<const Connection*> drivers;
        const Connection* load = nullptr; ///< the first one
        std::size_t pins = 0;
        bool mayBeDriven = false; ///< by a pin of either direction, or of none that is known
    };
    /// What is connected of a block: by position of the pin.
    using Connected = std::vector<bool>;

    void connect(const Connection& connection);
    static void join(Net& net, const Connection& connection, HDNT_PIN_DIRECTION direction);
    void addNetFaults(std::vector<WiringFault>& faults) const;
    void addInputFaults(std::vector<WiringFault>& faults) const;
    void addOutputFaults(const std::set<std::string>& openPins, std::vector<WiringFault>& faults) const;

    const HDNTExpansion::Level& level_;
    std::unordered_map<std::string_view, std::size_t> instances_;
    std::vector<Connected> connected_; ///< of each instance, and behind them of the block itself
    std::unordered_map<std::string_view, Net> nets_;
    std::set<const HDNTBus*> used_;
};

} // namespace hdnt::author
