#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author {

namespace {

/// Keys of the JSON that a row is made of; "location.file" is one inside of another.
using Columns = std::vector<std::string>;

const Columns& ofBlocks() {
    static const Columns columns = {"library",         "name",           "group",         "subgroup",
                                    "legacyGroup",     "legacySubgroup", "maturity",      "cellview",
                                    "isRegistered",    "isTest",         "isInternal",    "isTieCapable",
                                    "pinCount",        "busCount",       "propertyCount", "netlistKind",
                                    "netlist.section", "architectures",  "location.file", "location.line"};
    return columns;
}

const Columns& ofPins() {
    static const Columns columns = {"block",      "name",        "baseName", "range.0",       "range.1",
                                    "width",      "direction",   "type",     "required",      "isTest",
                                    "isAbstract", "foundByName", "function", "location.file", "location.line"};
    return columns;
}

const Columns& ofProperties() {
    static const Columns columns = {
        "block",           "pin",         "name",          "type",           "bitWidth",
        "precision",       "minimum",     "maximum",       "values",         "default",
        "units",           "description", "isTest",        "isSimulation",   "isConstraintsOnly",
        "isMuxControl",    "isReadOnly",  "isHidden",      "isPinInversion", "isNibbleSized",
        "isPadConstraint", "foundByName", "location.file", "location.line"};
    return columns;
}

// As RFC 4180 wants it. One line, whatever is in the text.
std::string quoted(const std::string& text) {
    std::string shown = platform::printable(text);
    if (shown.find_first_of(",\"") == std::string::npos) return shown;
    std::string result = "\"";
    for (const char c : shown) result.append(c == '"' ? 2 : 1, c);
    return result + "\"";
}

std::string textOf(const Json& value) {
    return value.is_array() ? platform::joined(words::cells(value), "; ") : words::cell(value);
}

std::string lineOf(const std::vector<std::string>& cells) { return platform::joined(cells, ",") + "\r\n"; }

std::string rowOf(const Columns& columns, const Json& json) {
    std::vector<std::string> cells;
    for (const std::string& column : columns) {
        std::string path = "/" + column;
        std::ranges::replace(path, '.', '/');
        const Json::json_pointer pointer(path);
        cells.push_back(json.contains(pointer) ? quoted(textOf(json[pointer])) : "");
    }
    return lineOf(cells);
}

using Head = std::string (*)(const ExportNotes&);
template <const Columns& (*columns)()>
constexpr Head headOf = [](const ExportNotes&) { return lineOf(columns()); };

void addBlock(const ExportedBlock& block, std::string& text, ExportNotes&) { text += rowOf(ofBlocks(), block.json); }

void addPins(const ExportedBlock& block, std::string& text, ExportNotes&) {
    for (const Json& bus : block.json["buses"]) text += rowOf(ofPins(), bus);
}

void addProperties(const ExportedBlock& block, std::string& text, ExportNotes&) {
    for (const Json& property : block.json["properties"]) text += rowOf(ofProperties(), property);
    for (const Json& bus : block.json["buses"])
        for (Json property : bus["properties"]) {
            property["pin"] = bus["name"];
            text += rowOf(ofProperties(), property);
        }
}

} // namespace

constinit const ExportTable blockTable = {"blocks", headOf<ofBlocks>, addBlock, "", true};
constinit const ExportTable pinTable = {"pins", headOf<ofPins>, addPins};
constinit const ExportTable propertyTable = {"properties", headOf<ofProperties>, addProperties};

} // namespace hdnt::author
