#pragma once

#include "hdnt/netlist/HDNTCompoundExpr.h"

#include <vector>

class HDNTLibrary;

namespace hdnt::netlist {

/// What a walk over an expression knows of the way up from its calls to their library. From the first call it is as
/// long as the expression; from each other one it goes to where the one before has been.
class WayUp {
public:
    explicit WayUp(const HDNTCompoundExpr& outermost) : outer_(innermost), walked_(&outermost) {
        if (outer_) known_ = outer_->known_, library_ = outer_->library_;
        innermost = this;
    }
    ~WayUp() { innermost = outer_; }
    WayUp(const WayUp&) = delete;
    WayUp& operator=(const WayUp&) = delete;

    /// Null when there is none above the call.
    static HDNTLibrary* libraryAbove(const HDNTNode& call);

private:
    static constinit thread_local WayUp* innermost;

    WayUp* outer_;
    const HDNTNode* walked_;
    const HDNTNode* known_ = nullptr; ///< of what is walked, and so alive
    HDNTLibrary* library_ = nullptr;  ///< above it
};

/// Walks an operation and the operations in it in a loop, so that its depth is not bounded by the stack. Operands that
/// are no operations go to leaf; `between` is called for an operation after its left operand, `after` behind its right.
template <typename Leaf, typename Between, typename After>
void walk(HDNTCompoundExpr& outermost, Leaf&& leaf, Between&& between, After&& after) {
    struct Step {
        HDNTCompoundExpr* expr;
        bool leftDone;
        bool rightDone;
    };
    const WayUp wayUp(outermost);
    std::vector<Step> steps;
    steps.reserve(8); // most are no deeper
    steps.push_back({&outermost, false, false});
    const auto descend = [&](HDNTExpr* operand) {
        if (auto* const inner = nodeCast<HDNTCompoundExpr>(operand)) steps.push_back({inner, false, false});
        else if (operand) leaf(*operand);
    };
    while (!steps.empty()) {
        Step& step = steps.back();
        HDNTCompoundExpr& expr = *step.expr;
        if (!step.leftDone) {
            step.leftDone = true;
            descend(expr.lhs());
        } else if (!step.rightDone) {
            step.rightDone = true;
            between(expr);
            descend(expr.rhs());
        } else {
            steps.pop_back();
            after(expr);
        }
    }
}

/// For walks that do not change anything.
template <typename Leaf, typename After>
void walkOver(const HDNTCompoundExpr& outermost, Leaf&& leaf, After&& after) {
    walk(
        const_cast<HDNTCompoundExpr&>(outermost), leaf, [](const HDNTCompoundExpr&) {}, after);
}

} // namespace hdnt::netlist
