#pragma once

#include "hdnt/netlist/HDNTCompoundExpr.h"

#include <vector>

namespace hdnt::netlist {

/// Walks an operation and the operations in it in a loop, so that its depth is not bounded by the stack. Operands that
/// are no operations go to leaf; `between` is called for an operation after its left operand, `after` behind its right.
template <typename Leaf, typename Between, typename After>
void walk(HDNTCompoundExpr& outermost, Leaf&& leaf, Between&& between, After&& after) {
    struct Step {
        HDNTCompoundExpr* expr;
        bool leftDone;
        bool rightDone;
    };
    std::vector<Step> steps{{&outermost, false, false}};
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
