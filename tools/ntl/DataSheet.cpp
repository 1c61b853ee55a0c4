#include "tools/ntl/DataSheet.h"

#include "author/exchange/BlockWords.h"
#include "tools/ntl/Output.h"

namespace ntl {

using namespace hdnt::author::words; // NOLINT: the words are what this file is about

namespace {

std::string yesNo(const Json& value) { return value.get<bool>() ? "yes" : "no"; }

std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }

/// A name and its value, one a line.
class Facts {
public:
    void add(const std::string& name, const std::string& value) {
        text_ +=
            "  " + name + std::string(name.size() < column ? column - name.size() : 1, ' ') + printable(value) + "\n";
    }
    const std::string& text() const { return text_; }

private:
    static constexpr size_t column = 22;
    std::string text_;
};

std::string title(const std::string& text) { return "\n" + colored(Color::Bold, text, 1) + "\n"; }

std::string headerText(const Json& block) {
    Facts facts;
    facts.add("library", cell(block["library"]));
    facts.add("declared at", placeOf(block["location"]));
    facts.add("cellview type", cell(block["cellview"]) + (block["isRegistered"].get<bool>() ? "" : " (unregistered)"));
    facts.add("maturity", cell(block["maturity"]));
    facts.add("flags", orDash(joined(blockFlags(block), ", ")));
    facts.add("group", groupText(block["group"], block["subgroup"]));
    facts.add("legacy group", groupText(block["legacyGroup"], block["legacySubgroup"]));
    facts.add("netlist", netlistText(block));
    facts.add("pins can be tied", yesNo(block["isTieCapable"]));
    return colored(Color::Bold, printable(cell(block["name"])), 1) + "\n" + facts.text();
}

// A long text would push the other columns out of sight, so it goes to a line of its own.
std::string shortened(const std::string& text, const std::string& name, std::vector<std::string>& notes) {
    constexpr size_t longest = 48;
    if (text.size() <= longest) return text;
    notes.push_back(name + " " + text);
    return "(below)";
}

// One row a property, and its description and long texts below.
std::string propertyTable(const Json& properties, const std::string& indent) {
    Table table({"NAME", "TYPE", "WIDTH", "DEFAULT", "UNITS", "PRECISION", "FLAGS", "RANGE OR VALUES"}, indent);
    for (const Json& property : properties) {
        std::vector<std::string> notes;
        if (!property["description"].is_null()) notes.push_back(cell(property["description"]));
        const std::string chosen = shortened(defaultText(property), "default", notes);
        const std::string range =
            shortened(rangeText(property), property["values"].empty() ? "range" : "values", notes);
        if (!property["defaultRefusal"].is_null() && !property["default"].is_null())
            notes.push_back("! " + cell(property["defaultRefusal"]));
        table.add({cell(property["name"]), cell(property["type"]), widthText(property), chosen, cell(property["units"]),
                   cell(property["precision"]), joined(propertyFlags(property), ","), range});
        for (const std::string& note : notes) table.addNote("    " + note);
    }
    return table.text();
}

std::string pinTable(const Json& block) {
    Table table({"NAME", "RANGE", "BITS", "DIRECTION", "TYPE", "REQUIRED", "FLAGS", "FUNCTION"}, "  ");
    for (const Json& bus : block["buses"]) {
        table.add({cell(bus["baseName"]), joined(cells(bus["range"]), ":"), cell(bus["width"]), cell(bus["direction"]),
                   cell(bus["type"]), cell(bus["required"]), joined(pinFlags(bus), ","), cell(bus["function"])});
        if (cell(bus["type"]) == "mixed") table.addNote("    bits: " + bitTypes(bus));
    }
    std::string text = table.text();
    for (const Json& bus : block["buses"])
        if (!bus["properties"].empty())
            text += "  properties of " + printable(cell(bus["name"])) + "\n" + propertyTable(bus["properties"], "    ");
    return text;
}

std::string mappingText(const Json& block) {
    const Json& netlist = block["netlist"];
    const auto number = [&](const char* key) { return netlist[key].get<size_t>(); };
    Facts facts;
    const std::string architecture = cell(netlist["architecture"]);
    facts.add("declared at",
              placeOf(netlist["location"]) + (netlist["isMapLibrary"].get<bool>() ? " (map library)" : ""));
    facts.add("architecture", architecture.empty() ? "any" : architecture);
    facts.add("holds",
              joined({counted(number("instanceCount"), "instance"), counted(number("signalCount"), "signal"),
                      counted(number("connectCount"), "connect"),
                      counted(number("blockPropertyAssignCount") + number("pinPropertyAssignCount"), "assignment"),
                      counted(number("ifCount"), "if"),
                      counted(number("preInstanceCallCount") + number("postInstanceCallCount"), "call")},
                     ", "));
    facts.add("referenced instance", orDash(cell(netlist["referencedInstance"])));
    facts.add("pseudo-differential", yesNo(block["hasPseudoDifferentialExpansion"]));
    return title("Mapping: " + cell(netlist["section"])) + facts.text();
}

std::string configurationText(const Json& block) {
    Facts facts;
    const std::string architecture = cell(block["architecture"]);
    facts.add("architectures", orDash(joined(cells(block["architectures"]), ", ")));
    facts.add("can tie pins", yesNo(block["canTiePins"]));
    facts.add("nibble-sized hex", yesNo(block["usesNibbleSizedHex"]));
    facts.add("pseudo-differential", yesNo(block["canBePseudoDifferential"]));
    facts.add("master driver", yesNo(block["isMasterDriver"]));
    facts.add("master driver pin", orDash(cell(block["masterDriverPin"])));
    facts.add("shadow pins", orDash(joined(cells(block["shadowPins"]), ", ")));
    if (architecture.empty()) {
        facts.add("architecture", "- (name one with --arch)");
        return facts.text();
    }
    facts.add("architecture", architecture + (block["isInArchitecture"].get<bool>() ? "" : " (not there)"));
    facts.add("simulation device", orDash(cell(block["simulationDevice"])));
    facts.add("master architecture", orDash(cell(block["masterArchitecture"])));
    facts.add("internal pins", yesNo(block["supportsInternalPins"]));
    return facts.text();
}

} // namespace

std::string dataSheet(const Json& block) {
    std::string text = headerText(block);
    text +=
        title("Pins: " + cell(block["pinCount"]) + " in " + counted(block["busCount"].get<size_t>(), "declaration"));
    text += pinTable(block);
    text += title("Properties: " + cell(block["propertyCount"]));
    text += propertyTable(block["properties"], "  ");
    if (!block["netlist"].is_null()) text += mappingText(block);
    text += title("Configuration");
    return text + configurationText(block);
}

} // namespace ntl
