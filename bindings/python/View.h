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

template <auto Get>
PyGetSetDef entry(const scripts::Field<Get>& field) {
    return {field.name, getter<Get>, nullptr, field.description, nullptr};
}
template <const Listing& List, HDNTNodeKind Kind>
PyGetSetDef entry(const scripts::ListField<List, Kind>& field) {
    return {field.name, viewOf<List>, nullptr, field.description, nullptr};
}
/// The fields of one of the shared tables, and more. They live as long as the process.
template <const auto& Table>
PyGetSetDef* fieldsOf(std::initializer_list<PyGetSetDef> more = {}) {
    static std::vector<PyGetSetDef> all = [&] {
        auto list = std::apply([](const auto&... fields) { return std::vector{entry(fields)...}; }, Table);
        list.insert(list.end(), more);
        list.push_back(noMoreFields);
        return list;
    }();
    return all.data();
}

} // namespace hdnt::python
