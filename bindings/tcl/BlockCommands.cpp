#include "bindings/shared/PropertyFacts.h"
#include "bindings/tcl/Lists.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTNetlist.h"

namespace hdnt::tcl {

namespace {

using namespace scripts::fields;
template <typename PinOrBus>
std::string direction(PinOrBus& pin) {
    return HDNTPin::getDirectionName(pin.getDirection());
}
template <typename PinOrBus>
std::string type(PinOrBus& pin) {
    return HDNTPin::getTypeName(pin.getType());
}
template <typename PinOrBus>
std::string_view required(PinOrBus& pin) {
    return words::requiredValues.wordOf(pin.getRequiredValue());
}
template <typename PinOrBus>
std::string function(PinOrBus& pin) {
    std::string text;
    pin.getPinFunction(text);
    return text;
}

std::string pinName(HDNTPin& pin) { return pin.getName(false); }
std::string plainPinName(HDNTPin& pin) { return pin.getName(true); }
Tcl_Obj* pinBit(HDNTPin& pin) { return pin.getBitIndex() < 0 ? Tcl_NewObj() : toTcl(pin.getBitIndex()); }
Tcl_Obj* busRange(HDNTBus& bus) {
    if (bus.getFirstIndex() < 0) return Tcl_NewObj();
    return toTcl(std::vector<int>{bus.getFirstIndex(), bus.getLastIndex()});
}

std::string_view maturity(HDNTBlock& block) { return words::maturityLevels.wordOf(block.getMaturityLevel()); }

// The mapping for an architecture may have to be loaded first.
Tcl_Obj* netlist(const Call& call) {
    auto& block = call.as<HDNTBlock>();
    const bool named = call.arguments() > 0;
    const std::string architecture = named ? textOf(call.argument(0)) : "";
    LoadSection::waitForChanges(scriptLock());
    const bool attached = block.hasOwnNetlist() || (!named && block.getAttachedNetlist());
    if (!attached) scripts::Reading::mustNotAskMapLibrary(block);
    if (HDNTLibrary::usesMapLibraries() && !attached)
        inSection(LoadSection::Changes, block.getName(),
                  [&] { named ? block.getNetlist(architecture) : block.getNetlist(); });
    return call.wrap(named ? block.getNetlist(architecture) : block.getNetlist());
}

Tcl_Obj* pinTuples(const Call& call) {
    const auto& block = call.as<HDNTBlock>();
    Obj list(Tcl_NewListObj(0, nullptr));
    for (size_t i = 0; i < block.getNumPins(); ++i) {
        HDNTPin& pin = *block.getPin(i);
        Tcl_Obj* const facts[] = {toTcl(pin.getName(false)), toTcl(direction(pin)), toTcl(type(pin)),
                                  toTcl(required(pin))};
        Tcl_ListObjAppendElement(nullptr, list.get(), Tcl_NewListObj(4, facts));
    }
    return toTcl(std::move(list));
}

Tcl_Obj* busTuples(const Call& call) {
    Obj list(Tcl_NewListObj(0, nullptr));
    for (HDNTBus& bus : call.as<HDNTBlock>().buses()) {
        Tcl_Obj* const facts[] = {toTcl(bus.getBaseName()), busRange(bus), toTcl(direction(bus)), toTcl(type(bus)),
                                  toTcl(required(bus))};
        Tcl_ListObjAppendElement(nullptr, list.get(), Tcl_NewListObj(5, facts));
    }
    return toTcl(std::move(list));
}

Tcl_Obj* propertyDict(const Call& call) {
    Obj dict(Tcl_NewDictObj());
    for (const HDNTProperty& property : call.as<HDNTBlock>().properties())
        Tcl_DictObjPut(nullptr, dict.get(), toTcl(property.getName()), toTcl(scripts::defaultOf(property)));
    return toTcl(std::move(dict));
}

} // namespace

std::vector<Subcommand> pinSubcommands() {
    return {field<pinName>("name"),
            field<plainPinName>("plain_name"),
            field<&HDNTPin::getBaseName>("base_name"),
            field<pinBit>("bit"),
            field<&HDNTPin::getPinIndex>("index"),
            field<&HDNTPin::getBus>("bus"),
            field<&HDNTPin::getBlock>("block"),
            field<direction<HDNTPin>>("direction"),
            field<type<HDNTPin>>("type"),
            field<required<HDNTPin>>("required"),
            field<function<HDNTPin>>("function"),
            field<&HDNTPin::isTest>("is_test"),
            field<&HDNTPin::isAbstract>("is_abstract"),
            listOfAll<scripts::pinProperties>("properties"),
            oneOf<scripts::pinProperties, HDNTNodeKind::Property>("property")};
}

std::vector<Subcommand> busSubcommands() {
    return {field<&HDNTBus::getName>("name"),
            field<&HDNTBus::getBaseName>("base_name"),
            field<busRange>("range"),
            field<&HDNTBus::pinCount>("width"),
            field<&HDNTBus::getBlock>("block"),
            field<direction<HDNTBus>>("direction"),
            field<type<HDNTBus>>("type"),
            field<required<HDNTBus>>("required"),
            field<function<HDNTBus>>("function"),
            field<&HDNTBus::isTest>("is_test"),
            field<&HDNTBus::isAbstract>("is_abstract"),
            listOfAll<scripts::busPins>("pins"),
            oneOf<scripts::busPins, HDNTNodeKind::Pin>("pin"),
            listOfAll<scripts::busProperties>("properties"),
            oneOf<scripts::busProperties, HDNTNodeKind::Property>("property")};
}

std::vector<Subcommand> blockSubcommands() {
    std::vector<Subcommand> all = {field<&HDNTBlock::getName>("name"),
                                   listOfAll<scripts::blockPins>("pins"),
                                   oneOf<scripts::blockPins, HDNTNodeKind::Pin>("pin"),
                                   listOfAll<scripts::blockBuses>("buses"),
                                   oneOf<scripts::blockBuses, HDNTNodeKind::Bus>("bus"),
                                   listOfAll<scripts::blockProperties>("properties"),
                                   oneOf<scripts::blockProperties, HDNTNodeKind::Property>("property"),
                                   {"netlist", netlist, 0, 0, nullptr, false},
                                   {"netlist_for", netlist, 1, 1, "architecture", false},
                                   field<&HDNTBlock::hasOwnNetlist>("has_own_netlist"),
                                   field<&HDNTBlock::getNetlistKind>("netlist_kind"),
                                   field<cellview>("cellview"),
                                   field<isRegistered>("is_registered"),
                                   field<maturity>("maturity"),
                                   field<&HDNTBlock::isTest>("is_test"),
                                   field<&HDNTBlock::isInternal>("is_internal"),
                                   field<&HDNTBlock::getCanTiePins>("is_tie_capable"),
                                   field<group>("group"),
                                   field<subgroup>("subgroup"),
                                   field<legacyGroup>("legacy_group"),
                                   field<legacySubgroup>("legacy_subgroup"),
                                   field<&HDNTBlock::canTiePins>("can_tie_pins"),
                                   field<&HDNTBlock::usesNibbleSizeHexAttrs>("uses_nibble_sized_hex"),
                                   field<&HDNTBlock::canBePseudoDifferential>("can_be_pseudo_differential"),
                                   field<&HDNTBlock::getCellArchesCfg>("architectures"),
                                   field<&HDNTBlock::getMasterDriverPinName>("master_driver_pin"),
                                   field<shadowPins>("shadow_pins"),
                                   field<supportsInternalPins>("supports_internal_pins"),
                                   {"pin_tuples", pinTuples, 0, 0, nullptr, false},
                                   {"bus_tuples", busTuples, 0, 0, nullptr, false},
                                   {"property_dict", propertyDict, 0, 0, nullptr, false},
                                   {"expand", expand, 0, -1, "?option value ...? ?--? ?property value ...?", false}};
    for (const Subcommand& one : textSubcommands()) all.push_back(one);
    return all;
}

} // namespace hdnt::tcl
