#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "tools/ntl/BlockJson.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/DataSheet.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Model.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Suggest.h"

namespace ntl {

static void complainOfUnknown(const OpenedLibrary& opened, const std::string& name) {
    std::vector<std::string> known;
    for (const HDNTBlock* block : blocksOf(*opened.library, true)) known.push_back(block->getName());
    const std::vector<std::string> near = nearestNames(name, known);
    complain("no block '" + name + "'" + (near.empty() ? "" : "; did you mean " + joined(near, ", ") + "?"));
}

// Blocks of the parents are shown too.
static Json sheetsOf(const OpenedLibrary& opened, const Settings& settings, int& status) {
    Json sheets = Json::array();
    for (const std::string& name : settings.blocks) {
        if (const HDNTBlock* const block = opened.library->getTypeBlockByName(name, true)) {
            const OutputToError redirect;
            sheets.push_back(jsonOf(*block));
        } else {
            complainOfUnknown(opened, name);
            status = Faulty;
        }
    }
    return sheets;
}

int runShow(const Settings& settings) {
    const OpenedLibrary opened = openLibrary(settings);
    int status = Fine;
    Json sheets = sheetsOf(opened, settings, status);
    if (settings.json) {
        Json json = jsonHead("show");
        json["path"] = opened.path;
        json["blocks"] = std::move(sheets);
        writeOutput(jsonText(json));
        return status;
    }
    std::string text;
    for (const Json& sheet : sheets) text += (text.empty() ? "" : "\n\n") + dataSheet(sheet);
    writeOutput(text);
    return status;
}

} // namespace ntl
