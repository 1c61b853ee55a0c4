#pragma once

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"

#include <charconv>
#include <cstdlib>
#include <string>
#include <vector>

// The model as lists and texts.
namespace hdnt::author {

inline std::vector<HDNTBus*> busesOf(const HDNTBlock& block) {
    std::vector<HDNTBus*> buses;
    for (size_t i = 0; i < block.getNumBuses(); ++i) buses.push_back(block.getBus(i));
    return buses;
}

template <typename Owner>
std::vector<HDNTProperty*> propertiesOf(const Owner& owner) {
    std::vector<HDNTProperty*> properties;
    for (unsigned short i = 0; i < owner.getNumProperties(); ++i) properties.push_back(owner.getProperty(i));
    return properties;
}

inline std::vector<HDNTPin*> pinsOf(const HDNTBlock& block, const HDNTBus& bus) {
    std::vector<HDNTPin*> pins;
    if (bus.getFirstPinIndex() < 0) return pins;
    const auto first = static_cast<size_t>(bus.getFirstPinIndex());
    const auto count = static_cast<size_t>(std::abs(bus.getFirstIndex() - bus.getLastIndex())) + 1;
    for (size_t i = first; i < first + count; ++i) pins.push_back(block.getPin(i));
    return pins;
}

inline std::vector<HDNTBlock*> blocksOf(const HDNTLibrary& library, bool withParents) {
    std::vector<HDNTBlock*> blocks;
    for (size_t i = 0; i < library.getNumTypeBlocks(withParents); ++i) blocks.push_back(library.getTypeBlock(i));
    return blocks;
}

inline bool isRegistered(const HDNTBlock& block) { return block.getType() < HDNTCellviewLib::UNKNOWN; }

inline std::string numberText(int value) { return std::to_string(value); }
inline std::string numberText(double value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

} // namespace hdnt::author
