#include "hdnt/writer/Elements.internal.h"
#include "hdnt/writer/ExpressionBuffer.internal.h"

namespace hdnt::writer {

void ExpressionBuffer::takeAppended() {
    if (buffer_.size() > known_) operands_.push_back({known_, leaf});
    known_ = buffer_.size();
}

void ExpressionBuffer::joinWith(std::string_view separator) {
    takeAppended();
    if (buffer_.size() > emptyUpTo_) buffer_ += separator;
    known_ = buffer_.size();
}

void ExpressionBuffer::open(size_t start) {
    open_.push_back({start, operands_.size()});
    known_ = emptyUpTo_ = buffer_.size();
}

// Gives the start. There is nothing to close when the text before was written meanwhile.
size_t ExpressionBuffer::close() {
    if (open_.empty()) return 0;
    const Open closed = open_.back();
    open_.pop_back();
    operands_.resize(std::min(operands_.size(), closed.operandsBefore));
    return closed.start;
}

void ExpressionBuffer::parenthesise(Operand& operand) {
    operand.depth = depthInParentheses(operand.depth);
    openings_.push_back(operand.start);
    buffer_ += ')';
}

void ExpressionBuffer::beginCall(std::string_view name) {
    joinWith(", ");
    const size_t start = buffer_.size();
    buffer_.append(name).append("(");
    open(start);
}

// Behind the name and its parenthesis; the second argument and those after it also behind a list and a comma.
size_t ExpressionBuffer::depthOfCall() const {
    size_t depth = 4;
    for (size_t i = operandsBefore(); i < operands_.size(); ++i)
        depth = std::max(depth, operands_[i].depth + (i == operandsBefore() ? 2 : 4));
    return depth;
}

void ExpressionBuffer::endCall() {
    takeAppended();
    buffer_ += ')';
    const size_t depth = depthOfCall();
    operands_.push_back({close(), leaf, depth});
    known_ = buffer_.size();
}

// A left operand that was written meanwhile cannot get parentheses any more, nor can what it is part of.
void ExpressionBuffer::beginOperator(HDNTExpr::FOPERATOR op, bool hasLeft) {
    takeAppended();
    const int precedence = precedenceOf(op);
    if (hasLeft && operands_.size() > operandsBefore()) {
        if (operands_.back().precedence < precedence) parenthesise(operands_.back());
        operands_.back().precedence = precedence;
    } else {
        if (!hasLeft) joinWith(", ");
        operands_.push_back({buffer_.size(), hasLeft ? leaf : precedence});
    }
    if (hasLeft) buffer_.append(" ").append(HDNTExpr::getStringOperator(op)).append(" ");
    else if (op == HDNTExpr::NEGATE) buffer_ += "-(";
    open(operands_.back().start);
}

ExpressionBuffer::Operand ExpressionBuffer::takeRight() {
    takeAppended();
    const bool isThere = operands_.size() > operandsBefore();
    const Operand right = isThere ? operands_.back() : Operand{buffer_.size(), leaf};
    close();
    return right;
}

void ExpressionBuffer::endOperator(HDNTExpr::FOPERATOR op) {
    Operand right = takeRight();
    if (op == HDNTExpr::NEGATE) {
        buffer_ += ')';
        right.depth = depthInParentheses(right.depth);
    } else if (right.precedence <= precedenceOf(op)) {
        parenthesise(right);
    }
    if (!operands_.empty())
        operands_.back().depth = std::max(operands_.back().depth, right.depth + (op == HDNTExpr::NEGATE ? 1 : 2));
    known_ = buffer_.size();
}

void ExpressionBuffer::endNegation(std::string_view falseText) {
    const int precedence = precedenceOf(HDNTExpr::EQUAL);
    Operand right = takeRight();
    if (right.precedence < precedence) parenthesise(right);
    buffer_.append(" == ").append(falseText);
    if (!operands_.empty()) {
        operands_.back().precedence = precedence;
        operands_.back().depth = std::max<size_t>(right.depth, 3);
    }
    known_ = buffer_.size();
}

size_t ExpressionBuffer::depth() {
    takeAppended();
    return operands_.empty() ? 0 : operands_.back().depth;
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
    open_.clear();
    openings_.clear();
    known_ = emptyUpTo_ = 0;
}

} // namespace hdnt::writer
