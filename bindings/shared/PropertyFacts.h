#pragma once

#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTExpansion.h"

#include <cfloat>
#include <climits>
#include <string>

/// What a property says of its values, in a language's own terms: `to` turns a bool, int, double, text or a vector of
/// those into the language's, and nullptr into what that has for nothing.
namespace hdnt::scripts {

inline bool isBits(const HDNTProperty& property) {
    return property.getType() == HATAttrTypes::TypeBitHex || property.getType() == HATAttrTypes::TypeBitBinary;
}

template <typename To>
auto textOrNone(const std::string& text, To&& to) {
    return text.empty() ? to(nullptr) : to(text);
}

/// Nothing for a bit vector without one.
template <typename To>
auto defaultOf(const HDNTProperty& property, To&& to) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    switch (property.getType()) {
    case HATAttrTypes::TypeBool: return to(spec.getBoolDefault());
    case HATAttrTypes::TypeInt: return to(spec.getIntDefault());
    case HATAttrTypes::TypeDouble: return to(spec.getDoubleDefault());
    case HATAttrTypes::TypeBitHex: return textOrNone(spec.getHexDefault(), to);
    case HATAttrTypes::TypeBitBinary: return textOrNone(spec.getBinaryDefault(), to);
    default: return to(spec.getStringDefault());
    }
}

template <typename Number, typename To>
auto bound(const HDNTProperty& property, Number value, Number unbounded, To&& to) {
    return !property.getAttrSpec()->isEnumerated() && value == unbounded ? to(nullptr) : to(value);
}

/// Of the range or list; nothing when there is no bound.
template <typename To>
auto minimumOf(const HDNTProperty& property, To&& to) {
    switch (property.getType()) {
    case HATAttrTypes::TypeInt: return bound(property, property.getMinIntValue(), INT_MIN, to);
    case HATAttrTypes::TypeDouble: return bound(property, property.getMinDoubleValue(), -DBL_MAX, to);
    case HATAttrTypes::TypeBitHex: return textOrNone(property.getMinHexValue(), to);
    case HATAttrTypes::TypeBitBinary: return textOrNone(property.getMinBinaryValue(), to);
    default: return to(nullptr);
    }
}

template <typename To>
auto maximumOf(const HDNTProperty& property, To&& to) {
    switch (property.getType()) {
    case HATAttrTypes::TypeInt: return bound(property, property.getMaxIntValue(), INT_MAX, to);
    case HATAttrTypes::TypeDouble: return bound(property, property.getMaxDoubleValue(), DBL_MAX, to);
    case HATAttrTypes::TypeBitHex: return textOrNone(property.getMaxHexValue(), to);
    case HATAttrTypes::TypeBitBinary: return textOrNone(property.getMaxBinaryValue(), to);
    default: return to(nullptr);
    }
}

/// The listed values in the order written.
template <typename To>
auto valuesOf(const HDNTProperty& property, To&& to) {
    switch (property.getType()) {
    case HATAttrTypes::TypeBool: return to(std::vector<int>());
    case HATAttrTypes::TypeInt: return to(property.getAllowedIntValues());
    case HATAttrTypes::TypeDouble: return to(property.getAllowedDoubleValues());
    case HATAttrTypes::TypeBitHex: return to(property.getAllowedHexValues());
    case HATAttrTypes::TypeBitBinary: return to(property.getAllowedBinaryValues());
    default: return to(property.getAllowedStringValues());
    }
}

/// Why the property may not have the value; empty when it may.
std::string refusalOf(const HDNTProperty& property, const HDNTExpansion::Value& value);

/// What the property may have: "int from 0 to 9", "one of "ONE", "TWO"".
std::string allowedValues(const HDNTProperty& property);
/// What is said of a value, in the language's own writing, that was refused for a property of that name: with what is
/// allowed, or with the properties that there are.
std::string refusalText(const HDNTBlock& block, const std::string& name, const std::string& value);

} // namespace hdnt::scripts
