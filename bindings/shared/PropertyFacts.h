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

/// Why the property may not have the value; empty when it may. Nothing is what is no value of any type, as written.
std::string refusalOf(const HDNTProperty& property, const std::optional<Value>& value, const std::string& written);
/// What is said of a value that was refused for a property of that name: with what is allowed, or with the properties
/// that there are. `written` is the value in the language's own writing.
std::string refusalText(const HDNTBlock& block, const std::string& name, const std::optional<Value>& value,
                        const std::string& written);

} // namespace hdnt::scripts
