#include "hdnt/writer/Elements.internal.h"
#include "hdnt/writer/ExpressionBuffer.internal.h"

#include <algorithm>

namespace hdnt::writer {

size_t ExpressionBuffer::beginOperand() {
    const size_t before = calls_.empty() ? 0 : calls_.back().operandsBefore;
    if (!rightDue_ && operands_.size() > before) buffer_ += ", ";
    rightDue_ = false;
    return buffer_.size();
}

ExpressionBuffer::Operand ExpressionBuffer::takeOperand() {
    if (operands_.empty()) return {buffer_.size(), leaf};
    const Operand operand = operands_.back();
    operands_.pop_back();
    return operand;
}

void ExpressionBuffer::parenthesise(const Operand& operand) {
    openings_.push_back(operand.start);
    buffer_ += ')';
}

void ExpressionBuffer::beginCall(std::string_view name) {
    const size_t start = beginOperand();
    buffer_.append(name).append("(");
    calls_.push_back({start, operands_.size()});
}

void ExpressionBuffer::endCall() {
    buffer_ += ')';
    if (calls_.empty()) return;
    operands_.resize(std::min(operands_.size(), calls_.back().operandsBefore));
    operands_.push_back({calls_.back().start, leaf});
    calls_.pop_back();
}

void ExpressionBuffer::beginOperator(HDNTExpr::FOPERATOR op, bool hasLeft) {
    if (hasLeft && !operands_.empty()) {
        if (operands_.back().precedence < precedenceOf(op)) parenthesise(operands_.back());
        operands_.back().precedence = precedenceOf(op);
        buffer_.append(" ").append(HDNTExpr::getStringOperator(op)).append(" ");
    } else {
        operands_.push_back({beginOperand(), precedenceOf(op)});
        if (op == HDNTExpr::NEGATE) buffer_ += "-(";
    }
    rightDue_ = true;
}

void ExpressionBuffer::endOperator(HDNTExpr::FOPERATOR op, bool hasRight) {
    rightDue_ = false;
    const Operand right = hasRight ? takeOperand() : Operand{buffer_.size(), leaf};
    if (op == HDNTExpr::NEGATE) buffer_ += ')';
    else if (right.precedence <= precedenceOf(op)) parenthesise(right);
}

void ExpressionBuffer::endNegation(std::string_view falseText) {
    rightDue_ = false;
    const int precedence = precedenceOf(HDNTExpr::EQUAL);
    const Operand right = takeOperand();
    if (right.precedence < precedence) parenthesise(right);
    buffer_.append(" == ").append(falseText);
    if (!operands_.empty()) operands_.back().precedence = precedence;
}

std::string_view ExpressionBuffer::finish() {
    if (openings_.empty()) return buffer_;
    std::sort(openings_.begin(), openings_.end());
    finished_.clear();
    size_t done = 0;
    for (const size_t opening : openings_) {
        finished_.append(buffer_, done, opening - done).append("(");
        done = opening;
    }
    return finished_.append(buffer_, done);
}

void ExpressionBuffer::clear() {
    buffer_.clear();
    operands_.clear();
    calls_.clear();
    openings_.clear();
    rightDue_ = false;
}

} // namespace hdnt::writer
