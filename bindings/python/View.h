#pragma once

#include "bindings/python/Convert.h"
#include "bindings/shared/Listing.h"

namespace hdnt::python {

using scripts::Listing;

/// A list as Python sees it: a sequence that is also asked by name.
PyObject* makeView(PyObject* owner, const Listing& kind);
/// Tuple of the names of what a list of the owner holds.
PyObject* namesOf(PyObject* owner, const Listing& kind);
/// An iterator over the names of a library's own blocks.
PyObject* iterateNames(PyObject* library);

template <const Listing& Kind>
PyObject* viewOf(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return makeView(self, Kind);
    });
}

void addViews(py::module_& module);

} // namespace hdnt::python
