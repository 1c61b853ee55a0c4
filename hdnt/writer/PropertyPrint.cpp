// The printed form of a property: one line of text.
#include "hdnt/model/HDNTProperty.h"

#include <charconv>
#include <cstdio>

using Type = HATAttrTypes::AttrType;

namespace {

// As printf would in the C locale, whatever the host has set.
std::string fixed(double value, int precision) {
    std::string digits(static_cast<size_t>(precision) + 320, '\0');
    const std::to_chars_result end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, precision);
    digits.resize(static_cast<size_t>(end.ptr - digits.data()));
    return digits;
}

std::string quoted(const std::string& text) { return '"' + text + '"'; }

template <typename T, typename Text>
std::string listOf(const std::vector<T>& values, Text&& text) {
    std::string list = "values { ";
    for (size_t i = 0; i < values.size(); ++i) list += (i ? ", " : "") + text(values[i]);
    return list + " }";
}

// What stands in front of the default: the range, or the list of allowed values.
template <typename T, typename Text>
std::string domain(bool enumerated, const std::vector<T>& values, const T& low, const T& high, Text&& text) {
    if (!enumerated) return "min = " + text(low) + ", max = " + text(high);
    return values.empty() ? " }" : listOf(values, text);
}

std::string bodyOf(const HDNTProperty& property) {
    const bool enumerated = property.getAttrSpec()->isEnumerated();
    const auto bits = [&](const std::string& value) { return property.formatValue(value, false); };
    switch (property.getType()) {
    case Type::TypeInt: {
        const auto text = [](int value) { return std::to_string(value); };
        return domain(enumerated, property.getAllowedIntValues(), property.getMinIntValue(), property.getMaxIntValue(),
                      text) +
               ", default = " + text(property.getDefaultIntValue());
    }
    case Type::TypeDouble: {
        const auto text = [&](double value) { return fixed(value, property.getPrecision()); };
        return domain(enumerated, property.getAllowedDoubleValues(), property.getMinDoubleValue(),
                      property.getMaxDoubleValue(), text) +
               ", default = " + text(property.getDefaultDoubleValue()) +
               ", precision = " + std::to_string(property.getPrecision());
    }
    case Type::TypeBool: return std::string("default = ") + (property.getDefaultBoolValue() ? "true" : "false");
    case Type::TypeString:
        return (enumerated ? listOf(property.getAllowedStringValues(), quoted) + ", " : "") +
               "default = " + quoted(property.getDefaultStringValue());
    case Type::TypeBitHex:
        return domain(enumerated, property.getAllowedHexValues(), property.getMinHexValue(), property.getMaxHexValue(),
                      bits) +
               ", default = " + bits(property.getDefaultHexValue());
    case Type::TypeBitBinary:
        return domain(enumerated, property.getAllowedBinaryValues(), property.getMinBinaryValue(),
                      property.getMaxBinaryValue(), bits) +
               ", default = " + bits(property.getDefaultBinaryValue());
    }
    return {};
}

std::string typeOf(const HDNTProperty& property) {
    if (property.getType() == Type::TypeBitHex) return std::to_string(property.getBitWidth()) + "'h";
    if (property.getType() == Type::TypeBitBinary) return std::to_string(property.getBitWidth()) + "'b";
    return HDNTProperty::getTypeName(property.getType());
}

} // namespace

void HDNTProperty::print() { print(4); }
void HDNTProperty::print(unsigned long indent) { print(indent, stdout); }

void HDNTProperty::print(unsigned long indent, FILE* stream) {
    std::string line = "property " + typeOf(*this) + ' ' + quoted(getName()) + " { " + bodyOf(*this);
    const HATAttrSpec& spec = *getAttrSpec();
    if (spec.isTest()) line += ", test = true";
    if (spec.isConstraintsOnly()) line += ", constraintsOnly = true";
    if (spec.isSimulation()) line += ", simulation = true";
    if (isMuxControl()) line += ", muxControl = true";
    if (spec.hasUnit()) line += ", units = " + quoted(spec.getUnitDefault());
    line += " }\n";
    std::fprintf(stream, "%*c", static_cast<int>(indent), ' ');
    std::fwrite(line.data(), 1, line.size(), stream);
}
