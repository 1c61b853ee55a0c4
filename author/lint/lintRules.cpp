#include "author/lint/lintRules.internal.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace hdnt::author {

namespace {

using C = LintCode;
constexpr Severity W = Severity::warning;

struct Row {
    LintCode code;
    DiagnosticRule rule;
};

constexpr Row rows[] = {
    {C::defaultOutside,
     {"default-outside", W, "default % of % is %", "A default is outside the range or the list of its property."}},
    {C::minAboveMax,
     {"min-above-max", W, "minimum % of % is above its maximum %", "The minimum of a property is above its maximum."}},
    {C::textTooWide,
     {"text-too-wide", W, "% % of % is wider than % bits",
      "A hexadecimal or binary text is wider than its property, or than its own prefix says."}},
    {C::pinLowerCase,
     {"pin-lower-case", W, "% has lower-case letters and cannot be looked up by name",
      "A pin's name has lower-case letters, so that the pin cannot be looked up."}},
    {C::pinPropertyCase,
     {"pin-property-case", W, "properties \"%\" and \"%\" of % differ in case only",
      "Two properties of a pin differ in case only."}},
    {C::unregisteredBlock,
     {"unregistered-block", W, "block \"%\" is not in the table of cells",
      "A block's name is not in the table of cells, so that mappings by themselves do not find it."}},
    {C::configUnknownKey,
     {"config-unknown-key", W, "%: unknown key%", "The configuration has a key that nothing asks for."}},
    {C::configWrongType,
     {"config-wrong-type", W, "%: not %, so that it counts as absent",
      "An entry of the configuration has another type than its key asks for, and counts as absent."}},
    {C::configUnknownCell,
     {"config-unknown-cell", W, "%: no % \"%\"%%", "The configuration names a cell that the libraries lack."}},
    {C::configUnknownPin,
     {"config-unknown-pin", W, "%: no % \"%\"%%", "The configuration names a pin that the cell lacks."}},
    {C::configUnknownProperty,
     {"config-unknown-property", W, "%: no % \"%\"%%",
      "The configuration names a property that the cell, or every cell, lacks."}},
    {C::configUnknownArchitecture,
     {"config-unknown-architecture", W, "%: no % \"%\"%%",
      "The configuration names an architecture that it does not list."}},
    {C::configUnknownFunction,
     {"config-unknown-function", W, "%: no % \"%\"%%", "The configuration names a function that no library declares."}},
    {C::configUnknownPinType,
     {"config-unknown-pin-type", W, "%: no % \"%\"%%", "The configuration gives a bit a type that there is not."}},
    {C::configNoEffect,
     {"config-no-effect", W, "%: the pin is not \"mixed\", so that its bits have its type",
      "The configuration gives types to the bits of a pin that is not mixed."}},
    {C::bitTextForm,
     {"bit-text-form", W, "% % of % is no hexadecimal or binary number",
      "A default, bound or listed value of a hexadecimal or binary property is no number.",
      "library \"L\" { block \"FLOP_RISE\" { property 8'h \"INIT\" { default = 8'h } } }",
      "library \"L\" { block \"FLOP_RISE\" { property 8'h \"INIT\" { default = 8'h00 } } }"}},
};

constexpr bool inOrder() {
    int code = 0;
    for (const Row& row : rows)
        if (static_cast<int>(row.code) != code++) return false;
    return code == static_cast<int>(C::bitTextForm) + 1;
}
static_assert(inOrder());

} // namespace

const std::vector<DiagnosticRule>& lintRules() {
    static const std::vector<DiagnosticRule> rules = [] {
        std::vector<DiagnosticRule> list;
        for (const Row& row : rows) list.push_back(row.rule);
        return list;
    }();
    return rules;
}

Diagnostic finding(LintCode code, Place place, std::initializer_list<std::string_view> arguments) {
    const DiagnosticRule& rule = rows[static_cast<size_t>(code)].rule;
    return {rule.severity, std::string(rule.name), std::move(place), filledIn(rule.wording, arguments), {}, {}};
}

void sortByPlace(std::vector<Diagnostic>& diagnostics) {
    const auto key = [](const Diagnostic& one) { return std::tie(one.place.order, one.place.column, one.code); };
    std::stable_sort(diagnostics.begin(), diagnostics.end(),
                     [&](const Diagnostic& a, const Diagnostic& b) { return key(a) < key(b); });
}

} // namespace hdnt::author
