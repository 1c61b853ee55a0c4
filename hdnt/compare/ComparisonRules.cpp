// What differences mean for designs.
#include "hdnt/compare/ComparisonRules.internal.h"
#include "hdnt/model/Words.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <charconv>

using Kind = HDNTElementKind;
using Facet = HDNTElementFacet;
using Effect = HDNTDifference::Effect;
using Trend = HDNTComparison::Trend;
using Change = HDNTDifference::Change;

const std::vector<HDNTComparison::Rule>& HDNTComparison::rules() {
    constexpr std::nullopt_t any = std::nullopt;
    static const std::vector<Rule> table = {
        {Kind::library, Facet::name, any, Effect::textOnly, "designs do not name the library"},
        {Kind::function, Facet::whole, Trend::more, Effect::compatible, "nothing calls it yet"},
        {Kind::function, Facet::order, any, Effect::textOnly, "functions are found by name"},
        {Kind::function, any, any, Effect::breaking, "mappings of other libraries may call it as it was"},

        {Kind::block, Facet::whole, Trend::more, Effect::compatible, "no design uses it yet"},
        {Kind::block, Facet::whole, any, Effect::breaking, "designs instantiate it"},
        {Kind::block, Facet::order, any, Effect::textOnly, "blocks are found by name"},
        {Kind::block, Facet::test, Trend::more, Effect::compatible, "it is there for all designs now"},
        {Kind::block, Facet::internal, Trend::more, Effect::compatible, "it is there for all designs now"},
        {Kind::block, Facet::maturity, Trend::more, Effect::compatible, "a deprecated block still works"},
        {Kind::block, Facet::group, any, Effect::compatible, "groups sort blocks, designs do not name them"},
        {Kind::block, Facet::subgroup, any, Effect::compatible, "groups sort blocks, designs do not name them"},
        {Kind::block, Facet::legacyGroup, any, Effect::compatible, "groups sort blocks, designs do not name them"},
        {Kind::block, Facet::legacySubgroup, any, Effect::compatible, "groups sort blocks, designs do not name them"},
        {Kind::block, any, any, Effect::breaking, "designs may no longer use it, or a promise is taken back"},

        {Kind::pin, Facet::whole, Trend::more, Effect::compatible, "it may stay open and moves no other pin"},
        {Kind::pin, Facet::whole, any, Effect::breaking, "it was connected, has to be, or moves pins behind it"},
        {Kind::pin, Facet::order, any, Effect::breaking, "pins may be connected by position"},
        {Kind::pin, Facet::requiredValue, Trend::more, Effect::compatible, "nothing is required any more"},
        {Kind::pin, Facet::test, Trend::more, Effect::compatible, "it is there for all designs now"},
        {Kind::pin, any, any, Effect::breaking, "connections may not fit, or mean something else"},

        {Kind::property, Facet::whole, Trend::more, Effect::compatible, "it has a default"},
        {Kind::property, Facet::whole, any, Effect::breaking, "designs set it"},
        {Kind::property, Facet::order, any, Effect::textOnly, "properties are found by name"},
        {Kind::property, Facet::minimum, Trend::more, Effect::compatible, "every value that was allowed is"},
        {Kind::property, Facet::maximum, Trend::more, Effect::compatible, "every value that was allowed is"},
        {Kind::property, Facet::values, Trend::more, Effect::compatible, "every value that was allowed is"},
        {Kind::property, Facet::values, Trend::same, Effect::textOnly, "the same values in another order"},
        {Kind::property, Facet::precision, Trend::more, Effect::compatible, "no digit is lost"},
        {Kind::property, Facet::units, any, Effect::textOnly, "for people to read; values have no unit"},
        {Kind::property, Facet::description, any, Effect::textOnly, "for people to read"},
        {Kind::property, Facet::test, Trend::more, Effect::compatible, "it is there for all designs now"},
        {Kind::property, Facet::simulation, Trend::more, Effect::compatible, "it is not for simulation alone now"},
        {Kind::property, Facet::constraintsOnly, Trend::more, Effect::compatible,
         "it is not for constraints alone now"},
        {Kind::property, any, any, Effect::breaking, "values may be refused, or designs mean something else"},

        {Kind::mapping, Facet::whole, Trend::more, Effect::compatible, "a block that stayed as it was can be mapped"},
        {Kind::mapping, Facet::whole, any, Effect::breaking, "a block that was mapped stays as it is"},
        {Kind::signal, Facet::order, any, Effect::textOnly, "signals are found by name"},
        {Kind::connect, Facet::order, any, Effect::textOnly, "connections add up in any order"},
        {any, any, any, Effect::breaking, "designs become something else when they are mapped"},
    };
    return table;
}

