// The extension module hdnt._hdnt. hdnt/__init__.py is what scripts import.
#include "bindings/python/Convert.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"

namespace hdnt::python {

// After this nobody may touch a handle: the interpreter has freed, or will never free, their memory.
static void forgetHandles() { wpx::pyinfra::py_native_cache::all().clear(); }

static void fill(py::module_& module) {
    if (PyInterpreterState_Get() != PyInterpreterState_Main())
        throw py::import_error("hdnt works in the main interpreter of a process only");
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is pybind11's
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            if (error) std::rethrow_exception(error);
        } catch (...) {
            setPythonError();
        }
    });
    py::options options;                   // for this scope
    options.disable_function_signatures(); // `define` says them as `inspect` reads them
    module.attr("__version__") = HDNT_VERSION;
    makeNodeType(module);
    addViews(module);
    addLibraryType(module);
    addBlockTypes(module);
    addPropertyType(module);
    addNetlistTypes(module);
    addExpressionTypes(module);
    addTexts(module);
    addVisiting(module);
    addExpanding(module);
    addAuthoring(module);
    py::module_::import("atexit").attr("register")(py::cpp_function(beginEnd));
    Py_AtExit(forgetHandles);
}

} // namespace hdnt::python

PYBIND11_MODULE(_hdnt, module) { hdnt::python::fill(module); }
