#include "bindings/python/Convert.h"
#include "bindings/python/Define.h"
#include "bindings/python/Types.h"
#include "bindings/python/Values.h"
#include "bindings/shared/PropertyFacts.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"

#include <array>
#include <climits>

namespace hdnt::python {

using Type = HATAttrTypes::AttrType;

PyObject* typeWord(Type type) {
    static std::array<PyObject*, 9> words{};
    PyObject*& word = words.at(static_cast<size_t>(type));
    if (!word) word = toPython(HDNTProperty::getTypeName(type));
    return word;
}

std::optional<HDNTExpansion::Value> valueFor(const HDNTProperty* property, py::handle value) {
    if (PyBool_Check(value.ptr())) return value.cast<bool>();
    if (PyFloat_Check(value.ptr())) return value.cast<double>();
    if (!PyLong_Check(value.ptr())) return textOf(value);
    if (property && property->getType() == Type::TypeDouble) {
        const double number = PyLong_AsDouble(value.ptr());
        if (!PyErr_Occurred()) return number;
        PyErr_Clear();
        return std::nullopt;
    }
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(value.ptr(), &overflow);
    if (overflow != 0 || number > INT_MAX || number < INT_MIN) return std::nullopt;
    return static_cast<int>(number);
}

namespace {

using namespace scripts::fields;
using scripts::isBits;

Word typeName(HDNTProperty& property) { return {typeWord(property.getType())}; }
int typeNumber(HDNTProperty& property) { return static_cast<int>(property.getType()); }
std::optional<Value> defaultValue(HDNTProperty& property) { return scripts::defaultOf(property); }

py::object bitWidth(HDNTProperty& property) {
    return isBits(property) ? py::object(py::int_(property.getBitWidth())) : py::none();
}
py::object adjustedBitWidth(HDNTProperty& property) {
    return isBits(property) ? py::object(py::int_(property.getAdjustedBitWidth())) : py::none();
}
py::object precision(HDNTProperty& property) {
    return property.getType() == Type::TypeDouble ? py::object(py::int_(property.getPrecision())) : py::none();
}
py::object units(HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    return spec.hasUnit() ? textObject(spec.getUnitDefault()) : py::none();
}
OrNone description(HDNTProperty& property) { return {property.getAttrSpec()->getDescription()}; }
OrNone declaredDescription(HDNTProperty& property) { return {property.getDeclaredDescription()}; }

PyGetSetDef fields[] = {
    field<&HDNTProperty::getName>("name", "Its name, as declared."),
    field<typeName>("type", "\"bool\", \"int\", \"double\", \"string\", \"bithex\" or \"bitbinary\"."),
    field<typeNumber>("type_number", "The number of the type."),
    field<defaultValue>("default", "The default: bool, int, float or str; a bit vector as written, None without one."),
    field<&HDNTProperty::getMinValue>("minimum", "Least value of the range or list; None when there is no bound."),
    field<&HDNTProperty::getMaxValue>("maximum", "Greatest value of the range or list; None when there is no bound."),
    field<&HDNTProperty::getAllowedValues>(
        "values", "Tuple of the listed values in the order written; empty when there is no list."),
    field<bitWidth>("bit_width", "Bits of a bit vector; None for other types."),
    field<adjustedBitWidth>("adjusted_bit_width",
                            "The same, rounded up to whole digits where the block asks for that."),
    field<precision>("precision", "Digits after the point of a double; None for other types."),
    field<units>("units", "Its unit; None when there is none."),
    field<description>("description", "The description in force; None when there is none."),
    field<declaredDescription>("declared_description", "The description of the declaration; None without one."),
    field<owner>("owner", "The block or bus that declares it."),
    field<&HDNTProperty::getBlock>("block", "The block that declares it, directly or by a bus."),
    field<&HDNTProperty::getIndex>("index", "Position among the block's properties."),
    field<&HDNTProperty::isMinDeclared>("has_minimum", "Whether the declaration gives a lower bound."),
    field<&HDNTProperty::isMaxDeclared>("has_maximum", "Whether the declaration gives an upper bound."),
    field<isTest>("is_test", "Whether it has the test flag."),
    field<isSimulation>("is_simulation", "Whether it is for simulation."),
    field<isConstraintsOnly>("is_constraints_only", "Whether it is for constraints only."),
    field<isReadOnly>("is_read_only", "Whether the configuration makes it read-only."),
    field<isHidden>("is_hidden", "Whether it is not shown to users."),
    field<isPadConstraint>("is_pad_constraint", "Whether the configuration names it as a constraint of pads."),
    field<&HDNTProperty::isMuxControl>("is_mux_control", "Whether it controls a multiplexer."),
    field<&HDNTProperty::isPinInversion>("is_pin_inversion", "Whether its name has the form IS_..._INVERTED."),
    field<&HDNTProperty::isNibbleSized>("is_nibble_sized", "Whether its width is rounded up to whole hex digits."),
    noMoreFields};

// Why the property may not have the value; empty when it may.
std::string refusal(const HDNTProperty& property, const py::object& value) {
    const std::optional<HDNTExpansion::Value> plain = valueFor(&property, value);
    return plain ? scripts::refusalOf(property, *plain) : "The value is no 32-bit number.";
}

HDNTProperty& propertyOf(const HandleInUse& use) { return use.as<HDNTProperty>(); }

} // namespace

void addPropertyType(py::module_& module) {
    const py::object type = makeType(module, "Property", HDNTNodeKind::Property, fields,
                                     "A typed attribute that a block or a bus declares.");
    const auto self = [](const py::object& handle) { return handleOf(handle, typeOf(HDNTNodeKind::Property)); };
    define(
        type, "refusal", "Why the property may not have the value; None when it may.",
        [self](const py::object& handle, const py::object& value) {
            const HandleInUse use(self(handle));
            return orNone(refusal(propertyOf(use), value));
        },
        py::arg("value"));
    define(
        type, "accepts", "Whether the property may have the value.",
        [self](const py::object& handle, const py::object& value) {
            const HandleInUse use(self(handle));
            return refusal(propertyOf(use), value).empty();
        },
        py::arg("value"));
    define(
        type, "digits",
        "Plain digits of a bit vector in the property's radix and width; values of other types come back as they are.",
        [self](const py::object& handle, const py::object& value, bool keepLeadingZeros) {
            const HandleInUse use(self(handle));
            return textObject(propertyOf(use).formatValue(textOf(value), keepLeadingZeros));
        },
        py::arg("value"), py::arg("keep_leading_zeros") = true);
}

} // namespace hdnt::python