namespace {

template <typename Enum, size_t count>
const char* pick(const char* const (&names)[count], Enum value) {
    const auto index = static_cast<size_t>(value);
    return index < count ? names[index] : "unknown";
}

constexpr const char* kindNames[] = {"library",  "function", "block",      "pin",     "property",   "mapping",
                                     "pre call", "instance", "signal",     "connect", "pin assign", "block assign",
                                     "if",       "branch",   "statements", "call",    "expression"};
constexpr const char* facetNames[] = {"whole",        "order",           "name",      "type",       "formals",
                                      "test",         "internal",        "maturity",  "group",      "subgroup",
                                      "legacy group", "legacy subgroup", "direction", "range",      "required value",
                                      "abstract",     "width",           "minimum",   "maximum",    "values",
                                      "default",      "precision",       "units",     "simulation", "constraints only",
                                      "mux control",  "description",     "section",   "pins",       "value",
                                      "arguments",    "condition",       "disabled"};
constexpr const char* changeNames[] = {"added", "removed", "changed"};
constexpr const char* effectNames[] = {"breaking", "compatible", "text only"};
constexpr const char* trendNames[] = {"more", "less", "same", "other"};

} // namespace

const char* HDNTComparison::nameOf(Kind kind) { return pick(kindNames, kind); }
const char* HDNTComparison::nameOf(Facet facet) { return pick(facetNames, facet); }
const char* HDNTComparison::nameOf(Change change) { return pick(changeNames, change); }
const char* HDNTComparison::nameOf(Effect effect) { return pick(effectNames, effect); }
const char* HDNTComparison::nameOf(Trend trend) { return pick(trendNames, trend); }

namespace hdnt::compare {

namespace {

std::string_view withoutZeros(std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

// Two numbers, or two bit vectors of one radix: below 0, 0 or above; none when they cannot be compared.
std::optional<int> compareNumbers(std::string_view a, std::string_view b) {
    const size_t quoteA = a.find('\'');
    const size_t quoteB = b.find('\'');
    if (quoteA != a.npos && quoteB != b.npos && quoteA + 1 < a.size() && quoteB + 1 < b.size()) {
        if (HSTStringUtils::to_upper(a[quoteA + 1]) != HSTStringUtils::to_upper(b[quoteB + 1])) return std::nullopt;
        const std::string_view digitsA = withoutZeros(a.substr(quoteA + 2));
        const std::string_view digitsB = withoutZeros(b.substr(quoteB + 2));
        if (digitsA.size() != digitsB.size()) return digitsA.size() < digitsB.size() ? -1 : 1;
        return HSTStrUtils::compareCI(digitsA, digitsB);
    }
    double values[2] = {};
    for (const auto& [text, value] : {std::pair{a, &values[0]}, std::pair{b, &values[1]}}) {
        const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), *value);
        if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    }
    return values[0] < values[1] ? -1 : values[0] > values[1] ? 1 : 0;
}

// Apart at the commas that are not between quotes, and sorted.
std::vector<std::string_view> sortedItems(std::string_view list) {
    std::vector<std::string_view> items;
    size_t begin = 0;
    bool inText = false;
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i] == '\\' && inText) ++i;
        else if (list[i] == '"') inText = !inText;
        else if (list[i] == ',' && !inText) {
            items.push_back(list.substr(begin, i - begin));
            begin = i + 2;
        }
    }
    if (!list.empty()) items.push_back(list.substr(begin));
    std::sort(items.begin(), items.end());
    return items;
}

