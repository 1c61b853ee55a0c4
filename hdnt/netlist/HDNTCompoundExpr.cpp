#include "hdnt/netlist/HDNTCompoundExpr.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/netlist/CompoundWalk.internal.h"
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

#include <utility>

HDNTCompoundExpr::HDNTCompoundExpr(HDNTExpr* lhs, FOPERATOR op, HDNTExpr* rhs) : lhs_(lhs), rhs_(rhs), op_(op) {
    setKind(HDNTNodeKind::CompoundExpr);
    if (lhs) lhs->setParent(this);
    if (rhs) rhs->setParent(this);
}

// In a loop, as every walk, and without memory for it: an operation on the left comes above the one it is an operand
// of, until only its right side is left.
void HDNTCompoundExpr::deleteAll(HDNTExpr* expr) noexcept {
    while (auto* const top = nodeCast<HDNTCompoundExpr>(expr)) {
        if (auto* const left = nodeCast<HDNTCompoundExpr>(top->lhs_)) {
            top->lhs_ = std::exchange(left->rhs_, top);
            expr = left;
        } else {
            expr = std::exchange(top->rhs_, nullptr);
            delete top;
        }
    }
    delete expr;
}

HDNTCompoundExpr::~HDNTCompoundExpr() {
    deleteAll(std::exchange(lhs_, nullptr));
    deleteAll(std::exchange(rhs_, nullptr));
}

void HDNTCompoundExpr::check() {
    hdnt::netlist::walkOver(
        *this, [](HDNTExpr& leaf) { leaf.check(); }, [](HDNTCompoundExpr&) {});
}

void HDNTCompoundExpr::finalize() {
    hdnt::netlist::walkOver(
        *this, [](HDNTExpr& leaf) { leaf.finalize(); }, [](HDNTCompoundExpr& expr) { expr.deriveType(); });
}

void HDNTCompoundExpr::deriveType() {
    if (op_ > EQUAL) throw HEXAlgException("Invalid Operator");
    if (typeState_ == TypeState::Failed) return;
    const hdnt::netlist::DerivedType type = hdnt::netlist::typeOfOperation(*this);
    typeState_ = type.state;
    setExprType(type.code);
    if (type.faultIsHere) HDNTError::InvalidOperandType(getLocation());
}

void HDNTCompoundExpr::evaluate() { hdnt::netlist::evaluateAndStore(*this); }

[[noreturn]] static void refuse(const char* text) { throw HEXAlgException(text); }

// In unsigned arithmetic, which wraps.
static int wrapped(unsigned value) { return static_cast<int>(value); }

// The operators whose result is a bool; for numbers, anything but 0 means yes.
template <typename T>
static HDNTValue* decide(HDNTExpr::FOPERATOR op, T a, T b) {
    const bool yesA = a != T();
    const bool yesB = b != T();
    switch (op) {
    case HDNTExpr::AND: return new HDNTBoolConstant(yesA && yesB);
    case HDNTExpr::OR: return new HDNTBoolConstant(yesA || yesB);
    case HDNTExpr::NOT: return new HDNTBoolConstant(!yesB);
    case HDNTExpr::GREATER: return new HDNTBoolConstant(a > b);
    case HDNTExpr::LESS: return new HDNTBoolConstant(a < b);
    case HDNTExpr::LESS_EQUAL: return new HDNTBoolConstant(a <= b);
    case HDNTExpr::GREATER_EQUAL: return new HDNTBoolConstant(a >= b);
    case HDNTExpr::NOT_EQUAL: return new HDNTBoolConstant(a != b);
    case HDNTExpr::EQUAL: return new HDNTBoolConstant(a == b);
    default: refuse("HDNTNetlist: Operator not supported");
    }
}

HDNTValue* HDNTCompoundExpr::operate(int a, int b) const {
    const unsigned ua = static_cast<unsigned>(a);
    const unsigned ub = static_cast<unsigned>(b);
    switch (op_) {
    case ADD: return new HDNTIntConstant(wrapped(ua + ub));
    case SUBTRACT: return new HDNTIntConstant(wrapped(ua - ub));
    case NEGATE: return new HDNTIntConstant(wrapped(0U - ub));
    case MULTIPLY: return new HDNTIntConstant(wrapped(ua * ub));
    case DIVIDE:
        if (b == 0) refuse("Divide by zero");
        return new HDNTIntConstant(b == -1 ? wrapped(0U - ua) : a / b);
    case REMAINDER:
        if (b == 0) refuse("Modulo zero");
        return new HDNTIntConstant(b == -1 ? 0 : a % b);
    default: return decide(op_, a, b);
    }
}

HDNTValue* HDNTCompoundExpr::operate(double a, double b) const {
    switch (op_) {
    case ADD: return new HDNTDoubleConstant(a + b);
    case SUBTRACT: return new HDNTDoubleConstant(a - b);
    case NEGATE: return new HDNTDoubleConstant(-b);
    case MULTIPLY: return new HDNTDoubleConstant(a * b);
    case DIVIDE:
        if (b == 0.0) refuse("Divide by zero");
        return new HDNTDoubleConstant(a / b);
    case REMAINDER: refuse("HDNTNetlist: illegal modulo operation for type double");
    default: return decide(op_, a, b);
    }
}

HDNTValue* HDNTCompoundExpr::operate(bool a, bool b) const {
    if (op_ <= REMAINDER) refuse("HDNTNetlist: illegal operation for type bool");
    return decide(op_, a, b);
}

HDNTValue* HDNTCompoundExpr::operate(const std::string& a, const std::string& b) const {
    if (op_ == NOT_EQUAL) return new HDNTBoolConstant(a != b);
    if (op_ == EQUAL) return new HDNTBoolConstant(a == b);
    refuse(op_ > EQUAL ? "Invalid Operator" : "HDNTNetlist: illegal operation for type string");
}

HDNTValue* HDNTCompoundExpr::operate(const char* a, const char* b) const {
    return operate(std::string(a), std::string(b));
}
