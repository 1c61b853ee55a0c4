#include "bindings/python/Handle.h"

#include "bindings/python/Convert.h"
#include "bindings/python/LoadSection.h"
#include "hdnt/model/HDNTLibrary.h"

#include <structmember.h>

#include <array>
#include <set>

namespace wpx::pyinfra {

using hdnt::python::Handle;

wpx::tcltasks::native_caches& py_native_cache::all() {
    static auto* const caches = new wpx::tcltasks::native_caches;
    return *caches;
}

Handle* py_native_cache::find(const HDNTNode& node) {
    wpx::tcltasks::native_handle* const native = all().of(node.getKind()).find(node);
    if (!native) return nullptr;
    return reinterpret_cast<Handle*>(reinterpret_cast<char*>(native) - offsetof(Handle, native));
}

} // namespace wpx::pyinfra

namespace hdnt::python {

using wpx::pyinfra::py_native_cache;

static PyTypeObject* commonType = nullptr;
static std::array<PyTypeObject*, static_cast<size_t>(HDNTNodeKind::StringConstant) + 1> types{};

// Libraries that Python has an object for.
static std::set<Handle*>& libraries() {
    static auto* const all = new std::set<Handle*>;
    return *all;
}

PyTypeObject* nodeType() { return commonType; }
PyTypeObject* typeOf(HDNTNodeKind kind) {
    PyTypeObject* const type = types[static_cast<size_t>(kind)];
    return type ? type : commonType;
}
void setType(HDNTNodeKind kind, PyTypeObject* type) { types[static_cast<size_t>(kind)] = type; }

static Handle* parentOf(const Handle* library) { return reinterpret_cast<Handle*>(library->state->parentObject); }

bool isDead(const Handle* handle) {
    const Handle* const library = handle->library ? handle->library : handle;
    return !handle->native.node() || library->state->isGone();
}

HandleInUse::HandleInUse(Handle* handle) : library_(handle->library ? handle->library : handle) {
    if (handle->kind >= HDNTNodeKind::Netlist) LoadSection::waitForChanges();
    node_ = handle->native.node();
    if (isDead(handle))
        throw Gone("the library of this " + std::string(Py_TYPE(handle)->tp_name).substr(5) +
                   " was closed, or the object was replaced");
    library_->state->begin();
    Py_INCREF(library_);
}

static void deleteOwned(std::unique_ptr<HDNTLibrary> last) {
    if (isEnding() && !LoadSection::isFree()) { // by a thread that will never go on
        last.release();                         // NOLINT(bugprone-unused-return-value): the process ends, too
        return;
    }
    const LoadSection section(LoadSection::Quiet);
    last.reset();
}

HandleInUse::~HandleInUse() {
    const bool failing = PyErr_Occurred() != nullptr;
    PyObject *type = nullptr, *value = nullptr, *trace = nullptr;
    library_->state->end([&](std::unique_ptr<HDNTLibrary> last) {
        if (failing) PyErr_Fetch(&type, &value, &trace);
        deleteOwned(std::move(last));
        if (failing) PyErr_Restore(type, value, trace);
    });
    Py_DECREF(library_);
}

static Handle* create(HDNTNode& node) {
    PyTypeObject* const type = typeOf(node.getKind());
    auto* const handle = PyObject_New(Handle, type);
    if (!handle) throw py::error_already_set();
    new (&handle->native) wpx::tcltasks::native_handle;
    handle->library = nullptr;
    handle->state = nullptr;
    handle->kind = node.getKind();
    handle->weakReferences = nullptr;
    try {
        py_native_cache::all().of(node.getKind()).enter(node, handle->native);
    } catch (...) {
        Py_DECREF(handle);
        throw;
    }
    return handle;
}

PyObject* wrapLibrary(HDNTLibrary& library, std::unique_ptr<HDNTLibrary> owned) {
    if (Handle* const known = py_native_cache::find(library)) return Py_NewRef(reinterpret_cast<PyObject*>(known));
    HDNTLibrary* const below = library.getParentLibrary();
    const py::object parent = below ? py::reinterpret_steal<py::object>(wrapLibrary(*below)) : py::object();
    Handle* const handle = create(library);
    handle->state = new LibraryState(handle->native, parent ? reinterpret_cast<Handle*>(parent.ptr())->state : nullptr);
    handle->state->owned = std::move(owned);
    handle->state->parentObject = parent.inc_ref().ptr();
    handle->state->warnings = py::tuple();
    libraries().insert(handle);
    return reinterpret_cast<PyObject*>(handle);
}

Handle* libraryOf(const HDNTDecl& declared, Handle* library) {
    while (library && library->native.node() != declared.getParent()) library = parentOf(library);
    return library;
}

// Nothing here runs Python code, so that no node can go between the reading of its pointer and its wrapping.
PyObject* wrap(HDNTNode* node, Handle* library) {
    if (!node) Py_RETURN_NONE;
    if (Handle* const known = py_native_cache::find(*node)) return Py_NewRef(reinterpret_cast<PyObject*>(known));
    if (node->getKind() == HDNTNodeKind::Library) return wrapLibrary(static_cast<HDNTLibrary&>(*node));
    const bool isDeclared = node->getKind() == HDNTNodeKind::Block || node->getKind() == HDNTNodeKind::FunctionDecl;
    if (isDeclared) library = libraryOf(static_cast<HDNTDecl&>(*node), library);
    if (!library) throw Gone("the library of a block or function is not open");
    Handle* const handle = create(*node);
    handle->library = reinterpret_cast<Handle*>(Py_NewRef(reinterpret_cast<PyObject*>(library)));
    return reinterpret_cast<PyObject*>(handle);
}

static void release(PyObject* self) {
    auto* const handle = reinterpret_cast<Handle*>(self);
    py_native_cache::all().of(handle->kind).drop(handle->native);
    if (handle->weakReferences) PyObject_ClearWeakRefs(self);
    PyTypeObject* const type = Py_TYPE(self);
    if (handle->state) {
        libraries().erase(handle);
        PyObject *errorType = nullptr, *value = nullptr, *trace = nullptr;
        PyErr_Fetch(&errorType, &value, &trace);
        if (handle->state->owned) deleteOwned(std::move(handle->state->owned));
        Py_XDECREF(handle->state->parentObject);
        delete handle->state;
        PyErr_Restore(errorType, value, trace);
    }
    Py_XDECREF(reinterpret_cast<PyObject*>(handle->library));
    std::destroy_at(&handle->native);
    PyObject_Free(self);
    Py_DECREF(type);
}

void closeLibrary(Handle* library) { library->state->close(deleteOwned); }

bool closeManagedLibraries() {
    for (const Handle* library : libraries())
        if (!library->state->owned && library->state->running > 0) return false;
    for (const Handle* library : libraries())
        if (!library->state->owned) library->state->closed = true;
    return true;
}

static PyObject* isAlive(PyObject* self, void*) {
    return PyBool_FromLong(isDead(reinterpret_cast<Handle*>(self)) ? 0 : 1);
}

static PyObject* getLibrary(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return Py_NewRef(reinterpret_cast<PyObject*>(use.library()));
    });
}

