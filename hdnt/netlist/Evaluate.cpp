#include "hdnt/netlist/CompoundWalk.internal.h"
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

#include <vector>

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

// Operands that are missing are null.
DerivedType combine(const HDNTCompoundExpr& expr, const DerivedType* left, const DerivedType* right) {
    if (!right || (!left && !isUnary(expr.op()))) return {TypeState::Unknown};
    for (const TypeState state : {TypeState::Failed, TypeState::Unknown})
        if (right->state == state || (left && left->state == state)) return {state};
    const unsigned code = HDNTExpr::comparisonType(right->code);
    if (left && HDNTExpr::comparisonType(left->code) != code) return {TypeState::Failed, 0, true};
    return resultType(expr.op(), code);
}

std::unique_ptr<HDNTValue> copyOf(const HDNTValue& value) { return HDNTValue::makeConstant(value.getPlainValue()); }

/// Whether the results of operations and calls are stored in them.
enum class Results : bool { passed, stored };

void store(const HDNTExpr& expr, const HDNTValue* result) {
    const_cast<HDNTExpr&>(expr).setEvaluatedExpr(result ? copyOf(*result).release() : nullptr);
}

std::unique_ptr<HDNTValue> compute(const HDNTExpr& expr, Results results);

std::unique_ptr<HDNTValue> call(const HDNTFunctionCall& expr, Results results) {
    std::vector<std::unique_ptr<HDNTValue>> values;
    std::vector<const HDNTValue*> arguments;
    for (const HDNTExpr* actual : expr.actuals()) {
        values.push_back(compute(*actual, results));
        arguments.push_back(values.back().get());
    }
    const HDNTFunctionTable::Fn fn = HDNTFunctionTable::findInForce(expr.name());
    if (!fn) throw HEXAlgException("HDNTNetlist: no implementation of function " + expr.name());
    std::unique_ptr<HDNTValue> result = fn(expr, arguments);
    if (!result && !expr.isStatement()) throw HEXAlgException("HDNTNetlist: invalid nullptr expression");
    if (results == Results::stored) store(expr, result.get());
    return result;
}

// One operation on the values of its operands; those that are missing are null.
std::unique_ptr<HDNTValue> operate(const HDNTCompoundExpr& expr, const HDNTValue* left, const HDNTValue* right) {
    if (!right || (!left && !isUnary(expr.op()))) throw HEXAlgException("HDNTNetlist: invalid nullptr expression");
    const Value b = right->getPlainValue();
    const Value a = left ? left->getPlainValue() : b;
    if (a.index() != b.index()) throw HEXAlgException("HDNTNetlist: mismatched expression types");
    const auto operateOn = [&](const auto& plain) {
        return expr.operate(std::get<std::decay_t<decltype(plain)>>(a), plain);
    };
    return std::unique_ptr<HDNTValue>(std::visit(operateOn, b));
}

// What has been found out of operands, the last one on top.
template <typename Result>
Result taken(std::vector<Result>& results, const HDNTExpr* operand) {
    if (!operand) return Result();
    Result top = std::move(results.back());
    results.pop_back();
    return top;
}

DerivedType typeOfLeaf(const HDNTExpr& expr) {
    if (nodeCast<HDNTValue>(&expr)) return {TypeState::Known, expr.exprType()};
    const auto* const functionCall = nodeCast<HDNTFunctionCall>(&expr);
    const HDNTFunctionDecl* const decl = functionCall ? functionCall->getDecl() : nullptr;
    if (!decl) return {TypeState::Unknown};
    return {TypeState::Known, static_cast<unsigned>(decl->getType())};
}

// A class of the host's own computes its value itself, and keeps it where this finds it.
std::unique_ptr<HDNTValue> valueOfHosts(HDNTExpr& expr) {
    expr.evaluate();
    if (const auto* const value = nodeCast<HDNTValue>(expr.getEvaluatedExpr())) return copyOf(*value);
    throw HEXAlgException("HDNTNetlist: the expression gives no constant");
}

