#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/platform/BitText.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTConvert.h"
#include "hdnt/platform/Text.h"

#include <cmath>
#include <string_view>

namespace hdnt::author {

namespace {

using words::cell;

bool isHex(const Json& property) { return property["type"] == "bithex"; }

bool isInfinite(const Json& value) { return value.is_number_float() && !std::isfinite(value.get<double>()); }

// With digits on both sides of a point, as both languages want them.
std::string realText(double value) {
    std::string text = platform::DoubleText(value, platform::DoubleForm::WithPoint).str();
    if (text.find('.') == std::string::npos) text.insert(text.find('e'), ".0");
    return text;
}

// Quoted, with quotes, backslashes, characters of `others` and bytes that are no printed ASCII as `shown` has them.
template <typename Shown>
std::string quoted(const std::string& text, std::string_view others, Shown&& shown) {
    std::string result = "\"";
    for (const char c : text) {
        const bool isPlain = c >= ' ' && c <= '~' && c != '"' && c != '\\' && others.find(c) == others.npos;
        if (isPlain) result += c;
        else result += shown(c, static_cast<unsigned char>(c));
    }
    return result + "\"";
}

std::string vhdlString(const std::string& text) {
    return quoted(text, "", [](char c, unsigned byte) {
        if (c == '"' || c == '\\') return std::string(c == '"' ? "\"\"" : "\\");
        return "\" & character'val(" + std::to_string(byte) + ") & \"";
    });
}

std::string vhdlBits(const Json& property) {
    const int width = property["bitWidth"];
    const bool inHex = width % 4 == 0;
    std::string digits = cell(property["defaultDigits"]);
    if (isHex(property)) (inHex ? HUTConvert::hexToHex : HUTConvert::hexToBinary)(digits, digits, width);
    else (inHex ? HUTConvert::binaryToHex : HUTConvert::binaryToBinary)(digits, digits, width);
    return (inHex ? "X\"" : "B\"") + digits + "\"";
}

} // namespace

bool hasHdlDefault(const Json& property) {
    const Json& value = property["default"];
    if (value.is_null() || !property["defaultRefusal"].is_null() || isInfinite(value)) return false;
    return property["bitWidth"].is_null() ||
           (property["bitWidth"] > 0 && platform::BitText::of(cell(property["defaultDigits"]), isHex(property)));
}

const Json& listedDefault(const Json& property) {
    const Json& value = property["default"];
    if (!value.is_string() || property["type"] != "string") return value;
    for (const Json& listed : property["values"])
        if (HSTStringUtils::iequals(cell(listed), cell(value))) return listed;
    return value;
}

bool hasHdlBound(const Json& property, const std::string& which) {
    return property["has" + which] == true && !isInfinite(property[HSTStringUtils::to_lower_copy(which)]);
}

std::string verilogString(const std::string& text) {
    return quoted(text, "`", [](char c, unsigned byte) { // some readers look for macros inside of texts, too
        if (c == '"' || c == '\\') return std::string("\\") + c;
        return "\\" + std::to_string(byte / 64) + std::to_string(byte / 8 % 8) + std::to_string(byte % 8);
    });
}

std::string verilogDefault(const Json& property) {
    return verilogValue(property, property["bitWidth"].is_null() ? listedDefault(property) : property["defaultDigits"]);
}

std::string verilogValue(const Json& property, const Json& value) {
    if (!property["bitWidth"].is_null()) {
        const std::string digits = cell(value);
        const bool hasRadix = digits.find('\'') != std::string::npos;
        return hasRadix ? digits : cell(property["bitWidth"]) + (isHex(property) ? "'h" : "'b") + digits;
    }
    return verilogPlain(value);
}

std::string verilogPlain(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? "1'b1" : "1'b0";
    if (value.is_number_float()) return realText(value.get<double>());
    return value.is_string() ? verilogString(cell(value)) : cell(value);
}

std::string verilogParameter(const Json& property, const std::string& name) {
    const auto typeOf = [](const Json& one) -> std::string {
        if (!one["bitWidth"].is_null()) return "[" + std::to_string(one["bitWidth"].get<int>() - 1) + ":0] ";
        if (one["type"] == "bool") return "[0:0] ";
        if (one["type"] == "int") return "integer ";
        return one["type"] == "double" ? "real " : ""; // a text is as long as its value
    };
    return "parameter " + typeOf(property) + name + " = " + verilogDefault(property);
}

std::string verilogCondition(const Json& property, const std::string& name) {
    std::vector<std::string> parts;
    for (const Json& value : property["values"]) parts.push_back(name + " == " + verilogValue(property, value));
    if (!parts.empty()) return platform::joined(parts, " || ");
    if (hasHdlBound(property, "Minimum")) parts.push_back(name + " >= " + verilogValue(property, property["minimum"]));
    if (hasHdlBound(property, "Maximum")) parts.push_back(name + " <= " + verilogValue(property, property["maximum"]));
    return platform::joined(parts, " && ");
}

std::string vhdlDefault(const Json& property) {
    if (!property["bitWidth"].is_null()) return vhdlBits(property);
    const Json& value = listedDefault(property);
    return value.is_string() ? vhdlString(cell(value)) : vhdlValue(value);
}

std::string vhdlValue(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? "TRUE" : "FALSE";
    if (value.is_number_float()) return realText(value.get<double>());
    return cell(value);
}

} // namespace hdnt::author
