#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/model/Value.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTIfStmt;

namespace hdnt::netlist {
struct MappedValues;
}

/// Applies a block's mapping to property values: which instances, connections and values come out, and why.
///
/// Conditions choose branches, values are evaluated, and everything in the result bears the place of its statement and
/// the branch that led there. The model is not changed. Functions that a mapping calls come from HDNTFunctionTable; the
/// standard ones read the block being mapped and need no entry there:
///
///   intProperty(name), doubleProperty(name), boolProperty(name), stringProperty(name)   the value of a property
///   isConnected(pin)                                                                    whether the pin is connected
///
/// Use: construct, setProperty and connect, expand, read. Expanding may load map libraries, as
/// HDNTBlock::getNetlist(architecture) does, and the common library, as HDNTBlockInst::getTypeBlock does, and then
/// belongs to the loading thread.
class HDNT_API HDNTExpansion {
public:
    using Value = hdnt::Value;
    static constexpr size_t none = static_cast<size_t>(-1);

    /// Where something comes from: its statement, and the branch around it as an index into the level's branches.
    struct Origin {
        yyltype location{};
        size_t branch = none;
    };
    /// An if statement that was reached, and which way it went.
    struct Branch {
        Origin origin;
        bool taken; ///< the condition held
    };
    struct PropertyValue {
        std::string pin; ///< empty for a property of the instance itself
        std::string name;
        Value value;
        Origin origin;
    };
    struct Instance {
        std::string name;
        std::string type;
        HDNTBlock* block; ///< null when there is no block of that type
        Origin origin;
        /// Assigned ones that the property takes; of one that is assigned twice, the last.
        std::vector<PropertyValue> properties;
        size_t level = none; ///< of its own expansion, when it was expanded in turn
    };
    struct Signal {
        std::string name;
        Origin origin;
    };
    struct Connection {
        std::string signal;
        std::string instance; ///< empty for a pin of the mapped block
        std::string pin;
        bool inverted;
        Origin origin;
    };
    /// A call that stands as a statement. Made when there is an implementation.
    struct Call {
        std::string name;
        std::vector<Value> arguments;
        bool made;
        Origin origin;
    };
    /// One mapped block.
    struct Level {
        HDNTBlock* block = nullptr;
        HDNTNetlist::Section section{}; ///< of its mapping; the mapping itself may be replaced by the next load
        yyltype location{};
        std::string path;    ///< instance names from the outermost block on, joined by "/"; empty for that block
        size_t outer = none; ///< the level its instance stands in
        std::vector<Branch> branches;
        std::vector<Instance> instances;
        std::vector<Signal> signals;
        std::vector<Connection> connections;
        std::vector<PropertyValue> pinProperties; ///< of the mapped block's own pins
        std::vector<Call> calls;
    };
    struct Problem {
        std::string message;
        yyltype location;
        size_t level = 0; ///< whose mapping it is in
    };

    /// The block must outlive the expansion. An empty architecture is the manager's current one.
    explicit HDNTExpansion(HDNTBlock& block, std::string architecture = {});
    ~HDNTExpansion();
    HDNTExpansion(const HDNTExpansion&) = delete;

    /// Gives a property of the block a value other than its default. False with a reason when it may not have it, as
    /// HDNTProperty::refusalOf says, and when there is no such property.
    bool setProperty(const std::string& name, const Value& value, std::string& reason);
    /// The same from a text, read by the property's type: numbers in decimal, "true" and "false", texts as they are.
    bool setPropertyText(const std::string& name, const std::string& text, std::string& reason);
    /// Makes isConnected true for a pin, or for all pins of a bus by its base name. False when there is neither.
    bool connect(const std::string& pin, std::string& reason);

    /// Applies the mapping; with `deep`, the mappings of the instances in turn. True when nothing was wrong. What went
    /// wrong is in problems(), and the rest is there all the same: a value that cannot be computed, a name that is not
    /// there, a value that a property refuses, mappings that lead back to a block being mapped, more instances than the
    /// limit expansionInstances. False without a problem: the block has no mapping.
    bool expand(bool deep = false);

    /// The outermost block first, then instances that were expanded, in the order they were met.
    const std::vector<Level>& levels() const { return levels_; }
    const std::vector<Problem>& problems() const { return problems_; }

    /// hdnt::textOf
    static std::string textOf(const Value& value);

private:
    HDNT_LOCAL void addLevel(Level level, const HDNTNetlist& netlist, const hdnt::netlist::MappedValues& values);
    HDNT_LOCAL void enterInstance(size_t level, size_t index);
    HDNT_LOCAL void countInstances(const Level& level);
    HDNT_LOCAL bool isOnPath(size_t level, const Instance& instance);

    HDNTBlock& block_;
    std::string architecture_;
    std::map<std::string, Value> properties_; ///< by upper-cased name
    std::set<std::string> connectedPins_;     ///< full names
    std::vector<Level> levels_;
    std::vector<Problem> problems_;
    size_t numInstances_ = 0;
    bool tooMany_ = false;
};
