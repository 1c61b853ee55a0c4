#include "author/lint/nearestNames.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Json.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"

#include <algorithm>

namespace ntl {

static bool equalsIgnoringCase(const char* text, const std::string& wanted) {
    return HSTStrUtils::compareCI(text ? text : "", wanted) == 0;
}

// Keeps what the filter accepts; nothing left is a failure, which says what was asked for.
template <typename Filter>
static void keep(std::vector<HDNTBlock*>& blocks, const std::string& what, const Filter& accepts) {
    blocks.erase(std::remove_if(blocks.begin(), blocks.end(), [&](const HDNTBlock* block) { return !accepts(*block); }),
                 blocks.end());
    if (blocks.empty()) throw Failure(Faulty, "no block " + what);
}

static std::vector<HDNTBlock*> blocksWithPrefix(const OpenedLibrary& opened, const std::string& prefix) {
    std::vector<HDNTBlock*> blocks;
    opened.library->getTypeBlocksBeginWith(prefix, blocks, opened.withParents);
    if (blocks.empty()) throw Failure(Faulty, "no block has a name that begins with '" + prefix + "'");
    return blocks;
}

static std::vector<HDNTBlock*> chosenBlocks(const OpenedLibrary& opened, const Settings& settings) {
    std::vector<HDNTBlock*> blocks = settings.prefix.empty() ? blocksOf(*opened.library, opened.withParents)
                                                             : blocksWithPrefix(opened, settings.prefix);
    if (!settings.group.empty()) {
        const size_t colon = settings.group.find(':');
        const std::string group = settings.group.substr(0, colon);
        const std::string subGroup = colon == std::string::npos ? "" : settings.group.substr(colon + 1);
        const std::string near = hdnt::author::question(settings.group, groupsOf(blocks));
        keep(blocks, "is in the group '" + settings.group + "'" + near, [&](const HDNTBlock& block) {
            return equalsIgnoringCase(block.getPrimGroupType(false), group) &&
                   (subGroup.empty() || equalsIgnoringCase(block.getPrimSubGroupType(false), subGroup));
        });
    }
    if (!settings.architecture.empty()) {
        keep(blocks, "is there in the architecture '" + settings.architecture + "'",
             [&](const HDNTBlock& block) { return isInArchitecture(block, settings.architecture); });
    }
    return blocks;
}

static std::string flagsOf(const HDNTBlock& block) {
    std::vector<std::string> flags;
    if (block.isTest()) flags.emplace_back("test");
    if (block.isInternal()) flags.emplace_back("internal");
    return joined(flags, ",");
}

static std::string placeText(const HDNTBlock& block) {
    const auto location = block.copyOfLocation();
    if (!location || !location->fileName) return "";
    return std::string(location->fileName) + ":" + std::to_string(location->fileLine);
}

static std::string_view sectionOf(const HDNTBlock& block) {
    const HDNTNetlist* const netlist = block.getAttachedNetlist();
    return netlist ? hdnt::words::sections.wordOf(netlist->section()) : "";
}

static std::string listText(const std::vector<HDNTBlock*>& blocks) {
    Table table({"NAME", "GROUP", "PINS", "BUSES", "PROPERTIES", "MATURITY", "MAPPING", "FLAGS", "SOURCE"});
    for (const HDNTBlock* block : blocks)
        table.add({block->getName(), groupOf(*block), std::to_string(block->getNumPins()),
                   std::to_string(block->getNumBuses()), std::to_string(block->getNumProperties()),
                   std::string(hdnt::words::maturityLevels.wordOf(block->getMaturityLevel())),
                   std::string(sectionOf(*block)), flagsOf(*block), placeText(*block)});
    return table.text();
}

static std::string listJson(const OpenedLibrary& opened, const std::vector<HDNTBlock*>& blocks) {
    Json json = jsonHead("list");
    json["library"] = opened.library->getName();
    json["path"] = opened.path;
    json["blocks"] = Json::array();
    for (const HDNTBlock* block : blocks) {
        Json& item = json["blocks"].emplace_back();
        item["name"] = block->getName();
        item["group"] = orNull(block->getPrimGroupType(false));
        item["subgroup"] = orNull(block->getPrimSubGroupType(false));
        item["pinCount"] = block->getNumPins();
        item["busCount"] = block->getNumBuses();
        item["propertyCount"] = block->getNumProperties();
        item["maturity"] = orNull(hdnt::words::maturityLevels.wordOf(block->getMaturityLevel()));
        item["section"] = orNull(sectionOf(*block));
        item["isTest"] = block->isTest();
        item["isInternal"] = block->isInternal();
        item["isRegistered"] = isRegistered(*block);
        item["architectures"] = block->getCellArchesCfg();
        item["location"] = locationOf(*block);
    }
    return jsonText(json);
}

int runList(const Settings& settings) {
    enableByDefault(settings, "ntl.enableMapLib");
    const OpenedLibrary opened = openLibrary(settings);
    const std::vector<HDNTBlock*> blocks = chosenBlocks(opened, settings);
    const bool fine = loadMappings(blocks);
    writeOutput(settings.json ? listJson(opened, blocks) : listText(blocks));
    return fine ? Fine : Faulty;
}

} // namespace ntl
