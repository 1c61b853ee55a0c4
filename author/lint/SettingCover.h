#pragma once

#include "hdnt/model/Value.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTFunctionTable;
class HDNTNetlist;

namespace hdnt::author {

/// What a mapping asks of its block or its host, with the answers to try; the first is the one it gets by default.
struct SettingFactor {
    enum class Kind : unsigned char {
        property,
        pin, ///< whether it is connected
        call ///< of a function of the host that has no implementation here
    };
    Kind kind;
    std::string name;
    std::vector<Value> values;
};

/// For each factor, the place of a value in its list.
using SettingChoice = std::vector<unsigned short>;

/// Settings of a block that between them show what comes of its mapping. Of what it asks for, every listed value, both
/// bounds and the values at and beside each constant that a condition compares with occur; and every pair of values of
/// two factors that decide about the same statement, as far as the number of settings allows. The same mapping gives
/// the same settings in the same order.
///
/// Reading the model only; any thread.
class HDNT_API SettingCover {
public:
    SettingCover(const HDNTBlock& block, const HDNTNetlist& netlist);

    const std::vector<SettingFactor>& factors() const { return factors_; }
    /// The first is that of the defaults. No more than `most` of them, but always that one.
    std::vector<SettingChoice> choices(std::size_t most) const;
    /// All combinations of values of some factors, the others as in `base`; empty when there are more than `most`.
    std::vector<SettingChoice> combinations(const std::vector<std::size_t>& factors, const SettingChoice& base,
                                            std::size_t most) const;
    /// The factors that decide whether a branch is taken: those of its condition and of the ones around it.
    const std::vector<std::vector<std::size_t>>& deciders() const { return deciders_; }

    /// Gives an expansion the properties and pins of a choice.
    void apply(const SettingChoice& choice, HDNTExpansion& expansion) const;
    /// Implementations for calls, which answer as `choice` says whenever they are asked. Both must outlive the table.
    void addFunctions(const SettingChoice& choice, HDNTFunctionTable& table) const;
    /// `MODE = "FAST", CE connected`, of what is not as by default; empty for the defaults.
    std::string textOf(const SettingChoice& choice) const;

private:
    std::vector<SettingFactor> factors_;
    std::vector<std::vector<std::size_t>> deciders_; ///< of each if statement, in the order of the mapping
};

/// A text in which equal netlists, with their values and calls, are equal.
HDNT_API std::string outcomeOf(const HDNTExpansion::Level& level);

} // namespace hdnt::author
