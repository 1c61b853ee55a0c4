// What a block does when its library is complete: its name indexes, what is defined twice, descriptions.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <set>

using hdnt::platform::caselessHash;
using hdnt::platform::NameIndex;

void HDNTBlock::finalize() {
    if (!indexed_) hdnt::platform::fetch(properties_);
    finalizeNetlist();
    if (indexed_) return;
    indexed_ = true;
    reportRedefinedPins();
    indexProperties();
}

void HDNTBlock::reportRedefinedPins() const {
    std::vector<size_t> redefined;
    busesByName_.forEachShared([&](const auto& buses) { findRedefinedPins(buses, redefined); });
    std::sort(redefined.begin(), redefined.end());
    for (const size_t pin : redefined) {
        const std::string name = allPins()[pin]->getName(false);
        const auto first = std::find_if(allPins().begin(), allPins().end(),
                                        [&](const HDNTPin* other) { return other->getName(false) == name; });
        HDNTError::PinRedefinition(allPins()[pin]->getLocation(), (*first)->getLocation(), name.c_str());
    }
}

// Appends the positions of the later definitions.
void HDNTBlock::findRedefinedPins(const NameIndex::Positions& buses, std::vector<size_t>& redefined) const {
    std::set<std::pair<std::string_view, int>> seen;
    for (const uint32_t position : buses) {
        const HDNTBus& bus = *buses_[position];
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
    propertiesByName_.forEachShared([&](const auto& positions) {
        for (const uint32_t i : positions)
            if (getPropertyByName(properties_[i]->getName()) != properties_[i]) redefined.push_back(i);
    });
    std::sort(redefined.begin(), redefined.end());
    const hdnt::model::PropertyContext context = hdnt::model::propertyContext(this);
    auto next = redefined.begin();
    int index = 0;
    for (uint32_t i = 0; i < properties_.size(); ++i) {
        HDNTProperty& property = *properties_[i];
        if (next != redefined.end() && *next == i) {
            HDNTError::PropertyRedefinition(property.getLocation(),
                                            getPropertyByName(property.getName())->getLocation(),
                                            property.getName().c_str());
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
        if (!isNamed(property)) property = lookUpProperty(name);
        if (!isNamed(property)) return;
        property->describe(text);
        next = static_cast<size_t>(property->getIndex()) + 1;
    });
}
