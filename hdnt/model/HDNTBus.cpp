#include "hdnt/model/HDNTBus.h"

#include "hdnt/frontend/HDNTError.h"
#include "hdnt/model/ArchTables.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>

// What the fields of a pin can hold.
static constexpr int greatestBit = 32767;
static constexpr size_t greatestPinCount = 65536;

HDNTBus::HDNTBus(std::string& name, HDNT_PIN_DIRECTION dir, bool test, bool abstract, HDNT_PIN_TYPE type,
                 HDNT_PIN_REQUIREDVALUE required, std::vector<HDNTProperty*>* props)
    : name_(name), direction_(dir), type_(type), required_(required), test_(test), abstract_(abstract) {
    setKind(HDNTNodeKind::Bus);
    if (!props) return;
    properties_ = *props;
    for (HDNTProperty* property : properties_) property->setParent(this);
}

HDNTBus::~HDNTBus() {
    for (const HDNTProperty* property : properties_) delete property;
}

void HDNTBus::elaborate(std::vector<HDNTPin*>& pins) {
    const std::string declared = name_.str();
    int first = -1;
    int last = -1;
    if (isMultipleInstances(declared)) {
        std::string baseName;
        if (!rangeOf(declared, baseName, first, last)) return;
        if (std::max(first, last) > greatestBit) {
            HDNTError::Formatted(getLocation(), "Pin \"%s\" has bit %d, above %d.", declared.c_str(),
                                 std::max(first, last), greatestBit);
            return;
        }
        name_ = HSTUniqString(baseName);
    }
    const size_t count = static_cast<size_t>(std::abs(first - last)) + 1;
    if (pins.size() + count > greatestPinCount) {
        HDNTError::Formatted(getLocation(), "Pin \"%s\" makes %zu pins of its block, more than %zu.", declared.c_str(),
                             pins.size() + count, greatestPinCount);
        return;
    }
    firstPinIndex_ = static_cast<int>(pins.size());
    firstIndex_ = first;
    lastIndex_ = last;
    pins.reserve(pins.size() + count);
    const int step = first > last ? -1 : 1;
    for (int bit = first;; bit += step) {
        auto* const pin = new HDNTPin(static_cast<short>(bit), static_cast<unsigned short>(pins.size()));
        pins.push_back(pin);
        pin->setParent(this);
        if (const yyltype* location = getLocation()) pin->setLocation(*location);
        if (bit == last) break;
    }
}

HDNTBlock* HDNTBus::getBlock() const { return static_cast<HDNTBlock*>(getParent()); }

std::string HDNTBus::getName() const {
    if (firstIndex_ == -1) return name_.str();
    return name_.str() + '[' + std::to_string(firstIndex_) + ':' + std::to_string(lastIndex_) + ']';
}

HDNTProperty* HDNTBus::getProperty(unsigned short i) const {
    if (i >= properties_.size()) throw HEXAlgException("Property index out of range");
    return properties_[i];
}

HDNTProperty* HDNTBus::getPropertyByName(const std::string& name) const {
    const auto found = std::find_if(properties_.begin(), properties_.end(),
                                    [&](const HDNTProperty* property) { return property->getName() == name; });
    return found == properties_.end() ? nullptr : *found;
}

bool HDNTBus::getPinFunction(std::string& out) const {
    out.clear();
    const HDNTBlock* const block = getBlock();
    const hdnt::model::CellFacts* const cell = block ? hdnt::model::cellFacts(*block) : nullptr;
    if (!cell) return false;
    const auto found = cell->pinFunctions.find(getBaseName());
    if (found == cell->pinFunctions.end()) return false;
    out = found->second;
    return true;
}
