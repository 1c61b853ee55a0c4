#pragma once

#include "bindings/shared/OpenLibrary.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

namespace hdnt::python {

namespace py = pybind11;

using scripts::Gone;

/// What a Python library object is beyond its handle.
struct LibraryState : scripts::OpenLibrary {
    using OpenLibrary::OpenLibrary;
    PyObject* parentObject = nullptr; ///< Python object of the parent library, or null
    std::string path;
    py::object warnings; ///< tuple of diagnostics
};

/// Every Python object that stands for a model object. Those of a library keep its Python object alive, and so the
/// library, unless it is closed or belongs to the manager.
struct Handle {
    PyObject_HEAD wpx::tcltasks::native_handle native;
    Handle* library;     ///< owned reference; null in a library itself
    LibraryState* state; ///< null in anything but a library
    HDNTNodeKind kind;
    PyObject* weakReferences;
};

/// Keeps a handle's library from being deleted by a script while an operation is under way, also when that gives up the
/// interpreter lock or calls back into Python. Throws Gone for a dead handle. Made and destroyed with the lock held.
class HandleInUse {
public:
    explicit HandleInUse(Handle* handle);
    explicit HandleInUse(PyObject* object) : HandleInUse(reinterpret_cast<Handle*>(object)) {}
    ~HandleInUse();
    HandleInUse(const HandleInUse&) = delete;
    HandleInUse& operator=(const HandleInUse&) = delete;

    HDNTNode* node() const { return node_; }
    template <typename Class>
    Class& as() const {
        return *static_cast<Class*>(node_);
    }
    Handle* library() const { return library_; }

private:
    HDNTNode* node_;
    Handle* library_;
};

/// The type that all handles have in common, and the one for a kind of model object.
PyTypeObject* nodeType();
PyTypeObject* typeOf(HDNTNodeKind kind);
void setType(HDNTNodeKind kind, PyTypeObject* type);
void makeNodeType(py::module_& module);

inline bool isHandle(PyObject* object) { return PyObject_TypeCheck(object, nodeType()); }
bool isDead(const Handle* handle);

/// The library of a block or function: this one or one above it; borrowed, null when it is none of them.
Handle* libraryOf(const HDNTDecl& declared, Handle* library);
/// The Python object of an object of this library, or of a library above it; new reference, None for null.
PyObject* wrap(HDNTNode* node, Handle* library);
/// The Python object of a library; a new one takes over `owned`, and has `parent` (borrowed, may be null) below it.
PyObject* wrapLibrary(HDNTLibrary& library, std::unique_ptr<HDNTLibrary> owned = nullptr);

/// Ends a library now: handles are dead, and its memory goes with the last operation that is under way.
void closeLibrary(Handle* library);
/// Closes all libraries of the manager that Python knows. False, with nothing done, while one of them is in use.
bool closeManagedLibraries();

/// "hdnt.Block 'NAME'", for messages.
std::string describe(const Handle* handle);
/// The same and a word about what is inside, as "<hdnt.Block 'NAME' 3 pins, 0 properties>"; for Python's repr.
PyObject* represent(PyObject* handle) noexcept;

} // namespace hdnt::python

namespace wpx::pyinfra {

/// Python's object caches.
class py_native_cache {
public:
    /// Never destroyed, since objects of the model may die after everything else of the process.
    static wpx::tcltasks::native_caches& all();
    /// Borrowed; null when Python has no object for it.
    static hdnt::python::Handle* find(const HDNTNode& node);
};

} // namespace wpx::pyinfra