static PyObject* getLocation(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        const auto location = use.node()->copyOfLocation();
        return location ? toPython(*location) : Py_NewRef(Py_None);
    });
}

void makeNodeType(py::module_& module) {
    static PyGetSetDef fields[] = {
        {"alive", isAlive, nullptr, "Whether the object is still there; the one question that a dead handle answers.",
         nullptr},
        {"library", getLibrary, nullptr, "The library that the object belongs to.", nullptr},
        {"location", getLocation, nullptr, "Where it was declared, a Location; None when that is not known.", nullptr},
        {nullptr, nullptr, nullptr, nullptr, nullptr}};
    static PyMemberDef members[] = {
        {"__weaklistoffset__", T_PYSSIZET, offsetof(Handle, weakReferences), READONLY, nullptr},
        {nullptr, 0, 0, 0, nullptr}};
    static PyType_Slot slots[] = {{Py_tp_dealloc, reinterpret_cast<void*>(release)},
                                  {Py_tp_repr, reinterpret_cast<void*>(represent)},
                                  {Py_tp_getset, fields},
                                  {Py_tp_members, members},
                                  {Py_tp_doc, const_cast<char*>("What stands for an object of a library.")},
                                  {0, nullptr}};
    static PyType_Spec spec = {"hdnt.Node", sizeof(Handle), 0,
                               Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
    const py::object type = py::reinterpret_steal<py::object>(PyType_FromSpec(&spec));
    if (!type) throw py::error_already_set();
    commonType = reinterpret_cast<PyTypeObject*>(type.inc_ref().ptr());
    module.attr("Node") = type;
}

} // namespace hdnt::python
