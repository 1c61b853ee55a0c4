// Pins, buses and properties of a block by name.
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/HDNTSpecIter.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

using hdnt::platform::caselessHash;
using hdnt::platform::NameIndex;
using hdnt::platform::textHash;

// Splits `D[7]` into base name and bit; a name without brackets is its own base, bit -1. False for a bit that no pin's
// name can end in: not in plain decimal, or more digits than a bit has.
static bool splitPinName(std::string& name, int& bit) {
    bit = -1;
    if (name.empty() || name.back() != ']') return true;
    const size_t bracket = name.find('[');
    if (bracket == name.npos) return true;
    const char* const start = name.data() + bracket + 1;
    const char* const end = name.data() + name.size() - 1;
    const bool canonical = start != end && *start >= '0' && *start <= '9' && (*start != '0' || end == start + 1);
    const std::from_chars_result result = std::from_chars(start, end, bit);
    if (!canonical || result.ec != std::errc() || result.ptr != end) return false;
    name.resize(bracket);
    return true;
}

HDNTPin* HDNTBlock::getPinByName(const std::string& name) const {
    std::string baseName = HSTStringUtils::to_upper_copy(name);
    int bit = -1;
    if (!splitPinName(baseName, bit)) return nullptr;
    for (const NameIndex::Entry& entry : busesByName_.find(textHash(baseName))) {
        const HDNTBus& bus = *buses_[entry.position];
        const bool declaresBit = std::min(bus.getFirstIndex(), bus.getLastIndex()) <= bit &&
                                 bit <= std::max(bus.getFirstIndex(), bus.getLastIndex());
        if (bus.pinCount() > 0 && declaresBit && bus.getBaseName() == baseName)
            return pins()[static_cast<size_t>(bus.getFirstPinIndex()) +
                          static_cast<size_t>(std::abs(bit - bus.getFirstIndex()))];
    }
    return nullptr;
}

// A bus without pins still has its whole name as base name. Before finalize() there is no index.
HDNTBus* HDNTBlock::getBusByName(const std::string& name, bool fullName) const {
    const std::string upperName = HSTStringUtils::to_upper_copy(name);
    const auto matches = [&](const HDNTBus& bus) {
        return (fullName ? bus.getName() : bus.getBaseName()) == upperName;
    };
    size_t first = buses_.size();
    const auto consider = [&](size_t i) {
        if (i < first && matches(*buses_[i])) first = i;
    };
    const auto search = [&](std::string_view baseName) {
        for (const NameIndex::Entry& entry : busesByName_.find(textHash(baseName))) consider(entry.position);
    };
    search(upperName);
    if (fullName) search(std::string_view(upperName).substr(0, upperName.find('[')));
    for (size_t i = 0; !indexed_ && i < buses_.size(); ++i) consider(i);
    return first < buses_.size() ? buses_[first] : nullptr;
}

HDNTProperty* HDNTBlock::getPropertyByName(const std::string& name) const {
    for (const NameIndex::Entry& entry : propertiesByName_.find(caselessHash(name)))
        if (HSTStringUtils::iequals(properties_[entry.position]->getName(), name)) return properties_[entry.position];
    return nullptr;
}

HSTKeyValIter<std::string, HATAttrSpec*>* HDNTBlock::createSpecIter() const { return new HDNTSpecIter(*this); }
