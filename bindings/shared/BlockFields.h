#pragma once

#include "bindings/shared/Fields.h"
#include "bindings/shared/PropertyFacts.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/Words.h"
#include "hdnt/registry/HDNTCellviewLib.h"

namespace hdnt::scripts {

/// What no operation of the model answers in one word.
namespace facts {

template <typename PinOrBus>
Word direction(PinOrBus& pin) {
    return {words::pinDirections.wordOf(pin.getDirection())};
}
template <typename PinOrBus>
Word type(PinOrBus& pin) {
    return {words::pinTypes.wordOf(pin.getType())};
}
template <typename PinOrBus>
Word required(PinOrBus& pin) {
    return {words::requiredValues.wordOf(pin.getRequiredValue())};
}
template <typename PinOrBus>
OrNone function(PinOrBus& pin) {
    OrNone name;
    pin.getPinFunction(name.text);
    return name;
}

inline std::string pinName(HDNTPin& pin) { return pin.getName(false); }
inline std::string plainPinName(HDNTPin& pin) { return pin.getName(true); }
inline std::optional<int> pinBit(HDNTPin& pin) {
    return pin.getBitIndex() < 0 ? std::nullopt : std::optional<int>(pin.getBitIndex());
}
inline std::optional<std::vector<int>> busRange(HDNTBus& bus) {
    if (bus.getFirstIndex() < 0) return std::nullopt;
    return std::vector<int>{bus.getFirstIndex(), bus.getLastIndex()};
}

inline int cellview(HDNTBlock& block) { return static_cast<int>(block.getType()); }
inline bool isRegistered(HDNTBlock& block) { return block.getType() < HDNTCellviewLib::UNKNOWN; }
inline Word maturity(HDNTBlock& block) { return {words::maturityLevels.wordOf(block.getMaturityLevel())}; }
inline const char* group(HDNTBlock& block) { return block.getPrimGroupType(false); }
inline const char* subgroup(HDNTBlock& block) { return block.getPrimSubGroupType(false); }
inline const char* legacyGroup(HDNTBlock& block) { return block.getPrimGroupType(true); }
inline const char* legacySubgroup(HDNTBlock& block) { return block.getPrimSubGroupType(true); }
inline OrNone masterDriverPin(HDNTBlock& block) { return {block.getMasterDriverPinName()}; }
inline std::vector<std::string> shadowPins(HDNTBlock& block) {
    std::vector<std::string> names;
    block.getMasterShadowPins(names);
    return names;
}
inline bool supportsInternalPins(HDNTBlock& block) { return block.internalPinsSupported(nullptr); }

inline Word typeName(HDNTProperty& property) { return {words::propertyTypes.wordOf(property.getType())}; }
inline int typeNumber(HDNTProperty& property) { return static_cast<int>(property.getType()); }
inline std::optional<Value> defaultValue(HDNTProperty& property) { return defaultOf(property); }
inline std::optional<int> bitWidth(HDNTProperty& property) {
    return isBits(property) ? std::optional<int>(property.getBitWidth()) : std::nullopt;
}
inline std::optional<int> adjustedBitWidth(HDNTProperty& property) {
    return isBits(property) ? std::optional<int>(property.getAdjustedBitWidth()) : std::nullopt;
}
inline std::optional<int> precision(HDNTProperty& property) {
    const bool isDouble = property.getType() == HATAttrTypes::TypeDouble;
    return isDouble ? std::optional<int>(property.getPrecision()) : std::nullopt;
}
inline std::optional<std::string> units(HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    return spec.hasUnit() ? std::optional<std::string>(spec.getUnitDefault()) : std::nullopt;
}
inline OrNone description(HDNTProperty& property) { return {property.getAttrSpec()->getDescription()}; }
inline OrNone declaredDescription(HDNTProperty& property) { return {property.getDeclaredDescription()}; }
/// The bus for a property of pins.
inline HDNTNode* owner(HDNTProperty& property) { return property.getParent(); }
inline bool isTest(HDNTProperty& property) { return property.getAttrSpec()->isTest(); }
inline bool isSimulation(HDNTProperty& property) { return property.getAttrSpec()->isSimulation(); }
inline bool isConstraintsOnly(HDNTProperty& property) { return property.getAttrSpec()->isConstraintsOnly(); }
inline bool isReadOnly(HDNTProperty& property) { return property.getAttrSpec()->isReadOnly(); }
inline bool isHidden(HDNTProperty& property) { return !property.getAttrSpec()->isVisible(); }
inline bool isPadConstraint(HDNTProperty& property) {
    const HDNTBlock* const block = property.getBlock();
    return block && block->getLibrary() && block->getLibrary()->isIOPinConstr(property.getName());
}

} // namespace facts

inline constexpr std::tuple pinFields{
    field<facts::pinName>("name", "`CLK`, or `D[7]` for a bit."),
    field<facts::plainPinName>("plain_name", "The same without brackets: `D7`."),
    field<&HDNTPin::getBaseName>("base_name", "The name of its bus, without a range."),
    field<facts::pinBit>("bit", "Its bit; None for a single pin."),
    field<&HDNTPin::getPinIndex>("index", "Position among all pins of the block."),
    field<&HDNTPin::getBus>("bus", "The declaration that it is a bit of."),
    field<&HDNTPin::getBlock>("block", "Its block."),
    field<facts::direction<HDNTPin>>("direction", "\"input\", \"output\", \"bidir\" or \"internal\"."),
    field<facts::type<HDNTPin>>("type",
                                "\"data\", \"clock\" and so on; what the configuration says for a bit of a mixed bus."),
    field<facts::required<HDNTPin>>("required", "What it must be tied to, as in `tieLow`; None when nothing is."),
    field<facts::function<HDNTPin>>("function", "Its function by the configuration; None when there is none."),
    field<&HDNTPin::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTPin::isAbstract>("is_abstract", "Whether it is declared abstract."),
    list<pinProperties, HDNTNodeKind::Property>("properties", "property", "The properties of its bus.")};

inline constexpr std::tuple busFields{
    field<&HDNTBus::getName>("name", "`CLK`, or `D[7:0]`."),
    field<&HDNTBus::getBaseName>("base_name", "The name without a range."),
    field<facts::busRange>("range", "First and last index as written; None for a single pin."),
    field<&HDNTBus::pinCount>("width", "How many pins it has."),
    field<&HDNTBus::getBlock>("block", "Its block."),
    field<facts::direction<HDNTBus>>("direction", "\"input\", \"output\", \"bidir\" or \"internal\"."),
    field<facts::type<HDNTBus>>("type",
                                "\"data\", \"clock\" and so on; \"mixed\" when its pins have types of their own."),
    field<facts::required<HDNTBus>>("required", "What its pins must be tied to; None when nothing is required."),
    field<facts::function<HDNTBus>>("function", "Its function by the configuration; None when there is none."),
    field<&HDNTBus::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTBus::isAbstract>("is_abstract", "Whether it is declared abstract."),
    list<busPins, HDNTNodeKind::Pin>("pins", "pin", "Its pins, in the order of the range."),
    list<busProperties, HDNTNodeKind::Property>("properties", "property", "The properties that it declares.")};

inline constexpr std::tuple blockFields{
    field<&HDNTBlock::getName>("name", "Its name, as declared."),
    list<blockPins, HDNTNodeKind::Pin>(
        "pins", "pin",
        "Its pins bit by bit, also asked by name; without internal ones where the part does not support them."),
    list<blockBuses, HDNTNodeKind::Bus>("buses", "bus", "Its pin declarations, also asked by name."),
    list<blockProperties, HDNTNodeKind::Property>("properties", "property", "Its properties, also asked by name."),
    field<&HDNTBlock::hasOwnNetlist>("has_own_netlist", "Whether its mapping stands in the library's own text."),
    field<&HDNTBlock::getNetlistKind>("netlist_kind", "Where its mapping comes from, as a number; 101 for none."),
    field<facts::cellview>("cellview", "Its cellview type; above 4000 for a block that the registry does not know."),
    field<facts::isRegistered>("is_registered", "Whether the registry of cellview types knows it."),
    field<facts::maturity>("maturity", "\"early\", \"beta\", \"production\" or \"deprecated\"."),
    field<&HDNTBlock::isTest>("is_test", "Whether it has the test flag."),
    field<&HDNTBlock::isInternal>("is_internal", "Whether it has the internal flag."),
    field<&HDNTBlock::getCanTiePins>("is_tie_capable", "Whether its pins can be tied, by its declaration."),
    field<facts::group>("group", "Its primitive group; None without one."),
    field<facts::subgroup>("subgroup", "Its subgroup; None without one."),
    field<facts::legacyGroup>("legacy_group", "Its group in the earlier scheme; None without one."),
    field<facts::legacySubgroup>("legacy_subgroup", "Its subgroup in the earlier scheme; None without one."),
    field<&HDNTBlock::canTiePins>("can_tie_pins", "Whether its pins can be tied, by the configuration."),
    field<&HDNTBlock::usesNibbleSizeHexAttrs>("uses_nibble_sized_hex", "Whether hex widths are whole digits."),
    field<&HDNTBlock::canBePseudoDifferential>("can_be_pseudo_differential", "What the configuration says of that."),
    field<&HDNTBlock::getCellArchesCfg>("architectures", "Tuple of the architectures that the configuration names."),
    field<facts::masterDriverPin>("master_driver_pin", "By the configuration; None when there is none."),
    field<facts::shadowPins>("shadow_pins", "Tuple of names, by the configuration."),
    field<facts::supportsInternalPins>("supports_internal_pins", "Whether the current part supports internal pins.")};

inline constexpr std::tuple propertyFields{
    field<&HDNTProperty::getName>("name", "Its name, as declared."),
    field<facts::typeName>("type", "\"bool\", \"int\", \"double\", \"string\", \"bithex\" or \"bitbinary\"."),
    field<facts::typeNumber>("type_number", "The number of the type."),
    field<facts::defaultValue>("default",
                               "The default: bool, int, float or str; a bit vector as written, None without one."),
    field<&HDNTProperty::getMinValue>("minimum", "Least value of the range or list; None when there is no bound."),
    field<&HDNTProperty::getMaxValue>("maximum", "Greatest value of the range or list; None when there is no bound."),
    field<&HDNTProperty::getAllowedValues>(
        "values", "Tuple of the listed values in the order written; empty when there is no list."),
    field<facts::bitWidth>("bit_width", "Bits of a bit vector; None for other types."),
    field<facts::adjustedBitWidth>("adjusted_bit_width",
                                   "The same, rounded up to whole digits where the block asks for that."),
    field<facts::precision>("precision", "Digits after the point of a double; None for other types."),
    field<facts::units>("units", "Its unit; None when there is none."),
    field<facts::description>("description", "The description in force; None when there is none."),
    field<facts::declaredDescription>("declared_description", "The description of the declaration; None without one."),
    field<facts::owner>("owner", "The block or bus that declares it."),
    field<&HDNTProperty::getBlock>("block", "The block that declares it, directly or by a bus."),
    field<&HDNTProperty::getIndex>("index", "Position among the block's properties."),
    field<&HDNTProperty::isMinDeclared>("has_minimum", "Whether the declaration gives a lower bound."),
    field<&HDNTProperty::isMaxDeclared>("has_maximum", "Whether the declaration gives an upper bound."),
    field<facts::isTest>("is_test", "Whether it has the test flag."),
    field<facts::isSimulation>("is_simulation", "Whether it is for simulation."),
    field<facts::isConstraintsOnly>("is_constraints_only", "Whether it is for constraints only."),
    field<facts::isReadOnly>("is_read_only", "Whether the configuration makes it read-only."),
    field<facts::isHidden>("is_hidden", "Whether it is not shown to users."),
    field<facts::isPadConstraint>("is_pad_constraint", "Whether the configuration names it as a constraint of pads."),
    field<&HDNTProperty::isMuxControl>("is_mux_control", "Whether it controls a multiplexer."),
    field<&HDNTProperty::isPinInversion>("is_pin_inversion", "Whether its name has the form IS_..._INVERTED."),
    field<&HDNTProperty::isNibbleSized>("is_nibble_sized", "Whether its width is rounded up to whole hex digits.")};

} // namespace hdnt::scripts
