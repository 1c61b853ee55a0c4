#include "bindings/python/Functions.h"

#include <climits>

namespace hdnt::python {

py::object valueOf(const HDNTValue& value) {
    return py::reinterpret_steal<py::object>(toPython(value.getPlainValue()));
}

static std::unique_ptr<HDNTValue> constantOf(const py::object& value) {
    if (value.is_none()) return nullptr;
    if (py::isinstance<py::bool_>(value)) return std::make_unique<HDNTBoolConstant>(value.cast<bool>());
    if (py::isinstance<py::float_>(value)) return std::make_unique<HDNTDoubleConstant>(value.cast<double>());
    if (py::isinstance<py::int_>(value)) {
        int overflow = 0;
        const long number = PyLong_AsLongAndOverflow(value.ptr(), &overflow);
        if (overflow != 0 || number > INT_MAX || number < INT_MIN)
            throw py::value_error("a function of a mapping gave a number of more than 32 bits");
        return std::make_unique<HDNTIntConstant>(static_cast<int>(number));
    }
    return std::make_unique<HDNTStringConstant>(textOf(value));
}

PythonFunctions::PythonFunctions(const py::object& functions) {
    if (functions.is_none()) return;
    const py::dict known(functions);
    for (const auto& [name, function] : known) {
        // A plain pointer, since the library copies the function without the interpreter lock.
        const py::handle callable = held_.emplace_back(py::reinterpret_borrow<py::object>(function));
        table_.add(textOf(name),
                   [this, callable](const HDNTFunctionCall&,
                                    const std::vector<const HDNTValue*>& values) -> std::unique_ptr<HDNTValue> {
                       const InterpreterLock lock;
                       try {
                           return constantOf(call(callable, values));
                       } catch (const std::exception&) {
                           error_ = std::current_exception();
                       }
                       throw std::runtime_error("a function raised an exception");
                   });
    }
}

py::object PythonFunctions::call(py::handle function, const std::vector<const HDNTValue*>& arguments) {
    py::tuple values(arguments.size());
    for (size_t i = 0; i < arguments.size(); ++i) values[i] = valueOf(*arguments[i]);
    return callBack(function, values);
}

} // namespace hdnt::python
