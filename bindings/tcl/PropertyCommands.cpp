#include "bindings/shared/PropertyFacts.h"
#include "bindings/tcl/Subcommand.h"
#include "bindings/tcl/Values.h"
#include "hdnt/model/HDNTBlock.h"

namespace hdnt::tcl {

Value valueFor(HATAttrTypes::AttrType type, Tcl_Obj* word) {
    switch (type) {
    case HATAttrTypes::TypeBool: return boolOf(word);
    case HATAttrTypes::TypeInt: return intOf(word);
    case HATAttrTypes::TypeDouble: return doubleOf(word);
    default: return textOf(word);
    }
}

namespace {

using namespace scripts::fields;
std::string typeName(HDNTProperty& property) { return HDNTProperty::getTypeName(property.getType()); }
int typeNumber(HDNTProperty& property) { return static_cast<int>(property.getType()); }
std::optional<Value> defaultValue(HDNTProperty& property) { return scripts::defaultOf(property); }

Tcl_Obj* bitWidth(HDNTProperty& property) {
    return scripts::isBits(property) ? toTcl(property.getBitWidth()) : Tcl_NewObj();
}
Tcl_Obj* adjustedBitWidth(HDNTProperty& property) {
    return scripts::isBits(property) ? toTcl(property.getAdjustedBitWidth()) : Tcl_NewObj();
}
Tcl_Obj* precision(HDNTProperty& property) {
    return property.getType() == HATAttrTypes::TypeDouble ? toTcl(property.getPrecision()) : Tcl_NewObj();
}
std::string units(HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    return spec.hasUnit() ? spec.getUnitDefault() : "";
}
std::string description(HDNTProperty& property) { return property.getAttrSpec()->getDescription(); }

// What is no value of the type at all is refused, too.
std::string refusalOf(const Call& call) {
    const auto& property = call.as<HDNTProperty>();
    try {
        return scripts::refusalOf(property, valueFor(property.getType(), call.argument(0)));
    } catch (const Refused& refused) {
        return refused.what();
    }
}
Tcl_Obj* refusal(const Call& call) { return toTcl(refusalOf(call)); }
Tcl_Obj* accepts(const Call& call) { return toTcl(refusalOf(call).empty()); }

Tcl_Obj* digits(const Call& call) {
    const bool keepLeadingZeros = call.arguments() < 2 || boolOf(call.argument(1));
    return toTcl(call.as<HDNTProperty>().formatValue(textOf(call.argument(0)), keepLeadingZeros));
}

} // namespace

std::vector<Subcommand> propertySubcommands() {
    return {field<&HDNTProperty::getName>("name"),
            field<typeName>("type"),
            field<typeNumber>("type_number"),
            field<defaultValue>("default"),
            field<&HDNTProperty::getMinValue>("minimum"),
            field<&HDNTProperty::getMaxValue>("maximum"),
            field<&HDNTProperty::getAllowedValues>("values"),
            field<bitWidth>("bit_width"),
            field<adjustedBitWidth>("adjusted_bit_width"),
            field<precision>("precision"),
            field<units>("units"),
            field<description>("description"),
            field<&HDNTProperty::getDeclaredDescription>("declared_description"),
            field<owner>("owner"),
            field<&HDNTProperty::getBlock>("block"),
            field<&HDNTProperty::getIndex>("index"),
            field<&HDNTProperty::isMinDeclared>("has_minimum"),
            field<&HDNTProperty::isMaxDeclared>("has_maximum"),
            field<isTest>("is_test"),
            field<isSimulation>("is_simulation"),
            field<isConstraintsOnly>("is_constraints_only"),
            field<isReadOnly>("is_read_only"),
            field<isHidden>("is_hidden"),
            field<isPadConstraint>("is_pad_constraint"),
            field<&HDNTProperty::isMuxControl>("is_mux_control"),
            field<&HDNTProperty::isPinInversion>("is_pin_inversion"),
            field<&HDNTProperty::isNibbleSized>("is_nibble_sized"),
            {"accepts", accepts, 1, 1, "value", false},
            {"refusal", refusal, 1, 1, "value", false},
            {"digits", digits, 1, 2, "value ?keepLeadingZeros?", false}};
}

} // namespace hdnt::tcl
