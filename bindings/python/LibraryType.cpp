#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/Parameters.h"
#include "bindings/shared/Text.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/registry/registerCells.h"

#include <pybind11/stl.h>

#include <optional>

namespace hdnt::python {

namespace {

Handle* libraryAt(const py::handle& self) { return handleOf(self, typeOf(HDNTNodeKind::Library)); }
HDNTLibrary& libraryOf(const HandleInUse& use) { return use.as<HDNTLibrary>(); }

PyObject* parent(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        PyObject* const above = use.library()->state->parentObject;
        return Py_NewRef(above ? above : Py_None);
    });
}

PyObject* path(PyObject* self, void*) noexcept {
    return guarded([&] { return toPython(OrNone{reinterpret_cast<Handle*>(self)->state->path}); });
}

PyObject* warnings(PyObject* self, void*) noexcept {
    return Py_NewRef(reinterpret_cast<Handle*>(self)->state->warnings.ptr());
}

PyObject* isClosed(PyObject* self, void*) noexcept {
    return PyBool_FromLong(isDead(reinterpret_cast<Handle*>(self)) ? 1 : 0);
}

PyObject* names(PyObject* self, void*) noexcept {
    return guarded([&] { return namesOf(self, scripts::ownBlocks); });
}

PyObject* functions(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        py::tuple all(libraryOf(use).getNumFunctionDecls());
        for (size_t i = 0; i < all.size(); ++i) all[i] = object(wrap(libraryOf(use).getFunctionDecl(i), use.library()));
        return all.release().ptr();
    });
}

py::object droppedMappings(HDNTLibrary& library) {
    py::list dropped;
    for (const HDNTLibrary::DroppedMapping& mapping : library.getDroppedMappings())
        dropped.append(py::make_tuple(textObject(mapping.blockName), textObject(mapping.reason),
                                      object(toPython(mapping.location))));
    return py::tuple(dropped);
}

PyGetSetDef fields[] = {
    {"name", getter<&HDNTLibrary::getName>, nullptr, "The name in its text.", nullptr},
    {"parent", parent, nullptr, "The library that it extends; None without one.", nullptr},
    {"path", path, nullptr,
     "What it was loaded from; None for libraries that the manager found. Needs no live library.", nullptr},
    {"warnings", warnings, nullptr, "Tuple of what was said while it was loaded. Needs no live library.", nullptr},
    {"closed", isClosed, nullptr, "Whether it is gone.", nullptr},
    {"blocks", viewOf<scripts::ownBlocks>, nullptr, "Its own blocks, as a sequence that is also asked by name.",
     nullptr},
    {"names", names, nullptr, "Tuple of the names of its own blocks.", nullptr},
    {"all_blocks", viewOf<scripts::allBlocks>, nullptr, "Its own blocks, then those of its parents.", nullptr},
    {"functions", functions, nullptr, "Tuple of its own function declarations.", nullptr},
    {"dropped_mappings", getter<droppedMappings>, nullptr,
     "Mappings whose block was not found: (block name, reason, Location).", nullptr},
    noMoreFields};

Py_ssize_t sizeOf(PyObject* self) noexcept {
    try {
        const HandleInUse use(self);
        return static_cast<Py_ssize_t>(libraryOf(use).getNumTypeBlocks(false));
    } catch (...) {
        setPythonError();
        return -1;
    }
}

PyObject* subscript(PyObject* self, PyObject* key) noexcept {
    return guarded([&]() -> PyObject* {
        const HandleInUse use(self);
        HDNTBlock* const block = PyUnicode_Check(key) ? libraryOf(use).getTypeBlockByName(textOf(key), false) : nullptr;
        if (block) return wrap(block, use.library());
        PyErr_SetObject(PyExc_KeyError, key);
        return nullptr;
    });
}

int contains(PyObject* self, PyObject* key) noexcept {
    try {
        const HandleInUse use(self);
        return PyUnicode_Check(key) && libraryOf(use).getTypeBlockByName(textOf(key), false) ? 1 : 0;
    } catch (...) {
        setPythonError();
        return -1;
    }
}

PyObject* iterate(PyObject* self) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return iterateNames(self);
    });
}

py::object find(const py::object& self, const py::object& name) {
    const HandleInUse use(libraryAt(self));
    return object(wrap(libraryOf(use).getTypeBlockByName(textOf(name), true), use.library()));
}

py::list startingWith(const py::object& self, const py::object& prefix, bool withParents) {
    const HandleInUse use(libraryAt(self));
    std::vector<HDNTBlock*> blocks;
    libraryOf(use).getTypeBlocksBeginWith(textOf(prefix), blocks, withParents);
    py::list list;
    for (HDNTBlock* block : blocks) list.append(object(wrap(block, use.library())));
    return list;
}

void close(const py::object& self) {
    Handle* const library = libraryAt(self);
    if (isDead(library)) return;
    if (!library->state->owned)
        throw std::runtime_error("this library belongs to the manager: hdnt.release() releases those");
    closeLibrary(library);
}

