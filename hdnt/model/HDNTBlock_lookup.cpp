// Pins, buses and properties of a block by name.
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/HDNTSpecIter.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>

using hdnt::platform::caselessHash;
using hdnt::platform::textHash;

namespace {

/// A query in upper case. Names are short as a rule and need no memory of their own.
class UpperCase {
public:
    explicit UpperCase(std::string_view text) {
        char* to = short_.data();
        if (text.size() > short_.size()) {
            long_.resize(text.size());
            to = long_.data();
        }
        std::transform(text.begin(), text.end(), to, [](char c) { return HSTStringUtils::to_upper(c); });
        view_ = {to, text.size()};
    }
    UpperCase(const UpperCase&) = delete;

    std::string_view view() const { return view_; }

private:
    std::array<char, 64> short_;
    std::string long_;
    std::string_view view_;
};

// Splits `D[7]` into base name and bit; a name without brackets is its own base, bit -1. False for a bit that no pin's
// name can end in: not in plain decimal, or more digits than a bit has.
bool splitPinName(std::string_view& name, int& bit) {
    bit = -1;
    if (!name.ends_with(']')) return true;
    const size_t bracket = name.find('[');
    if (bracket == name.npos) return true;
    const char* const start = name.data() + bracket + 1;
    const char* const end = name.data() + name.size() - 1;
    const bool canonical = start != end && *start >= '0' && *start <= '9' && (*start != '0' || end == start + 1);
    const std::from_chars_result result = std::from_chars(start, end, bit);
    if (!canonical || result.ec != std::errc() || result.ptr != end) return false;
    name = name.substr(0, bracket);
    return true;
}

bool hasFullName(const HDNTBus& bus, std::string_view name) {
    const bool ranged = bus.getFirstIndex() != -1;
    if (!ranged || !name.starts_with(bus.getBaseName())) return !ranged && bus.getBaseName() == name;
    std::array<char, 32> range;
    const int length = std::snprintf(range.data(), range.size(), "[%d:%d]", bus.getFirstIndex(), bus.getLastIndex());
    return name.substr(bus.getBaseName().size()) == std::string_view(range.data(), static_cast<size_t>(length));
}

} // namespace

HDNTPin* HDNTBlock::getPinByName(const std::string& name) const { return lookUpPin(name); }

const HDNTPin* HDNTBlock::findPin(std::string_view name) const { return lookUpPin(name); }
HDNTPin* HDNTBlock::findPin(std::string_view name) { return lookUpPin(name); }
const HDNTBus* HDNTBlock::findBus(std::string_view name) const { return lookUpBus(name); }
HDNTBus* HDNTBlock::findBus(std::string_view name) { return lookUpBus(name); }
const HDNTProperty* HDNTBlock::findProperty(std::string_view name) const { return lookUpProperty(name); }
HDNTProperty* HDNTBlock::findProperty(std::string_view name) { return lookUpProperty(name); }

HDNTPin* HDNTBlock::lookUpPin(std::string_view name) const {
    const UpperCase query(name);
    std::string_view baseName = query.view();
    int bit = -1;
    if (!indexed_ || !splitPinName(baseName, bit)) return nullptr;
    for (const uint32_t position : busesByName_.find(textHash(baseName))) {
        const HDNTBus& bus = *buses_[position];
        const bool declaresBit = std::min(bus.getFirstIndex(), bus.getLastIndex()) <= bit &&
                                 bit <= std::max(bus.getFirstIndex(), bus.getLastIndex());
        if (bus.pinCount() > 0 && declaresBit && bus.getBaseName() == baseName)
            return allPins()[static_cast<size_t>(bus.getFirstPinIndex()) +
                             static_cast<size_t>(std::abs(bit - bus.getFirstIndex()))];
    }
    return nullptr;
}

HDNTBus* HDNTBlock::getBusByName(const std::string& name, bool fullName) const { return lookUpBus(name, fullName); }

HDNTBus* HDNTBlock::lookUpBus(std::string_view name) const {
    HDNTBus* const bus = lookUpBus(name, false);
    return bus ? bus : lookUpBus(name, true);
}

// A bus without pins still has its whole name as base name. Before finalize() there is no index.
HDNTBus* HDNTBlock::lookUpBus(std::string_view name, bool fullName) const {
    const UpperCase query(name);
    const std::string_view upperName = query.view();
    const auto matches = [&](const HDNTBus& bus) {
        return fullName ? hasFullName(bus, upperName) : bus.getBaseName() == upperName;
    };
    size_t first = buses_.size();
    const auto consider = [&](size_t i) {
        if (i < first && matches(*buses_[i])) first = i;
    };
    const auto search = [&](std::string_view baseName) {
        for (const uint32_t position : busesByName_.find(textHash(baseName))) consider(position);
    };
    search(upperName);
    if (fullName) search(upperName.substr(0, upperName.find('[')));
    for (size_t i = 0; !indexed_ && i < buses_.size(); ++i) consider(i);
    return first < buses_.size() ? buses_[first] : nullptr;
}

HDNTProperty* HDNTBlock::getPropertyByName(const std::string& name) const { return lookUpProperty(name); }

HDNTProperty* HDNTBlock::lookUpProperty(std::string_view name) const {
    for (const uint32_t position : propertiesByName_.find(caselessHash(name)))
        if (HSTStringUtils::iequals(properties_[position]->getName(), name)) return properties_[position];
    return nullptr;
}

HSTKeyValIter<std::string, HATAttrSpec*>* HDNTBlock::createSpecIter() const { return new HDNTSpecIter(*this); }
