// The name indexes of a block: built by finalize, read by the look-ups.
#include "hdnt/frontend/HDNTError.h"
#include "hdnt/model/ArchTables.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/HDNTSpecIter.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/TextHash.h"

#include <algorithm>
#include <charconv>
#include <set>

using hdnt::platform::caselessHash;
using hdnt::platform::NameIndex;
using hdnt::platform::textHash;

void HDNTBlock::finalize() {
    if (netlist_) {
        netlist_->setParent(this);
        netlist_->finalize();
    }
    if (indexed_) return;
    indexed_ = true;
    indexPins();
    indexProperties();
}

// Pins are found by base name and bit, so the index has one entry a bus, not one a bit.
void HDNTBlock::indexPins() {
    busesByName_.build(buses_.size(), [this](size_t i) { return textHash(buses_[i]->getBaseName()); });
    std::vector<size_t> redefined;
    busesByName_.forEachShared([&](auto buses) { findRedefinedPins(buses, redefined); });
    std::sort(redefined.begin(), redefined.end());
    for (const size_t pin : redefined)
        HDNTError::PinRedefinition(pins()[pin]->getLocation(), pins()[pin]->getName(false).c_str());
}

// Appends the positions of the later definitions.
void HDNTBlock::findRedefinedPins(std::span<const NameIndex::Entry> buses, std::vector<size_t>& redefined) const {
    std::set<std::pair<std::string_view, int>> seen;
    for (const NameIndex::Entry& entry : buses) {
        const HDNTBus& bus = *buses_[entry.position];
        const int step = bus.getFirstIndex() > bus.getLastIndex() ? -1 : 1;
        int bit = bus.getFirstIndex();
        for (size_t i = 0; i < bus.pinCount(); ++i, bit += step)
            if (!seen.emplace(bus.getBaseName(), bit).second)
                redefined.push_back(static_cast<size_t>(bus.getFirstPinIndex()) + i);
    }
}

void HDNTBlock::indexProperties() {
    if (properties_.empty()) return;
    propertiesByName_.build(properties_.size(), [this](size_t i) { return caselessHash(properties_[i]->getName()); });
    std::vector<uint32_t> redefined;
    propertiesByName_.forEachShared([&](auto entries) {
        for (const NameIndex::Entry& entry : entries)
            if (getPropertyByName(properties_[entry.position]->getName()) != properties_[entry.position])
                redefined.push_back(entry.position);
    });
    std::sort(redefined.begin(), redefined.end());
    const hdnt::model::PropertyContext context = hdnt::model::propertyContext(this);
    auto next = redefined.begin();
    int index = 0;
    for (uint32_t i = 0; i < properties_.size(); ++i) {
        HDNTProperty& property = *properties_[i];
        if (next != redefined.end() && *next == i) {
            HDNTError::PropertyRedefinition(property.getLocation(), property.getName().c_str());
            ++next;
        } else {
            property.setIndex(index++);
            property.finalize(context);
        }
    }
    if (context.library) describeProperties(*context.library);
}

// One walk over what the configuration says of the block: libconfig searches a group from its start for each name. The
// entries stand in the order of the properties as a rule.
void HDNTBlock::describeProperties(const HDNTLibrary& library) {
    size_t next = 0;
    hdnt::model::forEachDescription(library, name_, [&](std::string_view name, std::string_view text) {
        const auto isNamed = [&](const HDNTProperty* p) { return p && p->getIndex() >= 0 && p->getName() == name; };
        HDNTProperty* property = next < properties_.size() ? properties_[next] : nullptr;
        if (!isNamed(property)) property = getPropertyByName(std::string(name));
        if (!isNamed(property)) return;
        property->describe(text);
        next = static_cast<size_t>(property->getIndex()) + 1;
    });
}

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
