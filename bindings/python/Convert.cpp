#include "bindings/python/Convert.h"

#include "bindings/python/LoadSection.h"
#include "bindings/shared/Places.h"
#include "hdnt/platform/HEX.h"

#include <sys/stat.h>

#include <new>
#include <unordered_map>

namespace hdnt::python {

py::object dataClass(const char* name) { return py::module_::import("hdnt._data").attr(name); }

static void raise(const char* type, const std::string& message) {
    const py::object error = dataClass(type)(textObject(message));
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

static void raise(const LoadFailure& failure) {
    const py::object error = dataClass("LoadError")(orNone(failure.path()), textObject(failure.what()),
                                                    diagnosticsOf(failure.diagnostics()));
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

void setPythonError() noexcept {
    try {
        try {
            throw;
        } catch (py::error_already_set& error) {
            error.restore();
        } catch (const LoadFailure& failure) {
            raise(failure);
        } catch (const Gone& gone) {
            raise("DeadObjectError", gone.what());
        } catch (const py::builtin_exception& error) {
            error.set_error();
        } catch (const std::bad_alloc&) {
            PyErr_NoMemory();
        } catch (const std::exception& error) {
            raise("Error", error.what());
        }
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (...) {
        PyErr_SetString(PyExc_SystemError, "hdnt: an exception of no known kind");
    }
}

PyObject* toPython(std::string_view text) {
    PyObject* const object = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
    if (!object) throw py::error_already_set();
    return object;
}

PyObject* toPython(Word word) {
    if (!word.text.data()) Py_RETURN_NONE;
    // Never more than the tables have, and never destroyed: objects that are left behind at exit would count as lost.
    static auto& made = *new std::unordered_map<const char*, PyObject*>;
    PyObject*& known = made[word.text.data()];
    if (!known) known = toPython(word.text);
    return Py_NewRef(known);
}

PyObject* toPython(const Place& at) {
    return dataClass("Location")(orNone(at.file), at.line, orNone(at.column), orNone(at.endColumn)).release().ptr();
}

PyObject* toPython(const yyltype& at) { return toPython(scripts::placeOf(at)); }

py::object orNone(std::string_view text) { return text.empty() ? py::none() : textObject(text); }
py::object orNone(int number) { return number == 0 ? py::object(py::none()) : py::int_(number); }

std::string textOf(py::handle text) {
    if (!PyUnicode_Check(text.ptr()))
        throw py::type_error("a str is wanted, not " + std::string(Py_TYPE(text.ptr())->tp_name));
    const auto bytes =
        py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
    if (!bytes) throw py::error_already_set();
    return bytes;
}

py::object makeType(py::module_& module, const char* name, HDNTNodeKind kind, PyGetSetDef* fields,
                    const char* description, PyTypeObject* base, std::vector<PyType_Slot> slots) {
    slots.push_back({Py_tp_getset, fields});
    slots.push_back({Py_tp_doc, const_cast<char*>(description)});
    slots.push_back({0, nullptr});
    const std::string fullName = "hdnt." + std::string(name);
    const unsigned forBase = kind == HDNTNodeKind::Other ? Py_TPFLAGS_BASETYPE : 0;
    PyType_Spec spec = {fullName.c_str(), sizeof(Handle), 0,
                        static_cast<unsigned>(Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION) | forBase,
                        slots.data()};
    auto type = py::reinterpret_steal<py::object>(
        PyType_FromSpecWithBases(&spec, py::make_tuple(py::handle(reinterpret_cast<PyObject*>(base))).ptr()));
    if (!type) throw py::error_already_set();
    if (kind != HDNTNodeKind::Other) setType(kind, reinterpret_cast<PyTypeObject*>(py::object(type).release().ptr()));
    module.attr(name) = type;
    return type;
}

Handle* handleOf(py::handle object, PyTypeObject* type) {
    if (PyObject_TypeCheck(object.ptr(), type)) return reinterpret_cast<Handle*>(object.ptr());
    throw py::type_error("a " + std::string(type->tp_name) + " is wanted, not " + Py_TYPE(object.ptr())->tp_name);
}

std::string pathTextOf(const py::object& path) {
    PyObject* bytes = nullptr;
    if (!PyUnicode_FSConverter(path.ptr(), &bytes)) throw py::error_already_set();
    const py::object owner = object(bytes);
    return PyBytes_AS_STRING(bytes);
}

std::string pathOf(const py::object& path) {
    struct stat status {};
    std::string text = pathTextOf(path);
    if (stat(text.c_str(), &status) == 0) return text;
    PyErr_SetFromErrnoWithFilenameObject(PyExc_OSError, path.ptr());
    throw py::error_already_set();
}

} // namespace hdnt::python
