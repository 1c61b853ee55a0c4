#include "bindings/python/Define.h"
#include "bindings/python/Functions.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/MappingFields.h"

namespace hdnt::python {

namespace {

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
        makeType(module, "Expression", HDNTNodeKind::Other, fieldsOf<scripts::expressionFields>(),
                 "An expression of a mapping.", nodeType(), {{Py_tp_str, reinterpret_cast<void*>(textOfExpression)}});
    auto* const type = reinterpret_cast<PyTypeObject*>(base.ptr());
    makeType(module, "Call", HDNTNodeKind::FunctionCall, fieldsOf<scripts::callFields>(), "A call of a function.",
             type);
    makeType(module, "Operation", HDNTNodeKind::CompoundExpr, fieldsOf<scripts::operationFields>(),
             "An operator with its operands.", type);
    makeType(module, "IntConstant", HDNTNodeKind::IntConstant, fieldsOf<scripts::constantFields>(), "A whole number.",
             type);
    makeType(module, "DoubleConstant", HDNTNodeKind::DoubleConstant, fieldsOf<scripts::constantFields>(),
             "A number with a point.", type);
    makeType(module, "BoolConstant", HDNTNodeKind::BoolConstant, fieldsOf<scripts::constantFields>(), "TRUE or FALSE.",
             type);
    makeType(module, "StringConstant", HDNTNodeKind::StringConstant, fieldsOf<scripts::constantFields>(), "A text.",
             type);
    define(
        base, "evaluate", "The value. `functions` gives by name what calls are answered with.",
        [base](const py::object& self, const py::object& functions) { return evaluate(base, self, functions); },
        py::arg("functions") = py::none());
}

} // namespace hdnt::python
