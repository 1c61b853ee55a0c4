#include "hdnt/model/HDNTBus.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/RangedName.internal.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <memory>
#include <optional>

// What the fields of a pin can hold.
static constexpr int greatestBit = 32767;
static constexpr size_t greatestPinCount = 65536;

HDNTBus::HDNTBus(std::string_view name, HDNT_PIN_DIRECTION dir, bool test, bool abstract, HDNT_PIN_TYPE type,
                 HDNT_PIN_REQUIREDVALUE required, std::vector<HDNTProperty*>* props)
    : direction_(dir), type_(type), required_(required), test_(test), abstract_(abstract), name_(name) {
    setKind(HDNTNodeKind::Bus);
    if (!props || props->empty()) return;
    properties_ = std::make_unique<const Properties>(*props);
    for (HDNTProperty& property : properties()) property.setParent(this);
}

static int digitsOf(int number) {
    int digits = 1;
    while (number /= 10) ++digits;
    return digits;
}

// A range that placePins() takes, and getName() writes as it was written.
static std::optional<hdnt::model::RangedName> usualRange(std::string_view name) {
    if (!name.ends_with(']')) return std::nullopt;
    const std::optional<hdnt::model::RangedName> range = hdnt::model::rangedName(name);
    const auto isUsual = [&] {
        const size_t length =
            range->base.size() + static_cast<size_t>(digitsOf(range->first) + digitsOf(range->second) + 3);
        return std::max(range->first, range->second) <= greatestBit && length == name.size() &&
               hdnt::model::isWithinLimit(range->first, range->second);
    };
    return range && isUsual() ? range : std::nullopt;
}

HDNTBus* HDNTBus::declared(std::string_view name, HDNT_PIN_DIRECTION dir, bool test, bool abstract, HDNT_PIN_TYPE type,
                           HDNT_PIN_REQUIREDVALUE required, std::vector<HDNTProperty*>* props) {
    const auto range = usualRange(name);
    auto* const bus = new HDNTBus(range ? range->base : name, dir, test, abstract, type, required, props);
    if (range) {
        bus->firstIndex_ = range->first;
        bus->lastIndex_ = range->second;
    }
    return bus;
}

HDNTBus::~HDNTBus() {
    for (const HDNTProperty& property : properties()) delete &property;
}

void HDNTBus::elaborate(std::vector<HDNTPin*>& pins) {
    placePins(pins.size());
    makePins(pins);
}

void HDNTBus::placePins(size_t before) {
    int first = firstIndex_;
    int last = lastIndex_;
    std::string baseName;
    const std::string& declared = name_.str();
    const bool ranged = isMultipleInstances(declared);
    if (ranged) {
        if (!rangeOf(declared, baseName, first, last)) return;
        if (std::max(first, last) > greatestBit) {
            HDNTError::report(hdnt::DiagnosticCode::pinBit, getLocation(),
                              {declared, std::to_string(std::max(first, last)), std::to_string(greatestBit)});
            return;
        }
    }
    const size_t count = before + static_cast<size_t>(std::abs(first - last)) + 1;
    if (count > greatestPinCount) {
        const std::string name = firstPinIndex_ < 0 ? getName() : declared; // was it cut before?
        HDNTError::report(hdnt::DiagnosticCode::pinCount, getLocation(),
                          {name, std::to_string(count), std::to_string(greatestPinCount)});
        if (firstPinIndex_ < 0) {
            name_ = HSTUniqString(name);
            firstIndex_ = lastIndex_ = -1;
        }
        return;
    }
    if (ranged) name_ = HSTUniqString(baseName);
    firstPinIndex_ = static_cast<int>(before);
    firstIndex_ = first;
    lastIndex_ = last;
}

size_t HDNTBus::pinCount() const {
    return firstPinIndex_ < 0 ? 0 : static_cast<size_t>(std::abs(firstIndex_ - lastIndex_)) + 1;
}

void HDNTBus::makePins(std::vector<HDNTPin*>& pins) {
    const int step = firstIndex_ > lastIndex_ ? -1 : 1;
    int bit = firstIndex_;
    for (size_t count = pinCount(); count > 0; --count, bit += step) {
        auto pin = std::make_unique<HDNTPin>(static_cast<short>(bit), static_cast<unsigned short>(pins.size()));
        pin->setParent(this);
        pin->takeLocation(*this);
        pins.push_back(pin.get());
        pin.release(); // NOLINT(bugprone-unused-return-value): the list has it
    }
}

bool HDNTBus::pinsAreFaultless() const {
    const bool tied = direction_ == HDNT_PIN_OUTPUT && required_ != HDNT_PIN_NO_VALUE;
    return pinCount() == 0 || (!tied && (firstIndex_ >= 0 || isPlainName(getBaseName())));
}

template <typename Pins>
static Pins pinsOf(Pins all, const HDNTBus& bus) {
    return all.part(static_cast<size_t>(bus.getFirstPinIndex()), bus.pinCount());
}

hdnt::Nodes<const HDNTPin> HDNTBus::pins() const {
    const HDNTBlock* const block = getBlock();
    return block && pinCount() > 0 ? pinsOf(block->pins(), *this) : hdnt::Nodes<const HDNTPin>();
}

hdnt::Nodes<HDNTPin> HDNTBus::pins() {
    HDNTBlock* const block = getBlock();
    return block && pinCount() > 0 ? pinsOf(block->pins(), *this) : hdnt::Nodes<HDNTPin>();
}

HDNTBlock* HDNTBus::getBlock() const { return static_cast<HDNTBlock*>(getParent()); }

std::string HDNTBus::getName() const {
    if (firstIndex_ == -1) return name_.str();
    return name_.str() + '[' + std::to_string(firstIndex_) + ':' + std::to_string(lastIndex_) + ']';
}

HDNTProperty* HDNTBus::getProperty(unsigned short i) const {
    if (i >= getNumProperties()) throw HEXAlgException("Property index out of range");
    return (*properties_)[i];
}

HDNTProperty* HDNTBus::getPropertyByName(const std::string& name) const { return lookUpProperty(name); }

const HDNTProperty* HDNTBus::findProperty(std::string_view name) const { return lookUpProperty(name); }
HDNTProperty* HDNTBus::findProperty(std::string_view name) { return lookUpProperty(name); }

HDNTProperty* HDNTBus::lookUpProperty(std::string_view name) const {
    const auto all = propertyNodes<HDNTProperty>();
    const auto found = std::find_if(all.begin(), all.end(), [&](const HDNTProperty& p) { return p.getName() == name; });
    return found == all.end() ? nullptr : &*found;
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
