#pragma once

#include "bindings/python/Handle.h"
#include "bindings/shared/Fields.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/model/Value.h"

#include <concepts>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

namespace hdnt::python {

/// Sets the Python error for the exception that is being handled.
void setPythonError() noexcept;

/// Runs what gives a new reference; exceptions become Python's.
template <typename Work>
PyObject* guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (...) {
        setPythonError();
        return nullptr;
    }
}

// Values as Python's own, new references. Null, and an empty OrNone, is None. Texts may hold any bytes: those that are
// no UTF-8 come as lone surrogates, as for file names.

using scripts::OrNone;
using scripts::Word;

PyObject* toPython(std::string_view text);
inline PyObject* toPython(const std::string& text) { return toPython(std::string_view(text)); }
inline PyObject* toPython(const char* text) { return text ? toPython(std::string_view(text)) : Py_NewRef(Py_None); }
inline PyObject* toPython(const OrNone& value) {
    return value.text.empty() ? Py_NewRef(Py_None) : toPython(value.text);
}
/// The same object each time.
PyObject* toPython(Word word);
inline PyObject* toPython(bool value) { return PyBool_FromLong(value ? 1 : 0); }
inline PyObject* toPython(double value) { return PyFloat_FromDouble(value); }
inline PyObject* toPython(py::object value) { return value.release().ptr(); }
PyObject* toPython(const yyltype& location);
PyObject* toPython(const Place& place);
inline PyObject* toPython(std::nullptr_t) { return Py_NewRef(Py_None); }

template <std::integral Number>
requires(!std::same_as<Number, bool>) PyObject* toPython(Number value) {
    return PyLong_FromLongLong(static_cast<long long>(value));
}

inline PyObject* toPython(const Value& value) {
    return std::visit([](const auto& plain) { return toPython(plain); }, value);
}
template <typename Item>
PyObject* toPython(const std::vector<Item>& items) {
    py::tuple tuple(items.size());
    for (size_t i = 0; i < items.size(); ++i)
        PyTuple_SET_ITEM(tuple.ptr(), static_cast<Py_ssize_t>(i), toPython(items[i]));
    return tuple.release().ptr();
}
template <typename Item>
PyObject* toPython(const std::optional<Item>& item) {
    return item ? toPython(*item) : Py_NewRef(Py_None);
}

/// Takes a reference over.
inline py::object object(PyObject* reference) { return py::reinterpret_steal<py::object>(reference); }
inline py::object textObject(std::string_view text) { return object(toPython(text)); }
py::object orNone(std::string_view text);
py::object orNone(int number);
/// The bytes behind a str, as toPython made them. Throws for anything else.
std::string textOf(py::handle text);

/// A class of hdnt._data.
py::object dataClass(const char* name);
/// A path as the system has it. Throws TypeError for what is none.
std::string pathTextOf(const py::object& path);
/// The same of what is there. Throws OSError when nothing is.
std::string pathOf(const py::object& path);

// Fields of types: getters made of the model's own operations.

using scripts::Accessor;
using scripts::NodeList;
using scripts::NodePointer;

/// A tuple of the handles of what a list holds. The list is looked at only once the tuple is there, since making that
/// may run Python code.
template <typename List>
PyObject* wrapAll(const List& list, Handle* library) {
    for (;;) {
        py::tuple tuple(list.size());
        if (tuple.size() != list.size()) continue;
        for (size_t i = 0; i < list.size(); ++i)
            PyTuple_SET_ITEM(tuple.ptr(), static_cast<Py_ssize_t>(i), wrap(list[i], library));
        return tuple.release().ptr();
    }
}

template <auto F>
PyObject* getter(PyObject* self, void*) noexcept {
    using Node = typename Accessor<decltype(F)>::Node;
    using Result = typename Accessor<decltype(F)>::Result;
    return guarded([&]() -> PyObject* {
        const HandleInUse use(self);
        auto& node = use.as<Node>();
        if constexpr (NodePointer<std::remove_cvref_t<Result>>) return wrap(std::invoke(F, node), use.library());
        else if constexpr (NodeList<std::remove_cvref_t<Result>>) return wrapAll(std::invoke(F, node), use.library());
        else return toPython(std::invoke(F, node));
    });
}

constexpr PyGetSetDef noMoreFields{nullptr, nullptr, nullptr, nullptr, nullptr};

/// The type for a kind; fields end with noMoreFields and live as long as the process. A kind of Other is a common base.
py::object makeType(py::module_& module, const char* name, HDNTNodeKind kind, PyGetSetDef* fields,
                    const char* description, PyTypeObject* base = nodeType(), std::vector<PyType_Slot> more = {});

/// The handle behind an argument that must be of a type. Throws TypeError.
Handle* handleOf(py::handle object, PyTypeObject* type);

} // namespace hdnt::python
