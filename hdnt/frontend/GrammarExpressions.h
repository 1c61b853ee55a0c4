#pragma once

#include "hdnt/frontend/GrammarTokens.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace hdnt::frontend {

/// Expressions. Operators bind by level, the weakest is 1, and those of one level from the left. They nest without
/// recursion: what is open around the operand at hand is in a list.
template <typename Receiver>
class GrammarExpressions : protected GrammarTokens<Receiver> {
protected:
    using Tokens = GrammarTokens<Receiver>;
    using Tokens::at, Tokens::need, Tokens::may, Tokens::take, Tokens::lacks, Tokens::to_, Tokens::expected_;
    using typename Tokens::Step;

    explicit GrammarExpressions(Receiver& receiver) : Tokens(receiver) {}

    bool expression() {
        to_.expressionBegins();
        const std::size_t outside = operations_.size();
        if (operands(outside, false)) {
            to_.expressionEnds();
            return true;
        }
        while (operations_.size() > outside) leaveOperation();
        return false;
    }

    /// A call that is a statement, which the statement's part has.
    bool call() {
        const std::size_t outside = operations_.size();
        if (operands(outside, true)) return true;
        while (operations_.size() > outside) leaveOperation();
        return false;
    }

private:
    struct Operation {
        enum Kind : std::uint8_t { parentheses, call, operation } kind;
        int level;                     ///< 0 for what ends at a parenthesis
        typename Receiver::Mark begin; ///< of its first operand
        bool isPart = true;            ///< not the call that is a statement
    };

    bool operands(std::size_t outside, bool isStatement) {
        for (;;) {
            typename Receiver::Mark begin = to_.operandMark();
            bool whole = true;
            if (!operand(begin, isStatement && operations_.size() == outside, whole)) return false;
            if (!whole) continue;
            if (isStatement && operations_.size() == outside) return true;
            const Step step = behindOperand(begin, outside, isStatement);
            if (step != Step::inside) return step == Step::done;
        }
    }

    /// An operand, or what stands before one: that is not whole.
    bool operand(typename Receiver::Mark& begin, bool isStatement, bool& whole) {
        if (!isStatement) {
            if (at('(')) return opens({Operation::parentheses, 0, begin}, NtlPart::parentheses, whole);
            if (at('-') || at('!'))
                return opens({Operation::operation, strongestLevel + 1, begin}, NtlPart::operation, whole);
            if (!at(T_Identifier)) return this->template within<NtlPart::constant>([&] { return need(constants); });
        }
        if (!enterOperation({Operation::call, 0, begin, !isStatement}, NtlPart::call)) return lacks();
        if constexpr (Receiver::recovers)
            if (!isStatement) expected_ |= constants; // the word may be a misspelt one
        if (!need(T_Identifier) || !need('(')) return false;
        to_.callBegins();
        if (!at(')')) return !(whole = false);
        to_.noArguments();
        if (!need(')')) return false; // too deep
        to_.callEnds();
        begin = leaveOperation();
        return true;
    }

    bool opens(Operation&& operation, NtlPart part, bool& whole) {
        if (!enterOperation(std::move(operation), part)) return lacks();
        whole = false;
        return take();
    }

    /// Done: the expression ends. Inside: an operand comes.
    Step behindOperand(typename Receiver::Mark begin, std::size_t outside, bool isStatement) {
        for (;;) {
            const int level = levelOf(to_.token());
            if constexpr (Receiver::recovers) expected_ |= operators;
            leaveOperators(outside, std::max(level, 1), begin);
            if (level > 0) {
                if (enterOperation({Operation::operation, level, begin}, NtlPart::operation)) {
                    take();
                    return Step::inside;
                }
                if (!lacks()) return Step::failed;
                leaveOperators(outside, 1, begin);
            }
            if (operations_.size() == outside) return Step::done;
            if (operations_.back().kind == Operation::call) {
                to_.listed(NtlPart::call);
                if (may(',')) return Step::inside;
            }
            if (!need(')')) return Step::failed;
            if (operations_.back().kind == Operation::call) to_.callEnds();
            begin = leaveOperation();
            if (isStatement && operations_.size() == outside) return Step::done;
        }
    }

    // Those that bind as tight, or tighter.
    void leaveOperators(std::size_t outside, int level, typename Receiver::Mark& begin) {
        while (operations_.size() > outside && operations_.back().level >= level) begin = leaveOperation();
    }

    bool enterOperation(Operation&& operation, NtlPart part) {
        if constexpr (Receiver::recovers)
            if (!to_.deeper()) return false;
        const bool isBehindOperand = operation.level > 0 && operation.level <= strongestLevel;
        if (isBehindOperand) to_.openAt(operation.begin, part);
        else if (operation.isPart) to_.open(part);
        operations_.push_back(operation);
        return true;
    }

    typename Receiver::Mark leaveOperation() {
        constexpr NtlPart parts[] = {NtlPart::parentheses, NtlPart::call, NtlPart::operation};
        const Operation done = operations_.back();
        operations_.pop_back();
        if (done.isPart) to_.close(parts[done.kind]);
        if constexpr (Receiver::recovers) to_.shallower();
        return done.begin;
    }

    std::vector<Operation> operations_;
};

} // namespace hdnt::frontend
