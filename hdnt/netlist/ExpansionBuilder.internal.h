#pragma once

#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/HDNTFunctionTable.h"

#include <unordered_map>

class HDNTAssignProperty;
class HDNTBlockInst;
class HDNTBlockPinName;
class HDNTConnect;
class HDNTExpr;
class HDNTFunctionCall;
class HDNTNetlistEntity;
class HDNTNode;
class HDNTPin;
class HDNTProperty;
class HDNTSignal;

// Builds one level of an expansion. Internal.
namespace hdnt::netlist {

/// What is known of the block being mapped. Properties that are not listed have their defaults.
struct MappedValues {
    std::map<std::string, HDNTExpansion::Value> properties; ///< by upper-cased name
    std::set<std::string> connectedPins;                    ///< full names
};

/// Pins by full name, or all of a bus by its base name.
std::vector<HDNTPin*> pinsNamed(const HDNTBlock& block, const std::string& name);

/// The values that an instance of a level hands to its own mapping.
MappedValues valuesOf(const HDNTExpansion::Level& level, size_t instance);

class ExpansionBuilder {
public:
    /// All three are borrowed; the level has its block set and nothing in it.
    ExpansionBuilder(HDNTExpansion::Level& level, const MappedValues& values,
                     std::vector<HDNTExpansion::Problem>& problems);
    /// Walks the netlist in the order in which visitors see it. What refers to instances and signals is looked at when
    /// all of them are known: instances of branches by everybody, signals of branches in these.
    void build(const HDNTNetlist& netlist);

private:
    using Value = HDNTExpansion::Value;

    void statement(const HDNTNetlistEntity& entity, size_t branch);
    void ifStatement(const HDNTIfStmt& stmt, size_t branch);
    void instance(const HDNTBlockInst& inst, size_t branch);
    void signal(const HDNTSignal& signal, size_t branch);
    void connect(const HDNTConnect& connect, size_t branch);
    void connectPin(const HDNTConnect& connect, const HDNTBlockPinName& pin, size_t branch);
    void assign(const HDNTAssignProperty& assign, size_t branch);
    void call(const HDNTFunctionCall& call, size_t branch);

    /// Runs a step; what it throws becomes a problem at the entity. False then.
    template <typename Step>
    bool attempt(const HDNTNode& entity, Step&& step);
    void problem(const HDNTNode& entity, std::string message);
    HDNTExpansion::Origin originOf(const HDNTNode& entity, size_t branch) const;
    /// Whether a statement of the branch may name the signal: the branch or one around it declares it.
    bool seesSignal(size_t branch, const std::string& name) const;
    HDNTExpansion::Instance* findInstance(const std::string& name);
    const HDNTProperty* findProperty(const HDNTBlock& block, const std::string& pin, const std::string& name) const;

    void addStandardFunctions();
    Value propertyValue(const std::string& name) const;
    bool isConnected(const std::string& pin) const;

    HDNTExpansion::Level& level_;
    const MappedValues& values_;
    std::vector<HDNTExpansion::Problem>& problems_;
    HDNTFunctionTable functions_;
    std::unordered_map<std::string, size_t> instanceByName_;
    std::multimap<std::string, size_t> signalBranches_;           ///< by name, the branches that declare it
    std::vector<std::pair<const HDNTConnect*, size_t>> connects_; ///< met so far, with the branch around them
    std::vector<std::pair<const HDNTAssignProperty*, size_t>> assigns_;
};

} // namespace hdnt::netlist
