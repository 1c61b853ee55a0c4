// What the receiver does with mappings.
#include "hdnt/frontend/ModelReceiver.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <utility>

namespace hdnt::frontend {

namespace {

constexpr std::size_t justOpened = static_cast<std::size_t>(-1);

struct BinaryOperator {
    HDNTExpr::FOPERATOR op;
    int rule;
};

BinaryOperator binaryOperator(int token) {
    switch (token) {
    case '+': return {HDNTExpr::ADD, 50};
    case '-': return {HDNTExpr::SUBTRACT, 51};
    case '/': return {HDNTExpr::DIVIDE, 52};
    case '%': return {HDNTExpr::REMAINDER, 53};
    case '*': return {HDNTExpr::MULTIPLY, 54};
    case '>': return {HDNTExpr::GREATER, 55};
    case '<': return {HDNTExpr::LESS, 56};
    case T_GreaterEqual: return {HDNTExpr::GREATER_EQUAL, 57};
    case T_LessEqual: return {HDNTExpr::LESS_EQUAL, 58};
    case T_NotEqual: return {HDNTExpr::NOT_EQUAL, 59};
    case T_EqualTo: return {HDNTExpr::EQUAL, 60};
    case T_AndAnd: return {HDNTExpr::AND, 61};
    default: return {HDNTExpr::OR, 62};
    }
}

} // namespace

void ModelReceiver::openInMapping(NtlPart part) {
    switch (part) {
    case NtlPart::statements: braces_.push_back({justOpened, scanner_.tokenPlace()}); break;
    case NtlPart::ifStatement:
        count_ = 0;
        ifs_.push_back({scanner_.tokenPlace()});
        break;
    case NtlPart::call: // a statement, or an operand
        callPlace_ = scanner_.tokenPlace();
        if (!inExpression_ && calls_.empty()) {
            mark();
            operandBegin_ = 0;
        }
        count_ = operandBegin_;
        break;
    case NtlPart::parentheses:
        count_ = operandBegin_;
        operators_.push_back({HDNTExpr::ADD, true, 0, scanner_.tokenPlace()});
        break;
    case NtlPart::operation:
        count_ = operandBegin_;
        operators_.push_back(
            {token_ == '-' ? HDNTExpr::NEGATE : HDNTExpr::NOT, true, token_ == '-' ? 63 : 64, scanner_.tokenPlace()});
        break;
    default: break;
    }
}

void ModelReceiver::openOperation() {
    count_ = operandBegin_;
    const auto [op, rule] = binaryOperator(token_);
    operators_.push_back({op, false, rule, {}});
}

// --- statements

// Behind the brace: of the mapping, or of statements in it.
void ModelReceiver::beginStatements() {
    if (!braces_.empty() && braces_.back().begin == justOpened) {
        braces_.back().begin = statements_.size();
        return deepen();
    }
    constexpr int symbolsOfDeclared = 11;
    constexpr int symbolsOfOther = 8;
    netlistPlace_ = scanner_.tokenPlace();
    capacity_ = capacityOfMappings_;
    depth_ = (isDeclared_ ? symbolsOfDeclared : symbolsOfOther) + 2;
}

void ModelReceiver::endNetlist() {
    netlistPlace_ = upToLast(netlistPlace_);
    capacity_ = INT_MAX;
    build(29, [&] { netlist_ = build::netlist(statements_, netlistPlace_); });
}

void ModelReceiver::closeStatements() {
    const Braces braces = braces_.back();
    braces_.pop_back();
    place_ = braces.place;
    reduce(3);
    build(46, [&] { statement_ = build::stmtBlock(statements_, braces.begin, statementPlace_); });
}

void ModelReceiver::elseBegins() {
    if (hasFailed()) return;
    If& one = ifs_.back();
    one.hasElse = true;
    one.elsePlace = scanner_.tokenPlace();
    one.thenStmt = std::exchange(statement_, nullptr);
}

void ModelReceiver::closeIf() {
    const If one = ifs_.back();
    ifs_.pop_back();
    if (one.hasElse) --depth_;
    const yyltype last = one.hasElse ? extended(one.elsePlace, statementPlace_) : statementPlace_;
    statementPlace_ = extended(one.place, last);
    depth_ -= 5;
    HDNTNetlistEntity* const inner = std::exchange(statement_, nullptr);
    HDNTNetlistEntity* const thenStmt = one.hasElse ? one.thenStmt : inner;
    build(43,
          [&] { statement_ = build::ifStmt(takeOperand(), thenStmt, one.hasElse ? inner : nullptr, statementPlace_); });
}

void ModelReceiver::closeInst() {
    reduce(4);
    build(40, [&] { statement_ = build::inst(textOf(1), textOf(2), statementPlace_); });
}

void ModelReceiver::closeConnect() {
    reduce(5);
    build(74, [&] { statement_ = build::connect(textOf(1), pins_, statementPlace_); });
}

void ModelReceiver::closeSignal() {
    const bool hasPins = taken(2).token == ':';
    reduce(hasPins ? 5 : 3);
    build(hasPins ? 75 : 76, [&] {
        statement_ =
            hasPins ? build::signal(textOf(1), pins_, statementPlace_) : build::signal(textOf(1), statementPlace_);
    });
}

void ModelReceiver::closeAssignBlock() {
    reduce(7);
    build(41, [&] { statement_ = build::assignBlockProperty(textOf(3), textOf(4), takeOperand(), statementPlace_); });
}

void ModelReceiver::closeAssignPin() {
    reduce(8);
    build(42, [&] {
        statement_ = build::assignPinProperty(std::exchange(pin_, nullptr), assigned_, takeOperand(), statementPlace_);
    });
}

// The call itself was built at its parenthesis.
void ModelReceiver::closeCallStatement() {
    reduce(2);
    auto* const call = static_cast<HDNTFunctionCall*>(takeOperand());
    call->setStatement(true);
    statement_ = call;
}

void ModelReceiver::closePinRef() {
    const bool hasInst = count_ == 5;
    const yyltype place = hasInst ? upToLast(pinRefPlace_) : pinRefPlace_;
    if (hasInst) --depth_;
    if (!pins_.empty()) depth_ -= 2;
    build(hasInst ? 79 : 80,
          [&] { pin_ = build::pinInst(hasInst ? textOf(3) : std::string_view(), textOf(hasInst ? 4 : 3), place); });
    if (taken(0).token != T_Assign && !hasFailed()) add(pins_, pin_);
}

// --- expressions

// Closing parentheses are not counted: any number of them may follow each other, and what was taken before the
// expression has to stay.

void ModelReceiver::expressionBegins() {
    if (taken(0).token == T_Assign && count_ > 0 && lastTaken().token == T_StringConstant)
        assigned_ = unquoted(lastTaken());
    operandBegin_ = count_;
    inExpression_ = true;
}

void ModelReceiver::closeConstant() {
    const Taken& value = lastTaken();
    const yyltype place = constantPlace_;
    build(65, [&] {
        operands_.push_back({nullptr, place});
        HDNTExpr*& made = operands_.back().expr;
        if (value.token == T_IntConstant) made = build::constant(value.number.asInt, place);
        else if (value.token == T_DoubleConstant) made = build::constant(value.number.asDouble, place);
        else if (value.token == T_BoolConstant) made = build::constant(value.isTrue(), place);
        else made = build::constant(unquoted(value), place);
    });
}

void ModelReceiver::closeOperation() {
    const Operator one = operators_.back();
    operators_.pop_back();
    const Operand right = operands_.back();
    operands_.pop_back();
    depth_ -= one.isPrefix ? 1 : 2;
    if (one.isPrefix) operands_.push_back({nullptr, one.place}); // there is room for what was just taken
    Operand& result = operands_.back();
    result.place = extended(result.place, right.place);
    build(one.rule, [&] {
        result.expr = build::compound(std::exchange(result.expr, nullptr), one.op, right.expr, result.place);
    });
}

void ModelReceiver::closeParentheses() {
    operands_.back().place = upToLast(operators_.back().place);
    operators_.pop_back();
    --count_;
    depth_ -= 2;
}

void ModelReceiver::callBegins() {
    if (hasFailed()) return;
    const std::string_view name = taken(count_ - 2).text;
    build(69, [&] { calls_.push_back({shortened(name), arguments_.size(), callPlace_}); });
}

void ModelReceiver::listArgument() {
    if (arguments_.size() > calls_.back().begin) depth_ -= 2;
    build(72, [&] {
        arguments_.push_back(nullptr);
        arguments_.back() = takeOperand();
    });
}

void ModelReceiver::callEnds() {
    if (hasFailed()) return;
    const Call one = calls_.back();
    calls_.pop_back();
    const yyltype place = upToLast(one.place);
    --count_;
    depth_ -= 3;
    build(69, [&] {
        operands_.push_back({nullptr, place});
        operands_.back().expr = build::call(one.name, arguments_, one.begin, place);
    });
}

} // namespace hdnt::frontend
