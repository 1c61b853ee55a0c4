#include "tools/ntl/Warnings.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "tools/ntl/BitText.h"
#include "tools/ntl/Model.h"
#include "tools/ntl/Output.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

namespace ntl {

const std::vector<WarningRule>& warningRules() {
    static const std::vector<WarningRule> rules = {
        {Warning::DefaultOutside, "default-outside", "A default is outside the range or the list of its property."},
        {Warning::MinAboveMax, "min-above-max", "The minimum of a property is above its maximum."},
        {Warning::TextTooWide, "text-too-wide", "A hexadecimal or binary text is wider than its property."},
        {Warning::PinLowerCase, "pin-lower-case",
         "A pin's name has lower-case letters, so that the pin cannot be looked up."},
        {Warning::PinPropertyCase, "pin-property-case", "Two properties of a pin differ in case only."},
        {Warning::UnregisteredBlock, "unregistered-block", "A block's name is not in the table of cells."},
        {Warning::IncludeSkipped, "include-skipped", "An INCLUDE names a file that was included before."},
        {Warning::IncludeNotFound, "include-not-found", "The file of an INCLUDE or INLINE is not found."},
        {Warning::IncludeNotOpened, "include-not-opened", "The file of an INCLUDE or INLINE cannot be opened."},
        {Warning::UnterminatedString, "unterminated-string", "A string is not closed on its line."},
        {Warning::UnterminatedComment, "unterminated-comment", "A comment is not closed."},
        {Warning::DroppedMapping, "dropped-mapping", "A mapping finds no block and is dropped."},
        {Warning::ConfigUnknownKey, "config-unknown-key", "The configuration has a key that nothing asks for."},
        {Warning::ConfigWrongType, "config-wrong-type",
         "An entry of the configuration has another type than its key asks for, and counts as absent."},
        {Warning::ConfigUnknownCell, "config-unknown-cell", "The configuration names a cell that the libraries lack."},
        {Warning::ConfigUnknownPin, "config-unknown-pin", "The configuration names a pin that the cell lacks."},
        {Warning::ConfigUnknownProperty, "config-unknown-property",
         "The configuration names a property that the cell, or every cell, lacks."},
        {Warning::ConfigUnknownArchitecture, "config-unknown-architecture",
         "The configuration names an architecture that it does not list."},
        {Warning::ConfigUnknownFunction, "config-unknown-function",
         "The configuration names a function that no library declares."},
        {Warning::ConfigUnknownPinType, "config-unknown-pin-type",
         "The configuration gives a bit a type that there is not."},
        {Warning::ConfigNoEffect, "config-no-effect",
         "The configuration gives types to the bits of a pin that is not mixed."},
    };
    return rules;
}

namespace {

using Type = HATAttrTypes::AttrType;

// One property under judgement. Texts name it, and the pin it belongs to.
class PropertyJudge {
public:
    PropertyJudge(const HDNTProperty& property, const std::string& owner, std::vector<Finding>& findings)
        : property_(property), findings_(findings) {
        name_ = "property \"" + property.getName() + "\"" + owner;
    }

    void judge() const {
        switch (property_.getType()) {
        case Type::TypeInt:
            judgeNumber(property_.getDefaultIntValue(), property_.getMinIntValue(), property_.getMaxIntValue());
            break;
        case Type::TypeDouble:
            judgeNumber(property_.getDefaultDoubleValue(), property_.getMinDoubleValue(),
                        property_.getMaxDoubleValue());
            break;
        case Type::TypeString: judgeString(); break;
        case Type::TypeBitHex:
            judgeBits(property_.getDefaultHexValue(), property_.getMinHexValue(), property_.getMaxHexValue(),
                      property_.getAllowedHexValues());
            break;
        case Type::TypeBitBinary:
            judgeBits(property_.getDefaultBinaryValue(), property_.getMinBinaryValue(), property_.getMaxBinaryValue(),
                      property_.getAllowedBinaryValues());
            break;
        default: break;
        }
    }

private:
    bool isListed() const { return property_.getAttrSpec()->isEnumerated(); }

    void warn(Warning warning, const std::string& text) const {
        findings_.push_back({warning, placeOf(*property_.getLocation()), text});
    }
    void warnOutside(const std::string& value) const {
        warn(Warning::DefaultOutside, "default " + value + " of " + name_ +
                                          (isListed() ? " is not one of its values" : " is outside its range"));
    }
    void warnSwapped(const std::string& low, const std::string& high) const {
        warn(Warning::MinAboveMax, "minimum " + low + " of " + name_ + " is above its maximum " + high);
    }

    template <typename Number>
    void judgeNumber(Number value, Number low, Number high) const {
        std::string reason;
        if (low > high) warnSwapped(numberText(low), numberText(high));
        else if (!property_.isValidValue(value, reason)) warnOutside(numberText(value));
    }

