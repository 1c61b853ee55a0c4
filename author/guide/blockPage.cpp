// What the page of a block shows.
#include "author/exchange/BlockWords.h"
#include "author/exchange/blocks.h"
#include "author/exchange/fileNames.internal.h"
#include "author/guide/SourceTexts.internal.h"
#include "author/guide/Symbol.internal.h"
#include "author/guide/instantiation.internal.h"
#include "author/guide/pages.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace hdnt::author::guide {

namespace {

using namespace words; // NOLINT: that is what this file is made of

constexpr const char* upwards = "../"; ///< from a page of a block to the guide's folder

std::string yesNo(bool is) { return is ? "yes" : "no"; }

/// Names and values for a list of facts. Values that say nothing are left out.
class Facts {
public:
    void add(const std::string& name, const std::string& value, const Json& href = nullptr) {
        if (!value.empty() && value != "-") list_.push_back({{"name", name}, {"value", value}, {"href", href}});
    }
    const Json& list() const { return list_; }

private:
    Json list_ = Json::array();
};

// "file.btl:12", since pages shall be the same wherever the library is.
std::string shortPlace(const Json& location) { return HUTPathUtils::leafOf(placeOf(location)); }

Json factsOf(const Json& block) {
    Facts facts;
    facts.add("Library", cell(block["library"]));
    facts.add("Group", groupText(block["group"], block["subgroup"]));
    facts.add("Earlier group", groupText(block["legacyGroup"], block["legacySubgroup"]));
    facts.add("Maturity", cell(block["maturity"]));
    facts.add("Flags", platform::joined(blockFlags(block), ", "));
    facts.add("Declared at", shortPlace(block["location"]), "#source");
    facts.add("Cell number", block["isRegistered"].get<bool>() ? cell(block["cellview"]) : "not registered");
    facts.add("Pins can be tied", yesNo(block["isTieCapable"].get<bool>()));
    facts.add("Mapping", netlistText(block), block["netlist"].is_null() ? Json() : Json("#mapping"));
    return facts.list();
}

Json configurationOf(const Json& block) {
    Facts facts;
    const std::string architectures = platform::joined(cells(block["architectures"]), ", ");
    facts.add("Architectures", architectures.empty() ? "all" : architectures);
    facts.add("Ties pins", yesNo(block["canTiePins"].get<bool>()));
    facts.add("Hexadecimal values in whole digits", yesNo(block["usesNibbleSizedHex"].get<bool>()));
    facts.add("Can be pseudo-differential", yesNo(block["canBePseudoDifferential"].get<bool>()));
    facts.add("Drives as a master", yesNo(block["isMasterDriver"].get<bool>()));
    facts.add("Pin of the master driver", cell(block["masterDriverPin"]));
    facts.add("Shadow pins", platform::joined(cells(block["shadowPins"]), ", "));
    return facts.list();
}

Json propertyRow(const Json& property, const std::string& pin) {
    const std::string name = cell(property["name"]);
    Json row;
    row["anchor"] = anchorOf("property", pin.empty() ? name : pin + "/" + name);
    row["name"] = name;
    row["pin"] = pin;
    row["type"] = cell(property["type"]);
    row["width"] = widthText(property);
    row["default"] = property["default"].is_null() ? "" : defaultText(property);
    row["units"] = cell(property["units"]);
    row["precision"] = cell(property["precision"]);
    row["range"] = property["values"].empty() ? rangeText(property) : "";
    row["values"] = Json::array();
    for (const std::string& value : cells(property["values"])) row["values"].push_back({{"value", value}});
    row["flags"] = platform::joined(propertyFlags(property), ", ");
    row["description"] = cell(property["description"]);
    row["refusal"] = property["default"].is_null() ? "" : cell(property["defaultRefusal"]);
    return row;
}

Json propertyRows(const Json& block) {
    Json rows = Json::array();
    for (const Json& property : block["properties"]) rows.push_back(propertyRow(property, ""));
    for (const Json& bus : block["buses"])
        for (const Json& property : bus["properties"]) rows.push_back(propertyRow(property, cell(bus["baseName"])));
    return rows;
}

std::string requiredText(const std::string& required) {
    static const std::map<std::string, std::string> texts = {
        {"tieLow", "tied to 0"},       {"tieHigh", "tied to 1"},       {"tieSpecial", "tied as the cell prescribes"},
        {"untie", "has to stay open"}, {"active", "has to be driven"}, {"mustConnect", "has to be connected"}};
    const auto found = texts.find(required);
    return found == texts.end() ? required : found->second;
}

Json pinRow(const Json& bus) {
    Json row;
    const bool isBus = !bus["range"].is_null();
    row["anchor"] = anchorOf("pin", cell(bus["name"]));
    row["name"] = cell(bus["baseName"]);
    row["range"] = isBus ? "[" + platform::joined(cells(bus["range"]), ":") + "]" : "";
    row["width"] = cell(bus["width"]);
    row["direction"] = cell(bus["direction"]);
    row["type"] = cell(bus["type"]);
    row["required"] = cell(bus["required"]);
    row["requiredText"] = requiredText(cell(bus["required"]));
    row["flags"] = platform::joined(pinFlags(bus), ", ");
    row["function"] = cell(bus["function"]);
    row["bits"] = cell(bus["type"]) == "mixed" ? bitTypes(bus) : "";
    return row;
}

Json pinRows(const Json& block) {
    Json rows = Json::array();
    for (const Json& bus : block["buses"]) rows.push_back(pinRow(bus));
    return rows;
}

Json mapsToLinks(const Book& book, const HDNTBlock& block) {
    Json links = Json::array();
    for (const std::string& type : book.relationsOf(block).mapsTo)
        links.push_back(book.linkTo(book.find(type), type, upwards));
    return links;
}

Json usedByLinks(const Book& book, const HDNTBlock& block) {
    Json links = Json::array();
    for (const HDNTBlock* user : book.relationsOf(block).usedBy) links.push_back(book.linkTo(*user, upwards));
    return links;
}

// The others of its group, as fine as that is given.
Json seeAlsoLinks(const Book& book, const HDNTBlock& block) {
    Json links = Json::array();
    const std::string group = groupOf(block);
    for (const HDNTBlock* other : book.blocks())
        if (!group.empty() && other != &block && groupOf(*other) == group)
            links.push_back(book.linkTo(*other, upwards));
    return links;
}

Json shownSources(Json sources) {
    for (Json& source : sources) {
        source["file"] = HUTPathUtils::leafOf(cell(source["file"]));
        if (source["leftOut"] == 0) source["leftOut"] = nullptr;
    }
    return sources;
}

} // namespace

