#include "hdnt/model/HDNTPin.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/HEX.h"

#include <charconv>
#include <utility>

HDNTBus* HDNTPin::getBus() const { return static_cast<HDNTBus*>(getParent()); }

static HDNTBus* makeNoBus() {
    std::string noName;
    return new HDNTBus(noName, HDNT_PIN_INTERNAL, false, false, HDNT_PIN_DATA, HDNT_PIN_NO_VALUE, nullptr);
}

// A pin without a bus answers as this one.
static HDNTBus& declarationOf(const HDNTPin& pin) {
    if (HDNTBus* const bus = pin.getBus()) return *bus;
    static HDNTBus* const none = makeNoBus();
    return *none;
}

HDNTBlock* HDNTPin::getBlock() const { return declarationOf(*this).getBlock(); }
const std::string& HDNTPin::getBaseName() const { return declarationOf(*this).getBaseName(); }
HDNT_PIN_DIRECTION HDNTPin::getDirection() const { return declarationOf(*this).getDirection(); }
HDNT_PIN_REQUIREDVALUE HDNTPin::getRequiredValue() const { return declarationOf(*this).getRequiredValue(); }
bool HDNTPin::isTest() const { return declarationOf(*this).isTest(); }
bool HDNTPin::isAbstract() const { return declarationOf(*this).isAbstract(); }
hdnt::Nodes<const HDNTProperty> HDNTPin::properties() const { return std::as_const(declarationOf(*this)).properties(); }
hdnt::Nodes<HDNTProperty> HDNTPin::properties() { return declarationOf(*this).properties(); }
size_t HDNTPin::getNumProperties() const { return declarationOf(*this).getNumProperties(); }
HDNTProperty* HDNTPin::getProperty(unsigned short i) const { return declarationOf(*this).getProperty(i); }
HDNTProperty* HDNTPin::getPropertyByName(const std::string& name) const {
    return declarationOf(*this).getPropertyByName(name);
}
bool HDNTPin::getPinFunction(std::string& out) const { return declarationOf(*this).getPinFunction(out); }

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

HDNT_PIN_TYPE HDNTPin::getType() const {
    const HDNT_PIN_TYPE type = declarationOf(*this).getType();
    const HDNTBlock* const block = type == HDNT_PIN_MIXED ? getBlock() : nullptr;
    if (!block || !block->getLibrary()) return type;
    const auto configured =
        hdnt::model::describedText(*block->getLibrary(), {"PINTYPES", block->getName(), getName(true)});
    return hdnt::words::pinTypes.valueOf(configured.value_or("")).value_or(type);
}

void HDNTPin::check() {
    const std::string name = getName(false);
    checkNames(name, true);
    if (getDirection() == HDNT_PIN_OUTPUT && getRequiredValue() != HDNT_PIN_NO_VALUE)
        HDNTError::InvalidTieoff(getLocation(), name.c_str());
}

std::string HDNTPin::getDirectionName(HDNT_PIN_DIRECTION direction) {
    return std::string(hdnt::words::directionWord(direction));
}

std::string HDNTPin::getTypeName(HDNT_PIN_TYPE type) {
    const std::string_view word = hdnt::words::pinTypes.wordOf(type);
    if (word.empty()) throw HEXDataException("Unknown pin type");
    return std::string(word);
}
