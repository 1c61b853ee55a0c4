#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/DataSheet.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"

namespace ntl {

// Blocks of the parents are shown too.
static Json sheetsOf(const OpenedLibrary& opened, const Settings& settings, int& status) {
    Json sheets = Json::array();
    hdnt::SourcePlaces places;
    for (const std::string& name : settings.blocks) {
        HDNTBlock* const block = findBlock(opened, name);
        if (!block) {
            status = Faulty;
            continue;
        }
        if (!loadMapping(*block)) status = Faulty;
        const OutputToError redirect;
        sheets.push_back(jsonOf(*block, places));
    }
    return sheets;
}

int runShow(const Settings& settings) {
    enableByDefault(settings, "ntl.enableMapLib");
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
