#pragma once

#include "bindings/python/Convert.h"

namespace hdnt::python {

/// A list of model objects that belongs to one, as Python sees it: a sequence that is also asked by name.
struct ViewKind {
    const char* name;
    size_t (*size)(HDNTNode& owner);
    HDNTNode* (*at)(HDNTNode& owner, size_t index);
    /// Null when there is none.
    HDNTNode* (*find)(HDNTNode& owner, const std::string& name);
};

extern const ViewKind ownBlocks;
extern const ViewKind allBlocks;
extern const ViewKind blockPins;
extern const ViewKind blockBuses;
extern const ViewKind blockProperties;
extern const ViewKind busPins;
extern const ViewKind busProperties;
extern const ViewKind pinProperties;

PyObject* makeView(PyObject* owner, const ViewKind& kind);
/// An iterator over the names of a library's own blocks.
PyObject* iterateNames(PyObject* library);

template <const ViewKind& Kind>
PyObject* viewOf(PyObject* self, void*) noexcept {
    return guarded([&] {
        const Use use(self);
        return makeView(self, Kind);
    });
}

void addViews(py::module_& module);

} // namespace hdnt::python