Trend trendOfValues(std::string_view before, std::string_view after) {
    const std::vector<std::string_view> old = sortedItems(before);
    const std::vector<std::string_view> now = sortedItems(after);
    if (old == now) return Trend::same;
    return std::includes(now.begin(), now.end(), old.begin(), old.end()) ? Trend::more : Trend::less;
}

// A block that is not deprecated any more, or that gets further.
Trend trendOfMaturity(std::string_view before, std::string_view after) {
    const auto rank = [](std::string_view text) {
        return words::maturityLevels.valueOf(text).value_or(static_cast<int>(words::maturityLevels.size()));
    };
    return before == "deprecated" || rank(after) > rank(before) ? Trend::more : Trend::less;
}

Trend trendOfBound(std::string_view before, std::string_view after, bool upIsMore) {
    const std::optional<int> order = compareNumbers(before, after);
    if (!order) return Trend::other;
    return (upIsMore ? *order <= 0 : *order >= 0) ? Trend::more : Trend::less;
}

} // namespace

std::string_view absentText(Facet facet) {
    switch (facet) {
    case Facet::test:
    case Facet::internal:
    case Facet::abstract:
    case Facet::simulation:
    case Facet::constraintsOnly:
    case Facet::muxControl:
    case Facet::disabled: return "false";
    case Facet::maturity: return words::maturityLevels.wordOf(0);
    case Facet::precision: return "6";
    case Facet::legacyGroup: return "as group";
    default: return "none";
    }
}

Trend trendOf(Facet facet, const std::string_view* before, const std::string_view* after) {
    const std::string_view old = before ? *before : absentText(facet);
    const std::string_view now = after ? *after : absentText(facet);
    if (facet == Facet::maturity) return trendOfMaturity(old, now);
    if (facet == Facet::precision) return trendOfBound(old, now, true);
    if (!after) return Trend::more;
    if (!before) return Trend::less;
    switch (facet) {
    case Facet::minimum: return trendOfBound(old, now, false);
    case Facet::maximum: return trendOfBound(old, now, true);
    case Facet::values: return trendOfValues(old, now);
    default: return Trend::other;
    }
}

bool mayStayOpen(const HDNTModelTree& tree, size_t pin) {
    const auto is = [&](Facet facet, std::string_view text) {
        const HDNTModelTree::Text* const found = tree.find(pin, facet);
        return found && tree.text(*found) == text;
    };
    const auto needs = [&](HDNT_PIN_REQUIREDVALUE value) {
        return is(Facet::requiredValue, words::requiredValues.wordOf(value));
    };
    const auto hasDirection = [&](HDNT_PIN_DIRECTION value) {
        return is(Facet::direction, words::pinDirections.wordOf(value));
    };
    if (needs(HDNT_PIN_MUST_CONNECT) || needs(HDNT_PIN_ACTIVE)) return false;
    return hasDirection(HDNT_PIN_OUTPUT) || hasDirection(HDNT_PIN_INTERNAL) || is(Facet::test, "true") ||
           tree.find(pin, Facet::requiredValue) != nullptr;
}

Effect effectOf(Kind element, Facet facet, Trend trend) {
    const auto& rules = HDNTComparison::rules();
    const auto fits = [](const auto& wanted, auto value) { return !wanted || *wanted == value; };
    return std::find_if(rules.begin(), rules.end(),
                        [&](const HDNTComparison::Rule& rule) {
                            return fits(rule.element, element) && fits(rule.facet, facet) && fits(rule.trend, trend);
                        })
        ->effect;
}

} // namespace hdnt::compare
