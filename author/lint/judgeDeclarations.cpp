#include "author/lint/Findings.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/BitText.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>

namespace hdnt::author {

namespace {

using platform::BitText;
using Type = HATAttrTypes::AttrType;

std::string valueText(const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return '"' + *text + '"';
    const auto* const number = std::get_if<double>(&value);
    return number ? platform::DoubleText(*number, platform::DoubleForm::Shortest).str() : textOf(value);
}

// One property under judgement. Texts name it, and the pin it belongs to.
class PropertyJudge {
public:
    /// The bus is null for a property of the block itself.
    PropertyJudge(const HDNTProperty& property, const HDNTBus* bus, Findings& findings)
        : property_(property), bus_(bus), findings_(findings) {}

    void judge() const {
        if (HATAttrTypes::isBitVector(property_.getType())) judgeBits();
        else judgeValue();
    }

private:
    std::string name() const {
        return "property \"" + property_.getName() + '"' + (bus_ ? " of pin \"" + bus_->getName() + '"' : "");
    }
    bool isListed() const { return property_.getAttrSpec()->isEnumerated(); }

    void warnOutside(const std::string& value) const {
        findings_.add(LintCode::defaultOutside, property_,
                      {value, name(), isListed() ? "not one of its values" : "outside its range"});
    }
    void warnSwapped(const std::string& low, const std::string& high) const {
        findings_.add(LintCode::minAboveMax, property_, {low, name(), high});
    }

    void judgeValue() const {
        const Value value = property_.getDefaultValue();
        if (property_.refusalOf(value).empty()) return;
        const std::optional<Value> low = isListed() ? std::nullopt : property_.getMinValue();
        const std::optional<Value> high = isListed() ? std::nullopt : property_.getMaxValue();
        if (low && high && *high < *low) warnSwapped(valueText(*low), valueText(*high));
        else warnOutside(valueText(value));
    }

    // The number, when the text is one and nothing is said of it.
    std::optional<BitText> judgeText(const char* what, const std::string& text) const {
        if (text.empty()) return std::nullopt;
        std::optional<BitText> number = BitText::of(text, property_.getType() == Type::TypeBitHex);
        const int width = property_.getAdjustedBitWidth();
        if (number && number->fits(width) && !number->exceedsItsPrefix()) return number;
        const long bits = number && number->fits(width) ? number->width() : width;
        if (number) findings_.add(LintCode::textTooWide, property_, {what, text, name(), std::to_string(bits)});
        else findings_.add(LintCode::bitTextForm, property_, {what, text, name()});
        return std::nullopt;
    }

    // A default that is not listed is an error of the library, so only a range is looked at.
    void judgeBits() const {
        const HATAttrSpec& spec = *property_.getAttrSpec();
        const bool isHex = property_.getType() == Type::TypeBitHex;
        const std::string& value = isHex ? spec.getHexDefault() : spec.getBinaryDefault();
        const std::optional<BitText> chosen = judgeText("default", value);
        if (isListed()) {
            const std::unique_ptr<HATTextIter> listed(isHex ? spec.createHexIter() : spec.createBinaryIter());
            while (listed->hasNext()) {
                listed->next();
                if (listed->current() != value) judgeText("value", listed->current());
            }
            return;
        }
        const std::string& low = isHex ? spec.getLowHexRange() : spec.getLowBinaryRange();
        const std::string& high = isHex ? spec.getHighHexRange() : spec.getHighBinaryRange();
        const std::optional<BitText> least = judgeText("minimum", low);
        const std::optional<BitText> greatest = judgeText("maximum", high);
        if (least && greatest && *greatest < *least) warnSwapped(low, high);
        else if (chosen && ((least && *chosen < *least) || (greatest && *greatest < *chosen))) warnOutside(value);
    }

    const HDNTProperty& property_;
    const HDNTBus* bus_;
    Findings& findings_;
};

bool hasLowerCase(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

void judgeBus(const HDNTBus& bus, Findings& findings) {
    const auto name = [&] { return "pin \"" + bus.getName() + '"'; };
    if (hasLowerCase(bus.getBaseName())) findings.add(LintCode::pinLowerCase, bus, {name()});
    std::unordered_map<std::string, std::string> earlier; // by upper-cased name
    for (const HDNTProperty& property : bus.properties()) {
        const std::string upper = HSTStringUtils::to_upper_copy(property.getName());
        const auto [first, isNew] = earlier.emplace(upper, property.getName());
        if (!isNew && first->second != property.getName())
            findings.add(LintCode::pinPropertyCase, property, {first->second, property.getName(), name()});
        PropertyJudge(property, &bus, findings).judge();
    }
}

} // namespace

void judgeDeclarations(const HDNTLibrary& library, Findings& findings) {
    for (const HDNTBlock& block : library.blocks()) {
        if (block.getType() >= HDNTCellviewLib::UNKNOWN)
            findings.add(LintCode::unregisteredBlock, block, {block.getName()});
        for (const HDNTBus& bus : block.buses()) judgeBus(bus, findings);
        for (const HDNTProperty& property : block.properties()) PropertyJudge(property, nullptr, findings).judge();
    }
}

} // namespace hdnt::author