py::object load(const py::object& from, const py::object& above, bool check, bool untrusted) {
    const std::string path = pathOf(from);
    std::optional<HandleInUse> parentUse;
    if (!above.is_none()) parentUse.emplace(libraryAt(above));
    std::unique_ptr<HDNTLibrary> library;
    std::vector<Diagnostic> warnings;
    inSection(above.is_none() ? LoadSection::Quiet : LoadSection::Changes, path, [&] {
        library = scripts::loadFrom(path, {parentUse ? &libraryOf(*parentUse) : nullptr, check, untrusted}, warnings);
    });
    HDNTLibrary& loaded = *library;
    py::object result = object(wrapLibrary(loaded, std::move(library)));
    LibraryState& state = *libraryAt(result)->state;
    state.path = path;
    state.warnings = diagnosticsOf(warnings);
    return result;
}

py::object managed(HDNTLibrary* (*get)(), const char* name) {
    py::object result;
    std::vector<Diagnostic> warnings;
    inSection(
        LoadSection::Changes, name,
        [&] {
            HDNTLibrary& library = *get();
            const InterpreterLock lock;
            result = object(wrapLibrary(library));
        },
        &warnings);
    if (!warnings.empty()) libraryAt(result)->state->warnings = diagnosticsOf(warnings);
    return result;
}

void releaseManaged() {
    bool released = true;
    {
        const LoadSection section(LoadSection::Changes);
        const InterpreterLock lock;
        released = closeManagedLibraries();
        if (released) HDNTLibraryMgr::releaseLibraries();
    }
    if (!released) throw std::runtime_error("a library of the manager is in use by an operation that is under way");
}

PyType_Slot slot(int id, void* function) { return {id, function}; }

HPAParamMgr& parametersWith(const std::string& name) {
    const std::string reason = scripts::unknownParameter(name);
    if (!reason.empty()) throw py::value_error(reason);
    return *HPAParamMgr::getParamMgr();
}

void addParameters(py::module_& module) {
    define(
        module, "parameter", "Whether a parameter of the process is on, as in \"ntl.enableMapLib\".",
        [](const std::string& name) { return parametersWith(name).getValueAsBool(name); }, py::arg("name"));
    define(
        module, "set_parameter", "Sets a parameter of the process; None leaves it to the environment again.",
        [](const std::string& name, const std::optional<bool>& value) {
            if (value) parametersWith(name).setValueAsBool(name, *value);
            else parametersWith(name).unset(name);
        },
        py::arg("name"), py::arg("value"));
    define(module, "architecture", "The current architecture; empty when there is none.",
           [] { return HDNTLibraryMgr::getLibraryMgr()->m_architecture; });
    define(
        module, "set_architecture", "Sets the current architecture, which decides on mappings from map libraries.",
        [](const std::string& name) {
            const LoadSection section(LoadSection::Changes);
            HDNTLibraryMgr::getLibraryMgr()->m_architecture = name;
        },
        py::arg("name"));
}

void addFunctions(py::module_& module) {
    define(
        module, "register_cells",
        "Adds a table of cells, 'value,NAME' a line, to the one that is built in; before the first load only.",
        [](const py::object& path) { hdnt::registerCells(pathOf(path)); }, py::arg("path"));
    define(module, "load", "Loads without Python warnings.", load, py::arg("path"), py::arg("parent") = py::none(),
           py::kw_only(), py::arg("check") = false, py::arg("untrusted") = false);
    define(module, "common", "The common library, which belongs to the manager; loaded once.",
           [] { return managed(HDNTLibraryMgr::getCommonLibrary, "common"); });
    define(module, "simulation",
           "The simulation library over the common one, which belongs to the manager; loaded once.",
           [] { return managed(HDNTLibraryMgr::getSimulationLibrary, "simulation"); });
    define(module, "release", "Releases all libraries of the manager; the next question for one loads it again.",
           releaseManaged);
    define(
        module, "add_search_directory", "Appends a directory in which INCLUDE and INLINE look for files.",
        [](const py::object& directory) {
            const std::string path = pathOf(directory);
            const LoadSection section(LoadSection::Quiet);
            NtlAddSearchDirectory(path);
        },
        py::arg("path"));
    define(module, "error_count", "The process-wide count of errors, which loads from here leave as it was.",
           [] { return HDNTError::numErrors; });
    define(module, "live_handles", "How many Python objects stand for model objects now.",
           [] { return wpx::pyinfra::py_native_cache::all().size(); });
    define(module, "_tool", "Where the command-line tool is that was built with the library.", scripts::toolPath);
}

} // namespace

void addLibraryType(py::module_& module) {
    const py::object type = makeType(
        module, "Library", HDNTNodeKind::Library, fields, "A library: a mapping from names to its own blocks.",
        nodeType(),
        {slot(Py_mp_length, reinterpret_cast<void*>(sizeOf)), slot(Py_mp_subscript, reinterpret_cast<void*>(subscript)),
         slot(Py_sq_contains, reinterpret_cast<void*>(contains)), slot(Py_tp_iter, reinterpret_cast<void*>(iterate))});
    define(type, "find", "The block of that name, also of a parent; None when there is none.", find, py::arg("name"));
    define(type, "starting_with",
           "List of the blocks whose names begin so, by name; with those of the parents unless told otherwise.",
           startingWith, py::arg("prefix"), py::arg("parents") = true);
    define(type, "close",
           "Ends the library: it and all that was got from it are dead. Nothing happens the second time.", close);
    define(type, "__enter__", "The library itself.", [](const py::object& self) { return self; });
    define(type, "__exit__", "Ends the library.", [](const py::object& self, const py::args&) { close(self); });
    addParameters(module);
    addFunctions(module);
}

} // namespace hdnt::python
