#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/BlockFields.h"
#include "hdnt/netlist/HDNTNetlist.h"

namespace hdnt::python {

namespace {

PyObject* netlistOf(const HandleInUse& use, const std::string* architecture) {
    return wrap(scripts::netlistOf(interpreterLock(), use.as<HDNTBlock>(), architecture), use.library());
}

PyObject* netlist(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return netlistOf(use, nullptr);
    });
}

using namespace scripts::facts;
HDNTBlock& blockOf(const HandleInUse& use) { return use.as<HDNTBlock>(); }

PyObject* tuple(std::initializer_list<PyObject*> items) {
    PyObject* const result = PyTuple_New(static_cast<Py_ssize_t>(items.size()));
    if (!result) throw py::error_already_set();
    Py_ssize_t i = 0;
    for (PyObject* item : items) PyTuple_SET_ITEM(result, i++, item);
    return result;
}

py::list pinTuples(const py::object& self) {
    const HandleInUse use(handleOf(self, typeOf(HDNTNodeKind::Block)));
    const HDNTBlock& block = blockOf(use);
    py::list list(block.getNumPins());
    for (size_t i = 0; i < block.getNumPins(); ++i) {
        HDNTPin& pin = *block.getPin(i);
        PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i),
                        tuple({toPython(pin.getName(false)), toPython(direction(pin)), toPython(type(pin)),
                               toPython(required(pin))}));
    }
    return list;
}

py::list busTuples(const py::object& self) {
    const HandleInUse use(handleOf(self, typeOf(HDNTNodeKind::Block)));
    const HDNTBlock& block = blockOf(use);
    py::list list(block.getNumBuses());
    for (size_t i = 0; i < block.getNumBuses(); ++i) {
        HDNTBus& bus = *block.getBus(i);
        PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i),
                        tuple({toPython(bus.getBaseName()), toPython(busRange(bus)), toPython(direction(bus)),
                               toPython(type(bus)), toPython(required(bus))}));
    }
    return list;
}

py::dict propertyDict(const py::object& self) {
    const HandleInUse use(handleOf(self, typeOf(HDNTNodeKind::Block)));
    const HDNTBlock& block = blockOf(use);
    py::dict dict;
    for (const HDNTProperty& property : block.properties()) {
        const py::object name = textObject(property.getName());
        const py::object value = object(toPython(scripts::defaultOf(property)));
        if (PyDict_SetItem(dict.ptr(), name.ptr(), value.ptr()) < 0) throw py::error_already_set();
    }
    return dict;
}

} // namespace

void addBlockTypes(py::module_& module) {
    makeType(module, "Pin", HDNTNodeKind::Pin, fieldsOf<scripts::pinFields>(), "One bit of a bus, or a single pin.");
    makeType(module, "Bus", HDNTNodeKind::Bus, fieldsOf<scripts::busFields>(), "A pin declaration, single or ranged.");
    const py::object type =
        makeType(module, "Block", HDNTNodeKind::Block,
                 fieldsOf<scripts::blockFields>(
                     {{"netlist", netlist, nullptr, "Its mapping; None when there is none.", nullptr}}),
                 "A primitive of a library.");
    define(
        type, "netlist_for", "The mapping for an architecture; None when there is none.",
        [](const py::object& self, const py::object& architecture) {
            const HandleInUse use(handleOf(self, typeOf(HDNTNodeKind::Block)));
            const std::string name = textOf(architecture);
            return object(netlistOf(use, &name));
        },
        py::arg("architecture"));
    define(type, "pin_tuples", "All pins at once: a list of (name, direction, type, required).", pinTuples);
    define(type, "bus_tuples", "All pin declarations at once: a list of (base name, range, direction, type, required).",
           busTuples);
    define(type, "property_dict", "All properties at once: their defaults by name.", propertyDict);
}

} // namespace hdnt::python
