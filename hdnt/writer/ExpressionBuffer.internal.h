#pragma once

#include "hdnt/netlist/HDNTExpr.h"

#include <string>
#include <string_view>
#include <vector>

namespace hdnt::writer {

/// Puts the text of expressions together in a buffer, from what a walk delivers in reading order: operands with their
/// separators, operators, calls. Internal.
///
/// Whether an operand needs parentheses is known only when the operator behind it comes. So where they begin is kept
/// beside the buffer, and finish() puts them in.
class ExpressionBuffer {
public:
    /// The buffer is the caller's, who may append to it between beginOperand() and endOperand().
    explicit ExpressionBuffer(std::string& buffer) : buffer_(buffer) {}

    /// Appends ", " when an operand of the same list stands before. Gives where the operand starts.
    size_t beginOperand();
    /// A constant, or a pin reference.
    void endOperand(size_t start) { operands_.push_back({start, leaf}); }

    void beginCall(std::string_view name);
    /// Appends the closing parenthesis.
    void endCall();

    /// Between the operands of an operator, or before its only one.
    void beginOperator(HDNTExpr::FOPERATOR op, bool hasLeft);
    /// Behind its last operand.
    void endOperator(HDNTExpr::FOPERATOR op, bool hasRight);
    /// Likewise for a negation, which the language can write only as a comparison with this text.
    void endNegation(std::string_view falseText);

    /// The text, valid until the next operation.
    std::string_view finish();
    void clear();

private:
    struct Operand {
        size_t start;
        int precedence;
    };
    struct Call {
        size_t start;
        size_t operandsBefore;
    };
    static constexpr int leaf = 8;

    void parenthesise(const Operand& operand);
    Operand takeOperand();

    std::string& buffer_;
    std::string finished_;
    std::vector<Operand> operands_; ///< complete ones, and placeholders of operators without a left one
    std::vector<Call> calls_;
    std::vector<size_t> openings_; ///< offsets of parentheses that are not in the buffer
    bool rightDue_ = false;        ///< an operator waits for its operand
};

} // namespace hdnt::writer
