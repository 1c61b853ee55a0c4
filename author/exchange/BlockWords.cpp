#include "author/exchange/BlockWords.h"

#include "hdnt/platform/Text.h"

#include <cctype>
#include <map>
#include <utility>

namespace hdnt::author::words {

std::string cell(const Json& value) {
    if (value.is_null()) return "";
    if (value.is_string()) return value.get<std::string>();
    return value.is_boolean() ? (value.get<bool>() ? "true" : "false") : value.dump();
}

std::vector<std::string> cells(const Json& list) {
    std::vector<std::string> result;
    for (const Json& item : list) result.push_back(cell(item));
    return result;
}

namespace {

// Those of the flags that are set: "muxControl" when "isMuxControl" is true.
std::vector<std::string> setFlags(const Json& json, const std::vector<std::string>& flags) {
    std::vector<std::string> set;
    for (const std::string& flag : flags) {
        std::string key = "is" + flag;
        key[2] = static_cast<char>(std::toupper(static_cast<unsigned char>(key[2])));
        if (json[key].get<bool>()) set.push_back(flag);
    }
    return set;
}

} // namespace

std::vector<std::string> blockFlags(const Json& block) { return setFlags(block, {"test", "internal"}); }

std::vector<std::string> pinFlags(const Json& bus) {
    std::vector<std::string> flags = setFlags(bus, {"test", "abstract"});
    if (!bus["foundByName"].get<bool>()) flags.emplace_back("notFoundByName");
    return flags;
}

std::vector<std::string> propertyFlags(const Json& property) {
    return setFlags(property, {"test", "simulation", "constraintsOnly", "muxControl", "readOnly", "hidden",
                               "pinInversion", "nibbleSized", "padConstraint"});
}

std::string placeOf(const Json& location) {
    if (location.is_null()) return "";
    return cell(location["file"]) + (location["line"].is_null() ? "" : ":" + cell(location["line"]));
}

std::string groupText(const Json& group, const Json& subgroup) {
    const std::string text = cell(group) + (subgroup.is_null() ? "" : ":" + cell(subgroup));
    return text.empty() ? "-" : text;
}

std::string netlistText(const Json& block) {
    static const std::map<int, std::string> kinds = {
        {100, "for any architecture"}, {101, "none"}, {103, "its own"}, {104, "its own, in a library with a parent"}};
    const int kind = block["netlistKind"].get<int>();
    const auto found = kinds.find(kind);
    const std::string section = block["netlist"].is_null() ? "" : ", " + cell(block["netlist"]["section"]);
    return (found == kinds.end() ? "for one architecture" : found->second) + " (" + std::to_string(kind) + ")" +
           section;
}

std::string rangeText(const Json& property) {
    if (!property["values"].empty()) return platform::joined(cells(property["values"]), ", ");
    const std::string low = cell(property["minimum"]);
    const std::string high = cell(property["maximum"]);
    if (low.empty() && high.empty()) return "any";
    return (low.empty() ? "any" : low) + " to " + (high.empty() ? "any" : high);
}

std::string widthText(const Json& property) {
    const std::string width = cell(property["bitWidth"]);
    const std::string adjusted = cell(property["adjustedBitWidth"]);
    return adjusted == width ? width : width + " (" + adjusted + ")";
}

std::string defaultText(const Json& property) {
    const Json& value = property["default"];
    return cell(property["type"]) == "string" ? "\"" + cell(value) + "\""
                                              : (value.is_null() || cell(value).empty() ? "-" : cell(value));
}

std::string bitTypes(const Json& bus) {
    std::vector<std::pair<std::string, std::string>> runs;
    for (const Json& pin : bus["pins"]) {
        const std::string type = cell(pin["type"]);
        if (runs.empty() || runs.back().first != type) runs.emplace_back(type, "");
        runs.back().second += " " + cell(pin[pin["bit"].is_null() ? "name" : "bit"]);
    }
    std::string text;
    for (const auto& [type, bits] : runs) text.append(text.empty() ? "" : ", ").append(type).append(bits);
    return text;
}

} // namespace hdnt::author::words
