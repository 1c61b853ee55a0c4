#include "tools/ntl/Model.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>

namespace ntl {

std::vector<HDNTBus*> busesOf(const HDNTBlock& block) {
    std::vector<HDNTBus*> buses;
    for (size_t i = 0; i < block.getNumBuses(); ++i) buses.push_back(block.getBus(i));
    return buses;
}

std::vector<HDNTProperty*> propertiesOf(const HDNTBlock& block) {
    std::vector<HDNTProperty*> properties;
    for (size_t i = 0; i < block.getNumProperties(); ++i) properties.push_back(block.getProperty(i));
    return properties;
}

std::vector<HDNTProperty*> propertiesOf(const HDNTBus& bus) {
    std::vector<HDNTProperty*> properties;
    for (size_t i = 0; i < bus.getNumProperties(); ++i)
        properties.push_back(bus.getProperty(static_cast<unsigned short>(i)));
    return properties;
}

std::vector<HDNTPin*> pinsOf(const HDNTBlock& block, const HDNTBus& bus) {
    std::vector<HDNTPin*> pins;
    if (bus.getFirstPinIndex() < 0) return pins;
    const auto first = static_cast<size_t>(bus.getFirstPinIndex());
    const auto count = static_cast<size_t>(std::abs(bus.getFirstIndex() - bus.getLastIndex())) + 1;
    for (size_t i = first; i < first + count; ++i) pins.push_back(block.getPin(i));
    return pins;
}

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
    static const std::array<const char*, 4> names = {"early", "beta", "production", "deprecated"};
    const auto index = static_cast<size_t>(level);
    return index < names.size() ? names[index] : "level " + std::to_string(level);
}

std::string requiredValueName(HDNT_PIN_REQUIREDVALUE value) {
    static const std::array<const char*, 7> names = {"",        "active",     "mustConnect", "tieLow",
                                                     "tieHigh", "tieSpecial", "untie"};
    const auto index = static_cast<size_t>(value);
    return index < names.size() ? names[index] : "value " + std::to_string(value);
}

std::string groupOf(const HDNTBlock& block, bool legacy) {
    const char* const group = block.getPrimGroupType(legacy);
    const char* const subGroup = block.getPrimSubGroupType(legacy);
    return (group ? group : "") + (subGroup ? std::string(":") + subGroup : "");
}

std::string sectionName(HDNTNetlist::Section section) {
    static const std::array<const char*, 4> names = {"mapsto", "expandsto", "modifiedby", "retargetsto"};
    return names[static_cast<size_t>(section)];
}

std::string numberText(int value) { return std::to_string(value); }

std::string numberText(double value) {
    char digits[32];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, end.ptr};
}

} // namespace ntl
