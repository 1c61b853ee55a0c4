#pragma once

#include "hdnt/platform/HATAttrTypes.h"

#include <pybind11/pybind11.h>

namespace hdnt::python {

namespace py = pybind11;

// Each adds its types and functions to the module.
void addBlockTypes(py::module_& module);
void addPropertyType(py::module_& module);
void addNetlistTypes(py::module_& module);
void addExpressionTypes(py::module_& module);
void addLibraryType(py::module_& module);
void addTexts(py::module_& module);
void addVisiting(py::module_& module);
void addExpanding(py::module_& module);

/// "int" and so on, made once; borrowed.
PyObject* typeWord(HATAttrTypes::AttrType type);

} // namespace hdnt::python