Json blockPage(const Book& book, HDNTBlock& block, const Json& facts, const Json& sources, Progression& progression) {
    Json page;
    page["heading"] = block.getName();
    page["root"] = upwards;
    page["facts"] = factsOf(facts);
    page["symbol"] = symbolOf(facts);
    page["pins"] = pinRows(facts);
    page["properties"] = propertyRows(facts);
    page["hasProperties"] = !page["properties"].empty();
    page["instantiations"] = {{{"id", "in-verilog"}, {"language", "Verilog"}, {"text", verilogInstance(facts)}},
                              {{"id", "in-vhdl"}, {"language", "VHDL"}, {"text", vhdlInstance(facts)}},
                              {{"id", "in-ntl"}, {"language", "NTL"}, {"text", ntlInstance(facts)}}};
    page["sources"] = shownSources(sources);
    page["configuration"] = configurationOf(facts);
    page["mapping"] = mappingOf(book, block, sources, progression);
    page["mapsTo"] = mapsToLinks(book, block);
    page["usedBy"] = usedByLinks(book, block);
    page["seeAlso"] = seeAlsoLinks(book, block);
    for (const auto& [flag, list] :
         {std::pair{"hasMapsTo", "mapsTo"}, {"hasUsedBy", "usedBy"}, {"hasSeeAlso", "seeAlso"}})
        page[flag] = !page[list].empty();
    page["group"] = groupOf(block);
    page["since"] = book.options().changes ? Json(book.options().changes->since) : Json();
    page["changes"] = changesOf(book, block.getName());
    return page;
}

Json blockRow(const Book& book, const HDNTBlock& block, const Json& facts) {
    Json row = book.linkTo(block, "");
    std::set<std::string> directions;
    for (const Json& bus : facts["buses"]) directions.insert(cell(bus["direction"]));
    std::vector<std::string> properties;
    for (const Json& property : facts["properties"]) properties.push_back(cell(property["name"]));
    row["group"] = facts["group"].is_null() ? "" : groupText(facts["group"], facts["subgroup"]);
    row["maturity"] = cell(facts["maturity"]);
    row["pins"] = facts["pinCount"];
    row["directions"] = platform::joined({directions.begin(), directions.end()}, ", ");
    row["properties"] = platform::joined(properties, ", ");
    row["propertyCount"] = properties.size();
    row["isMapped"] = !book.relationsOf(block).variants.empty();
    row["architectures"] = Json::array();
    for (const std::string& architecture : book.architectures())
        row["architectures"].push_back({{"name", architecture}, {"isThere", isInArchitecture(block, architecture)}});
    row["architectureNames"] = "";
    std::vector<std::string> names;
    for (const std::string& architecture : book.architectures())
        if (isInArchitecture(block, architecture)) names.push_back(architecture);
    row["architectureNames"] = platform::joined(names, ", ");
    return row;
}

} // namespace hdnt::author::guide
