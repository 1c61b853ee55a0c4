#pragma once

#include "author/lint/lint.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/netlist/HDNTExpansion.h"

#include <set>
#include <string>
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
    /// Base names of the block's inputs that are connected to something.
    const std::set<std::string>& usedInputs() const { return usedInputs_; }
    /// Names of signals that join two pins or more.
    const std::set<std::string>& joiningSignals() const { return joining_; }

private:
    struct Net {
        std::vector<std::string> drivers; ///< pins in words
        std::string firstLoad;
        std::size_t loads = 0;
        std::size_t both = 0; ///< pins of either direction, or of none that is known
        yyltype at{};
    };
    /// What is connected of a block: by position of the pin.
    using Connected = std::vector<bool>;

    void connect(const HDNTExpansion::Connection& connection);
    static void join(Net& net, const HDNTExpansion::Connection& connection, HDNT_PIN_DIRECTION direction);
    void addNetFaults(std::vector<WiringFault>& faults) const;
    void addInputFaults(std::vector<WiringFault>& faults) const;
    void addOutputFaults(const std::set<std::string>& openPins, std::vector<WiringFault>& faults) const;

    const HDNTExpansion::Level& level_;
    std::unordered_map<std::string, std::size_t> instances_;
    std::vector<Connected> connected_; ///< of each instance, and behind them of the block itself
    std::map<std::string, Net> nets_;
    std::set<std::string> usedInputs_;
    std::set<std::string> joining_;
};

} // namespace hdnt::author
