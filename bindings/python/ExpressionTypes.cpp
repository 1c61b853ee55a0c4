#include "bindings/python/Define.h"
#include "bindings/python/Functions.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/shared/Text.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::python {

namespace {

Word typeName(HDNTExpr& expression) { return {typeWord(static_cast<HATAttrTypes::AttrType>(expression.exprType()))}; }

PyGetSetDef expressionFields[] = {field<typeName>("type", "The type of its value."), noMoreFields};

PyGetSetDef intFields[] = {field<&HDNTIntConstant::getValue>("value", "The number."), noMoreFields};
PyGetSetDef doubleFields[] = {field<&HDNTDoubleConstant::getValue>("value", "The number."), noMoreFields};
PyGetSetDef boolFields[] = {field<&HDNTBoolConstant::getValue>("value", "The truth value."), noMoreFields};
PyGetSetDef stringFields[] = {field<&HDNTStringConstant::getValue>("value", "The text."), noMoreFields};

PyGetSetDef callFields[] = {
    field<&HDNTFunctionCall::name>("name", "Name of the function."),
    field<&HDNTFunctionCall::actuals>("arguments", "Tuple of the expressions it is given."),
    field<&HDNTFunctionCall::isStatement>("is_statement", "Whether it stands as a statement."),
    field<&HDNTFunctionCall::getDecl>("declaration", "The declaration; None when there is none."), noMoreFields};

std::string_view sign(HDNTCompoundExpr& expression) { return words::operators.wordOf(expression.op()); }
PyGetSetDef operationFields[] = {
    field<sign>("operator", "As it is written: \"+\", \"&&\" and so on."),
    field<&HDNTCompoundExpr::lhs>("left", "The left operand; None for an operator of one operand."),
    field<&HDNTCompoundExpr::rhs>("right", "The right operand, or the only one."), noMoreFields};

PyObject* textOfExpression(PyObject* self) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return toPython(scripts::textOf(use.as<HDNTExpr>()));
    });
}

py::object evaluate(const py::object& type, const py::object& self, const py::object& functions) {
    Handle* const handle = handleOf(self, reinterpret_cast<PyTypeObject*>(type.ptr()));
    const HandleInUse use(handle);
    auto& expression = use.as<HDNTExpr>();
    PythonFunctions table(functions);
    py::object result = py::none();
    withErrorsOf(table, "", LoadSection::Quiet, [&] {
        expression.evaluate();
        const HDNTExpr* const value = expression.getEvaluatedExpr();
        const InterpreterLock lock;
        if (value) result = valueOf(*static_cast<const HDNTValue*>(value));
        if (value && value != &expression) expression.setEvaluatedExpr(nullptr);
    });
    return result;
}

} // namespace

void addExpressionTypes(py::module_& module) {
    const py::object base =
        makeType(module, "Expression", HDNTNodeKind::Other, expressionFields, "An expression of a mapping.", nodeType(),
                 {{Py_tp_str, reinterpret_cast<void*>(textOfExpression)}});
    auto* const type = reinterpret_cast<PyTypeObject*>(base.ptr());
    makeType(module, "Call", HDNTNodeKind::FunctionCall, callFields, "A call of a function.", type);
    makeType(module, "Operation", HDNTNodeKind::CompoundExpr, operationFields, "An operator with its operands.", type);
    makeType(module, "IntConstant", HDNTNodeKind::IntConstant, intFields, "A whole number.", type);
    makeType(module, "DoubleConstant", HDNTNodeKind::DoubleConstant, doubleFields, "A number with a point.", type);
    makeType(module, "BoolConstant", HDNTNodeKind::BoolConstant, boolFields, "TRUE or FALSE.", type);
    makeType(module, "StringConstant", HDNTNodeKind::StringConstant, stringFields, "A text.", type);
    define(
        base, "evaluate", "The value. `functions` gives by name what calls are answered with.",
        [base](const py::object& self, const py::object& functions) { return evaluate(base, self, functions); },
        py::arg("functions") = py::none());
}

} // namespace hdnt::python
