#include "bindings/python/Define.h"
#include "bindings/python/LoadSection.h"
#include "bindings/python/Types.h"
#include "bindings/python/View.h"
#include "bindings/shared/PropertyFacts.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <algorithm>
#include <array>

namespace hdnt::python {

namespace {

using namespace scripts::fields;
py::object object(PyObject* reference) { return py::reinterpret_steal<py::object>(reference); }

// Words are made once; a value that has none, which only a program can bring about, is None.
template <const auto& Table, typename Value>
Word wordOf(Value value) {
    static std::array<PyObject*, Table.size()> made{};
    for (size_t i = 0; i < Table.size(); ++i) {
        if (Table.entries[i].value != value) continue;
        if (!made[i]) made[i] = toPython(Table.entries[i].word);
        return {made[i]};
    }
    return {nullptr};
}

constexpr auto directionOf = wordOf<words::pinDirections, HDNT_PIN_DIRECTION>;
constexpr auto typeOfPin = wordOf<words::pinTypes, HDNT_PIN_TYPE>;
constexpr auto requiredOf = wordOf<words::requiredValues, HDNT_PIN_REQUIREDVALUE>;

template <typename PinOrBus>
Word direction(PinOrBus& pin) {
    return directionOf(pin.getDirection());
}
template <typename PinOrBus>
Word type(PinOrBus& pin) {
    return typeOfPin(pin.getType());
}
template <typename PinOrBus>
Word required(PinOrBus& pin) {
    return requiredOf(pin.getRequiredValue());
}
template <typename PinOrBus>
OrNone function(PinOrBus& pin) {
    OrNone text;
    pin.getPinFunction(text.text);
    return text;
}

std::string pinName(HDNTPin& pin) { return pin.getName(false); }
std::string plainPinName(HDNTPin& pin) { return pin.getName(true); }
py::object pinBit(HDNTPin& pin) { return pin.getBitIndex() < 0 ? py::object(py::none()) : py::int_(pin.getBitIndex()); }
py::object busRange(HDNTBus& bus) {
    if (bus.getFirstIndex() < 0) return py::none();
    return py::make_tuple(bus.getFirstIndex(), bus.getLastIndex());
}

PyGetSetDef pinFields[] = {
    field<pinName>("name", "`CLK`, or `D[7]` for a bit."),
    field<plainPinName>("plain_name", "The same without brackets: `D7`."),
    field<&HDNTPin::getBaseName>("base_name", "The name of its bus, without a range."),
    field<pinBit>("bit", "Its bit; None for a single pin."),
    field<&HDNTPin::getPinIndex>("index", "Position among all pins of the block."),
    field<&HDNTPin::getBus>("bus", "The declaration that it is a bit of."),
    field<&HDNTPin::getBlock>("block", "Its block."),
    field<direction<HDNTPin>>("direction", "\"input\", \"output\", \"bidir\" or \"internal\"."),
    field<type<HDNTPin>>("type",
                         "\"data\", \"clock\" and so on; what the configuration says for a bit of a mixed bus."),
    field<required<HDNTPin>>("required", "What it must be tied to, as in `tieLow`; None when nothing is required."),
    field<function<HDNTPin>>("function", "Its function by the configuration; None when there is none."),
    field<&HDNTPin::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTPin::isAbstract>("is_abstract", "Whether it is declared abstract."),
    {"properties", viewOf<scripts::pinProperties>, nullptr, "The properties of its bus.", nullptr},
    noMoreFields};

PyGetSetDef busFields[] = {
    field<&HDNTBus::getName>("name", "`CLK`, or `D[7:0]`."),
    field<&HDNTBus::getBaseName>("base_name", "The name without a range."),
    field<busRange>("range", "First and last index as written; None for a single pin."),
    field<&HDNTBus::pinCount>("width", "How many pins it has."),
    field<&HDNTBus::getBlock>("block", "Its block."),
    field<direction<HDNTBus>>("direction", "\"input\", \"output\", \"bidir\" or \"internal\"."),
    field<type<HDNTBus>>("type", "\"data\", \"clock\" and so on; \"mixed\" when its pins have types of their own."),
    field<required<HDNTBus>>("required", "What its pins must be tied to; None when nothing is required."),
    field<function<HDNTBus>>("function", "Its function by the configuration; None when there is none."),
    field<&HDNTBus::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTBus::isAbstract>("is_abstract", "Whether it is declared abstract."),
    {"pins", viewOf<scripts::busPins>, nullptr, "Its pins, in the order of the range.", nullptr},
    {"properties", viewOf<scripts::busProperties>, nullptr, "The properties that it declares.", nullptr},
    noMoreFields};

Word maturity(HDNTBlock& block) { return wordOf<words::maturityLevels>(block.getMaturityLevel()); }
OrNone masterDriverPin(HDNTBlock& block) { return {block.getMasterDriverPinName()}; }

// The mapping for an architecture may have to be loaded first.
PyObject* netlistOf(const HandleInUse& use, const std::string* architecture) {
    auto& block = use.as<HDNTBlock>();
    LoadSection::waitForChanges();
    const bool attached = block.hasOwnNetlist() || (!architecture && block.getAttachedNetlist());
    if (!attached) scripts::Reading::mustNotAskMapLibrary(block);
    if (HDNTLibrary::usesMapLibraries() && !attached)
        inSection(LoadSection::Changes, block.getName(), [&] {
            if (architecture) block.getNetlist(*architecture);
            else block.getNetlist();
        });
    return wrap(architecture ? block.getNetlist(*architecture) : block.getNetlist(), use.library());
}

PyObject* netlist(PyObject* self, void*) noexcept {
    return guarded([&] {
        const HandleInUse use(self);
        return netlistOf(use, nullptr);
    });
}

PyGetSetDef blockFields[] = {
    field<&HDNTBlock::getName>("name", "Its name, as declared."),
    {"pins", viewOf<scripts::blockPins>, nullptr,
     "Its pins bit by bit, also asked by name; without internal ones where the part does not support them.", nullptr},
    {"buses", viewOf<scripts::blockBuses>, nullptr, "Its pin declarations, also asked by name.", nullptr},
    {"properties", viewOf<scripts::blockProperties>, nullptr, "Its properties, also asked by name.", nullptr},
    {"netlist", netlist, nullptr, "Its mapping; None when there is none.", nullptr},
    field<&HDNTBlock::hasOwnNetlist>("has_own_netlist", "Whether its mapping stands in the library's own text."),
    field<&HDNTBlock::getNetlistKind>("netlist_kind", "Where its mapping comes from, as a number; 101 for none."),
    field<cellview>("cellview", "Its cellview type; above 4000 for a block that the registry does not know."),
    field<isRegistered>("is_registered", "Whether the registry of cellview types knows it."),
    field<maturity>("maturity", "\"early\", \"beta\", \"production\" or \"deprecated\"."),
    field<&HDNTBlock::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTBlock::isInternal>("is_internal", "Whether it has the internal flag."),
    field<&HDNTBlock::getCanTiePins>("is_tie_capable", "Whether its pins can be tied, by its declaration."),
    field<group>("group", "Its primitive group; None without one."),
    field<subgroup>("subgroup", "Its subgroup; None without one."),
    field<legacyGroup>("legacy_group", "Its group in the earlier scheme; None without one."),
    field<legacySubgroup>("legacy_subgroup", "Its subgroup in the earlier scheme; None without one."),
    field<&HDNTBlock::canTiePins>("can_tie_pins", "Whether its pins can be tied, by the configuration."),
    field<&HDNTBlock::usesNibbleSizeHexAttrs>("uses_nibble_sized_hex", "Whether hex widths are whole digits."),
    field<&HDNTBlock::canBePseudoDifferential>("can_be_pseudo_differential", "What the configuration says of that."),
    field<&HDNTBlock::getCellArchesCfg>("architectures", "Tuple of the architectures that the configuration names."),
    field<masterDriverPin>("master_driver_pin", "By the configuration; None when there is none."),
    field<shadowPins>("shadow_pins", "Tuple of names, by the configuration."),
    field<supportsInternalPins>("supports_internal_pins", "Whether the current part supports internal pins."),
    noMoreFields};

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
        const HDNTPin& pin = *block.getPin(i);
        PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i),
                        tuple({toPython(pin.getName(false)), toPython(directionOf(pin.getDirection())),
                               toPython(typeOfPin(pin.getType())), toPython(requiredOf(pin.getRequiredValue()))}));
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
                        tuple({toPython(bus.getBaseName()), busRange(bus).release().ptr(),
                               toPython(directionOf(bus.getDirection())), toPython(typeOfPin(bus.getType())),
                               toPython(requiredOf(bus.getRequiredValue()))}));
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
    makeType(module, "Pin", HDNTNodeKind::Pin, pinFields, "One bit of a bus, or a single pin.");
    makeType(module, "Bus", HDNTNodeKind::Bus, busFields, "A pin declaration, single or ranged.");
    const py::object type = makeType(module, "Block", HDNTNodeKind::Block, blockFields, "A primitive of a library.");
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
