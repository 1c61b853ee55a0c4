#pragma once

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"

#include <optional>
#include <string>

/// What a property says of its values.
namespace hdnt::scripts {

inline bool isBits(const HDNTProperty& property) {
    return property.getType() == HATAttrTypes::TypeBitHex || property.getType() == HATAttrTypes::TypeBitBinary;
}

/// Nothing for a bit vector without one.
inline std::optional<Value> defaultOf(const HDNTProperty& property) {
    const auto value = property.getDefaultValue();
    const bool isNone = isBits(property) && std::get<std::string>(value).empty();
    return isNone ? std::nullopt : std::optional(value);
}

/// Why the property may not have the value; empty when it may.
std::string refusalOf(const HDNTProperty& property, const Value& value);

/// What the property may have: "int from 0 to 9", "one of "ONE", "TWO"".
std::string allowedValues(const HDNTProperty& property);
/// What is said of a value, in the language's own writing, that was refused for a property of that name: with what is
/// allowed, or with the properties that there are.
std::string refusalText(const HDNTBlock& block, const std::string& name, const std::string& value);

} // namespace hdnt::scripts
