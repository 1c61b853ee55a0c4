// Property values: bounds, validity with reasons, and the canonical text of bit vectors.
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/TypedValues.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTConvert.h"

#include <boost/format.hpp>

#include <algorithm>
#include <limits>
#include <locale>

using hdnt::model::listOf;
using hdnt::model::withValues;
using Type = HATAttrTypes::AttrType;

std::vector<int> HDNTProperty::getAllowedIntValues() const { return listOf(spec_.createDiscreteIntRangeIter()); }
std::vector<double> HDNTProperty::getAllowedDoubleValues() const {
    return listOf(spec_.createDiscreteDoubleRangeIter());
}
std::vector<std::string> HDNTProperty::getAllowedStringValues() const { return listOf(spec_.createStringRangeIter()); }
std::vector<std::string> HDNTProperty::getAllowedHexValues() const { return listOf(spec_.createHexIter()); }
std::vector<std::string> HDNTProperty::getAllowedBinaryValues() const { return listOf(spec_.createBinaryIter()); }

// An enumerated property lists at least one value; one without answers as if nothing had been given.
template <typename T>
static T leastOf(const std::vector<T>& values) {
    return values.empty() ? T() : *std::min_element(values.begin(), values.end());
}

template <typename T>
static T greatestOf(const std::vector<T>& values) {
    return values.empty() ? T() : *std::max_element(values.begin(), values.end());
}

int HDNTProperty::getMinIntValue() const {
    return spec_.isEnumerated() ? leastOf(getAllowedIntValues()) : spec_.getLowIntRange();
}
int HDNTProperty::getMaxIntValue() const {
    return spec_.isEnumerated() ? greatestOf(getAllowedIntValues()) : spec_.getHighIntRange();
}
double HDNTProperty::getMinDoubleValue() const {
    return spec_.isEnumerated() ? leastOf(getAllowedDoubleValues()) : spec_.getLowDoubleRange();
}
double HDNTProperty::getMaxDoubleValue() const {
    return spec_.isEnumerated() ? greatestOf(getAllowedDoubleValues()) : spec_.getHighDoubleRange();
}
std::string HDNTProperty::getMinHexValue() const {
    return spec_.isEnumerated() ? leastOf(getAllowedHexValues()) : spec_.getLowHexRange();
}
std::string HDNTProperty::getMaxHexValue() const {
    return spec_.isEnumerated() ? greatestOf(getAllowedHexValues()) : spec_.getHighHexRange();
}
std::string HDNTProperty::getMinBinaryValue() const {
    return spec_.isEnumerated() ? leastOf(getAllowedBinaryValues()) : spec_.getLowBinaryRange();
}
std::string HDNTProperty::getMaxBinaryValue() const {
    return spec_.isEnumerated() ? greatestOf(getAllowedBinaryValues()) : spec_.getHighBinaryRange();
}

hdnt::Value HDNTProperty::getDefaultValue() const {
    return withValues(spec_, [](const auto& values) { return hdnt::Value(values.byDefault); });
}

std::vector<hdnt::Value> HDNTProperty::getAllowedValues() const {
    return withValues(spec_, [](const auto& values) {
        const auto listed = values.listed();
        return std::vector<hdnt::Value>(listed.begin(), listed.end());
    });
}

static std::optional<hdnt::Value> boundOf(const HATAttrSpec& spec, bool least) {
    hdnt::Value bound;
    const bool isThere = withValues(spec, [&](const auto& values) {
        if (spec.isEnumerated()) bound = least ? leastOf(values.listed()) : greatestOf(values.listed());
        else bound = least ? values.low : values.high;
        return values.ranged && (spec.isEnumerated() || (least ? values.hasLow() : values.hasHigh()));
    });
    const auto* const text = std::get_if<std::string>(&bound);
    return isThere && !(text && text->empty()) ? std::optional(bound) : std::nullopt;
}

std::optional<hdnt::Value> HDNTProperty::getMinValue() const { return boundOf(spec_, true); }
std::optional<hdnt::Value> HDNTProperty::getMaxValue() const { return boundOf(spec_, false); }

bool HDNTProperty::isValid(const hdnt::Value& value, std::string& reason) const {
    return std::visit([&](const auto& plain) { return isValidValue(plain, reason); }, value);
}

static bool refuse(std::string& reason, std::string text) {
    reason = std::move(text);
    return false;
}

// The standard library's character facet notes each character it is first asked about, without a lock. Formats are read
// with one that has been asked about all of them before any other thread sees it; the host's locale has no say either.
static const std::locale& formatLocale() {
    static const std::locale* const locale = [] {
        auto* const facet = new std::ctype<char>;
        for (int byte = 0; byte <= std::numeric_limits<unsigned char>::max(); ++byte)
            facet->narrow(facet->widen(static_cast<char>(byte)), '\0');
        return new std::locale(std::locale::classic(), facet);
    }();
    return *locale;
}

template <typename T>
static std::string outOfRange(const char* format, T value, T bound) {
    return (boost::format(format, formatLocale()) % value % bound).str();
}

