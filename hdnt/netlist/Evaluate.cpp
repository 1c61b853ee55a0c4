#include "hdnt/netlist/Evaluate.h"

#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

namespace hdnt::netlist {

namespace {

constexpr unsigned boolType = HATAttrTypes::TypeBool;
constexpr unsigned intType = HATAttrTypes::TypeInt;
constexpr unsigned doubleType = HATAttrTypes::TypeDouble;
constexpr unsigned stringType = HATAttrTypes::TypeString;

using TypeState = HDNTCompoundExpr::TypeState;

bool isUnary(HDNTExpr::FOPERATOR op) { return op == HDNTExpr::NEGATE || op == HDNTExpr::NOT; }

// The type of `a op b` for two operands of one comparison type.
DerivedType resultType(HDNTExpr::FOPERATOR op, unsigned operand) {
    const auto known = [](bool defined, unsigned code) {
        return defined ? DerivedType{TypeState::Known, code} : DerivedType{TypeState::Failed, 0, true};
    };
    switch (op) {
    case HDNTExpr::ADD:
    case HDNTExpr::SUBTRACT:
    case HDNTExpr::NEGATE:
    case HDNTExpr::MULTIPLY:
    case HDNTExpr::DIVIDE: return known(operand == intType || operand == doubleType, operand);
    case HDNTExpr::REMAINDER: return known(operand == intType, operand);
    case HDNTExpr::NOT_EQUAL:
    case HDNTExpr::EQUAL: return known(operand <= stringType, boolType);
    default: return known(operand <= doubleType, boolType);
    }
}

// `left` is null for an operation without left operand.
DerivedType combine(const HDNTCompoundExpr& expr, const DerivedType* left) {
    if (!expr.rhs() || (!left && !isUnary(expr.op()))) return {TypeState::Unknown};
    const DerivedType right = typeOf(*expr.rhs());
    for (const TypeState state : {TypeState::Failed, TypeState::Unknown})
        if (right.state == state || (left && left->state == state)) return {state};
    const unsigned code = HDNTExpr::comparisonType(right.code);
    if (left && HDNTExpr::comparisonType(left->code) != code) return {TypeState::Failed, 0, true};
    return resultType(expr.op(), code);
}

std::unique_ptr<HDNTValue> copyOf(const HDNTValue& value) {
    if (const auto* const constant = dynamic_cast<const HDNTIntConstant*>(&value))
        return std::make_unique<HDNTIntConstant>(constant->getValue());
    if (const auto* const constant = dynamic_cast<const HDNTDoubleConstant*>(&value))
        return std::make_unique<HDNTDoubleConstant>(constant->getValue());
    if (const auto* const constant = dynamic_cast<const HDNTBoolConstant*>(&value))
        return std::make_unique<HDNTBoolConstant>(constant->getValue());
    return std::make_unique<HDNTStringConstant>(HDNTValue::getStringValue(&value));
}

std::unique_ptr<HDNTValue> call(const HDNTFunctionCall& expr) {
    std::vector<std::unique_ptr<HDNTValue>> values;
    std::vector<const HDNTValue*> arguments;
    for (const HDNTExpr* actual : expr.actuals()) {
        values.push_back(evaluate(*actual));
        arguments.push_back(values.back().get());
    }
    const HDNTFunctionTable::Fn fn = HDNTFunctionTable::findInForce(expr.name());
    if (!fn) throw HEXAlgException("HDNTNetlist: no implementation of function " + expr.name());
    std::unique_ptr<HDNTValue> result = fn(expr, arguments);
    if (!result && !expr.isStatement()) throw HEXAlgException("HDNTNetlist: invalid nullptr expression");
    return result;
}

// One operation on the values of its operands; `left` is null for an operator without left operand.
std::unique_ptr<HDNTValue> operate(const HDNTCompoundExpr& expr, const HDNTValue* left) {
    const std::unique_ptr<HDNTValue> right = expr.rhs() ? evaluate(*expr.rhs()) : nullptr;
    if (left && right && left->getComparisonType() != right->getComparisonType())
        throw HEXAlgException("HDNTNetlist: mismatched expression types");
    if (!right || (!left && !isUnary(expr.op()))) throw HEXAlgException("HDNTNetlist: invalid nullptr expression");
    const HDNTValue* const a = left ? left : right.get();
    const auto with = [&](auto getValue) { return expr.operate(getValue(a), getValue(right.get())); };
    switch (right->getComparisonType()) {
    case intType: return std::unique_ptr<HDNTValue>(with(HDNTValue::getIntValue));
    case doubleType: return std::unique_ptr<HDNTValue>(with(HDNTValue::getDoubleValue));
    case stringType: return std::unique_ptr<HDNTValue>(with(HDNTValue::getStringValue));
    default: return std::unique_ptr<HDNTValue>(with(HDNTValue::getBoolValue));
    }
}

} // namespace

std::vector<HDNTCompoundExpr*> leftSpine(HDNTCompoundExpr& outermost) {
    std::vector<HDNTCompoundExpr*> spine;
    for (auto* expr = &outermost; expr; expr = dynamic_cast<HDNTCompoundExpr*>(expr->lhs())) spine.push_back(expr);
    return spine;
}

DerivedType typeOfOperation(const HDNTCompoundExpr& expr) {
    if (!expr.lhs()) return combine(expr, nullptr);
    const DerivedType left = typeOf(*expr.lhs());
    return combine(expr, &left);
}

DerivedType typeOf(const HDNTExpr& expr) {
    if (dynamic_cast<const HDNTValue*>(&expr)) return {TypeState::Known, expr.exprType()};
    if (const auto* const functionCall = dynamic_cast<const HDNTFunctionCall*>(&expr)) {
        const HDNTFunctionDecl* const decl = functionCall->getDecl();
        if (!decl) return {TypeState::Unknown};
        return {TypeState::Known, static_cast<unsigned>(decl->getType())};
    }
    const auto& outermost = dynamic_cast<const HDNTCompoundExpr&>(expr);
    if (outermost.typeState() != TypeState::NotDerived) return {outermost.typeState(), outermost.exprType()};
    const auto spine = leftSpine(const_cast<HDNTCompoundExpr&>(outermost));
    const HDNTExpr* const leaf = spine.back()->lhs();
    DerivedType type = leaf ? typeOf(*leaf) : DerivedType{TypeState::Unknown};
    for (auto operation = spine.rbegin(); operation != spine.rend(); ++operation)
        type = combine(**operation, (*operation)->lhs() ? &type : nullptr);
    return type;
}

std::unique_ptr<HDNTValue> evaluate(const HDNTExpr& expr) {
    if (const auto* const value = dynamic_cast<const HDNTValue*>(&expr)) return copyOf(*value);
    if (const auto* const functionCall = dynamic_cast<const HDNTFunctionCall*>(&expr)) return call(*functionCall);
    const auto spine = leftSpine(const_cast<HDNTCompoundExpr&>(dynamic_cast<const HDNTCompoundExpr&>(expr)));
    const HDNTExpr* const leaf = spine.back()->lhs();
    std::unique_ptr<HDNTValue> value = leaf ? evaluate(*leaf) : nullptr;
    for (auto operation = spine.rbegin(); operation != spine.rend(); ++operation)
        value = operate(**operation, value.get());
    return value;
}

bool isTrue(const HDNTValue& value) {
    if (const auto* const number = dynamic_cast<const HDNTIntConstant*>(&value)) return number->getValue() != 0;
    if (const auto* const number = dynamic_cast<const HDNTDoubleConstant*>(&value)) return number->getValue() != 0.0;
    return HDNTValue::getBoolValue(&value);
}

} // namespace hdnt::netlist
