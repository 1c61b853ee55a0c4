// What handles show of themselves.
#include "bindings/python/Convert.h"
#include "bindings/shared/Listing.h"
#include "bindings/shared/PropertyFacts.h"
#include "bindings/shared/Text.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::python {

namespace {

template <typename Class>
const Class& as(const HDNTNode& node) {
    return static_cast<const Class&>(node);
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }
std::string counted(size_t number, const char* what, const char* many) {
    return std::to_string(number) + " " + (number == 1 ? what : many);
}

// Expressions may be of any length.
std::string shortText(HDNTExpr& expression) {
    constexpr size_t most = 60;
    std::string text = scripts::textOf(expression);
    text.erase(text.find_last_not_of(" \n") + 1); // a call that is a statement ends its line
    return quoted(text.size() > most ? text.substr(0, most) + "..." : text);
}

std::string nameIn(HDNTNode& node) {
    switch (node.getKind()) {
    case HDNTNodeKind::FunctionDecl: return quoted(as<HDNTFunctionDecl>(node).getName());
    case HDNTNodeKind::BlockInst: return quoted(as<HDNTBlockInst>(node).instName());
    case HDNTNodeKind::Signal: return quoted(as<HDNTSignal>(node).name());
    case HDNTNodeKind::Connect: return quoted(as<HDNTConnect>(node).signalName());
    case HDNTNodeKind::BlockPinName: return quoted(as<HDNTBlockPinName>(node).pinName());
    case HDNTNodeKind::AssignBlockProperty: return quoted(as<HDNTAssignBlockProperty>(node).propName());
    case HDNTNodeKind::AssignPinProperty: return quoted(as<HDNTAssignPinProperty>(node).propName());
    case HDNTNodeKind::IfStmt: return shortText(*static_cast<HDNTIfStmt&>(node).condition());
    default: break;
    }
    if (auto* const expression = nodeCast<HDNTExpr>(&node)) return shortText(*expression);
    const std::string name = scripts::nameOf(node);
    return name.empty() ? name : quoted(name);
}

template <typename PinOrBus>
std::string pinFacts(const PinOrBus& pin) {
    return HDNTPin::getDirectionName(pin.getDirection()) + " " + HDNTPin::getTypeName(pin.getType());
}

std::string propertyFacts(const HDNTProperty& property) {
    const auto value = py::reinterpret_steal<py::object>(toPython(scripts::defaultOf(property)));
    return HDNTProperty::getTypeName(property.getType()) + ", default " + textOf(py::repr(value));
}

std::string contentsOf(const HDNTNode& node) {
    switch (node.getKind()) {
    case HDNTNodeKind::Library:
        return "of " + counted(as<HDNTLibrary>(node).getNumTypeBlocks(false), "block", "blocks");
    case HDNTNodeKind::Block:
        return counted(as<HDNTBlock>(node).getNumPins(), "pin", "pins") + ", " +
               counted(as<HDNTBlock>(node).getNumProperties(), "property", "properties");
    case HDNTNodeKind::Bus: return pinFacts(as<HDNTBus>(node));
    case HDNTNodeKind::Pin: return pinFacts(as<HDNTPin>(node));
    case HDNTNodeKind::Property: return propertyFacts(as<HDNTProperty>(node));
    case HDNTNodeKind::Netlist:
        return std::string(words::sections.wordOf(as<HDNTNetlist>(node).section())) + " of " +
               counted(as<HDNTNetlist>(node).instances().size(), "instance", "instances");
    case HDNTNodeKind::BlockInst: return "of " + quoted(as<HDNTBlockInst>(node).typeName());
    case HDNTNodeKind::Connect: return "to " + counted(as<HDNTConnect>(node).pins().size(), "pin", "pins");
    case HDNTNodeKind::AssignBlockProperty: return "of " + quoted(as<HDNTAssignBlockProperty>(node).instName());
    case HDNTNodeKind::AssignPinProperty:
        return "of " +
               quoted(as<HDNTAssignPinProperty>(node).instName() + "." + as<HDNTAssignPinProperty>(node).pinName());
    case HDNTNodeKind::StmtBlock:
        return "of " + counted(as<HDNTStmtBlock>(node).statements().size(), "statement", "statements");
    default: return "";
    }
}

std::string withSpace(const std::string& text) { return text.empty() ? text : " " + text; }

} // namespace

std::string describe(const Handle* handle) {
    const std::string type = Py_TYPE(handle)->tp_name;
    return isDead(handle) ? type + " (gone)" : type + withSpace(nameIn(*handle->native.node()));
}

PyObject* represent(PyObject* self) noexcept {
    return guarded([&] {
        auto* const handle = reinterpret_cast<Handle*>(self);
        try {
            const HandleInUse use(handle); // which may wait for what replaces mappings
            return toPython("<" + describe(handle) + withSpace(contentsOf(*use.node())) + ">");
        } catch (const Gone&) {
            return toPython("<" + describe(handle) + ">");
        }
    });
}

} // namespace hdnt::python
