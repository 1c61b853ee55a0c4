#include "hdnt/model/HDNTProperty.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/TypedValues.internal.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/BitText.h"
#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <memory>
#include <utility>

using hdnt::model::withValues;
using Type = HATAttrTypes::AttrType;

HDNTProperty::HDNTProperty(std::string_view name, Type type, bool test, bool simulation, bool constraintsOnly,
                           bool muxControl, std::string_view units)
    : muxControl_(muxControl), spec_(type, 0) {
    setKind(HDNTNodeKind::Property);
    spec_.setName(name);
    spec_.setTest(test);
    spec_.setSimulation(simulation);
    spec_.setIsTessel(true);
    if (!units.empty()) {
        spec_.setHasUnit(true);
        spec_.addUnitRange(units);
        spec_.setUnitDefault(units);
    }
    if (constraintsOnly) {
        spec_.setConstraintsOnly(true);
        spec_.setVisible(false);
    }
}

HDNTProperty::~HDNTProperty() = default;

HDNTBlock* HDNTProperty::getBlock() const {
    HDNTNode* node = getParent();
    if (auto* const bus = nodeCast<HDNTBus>(node)) node = bus->getParent();
    return nodeCast<HDNTBlock>(node);
}

static bool defaultIsListed(const HATAttrSpec& spec) {
    return withValues(spec, [](const auto& values) {
        const auto listed = values.listed();
        return std::find(listed.begin(), listed.end(), values.byDefault) != listed.end();
    });
}

void HDNTProperty::check() {
    checkNames(getName(), false);
    const bool isJudged = getType() == Type::TypeDouble || HATAttrTypes::isBitVector(getType());
    if (isJudged && spec_.isEnumerated() && !defaultIsListed(spec_))
        HDNTError::PropertyDefaultNotInList(getLocation(), getName().c_str());
}

void HDNTProperty::finalize() {
    const HDNTBlock* const block = getBlock();
    finalize(hdnt::model::propertyContext(block));
    const HDNTLibrary* const library = block ? block->getLibrary() : nullptr;
    if (!library) return;
    if (const auto text = hdnt::model::describedText(*library, {block->getName(), getName()})) describe(*text);
}

void HDNTProperty::finalize(const hdnt::model::PropertyContext& context) {
    if (context.library) {
        const auto facts = context.library->getConfigurationFacts().attributes.find(getName(), spec_.getNameHash());
        if (facts.ioPinConstraint)
            for (const int sourceType : {2, 12, 11, 8}) spec_.removeAllowedSourceType(sourceType);
        spec_.setReadOnly(facts.ioPinConstraint || facts.readOnly);
    }
    if (getType() != Type::TypeBitHex) return;
    if (getBitWidth() % 4 != 0) nibbleSized_ = context.nibbleSizedHex;
    if (!spec_.isEnumerated()) completeHexRange();
}

void HDNTProperty::completeHexRange() {
    const std::string& low = spec_.getLowHexRange();
    const std::string& high = spec_.getHighHexRange();
    if (!low.empty() && !high.empty()) return;
    minCompleted_ |= low.empty();
    maxCompleted_ |= high.empty();
    const int digits = getBitWidth() / 4 + (getBitWidth() % 4 != 0);
    const std::string least = low.empty() ? std::string(static_cast<size_t>(std::max(digits, 0)), '0') : std::string();
    const std::string greatest = high.empty() ? hdnt::platform::BitText::greatest(getBitWidth(), true) : std::string();
    spec_.setHexRange(low.empty() ? least : low, high.empty() ? greatest : high);
}

void HDNTProperty::describe(std::string_view text) {
    HATOwnText before = spec_.exchangeDescription(text);
    if (!std::exchange(describedByConfig_, true)) declaredDescription_ = std::move(before);
}

bool HDNTProperty::isMinDeclared() const {
    if (minCompleted_ || spec_.isEnumerated()) return false;
    return withValues(spec_, [](const auto& values) { return values.hasLow(); });
}

bool HDNTProperty::isMaxDeclared() const {
    if (maxCompleted_ || spec_.isEnumerated()) return false;
    return withValues(spec_, [](const auto& values) { return values.hasHigh(); });
}

ConfigBase* HDNTProperty::getDescConfig() const {
    const HDNTBlock* const block = getBlock();
    const HDNTLibrary* const library = block ? block->getLibrary() : nullptr;
    return library ? library->getDescConfig() : nullptr;
}

int HDNTProperty::getAdjustedBitWidth() const {
    const int rest = getBitWidth() % 4;
    return nibbleSized_ && rest != 0 ? getBitWidth() - rest + 4 : getBitWidth();
}

bool HDNTProperty::isPinInversion() const {
    const std::string& name = getName();
    return name.size() >= 13 && name.starts_with("IS_") && name.ends_with("_INVERTED");
}

std::string HDNTProperty::getTypeName(Type type) {
    const std::string_view word = hdnt::words::propertyTypes.wordOf(type);
    if (word.empty()) throw HEXAlgException("Unknown HDNTProperty type");
    return std::string(word);
}
