#pragma once

#include "hdnt/netlist/HDNTExpansion.h"

#include <pybind11/pybind11.h>

#include <optional>

class HDNTProperty;

namespace hdnt::python {

/// A bool, float, str or int as a value for a property, which may be null; nothing for a number that is too large.
/// Throws TypeError for anything else.
std::optional<HDNTExpansion::Value> valueFor(const HDNTProperty* property, pybind11::handle value);

} // namespace hdnt::python
