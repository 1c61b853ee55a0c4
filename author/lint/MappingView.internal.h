#pragma once

#include "hdnt/netlist/HDNTExpr.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class HDNTAssignProperty;
class HDNTBlock;
class HDNTBlockInst;
class HDNTBus;
class HDNTConnect;
class HDNTFunctionCall;
class HDNTIfStmt;
class HDNTNetlist;
class HDNTSignal;

namespace hdnt::author {

/// A mapping as flat lists, the statements of all branches with the branch that each stands in. Borrows the mapping.
class MappingView {
public:
    /// A branch of an if statement; the first is the mapping itself, without one.
    struct Scope {
        std::size_t outer = 0;
        const HDNTIfStmt* stmt = nullptr;
        bool holds = true; ///< the branch for a condition that holds
        std::size_t depth = 0;
    };
    template <typename Node>
    struct In {
        const Node* node;
        std::size_t scope;
    };
    struct Declared {
        std::string name;
        const HDNTSignal* node;
        std::size_t scope;
    };

    explicit MappingView(const HDNTNetlist& netlist);

    const std::vector<Scope>& scopes() const { return scopes_; }
    const std::vector<In<HDNTBlockInst>>& instances() const { return instances_; }
    const std::vector<Declared>& signals() const { return signals_; } ///< ranges unfolded
    const std::vector<In<HDNTConnect>>& connects() const { return connects_; }
    const std::vector<In<HDNTAssignProperty>>& assigns() const { return assigns_; }
    const std::vector<In<HDNTIfStmt>>& conditions() const { return conditions_; }
    const std::vector<In<HDNTFunctionCall>>& calls() const { return calls_; } ///< those that are statements

    /// Whether what stands in the first is there only when what stands in the second is.
    bool isWithin(std::size_t inner, std::size_t outer) const;
    /// Whether no setting can bring both about: they are in the two branches of one statement.
    bool areExclusive(std::size_t a, std::size_t b) const;

private:
    void statement(const HDNTNetlistEntity& entity, std::size_t scope);
    void branch(const HDNTIfStmt& stmt, bool holds, std::size_t scope);
    void signal(const HDNTSignal& signal, std::size_t scope);

    std::vector<Scope> scopes_{{}};
    std::vector<In<HDNTBlockInst>> instances_;
    std::vector<Declared> signals_;
    std::vector<In<HDNTConnect>> connects_;
    std::vector<In<HDNTAssignProperty>> assigns_;
    std::vector<In<HDNTIfStmt>> conditions_;
    std::vector<In<HDNTFunctionCall>> calls_;
};

/// The pins that a reference means: one by its full name, or all of a bus by its base name. Looks at declarations, so
/// that the pins of the block need not be made for it.
class NamedPins {
public:
    NamedPins() = default;
    NamedPins(const HDNTBlock& block, const std::string& name);

    explicit operator bool() const { return count_ > 0; }
    /// Null when there are none.
    const HDNTBus* declaration() const { return bus_; }
    bool isWholeBus() const { return count_ > 0 && isBus_; }
    /// Positions in the block's list of all pins, one after the other.
    std::size_t first() const { return first_; }
    std::size_t count() const { return count_; }

private:
    void take(const HDNTBus& bus, std::size_t offset, std::size_t count);
    void takeBit(const HDNTBlock& block, const std::string& name, std::size_t bracket);

    const HDNTBus* bus_ = nullptr;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
    bool isBus_ = false;
};

/// Calls back for an expression and all in it, the outer ones first; of any depth.
void forEachExpr(const HDNTExpr* outermost, const std::function<void(const HDNTExpr&)>& visit);

/// What a call of a standard function asks of the mapped block.
struct Question {
    enum class Of : unsigned char { nothing, property, connection };
    Of of = Of::nothing;
    std::string name;  ///< of the property or the pin
    unsigned type = 0; ///< HDNTExpr::exprType of the answer
};
/// Nothing for another function, and for a name that is not a constant.
Question questionOf(const HDNTExpr& expr);

} // namespace hdnt::author
