#include "bindings/python/View.h"

#include <algorithm>
#include <cstdlib>

namespace hdnt::python {

namespace {

struct View {
    PyObject_HEAD PyObject* owner;
    const Listing* kind;
};

struct Iterator {
    PyObject_HEAD PyObject* owner;
    const Listing* kind;
    size_t next;
    bool names;
};

PyTypeObject* viewType = nullptr;
PyTypeObject* iteratorType = nullptr;

View* viewAt(PyObject* self) { return reinterpret_cast<View*>(self); }

template <typename Object>
void releaseOwner(PyObject* self) {
    PyTypeObject* const type = Py_TYPE(self);
    Py_DECREF(reinterpret_cast<Object*>(self)->owner);
    PyObject_Free(self);
    Py_DECREF(type);
}

PyObject* makeIterator(PyObject* owner, const Listing& kind, bool names) {
    auto* const iterator = PyObject_New(Iterator, iteratorType);
    if (!iterator) throw py::error_already_set();
    iterator->owner = Py_NewRef(owner);
    iterator->kind = &kind;
    iterator->next = 0;
    iterator->names = names;
    return reinterpret_cast<PyObject*>(iterator);
}

PyObject* iterate(PyObject* self) noexcept {
    return guarded([&] {
        const HandleInUse use(viewAt(self)->owner);
        return makeIterator(viewAt(self)->owner, *viewAt(self)->kind, false);
    });
}

PyObject* nextOf(PyObject* self) noexcept {
    return guarded([&]() -> PyObject* {
        auto* const iterator = reinterpret_cast<Iterator*>(self);
        const HandleInUse use(iterator->owner);
        if (iterator->next >= iterator->kind->size(*use.node())) return nullptr;
        HDNTNode* const node = iterator->kind->at(*use.node(), iterator->next++);
        return iterator->names ? toPython(scripts::nameOf(*node)) : wrap(node, use.library());
    });
}

Py_ssize_t sizeOf(PyObject* self) noexcept {
    try {
        const HandleInUse use(viewAt(self)->owner);
        return static_cast<Py_ssize_t>(viewAt(self)->kind->size(*use.node()));
    } catch (...) {
        setPythonError();
        return -1;
    }
}

PyObject* slice(View& view, const HandleInUse& use, PyObject* key) {
    Py_ssize_t start = 0, stop = 0, step = 0;
    if (PySlice_Unpack(key, &start, &stop, &step) < 0) throw py::error_already_set();
    const auto size = static_cast<Py_ssize_t>(view.kind->size(*use.node()));
    const Py_ssize_t length = PySlice_AdjustIndices(size, &start, &stop, step);
    py::list list(static_cast<size_t>(length));
    for (Py_ssize_t i = 0; i < length; ++i)
        PyList_SET_ITEM(list.ptr(), i,
                        wrap(view.kind->at(*use.node(), static_cast<size_t>(start + i * step)), use.library()));
    return list.release().ptr();
}

PyObject* subscript(PyObject* self, PyObject* key) noexcept {
    return guarded([&]() -> PyObject* {
        View& view = *viewAt(self);
        const HandleInUse use(view.owner);
        if (PyUnicode_Check(key)) {
            HDNTNode* const node = view.kind->find(*use.node(), textOf(key));
            if (node) return wrap(node, use.library());
            PyErr_SetObject(PyExc_KeyError, key);
            return nullptr;
        }
        if (PySlice_Check(key)) return slice(view, use, key);
        Py_ssize_t index = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (index == -1 && PyErr_Occurred()) return nullptr;
        const auto size = static_cast<Py_ssize_t>(view.kind->size(*use.node()));
        if (index < 0) index += size;
        if (index < 0 || index >= size) throw py::index_error(std::string(view.kind->name) + " index out of range");
        return wrap(view.kind->at(*use.node(), static_cast<size_t>(index)), use.library());
    });
}

// Of the sequence protocol: Python has added the length to a negative index already.
PyObject* itemAt(PyObject* self, Py_ssize_t index) noexcept {
    return guarded([&] {
        const HandleInUse use(viewAt(self)->owner);
        if (index < 0 || static_cast<size_t>(index) >= viewAt(self)->kind->size(*use.node()))
            throw py::index_error(std::string(viewAt(self)->kind->name) + " index out of range");
        return wrap(viewAt(self)->kind->at(*use.node(), static_cast<size_t>(index)), use.library());
    });
}

int contains(PyObject* self, PyObject* item) noexcept {
    try {
        const Listing& kind = *viewAt(self)->kind;
        const HandleInUse use(viewAt(self)->owner);
        if (PyUnicode_Check(item)) return kind.find(*use.node(), textOf(item)) ? 1 : 0;
        if (!isHandle(item)) return 0;
        const HDNTNode* const node = reinterpret_cast<Handle*>(item)->native.node();
        for (size_t i = 0; node && i < kind.size(*use.node()); ++i)
            if (kind.at(*use.node(), i) == node) return 1;
        return 0;
    } catch (...) {
        setPythonError();
        return -1;
    }
}

PyObject* compare(PyObject* self, PyObject* other, int operation) noexcept {
    if (Py_TYPE(other) != viewType || (operation != Py_EQ && operation != Py_NE)) Py_RETURN_NOTIMPLEMENTED;
    const bool same = viewAt(self)->owner == viewAt(other)->owner && viewAt(self)->kind == viewAt(other)->kind;
    return PyBool_FromLong(same == (operation == Py_EQ) ? 1 : 0);
}

Py_hash_t hashOf(PyObject* self) noexcept {
    const auto mixed = reinterpret_cast<uintptr_t>(viewAt(self)->owner) / 16 * 31 +
                       reinterpret_cast<uintptr_t>(viewAt(self)->kind) / 16;
    const auto hash = static_cast<Py_hash_t>(mixed);
    return hash == -1 ? -2 : hash;
}

PyObject* namesIn(PyObject* self, void*) noexcept {
    return guarded([&] { return namesOf(viewAt(self)->owner, *viewAt(self)->kind); });
}

// The first few names, too. Of a view that is dead only what it was.
std::string contents(const View& view) {
    constexpr size_t most = 5;
    try {
        const HandleInUse use(view.owner);
        const size_t size = view.kind->size(*use.node());
        std::string text = " (" + std::to_string(size) + (size > 0 ? "): " : ")");
        for (size_t i = 0; i < std::min(size, most); ++i)
            text += (i > 0 ? ", '" : "'") + scripts::nameOf(*view.kind->at(*use.node(), i)) + "'";
        return size > most ? text + ", ..." : text;
    } catch (const Gone&) {
        return "";
    }
}

PyObject* representView(PyObject* self) noexcept {
    return guarded([&] {
        const View& view = *viewAt(self);
        return toPython("<" + std::string(view.kind->name) + " of " + describe(reinterpret_cast<Handle*>(view.owner)) +
                        contents(view) + ">");
    });
}

} // namespace

PyObject* makeView(PyObject* owner, const Listing& kind) {
    auto* const view = PyObject_New(View, viewType);
    if (!view) throw py::error_already_set();
    view->owner = Py_NewRef(owner);
    view->kind = &kind;
    return reinterpret_cast<PyObject*>(view);
}

PyObject* namesOf(PyObject* owner, const Listing& kind) {
    const HandleInUse use(owner);
    std::vector<std::string> names(kind.size(*use.node()));
    for (size_t i = 0; i < names.size(); ++i) names[i] = scripts::nameOf(*kind.at(*use.node(), i));
    return toPython(names);
}

PyObject* iterateNames(PyObject* library) { return makeIterator(library, scripts::ownBlocks, true); }

template <typename Function>
static PyType_Slot slot(int id, Function* function) {
    return {id, reinterpret_cast<void*>(function)};
}

static PyTypeObject* newType(const char* name, int size, PyType_Slot* slots) {
    PyType_Spec spec = {name, size, 0, static_cast<unsigned>(Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION),
                        slots};
    PyObject* const type = PyType_FromSpec(&spec);
    if (!type) throw py::error_already_set();
    return reinterpret_cast<PyTypeObject*>(type);
}

void addViews(py::module_& module) {
    static PyGetSetDef fields[] = {
        {"names", namesIn, nullptr, "Tuple of the names of what is in it, in its order.", nullptr}, noMoreFields};
    PyType_Slot viewSlots[] = {
        {Py_tp_getset, fields},
        slot(Py_tp_dealloc, releaseOwner<View>),
        slot(Py_tp_iter, iterate),
        slot(Py_tp_repr, representView),
        slot(Py_tp_hash, hashOf),
        slot(Py_tp_richcompare, compare),
        slot(Py_mp_length, sizeOf),
        slot(Py_mp_subscript, subscript),
        slot(Py_sq_length, sizeOf),
        slot(Py_sq_item, itemAt),
        slot(Py_sq_contains, contains),
        {Py_tp_doc, const_cast<char*>("A sequence of model objects that is also asked by name.")},
        {0, nullptr}};
    viewType = newType("hdnt.View", sizeof(View), viewSlots);
    PyType_Slot iteratorSlots[] = {slot(Py_tp_dealloc, releaseOwner<Iterator>),
                                   slot(Py_tp_iter, PyObject_SelfIter),
                                   slot(Py_tp_iternext, nextOf),
                                   {0, nullptr}};
    iteratorType = newType("hdnt._Iterator", sizeof(Iterator), iteratorSlots);
    module.attr("View") = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(viewType));
}

} // namespace hdnt::python
