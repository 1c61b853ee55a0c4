// The form "json": what the model says, and enough of it to make the same library again.
#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/mappingJson.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/Text.h"

#include <cmath>

namespace hdnt::author {

namespace {

using platform::printable;
using words::cell;

constexpr auto replaced = Json::error_handler_t::replace;

Json functionsOf(const HDNTLibrary& library) {
    Json functions = Json::array();
    for (const HDNTFunctionDecl& function : library.functions()) {
        Json formals = Json::array();
        for (std::size_t i = 0; i < function.getNumFormals(); ++i)
            formals.push_back(HDNTProperty::getTypeName(function.getFormal(i)));
        functions.push_back({{"name", function.getName()},
                             {"type", HDNTProperty::getTypeName(function.getType())},
                             {"formals", std::move(formals)}});
    }
    return functions;
}

// Up to the list of blocks, which is open.
std::string head(const ExportNotes& notes) {
    const Json document = {{"format", "hdnt-library"},
                           {"version", 1},
                           {"library", notes.library.getName()},
                           {"functions", functionsOf(notes.library)},
                           {"blocks", Json::array()}};
    std::string text = document.dump(1, ' ', false, replaced);
    return text.erase(text.rfind(']'));
}

// JSON has no numbers for them.
void nameInfinite(Json& value) {
    if (!value.is_number_float() || std::isfinite(value.get<double>())) return;
    value = value.get<double>() < 0 ? "-inf" : "inf";
}

void nameInfiniteOf(Json& properties) {
    for (Json& property : properties) {
        for (const char* const key : {"minimum", "maximum", "default"}) nameInfinite(property[key]);
        for (Json& value : property["values"]) nameInfinite(value);
    }
}

bool isUtf8(const Json& json) {
    try {
        (void)json.dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

constexpr std::string_view replacedBytes = "bytes that are no UTF-8 are written as U+FFFD";

std::string lossOf(const HDNTLibrary& library) {
    const std::string& name = library.getName();
    return isUtf8(name) ? std::string() : "library " + printable(name) + ": " + std::string(replacedBytes);
}

void addBlock(const ExportedBlock& block, std::string& text, ExportNotes& notes) {
    Json json = block.json;
    std::vector<std::string> losses;
    if (const HDNTNetlist* const netlist = block.model.getAttachedNetlist()) {
        Json statements = statementsOf(*netlist, losses);
        json["netlist"]["statements"] = losses.empty() ? std::move(statements) : Json();
        for (std::string& loss : losses) loss.insert(0, "mapping: ");
    }
    nameInfiniteOf(json["properties"]);
    for (Json& bus : json["buses"]) nameInfiniteOf(bus["properties"]);
    if (!isUtf8(json)) losses.emplace_back(replacedBytes);
    const std::string name = printable(cell(json["name"]));
    for (const std::string& loss : losses) notes.leftOut.push_back(name + ": " + loss);
    text += (text.empty() ? "\n" : ",\n") + json.dump(1, ' ', false, replaced);
}

} // namespace

constinit const ExportTable libraryTable = {"json", head, addBlock, "\n]}\n", true, false, lossOf};

} // namespace hdnt::author
