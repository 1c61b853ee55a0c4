#pragma once

#include "hdnt/model/Value.h"

#include <pybind11/pybind11.h>

#include <optional>

class HDNTProperty;

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
void addAuthoring(py::module_& module);

/// A bool, float, str or int as a value for a property, which may be null; nothing for a number that is too large.
/// Throws TypeError for anything else.
std::optional<Value> valueFor(const HDNTProperty* property, py::handle value);
/// As Python writes a value that was refused, or its type where that cannot be.
std::string writtenText(py::handle value);

} // namespace hdnt::python
