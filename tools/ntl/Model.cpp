#include "tools/ntl/Model.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/Text.h"
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

std::string maturityName(int level) {
    const std::string_view word = hdnt::words::maturityLevels.wordOf(level);
    return word.empty() ? "level " + std::to_string(level) : std::string(word);
}

std::string requiredValueName(HDNT_PIN_REQUIREDVALUE value) {
    const std::string_view word = hdnt::words::requiredValues.wordOf(value);
    return word.empty() && value != HDNT_PIN_NO_VALUE ? "value " + std::to_string(value) : std::string(word);
}

std::string groupOf(const HDNTBlock& block, bool legacy) {
    const char* const group = block.getPrimGroupType(legacy);
    const char* const subGroup = block.getPrimSubGroupType(legacy);
    return (group ? group : "") + (subGroup ? std::string(":") + subGroup : "");
}

std::string numberText(int value) { return std::to_string(value); }

std::string numberText(double value) {
    return hdnt::platform::DoubleText(value, hdnt::platform::DoubleForm::Shortest).str();
}

} // namespace ntl
