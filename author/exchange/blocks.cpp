#include "author/exchange/blocks.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace hdnt::author {

std::vector<HDNTBlock*> blocksOf(const HDNTLibrary& library, bool withParents) {
    std::vector<HDNTBlock*> blocks;
    for (size_t i = 0; i < library.getNumTypeBlocks(withParents); ++i) blocks.push_back(library.getTypeBlock(i));
    return blocks;
}

bool isRegistered(const HDNTBlock& block) { return block.getType() < HDNTCellviewLib::UNKNOWN; }

bool isInArchitecture(const HDNTBlock& block, const std::string& architecture) {
    const std::vector<std::string> named = block.getCellArchesCfg();
    return named.empty() || std::find(named.begin(), named.end(), architecture) != named.end();
}

std::string groupOf(const HDNTBlock& block) {
    const char* const group = block.getPrimGroupType(false);
    const char* const subGroup = block.getPrimSubGroupType(false);
    return (group ? group : "") + (subGroup ? std::string(":") + subGroup : "");
}

std::vector<std::string> groupsOf(const std::vector<HDNTBlock*>& blocks) {
    std::set<std::string> groups;
    for (const HDNTBlock* block : blocks) {
        const std::string group = groupOf(*block);
        groups.insert(group);
        groups.insert(group.substr(0, group.find(':')));
    }
    groups.erase("");
    return {groups.begin(), groups.end()};
}

const HDNTNetlist* mappingFor(HDNTBlock& block, const std::string& architecture) {
    return architecture.empty() ? block.getNetlist() : block.getNetlist(architecture);
}

std::string mapLibraryOf(const HDNTBlock& block) {
    const std::string directory = ConfigBase::getDataLocation("maplib");
    if (directory.empty()) return {};
    return HUTPathUtils::replaceExtension(HUTPathUtils::join(directory, block.getName()), "btl");
}

} // namespace hdnt::author