std::unique_ptr<HDNTValue> valueOfLeaf(const HDNTExpr& expr, Results results) {
    if (const auto* const value = nodeCast<HDNTValue>(&expr)) return copyOf(*value);
    if (const auto* const functionCall = nodeCast<HDNTFunctionCall>(&expr)) return call(*functionCall, results);
    return valueOfHosts(const_cast<HDNTExpr&>(expr));
}

std::unique_ptr<HDNTValue> compute(const HDNTExpr& expr, Results results) {
    const auto* const outermost = nodeCast<HDNTCompoundExpr>(&expr);
    if (!outermost) return valueOfLeaf(expr, results);
    std::vector<std::unique_ptr<HDNTValue>> values;
    walkOver(
        *outermost, [&](const HDNTExpr& leaf) { values.push_back(valueOfLeaf(leaf, results)); },
        [&](const HDNTCompoundExpr& operation) {
            const std::unique_ptr<HDNTValue> right = taken(values, operation.rhs());
            const std::unique_ptr<HDNTValue> left = taken(values, operation.lhs());
            values.push_back(operate(operation, left.get(), right.get()));
            if (results == Results::stored) store(operation, values.back().get());
        });
    return std::move(values.back());
}

void forgetResults(HDNTExpr& expr) {
    const auto forgetLeaf = [](HDNTExpr& leaf) {
        const auto* const functionCall = nodeCast<HDNTFunctionCall>(&leaf);
        if (!functionCall) return;
        leaf.setEvaluatedExpr(nullptr);
        for (HDNTExpr* actual : functionCall->actuals()) forgetResults(*actual);
    };
    const auto* const outermost = nodeCast<HDNTCompoundExpr>(&expr);
    if (!outermost) return forgetLeaf(expr);
    walkOver(*outermost, forgetLeaf, [](HDNTCompoundExpr& operation) { operation.setEvaluatedExpr(nullptr); });
}

} // namespace

DerivedType typeOfOperation(const HDNTCompoundExpr& expr) {
    const DerivedType left = expr.lhs() ? typeOf(*expr.lhs()) : DerivedType();
    const DerivedType right = expr.rhs() ? typeOf(*expr.rhs()) : DerivedType();
    return combine(expr, expr.lhs() ? &left : nullptr, expr.rhs() ? &right : nullptr);
}

DerivedType typeOf(const HDNTExpr& expr) {
    const auto* const outermost = nodeCast<HDNTCompoundExpr>(&expr);
    if (!outermost) return typeOfLeaf(expr);
    if (outermost->typeState() != TypeState::NotDerived) return {outermost->typeState(), outermost->exprType()};
    std::vector<DerivedType> types;
    walkOver(
        *outermost, [&](const HDNTExpr& leaf) { types.push_back(typeOfLeaf(leaf)); },
        [&](const HDNTCompoundExpr& operation) {
            const DerivedType right = taken(types, operation.rhs());
            const DerivedType left = taken(types, operation.lhs());
            types.push_back(combine(operation, operation.lhs() ? &left : nullptr, operation.rhs() ? &right : nullptr));
        });
    return types.back();
}

std::unique_ptr<HDNTValue> evaluate(const HDNTExpr& expr) { return compute(expr, Results::passed); }

std::unique_ptr<HDNTValue> valueOf(const HDNTExpr& expr) {
    std::unique_ptr<HDNTValue> value = evaluate(expr);
    if (!value) throw HEXAlgException("HDNTNetlist: invalid nullptr expression");
    return value;
}

void evaluateAndStore(HDNTExpr& expr) {
    forgetResults(expr);
    compute(expr, Results::stored);
}

bool isTrue(const HDNTValue& value) {
    if (const auto* const number = nodeCast<HDNTIntConstant>(&value)) return number->getValue() != 0;
    if (const auto* const number = nodeCast<HDNTDoubleConstant>(&value)) return number->getValue() != 0.0;
    return HDNTValue::getBoolValue(&value);
}

} // namespace hdnt::netlist
