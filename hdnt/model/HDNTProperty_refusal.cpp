// Which values a property takes when bit vectors are numbers, and what is said of the others.
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/TypedValues.internal.h"
#include "hdnt/platform/BitText.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace {

using hdnt::Value;
using hdnt::model::TypedValues;
using hdnt::model::withValues;
using hdnt::platform::BitText;
using Type = HATAttrTypes::AttrType;

// More is of no help in a message.
constexpr size_t mostListed = 20;
constexpr size_t mostDigits = 16;
constexpr size_t mostCharacters = 60;

class Judge {
public:
    explicit Judge(const HDNTProperty& property)
        : property_(property), hex_(property.getType() == Type::TypeBitHex),
          bits_(HATAttrTypes::isBitVector(property.getType())) {}

    std::string refusalOf(const Value& value) const {
        const std::string fault = faultOf(value);
        return fault.empty() ? fault : sentence(written(value), fault);
    }
    std::string refusalOfOther(const std::string& written) const { return sentence(written, otherType()); }

private:
    std::string sentence(const std::string& value, const std::string& fault) const {
        return property_.getName() + ": " + value + " is " + fault;
    }
    std::string otherType() const { return "no " + typeWord() + " value; write " + whatToWrite(); }

    std::string faultOf(const Value& value) const {
        return withValues(*property_.getAttrSpec(), [&](const auto& values) {
            using Plain = typename std::remove_cvref_t<decltype(values)>::Plain;
            const Plain* const plain = std::get_if<Plain>(&value);
            if (!plain || !isOfType(*plain)) return otherType();
            if constexpr (std::is_same_v<Plain, std::string>)
                if (std::string fault = widthFault(*plain); !fault.empty()) return fault;
            return faultIn(values, *plain);
        });
    }

    template <typename T, typename Plain>
    std::string faultIn(const TypedValues<T>& values, const Plain& value) const {
        if (isListed()) {
            const auto isIt = [&](const Plain& one) { return areEqual(one, value); };
            return values.lists(isIt) ? "" : "none of " + listText();
        }
        if (values.hasLow() && isLess(value, values.low))
            return "below " + written(values.low) + "; allowed are " + rangeText();
        if (values.hasHigh() && isLess(values.high, value))
            return "above " + written(values.high) + "; allowed are " + rangeText();
        return {};
    }

    std::string widthFault(const std::string& text) const {
        const std::optional<BitText> number = numberOf(text);
        if (!number) return {};
        if (number->exceedsItsPrefix()) return widerThan(number->width());
        return number->fits(property_.getAdjustedBitWidth()) ? "" : widerThan(property_.getAdjustedBitWidth());
    }

    std::string widerThan(long bits) const {
        return "wider than " + std::to_string(bits) + (bits == 1 ? " bit" : " bits") + "; write " + whatToWrite();
    }

    bool isListed() const { return property_.getAttrSpec()->isEnumerated(); }

    // Nothing for what is no text of a bit vector.
    std::optional<BitText> numberOf(const std::string& text) const {
        return bits_ ? BitText::of(text, hex_) : std::nullopt;
    }

    bool isOfType(bool) const { return true; }
    bool isOfType(int) const { return true; }
    bool isOfType(double value) const { return std::isfinite(value); }
    bool isOfType(const std::string& text) const { return !bits_ || numberOf(text); }

    // What a program listed or set as a bound may be no text of a bit vector: then it stops nothing and lets nothing
    // in.
    bool isLess(const std::string& a, const std::string& b) const {
        const std::optional<BitText> first = numberOf(a);
        const std::optional<BitText> second = numberOf(b);
        return first && second && *first < *second;
    }
    template <typename Number>
    bool isLess(Number a, Number b) const {
        return a < b;
    }
    bool areEqual(const std::string& listed, const std::string& text) const {
        if (!bits_) return HSTStrUtils::compareCI(listed, text) == 0;
        return numberOf(listed) && !isLess(listed, text) && !isLess(text, listed);
    }
    template <typename Number>
    bool areEqual(Number listed, Number value) const {
        return listed == value;
    }

    std::string typeWord() const {
        return bits_ ? std::to_string(property_.getBitWidth()) + (hex_ ? "'h" : "'b")
                     : HDNTProperty::getTypeName(property_.getType());
    }

    // A value as a declaration writes it; a text in quotes unless it is of a bit vector.
    std::string written(const Value& value) const {
        if (const auto* const number = std::get_if<double>(&value))
            return hdnt::platform::DoubleText(*number, hdnt::platform::DoubleForm::WithPoint).str();
        const auto* const text = std::get_if<std::string>(&value);
        if (!text) return hdnt::textOf(value);
        const std::string shown = hdnt::platform::clipped(*text, mostCharacters);
        if (!numberOf(*text)) return '\'' + shown + '\'';
        return text->find('\'') == text->npos ? typeWord() + shown : shown;
    }

    std::string listText() const {
        const std::vector<Value> allowed = property_.getAllowedValues();
        std::string all;
        for (size_t i = 0; i < std::min(allowed.size(), mostListed); ++i) {
            const auto* const text = std::get_if<std::string>(&allowed[i]);
            all += (i > 0 ? ", " : "") + (text ? *text : written(allowed[i]));
        }
        return allowed.size() > mostListed ? all + ", ... (" + std::to_string(allowed.size()) + " in all)" : all;
    }

    // Every bit vector has bounds: without declared ones, the least and the greatest number of its width.
    std::string bitsRangeText(const std::optional<Value>& low, const std::optional<Value>& high) const {
        const std::string greatest = BitText::greatest(std::max(property_.getBitWidth(), 1), hex_);
        if (!(property_.isMinDeclared() || property_.isMaxDeclared()) && greatest.size() > mostDigits)
            return typeWord() + " and up to " + std::to_string(greatest.size()) + " digits";
        return written(low.value_or(std::string(greatest.size(), '0'))) + " to " + written(high.value_or(greatest));
    }

    std::string rangeText() const {
        const std::optional<Value> low = property_.getMinValue();
        const std::optional<Value> high = property_.getMaxValue();
        if (bits_) return bitsRangeText(low, high);
        if (low && high) return written(*low) + " to " + written(*high);
        return low ? written(*low) + " and above" : written(*high) + " and below";
    }

    std::string whatToWrite() const {
        if (isListed()) return "one of " + listText();
        if (bits_ || property_.getMinValue() || property_.getMaxValue()) return rangeText();
        switch (property_.getType()) {
        case Type::TypeBool: return "true or false";
        case Type::TypeInt: return "a whole number";
        case Type::TypeDouble: return "a number";
        default: return "a text";
        }
    }

    const HDNTProperty& property_;
    bool hex_;
    bool bits_;
};

} // namespace

std::string HDNTProperty::refusalOf(const hdnt::Value& value) const { return Judge(*this).refusalOf(value); }

std::string HDNTProperty::refusalOfOther(const std::string& written) const {
    return Judge(*this).refusalOfOther(written);
}