bool HDNTProperty::isValidValue(int value, std::string& reason) const {
    if (getType() != Type::TypeInt) return refuse(reason, "Property is not of type integer.");
    if (spec_.isEnumerated()) {
        const std::vector<int> allowed = getAllowedIntValues();
        if (std::find(allowed.begin(), allowed.end(), value) != allowed.end()) return true;
        return refuse(reason, "The integer value is not one of the allowed values.");
    }
    if (value < getMinIntValue())
        return refuse(reason, outOfRange("The integer value (%d) is less than the allowed minimum (%d).", value,
                                         getMinIntValue()));
    if (value <= getMaxIntValue()) return true;
    return refuse(reason, outOfRange("The integer value (%d) is greater than the allowed minimum (%d).", value,
                                     getMaxIntValue()));
}

// Both messages about a range name its minimum.
bool HDNTProperty::isValidValue(double value, std::string& reason) const {
    if (getType() != Type::TypeDouble) return refuse(reason, "Property is not of type double.");
    if (spec_.isEnumerated()) {
        const std::vector<double> allowed = getAllowedDoubleValues();
        if (std::find(allowed.begin(), allowed.end(), value) != allowed.end()) return true;
        return refuse(reason, "The double value is not one of the allowed values.");
    }
    const double minimum = getMinDoubleValue();
    if (minimum > value)
        return refuse(reason,
                      outOfRange("The double value (%g) is less than the allowed minimum (%g).", value, minimum));
    if (value > getMaxDoubleValue())
        return refuse(reason,
                      outOfRange("The double value (%g) is greater than the allowed minimum (%g).", value, minimum));
    return true;
}

bool HDNTProperty::isValidValue(bool, std::string& reason) const {
    return getType() == Type::TypeBool || refuse(reason, "Property is not of type bool.");
}

bool HDNTProperty::isValidValue(std::string value, std::string& reason) const {
    if (getType() != Type::TypeString && !HATAttrTypes::isBitVector(getType()))
        return refuse(reason, "Property is not of type string.");
    const std::vector<hdnt::Value> allowed = getAllowedValues();
    const bool listed = std::any_of(allowed.begin(), allowed.end(), [&](const hdnt::Value& text) {
        return HSTStrUtils::compareCI(std::get<std::string>(text), value) == 0;
    });
    return listed || !spec_.isEnumerated() || refuse(reason, "The string value is not one of the allowed values.");
}

bool HDNTProperty::isValidValue(const char* value, std::string& reason) const {
    return isValidValue(std::string(value ? value : ""), reason);
}

std::string compressIntString(const std::string& text) {
    const size_t quote = text.find('\'');
    const size_t start = quote == text.npos ? 0 : std::min(quote + 2, text.size());
    if (start == text.size() || text[start] != '0') return text;
    const size_t digits = text.find_first_not_of('0', start);
    return text.substr(0, start) + (digits == text.npos ? "0" : text.substr(digits - 1));
}

std::string HDNTProperty::formatValue(std::string value, bool keepLeadingZeros) const {
    if (!HATAttrTypes::isBitVector(getType())) return value;
    char radix = '\0';
    if (const size_t quote = value.find('\''); quote != value.npos) {
        if (quote + 1 < value.size()) radix = HSTStringUtils::to_upper(value[quote + 1]);
        value.erase(0, quote + 2);
    }
    std::string digits;
    if (getType() == Type::TypeBitHex)
        radix == 'B' ? HUTConvert::binaryToHex(value, digits, getBitWidth())
                     : HUTConvert::hexToHex(value, digits, getBitWidth());
    else
        radix == 'H' ? HUTConvert::hexToBinary(value, digits, getBitWidth())
                     : HUTConvert::binaryToBinary(value, digits, getBitWidth());
    return keepLeadingZeros ? digits : compressIntString(digits);
}

// Groups of four from the right; "X" for a group that is no binary number.
static std::string hexDigitsOf(const std::string& binary) {
    std::string hex;
    for (size_t end = binary.size(); end > 0; end -= std::min<size_t>(end, 4)) {
        const size_t start = end - std::min<size_t>(end, 4);
        unsigned value = 0;
        bool valid = true;
        for (size_t i = start; i < end; ++i) {
            valid = valid && (binary[i] == '0' || binary[i] == '1');
            value = value * 2 + (binary[i] == '1');
        }
        hex += valid ? "0123456789abcdef"[value] : 'X';
    }
    std::reverse(hex.begin(), hex.end());
    return hex;
}

static void padOnce(std::string& digits, size_t bits, int width) {
    if (bits < static_cast<size_t>(std::max(width, 0)) && !digits.starts_with('0')) digits.insert(0, 1, '0');
}

std::string HDNTProperty::formatValue(const std::string& value, char binaryRadix, char hexRadix,
                                      const char* format) const {
    if (!HATAttrTypes::isBitVector(getType())) return value;
    const bool hex = getType() == Type::TypeBitHex;
    std::string digits = value;
    if (hex) {
        if (const size_t quote = value.find('\''); quote != value.npos && quote + 2 < value.size()) {
            digits = value.substr(quote + 2);
            if (HSTStringUtils::to_upper(value[quote + 1]) == 'B') digits = hexDigitsOf(digits);
        }
    }
    digits = compressIntString(digits);
    padOnce(digits, hex ? digits.size() * 4 : digits.size(), getBitWidth());
    return (boost::format(format, formatLocale()) % getBitWidth() % (hex ? hexRadix : binaryRadix) % digits).str();
}
