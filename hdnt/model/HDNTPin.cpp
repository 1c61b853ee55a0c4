#include "hdnt/model/HDNTPin.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/HEX.h"

#include <charconv>

HDNTBus* HDNTPin::getBus() const { return static_cast<HDNTBus*>(getParent()); }

HDNTBlock* HDNTPin::getBlock() const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->getBlock() : nullptr;
}

const std::string& HDNTPin::getBaseName() const {
    static const std::string* const none = new std::string;
    const HDNTBus* const bus = getBus();
    return bus ? bus->getBaseName() : *none;
}

void HDNTPin::getName(std::string& out, bool noBrackets) const {
    out = getBaseName();
    if (bitIndex_ < 0) return;
    char digits[8];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, bitIndex_);
    if (!noBrackets) out += '[';
    out.append(digits, end.ptr);
    if (!noBrackets) out += ']';
}

std::string HDNTPin::getName(bool noBrackets) const {
    std::string name;
    getName(name, noBrackets);
    return name;
}

HDNT_PIN_DIRECTION HDNTPin::getDirection() const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->getDirection() : HDNT_PIN_INTERNAL;
}

HDNT_PIN_TYPE HDNTPin::getType() const {
    const HDNTBus* const bus = getBus();
    const HDNT_PIN_TYPE type = bus ? bus->getType() : HDNT_PIN_DATA;
    const HDNTBlock* const block = type == HDNT_PIN_MIXED ? getBlock() : nullptr;
    if (!block || !block->getLibrary()) return type;
    const std::string configured =
        hdnt::model::describedText(*block->getLibrary(), {"PINTYPES", block->getName(), getName(true)});
    return hdnt::words::pinTypes.valueOf(configured).value_or(type);
}

HDNT_PIN_REQUIREDVALUE HDNTPin::getRequiredValue() const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->getRequiredValue() : HDNT_PIN_NO_VALUE;
}

bool HDNTPin::isTest() const {
    const HDNTBus* const bus = getBus();
    return bus && bus->isTest();
}

bool HDNTPin::isAbstract() const {
    const HDNTBus* const bus = getBus();
    return bus && bus->isAbstract();
}

hdnt::Nodes<const HDNTProperty> HDNTPin::properties() const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->properties() : hdnt::Nodes<const HDNTProperty>();
}

hdnt::Nodes<HDNTProperty> HDNTPin::properties() {
    HDNTBus* const bus = getBus();
    return bus ? bus->properties() : hdnt::Nodes<HDNTProperty>();
}

size_t HDNTPin::getNumProperties() const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->getNumProperties() : 0;
}

HDNTProperty* HDNTPin::getProperty(unsigned short i) const {
    const HDNTBus* const bus = getBus();
    if (!bus) throw HEXAlgException("Property index out of range");
    return bus->getProperty(i);
}

HDNTProperty* HDNTPin::getPropertyByName(const std::string& name) const {
    const HDNTBus* const bus = getBus();
    return bus ? bus->getPropertyByName(name) : nullptr;
}

bool HDNTPin::getPinFunction(std::string& out) const {
    const HDNTBus* const bus = getBus();
    if (bus) return bus->getPinFunction(out);
    out.clear();
    return false;
}

void HDNTPin::check() {
    const std::string name = getName(false);
    checkNames(name, true);
    if (getDirection() == HDNT_PIN_OUTPUT && getRequiredValue() != HDNT_PIN_NO_VALUE)
        HDNTError::InvalidTieoff(getLocation(), name.c_str());
}

std::string HDNTPin::getDirectionName(HDNT_PIN_DIRECTION direction) {
    const std::string_view word = hdnt::words::pinDirections.wordOf(direction);
    return std::string(word.empty() ? hdnt::words::pinDirections.wordOf(HDNT_PIN_INTERNAL) : word);
}

std::string HDNTPin::getTypeName(HDNT_PIN_TYPE type) {
    const std::string_view word = hdnt::words::pinTypes.wordOf(type);
    if (word.empty()) throw HEXDataException("Unknown pin type");
    return std::string(word);
}