    void judgeString() const {
        std::string reason;
        const std::string value = property_.getDefaultStringValue();
        if (!property_.isValidValue(value, reason)) warnOutside("\"" + value + "\"");
    }

    void judgeWidth(const std::string& what, const std::string& text) const {
        const int width = property_.getAdjustedBitWidth();
        const BitText bits(text, property_.getType() == Type::TypeBitHex);
        if (bits.width() <= width && bits.significantBits() <= static_cast<size_t>(std::max(width, 0))) return;
        warn(Warning::TextTooWide,
             what + " " + text + " of " + name_ + " is wider than " + std::to_string(width) + " bits");
    }

    // A default that is not listed is an error of the library, so only a range is looked at.
    void judgeBits(const std::string& value, const std::string& low, const std::string& high,
                   const std::vector<std::string>& listed) const {
        judgeWidth("default", value);
        for (const std::string& text : listed)
            if (text != value) judgeWidth("value", text);
        if (isListed()) return;
        judgeWidth("minimum", low);
        judgeWidth("maximum", high);
        const bool hex = property_.getType() == Type::TypeBitHex;
        const BitText least(low, hex);
        const BitText greatest(high, hex);
        const BitText chosen(value, hex);
        if (!low.empty() && !high.empty() && greatest < least) warnSwapped(low, high);
        else if (!value.empty() && ((!low.empty() && chosen < least) || (!high.empty() && greatest < chosen)))
            warnOutside(value);
    }

    const HDNTProperty& property_;
    std::string name_;
    std::vector<Finding>& findings_;
};

bool hasLowerCase(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

void judgeBus(const HDNTBus& bus, std::vector<Finding>& findings) {
    const std::string name = "pin \"" + bus.getName() + "\"";
    if (hasLowerCase(bus.getBaseName()))
        findings.push_back({Warning::PinLowerCase, placeOf(*bus.getLocation()),
                            name + " has lower-case letters and cannot be looked up by name"});
    std::unordered_map<std::string, std::string> earlier; // by upper-cased name
    for (const HDNTProperty& property : bus.properties()) {
        const std::string upper = HSTStringUtils::to_upper_copy(property.getName());
        const auto [first, isNew] = earlier.emplace(upper, property.getName());
        if (!isNew && first->second != property.getName())
            findings.push_back({Warning::PinPropertyCase, placeOf(*property.getLocation()),
                                "properties \"" + first->second + "\" and \"" + property.getName() + "\" of " + name +
                                    " differ in case only"});
        PropertyJudge(property, " of " + name, findings).judge();
    }
}

} // namespace

std::vector<Finding> judge(const HDNTLibrary& library) {
    std::vector<Finding> findings;
    for (const HDNTBlock& block : library.blocks()) {
        if (!isRegistered(block))
            findings.push_back({Warning::UnregisteredBlock, placeOf(*block.getLocation()),
                                "block \"" + block.getName() + "\" is not in the table of cells"});
        for (const HDNTBus& bus : block.buses()) judgeBus(bus, findings);
        for (const HDNTProperty& property : block.properties()) PropertyJudge(property, "", findings).judge();
    }
    return findings;
}

Finding findingOf(const HDNTNotice& notice) {
    using Kind = HDNTNotice::Kind;
    const std::string text(notice.text);
    const std::string detail = notice.detail.empty() ? "" : ": " + std::string(notice.detail);
    const Place place = placeOf(notice.location);
    switch (notice.kind) {
    case Kind::IncludeSkipped:
        return {Warning::IncludeSkipped, place, "file \"" + text + "\" was included before and is skipped"};
    case Kind::IncludeNotFound: return {Warning::IncludeNotFound, place, "file \"" + text + "\" is not found" + detail};
    case Kind::IncludeNotOpened:
        return {Warning::IncludeNotOpened, place, "file \"" + text + "\" cannot be opened" + detail};
    case Kind::UnterminatedString:
        return {Warning::UnterminatedString, place, "string is not closed on its line: " + text};
    case Kind::MappingDropped:
        return {Warning::DroppedMapping, place, "mapping of block \"" + text + "\" is dropped" + detail};
    default: break;
    }
    return {Warning::UnterminatedComment, place, "comment is not closed"};
}

void sortFindings(std::vector<Finding>& findings) {
    const auto key = [](const Finding& finding) {
        return std::tie(finding.place.order, finding.place.column, finding.warning);
    };
    std::stable_sort(findings.begin(), findings.end(),
                     [&](const Finding& a, const Finding& b) { return key(a) < key(b); });
}

std::string warningLine(const Finding& finding) {
    const std::string_view code = warningRules()[static_cast<size_t>(finding.warning)].code;
    return printable(describe(finding.place)) + ": " + colored(Color::Yellow, "warning:", 2) + " " +
           printable(finding.text) + " [" + std::string(code) + "]\n";
}

void warn(std::vector<Finding> findings) {
    sortFindings(findings);
    for (const Finding& finding : findings) writeError(warningLine(finding));
}

} // namespace ntl
