#include "bindings/shared/BlockFields.h"
#include "bindings/tcl/Subcommand.h"
#include "bindings/tcl/Values.h"
#include "hdnt/netlist/HDNTNetlist.h"

namespace hdnt::tcl {

namespace {

using namespace scripts::facts;

Tcl_Obj* netlist(const Call& call) {
    const std::string architecture = call.arguments() > 0 ? textOf(call.argument(0)) : "";
    return call.wrap(
        scripts::netlistOf(scriptLock(), call.as<HDNTBlock>(), call.arguments() > 0 ? &architecture : nullptr));
}

Tcl_Obj* pinTuples(const Call& call) {
    const auto& block = call.as<HDNTBlock>();
    Obj list(Tcl_NewListObj(0, nullptr));
    for (size_t i = 0; i < block.getNumPins(); ++i) {
        HDNTPin& pin = *block.getPin(i);
        Tcl_Obj* const words[] = {toTcl(pin.getName(false)), toTcl(direction(pin)), toTcl(type(pin)),
                                  toTcl(required(pin))};
        Tcl_ListObjAppendElement(nullptr, list.get(), Tcl_NewListObj(4, words));
    }
    return toTcl(std::move(list));
}

Tcl_Obj* busTuples(const Call& call) {
    Obj list(Tcl_NewListObj(0, nullptr));
    for (HDNTBus& bus : call.as<HDNTBlock>().buses()) {
        Tcl_Obj* const words[] = {toTcl(bus.getBaseName()), toTcl(busRange(bus)), toTcl(direction(bus)),
                                  toTcl(type(bus)), toTcl(required(bus))};
        Tcl_ListObjAppendElement(nullptr, list.get(), Tcl_NewListObj(5, words));
    }
    return toTcl(std::move(list));
}

Tcl_Obj* propertyDict(const Call& call) {
    Obj dict(Tcl_NewDictObj());
    for (const HDNTProperty& property : call.as<HDNTBlock>().properties())
        Tcl_DictObjPut(nullptr, dict.get(), toTcl(property.getName()), toTcl(scripts::defaultOf(property)));
    return toTcl(std::move(dict));
}

std::string refusalOf(const Call& call) {
    const auto& property = call.as<HDNTProperty>();
    Tcl_Obj* const word = call.argument(0);
    return scripts::refusalOf(property, valueFor(&property, word), '\'' + textOf(word) + '\'');
}
Tcl_Obj* refusal(const Call& call) { return toTcl(refusalOf(call)); }
Tcl_Obj* accepts(const Call& call) { return toTcl(refusalOf(call).empty()); }

Tcl_Obj* digits(const Call& call) {
    const bool keepLeadingZeros = call.arguments() < 2 || boolOf(call.argument(1));
    return toTcl(call.as<HDNTProperty>().formatValue(textOf(call.argument(0)), keepLeadingZeros));
}

std::vector<Subcommand> ofBlock() {
    std::vector<Subcommand> all = subcommands(
        scripts::blockFields, {{"netlist", netlist, 0, 0, nullptr, false},
                               {"netlist_for", netlist, 1, 1, "architecture", false},
                               {"pin_tuples", pinTuples, 0, 0, nullptr, false},
                               {"bus_tuples", busTuples, 0, 0, nullptr, false},
                               {"property_dict", propertyDict, 0, 0, nullptr, false},
                               {"expand", expand, 0, -1, "?option value ...? ?--? ?property value ...?", false}});
    for (const Subcommand& one : textSubcommands()) all.push_back(one);
    return all;
}

} // namespace

std::vector<Subcommand> blockSubcommands(HDNTNodeKind kind) {
    switch (kind) {
    case HDNTNodeKind::Block: return ofBlock();
    case HDNTNodeKind::Bus: return subcommands(scripts::busFields);
    case HDNTNodeKind::Pin: return subcommands(scripts::pinFields);
    default:
        return subcommands(scripts::propertyFields, {{"accepts", accepts, 1, 1, "value", false},
                                                     {"refusal", refusal, 1, 1, "value", false},
                                                     {"digits", digits, 1, 2, "value ?keepLeadingZeros?", false}});
    }
}

} // namespace hdnt::tcl
