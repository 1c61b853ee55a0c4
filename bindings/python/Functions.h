#pragma once

#include "bindings/python/Convert.h"
#include "bindings/python/LoadSection.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTValue.h"

#include <exception>
#include <utility>

namespace hdnt::python {

/// A dict of Python callables as functions of mappings, for the life of the object.
class PythonFunctions {
public:
    /// None is an empty dict. With the interpreter lock.
    explicit PythonFunctions(const py::object& functions);
    PythonFunctions(const PythonFunctions&) = delete;

    HDNTFunctionTable& table() { return table_; }
    /// What a callable raised last; thrown again by withErrorsOf, with the interpreter lock.
    std::exception_ptr& error() { return error_; }

private:
    static py::object call(py::handle function, const std::vector<const HDNTValue*>& arguments);

    HDNTFunctionTable table_;
    std::vector<py::object> held_;
    std::exception_ptr error_;
};

/// The value of a constant.
py::object valueOf(const HDNTValue& value);

/// Runs something that may call the functions, in a section; a callable's exception comes out as it was raised.
template <typename Work>
void withErrorsOf(PythonFunctions& functions, const std::string& of, LoadSection::Kind kind, Work&& work) {
    scripts::withFunctions(interpreterLock(), kind, functions.table(), of, work, [&] {
        if (functions.error()) std::rethrow_exception(std::exchange(functions.error(), nullptr));
    });
}

} // namespace hdnt::python
