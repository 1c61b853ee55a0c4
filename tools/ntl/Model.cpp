#include "tools/ntl/Model.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <algorithm>

namespace ntl {

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

} // namespace ntl
