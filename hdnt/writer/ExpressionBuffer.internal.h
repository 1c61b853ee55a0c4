#pragma once

#include "hdnt/netlist/HDNTExpr.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::writer {

/// Puts the text of expressions together in a buffer, from what a walk delivers in reading order: operands with their
/// separators, operators, calls. Internal.
///
/// Whether an operand needs parentheses is known only when the operator behind it comes. So where they begin is kept
/// beside the buffer, and finish() puts them in. What the caller appends to the buffer at any time is an operand, up to
/// the next separator, operator or end of a call.
class ExpressionBuffer {
public:
    explicit ExpressionBuffer(std::string& buffer) : buffer_(buffer) {}

    /// Appends the separator, unless the buffer is empty or ends in an operator or the opening of a call.
    void joinWith(std::string_view separator);

    void beginCall(std::string_view name);
    /// Appends the closing parenthesis.
    void endCall();

    /// Between the operands of an operator, or before its only one.
    void beginOperator(HDNTExpr::FOPERATOR op, bool hasLeft);
    /// Behind its last operand.
    void endOperator(HDNTExpr::FOPERATOR op);
    /// Likewise for a negation, which the language can write only as a comparison with this text.
    void endNegation(std::string_view falseText);

    /// How many symbols a parser has on its stack while it reads what is complete so far.
    size_t depth();

    /// The text, valid until the next operation.
    std::string_view finish();
    void clear();

private:
    struct Operand {
        size_t start;
        int precedence;
        size_t depth = 1; ///< symbols on the parser's stack
    };
    /// An operator or call whose operands come: what is on the stack above them is theirs.
    struct Open {
        size_t start; ///< of a call
        size_t operandsBefore;
    };
    static constexpr int leaf = 8;

    size_t operandsBefore() const { return open_.empty() ? 0 : open_.back().operandsBefore; }
    void open(size_t start);
    size_t close();
    void takeAppended();
    void parenthesise(Operand& operand);
    static size_t depthInParentheses(size_t depth) { return std::max<size_t>(depth + 1, 3); }
    size_t depthOfCall() const;
    Operand takeRight();

    std::string& buffer_;
    std::string finished_;
    std::vector<Operand> operands_; ///< complete ones, and placeholders of operators
    std::vector<Open> open_;
    std::vector<size_t> openings_; ///< offsets of parentheses that are not in the buffer
    size_t known_ = 0;             ///< what stands behind it is an operand that was appended
    size_t emptyUpTo_ = 0;         ///< what comes here is the first of its list
};

} // namespace hdnt::writer
