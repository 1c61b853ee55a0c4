// The name indexes of a block: built by finalize, read by the look-ups.
#include "hdnt/frontend/HDNTError.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/HDNTSpecIter.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

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
    for (uint32_t i = 0; i < buses_.size(); ++i)
        if (buses_[i]->getFirstPinIndex() >= 0) busesByName_.push_back(i);
    std::stable_sort(busesByName_.begin(), busesByName_.end(), [this](uint32_t a, uint32_t b) {
        return buses_[a]->getBaseName() < buses_[b]->getBaseName();
    });
    for (const size_t pin : findRedefinedPins())
        HDNTError::PinRedefinition(pins_[pin]->getLocation(), pins_[pin]->getName(false).c_str());
}

// Only buses that share a base name can define a pin twice. Positions of the later definitions, in order.
std::vector<size_t> HDNTBlock::findRedefinedPins() const {
    std::vector<size_t> redefined;
    for (auto group = busesByName_.begin(); group != busesByName_.end();) {
        const std::string& baseName = buses_[*group]->getBaseName();
        const auto groupEnd = std::find_if(
            group, busesByName_.end(), [&](uint32_t bus) { return buses_[bus]->getBaseName() != baseName; });
        std::unordered_set<int> bits;
        for (auto entry = group; groupEnd - group > 1 && entry != groupEnd; ++entry) {
            const HDNTBus& bus = *buses_[*entry];
            const size_t count = static_cast<size_t>(std::abs(bus.getFirstIndex() - bus.getLastIndex())) + 1;
            for (size_t pin = static_cast<size_t>(bus.getFirstPinIndex()), end = pin + count; pin < end; ++pin)
                if (!bits.insert(pins_[pin]->getBitIndex()).second) redefined.push_back(pin);
        }
        group = groupEnd;
    }
    std::sort(redefined.begin(), redefined.end());
    return redefined;
}

void HDNTBlock::indexProperties() {
    std::vector<uint32_t> byName(properties_.size());
    for (uint32_t i = 0; i < byName.size(); ++i) byName[i] = i;
    const auto order = [this](uint32_t a, uint32_t b) {
        return HSTStrUtils::compareCI(properties_[a]->getName(), properties_[b]->getName());
    };
    std::stable_sort(byName.begin(), byName.end(), [&](uint32_t a, uint32_t b) { return order(a, b) < 0; });
    std::vector<bool> redefined(properties_.size());
    for (const uint32_t property : byName) {
        redefined[property] = !propertiesByName_.empty() && order(propertiesByName_.back(), property) == 0;
        if (!redefined[property]) propertiesByName_.push_back(property);
    }
    int index = 0;
    for (size_t i = 0; i < properties_.size(); ++i) {
        HDNTProperty& property = *properties_[i];
        if (redefined[i]) {
            HDNTError::PropertyRedefinition(property.getLocation(), property.getName().c_str());
        } else {
            property.setIndex(index++);
            property.finalize();
        }
    }
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
    auto entry =
        std::lower_bound(busesByName_.begin(), busesByName_.end(), baseName,
                         [this](uint32_t bus, const std::string& base) { return buses_[bus]->getBaseName() < base; });
    for (; entry != busesByName_.end() && buses_[*entry]->getBaseName() == baseName; ++entry) {
        const HDNTBus& bus = *buses_[*entry];
        const auto [low, high] = std::minmax({bus.getFirstIndex(), bus.getLastIndex()});
        if (low <= bit && bit <= high)
            return pins_[static_cast<size_t>(bus.getFirstPinIndex() + std::abs(bit - bus.getFirstIndex()))];
    }
    return nullptr;
}

HDNTBus* HDNTBlock::getBusByName(const std::string& name, bool fullName) const {
    const std::string upperName = HSTStringUtils::to_upper_copy(name);
    for (HDNTBus* bus : buses_)
        if (fullName ? bus->getName() == upperName : bus->getBaseName() == upperName) return bus;
    return nullptr;
}

HDNTProperty* HDNTBlock::getPropertyByName(const std::string& name) const {
    const auto found = std::lower_bound(propertiesByName_.begin(), propertiesByName_.end(), name,
                                        [this](uint32_t property, const std::string& wanted) {
                                            return HSTStrUtils::compareCI(properties_[property]->getName(), wanted) < 0;
                                        });
    if (found == propertiesByName_.end() || HSTStrUtils::compareCI(properties_[*found]->getName(), name) != 0)
        return nullptr;
    return properties_[*found];
}

HSTKeyValIter<std::string, HATAttrSpec*>* HDNTBlock::createSpecIter() const { return new HDNTSpecIter(*this); }
