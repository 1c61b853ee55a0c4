#include "author/exchange/compareModels.h"
#include "author/lint/Findings.internal.h"
#include "author/lint/LintRows.internal.h"
#include "author/syntax/SyntaxCode.h"

#include <algorithm>
#include <tuple>

namespace hdnt::author {

const std::vector<DiagnosticRule>& lintRules() {
    static const std::vector<DiagnosticRule> rules = [] {
        std::vector<DiagnosticRule> list;
        for (const auto& rows : {declarationRows(), referenceRows(), trialRows(), configurationRows(), waiverRows()})
            for (const LintRow& row : rows) list.push_back(row.rule);
        return list;
    }();
    return rules;
}

static RuleGroup lintGroup(std::string_view title, std::span<const LintRow> rows) {
    RuleGroup group{title, true, {}};
    for (const LintRow& row : rows) group.rules.push_back(&lintRules()[static_cast<std::size_t>(row.code)]);
    return group;
}

std::vector<RuleGroup> ruleGroups() {
    RuleGroup errors{"Errors of the library", false, {}};
    RuleGroup losses{"What is lost while reading", true, {}};
    for (const DiagnosticRule& rule : diagnosticRules())
        if (rule.severity != Severity::note)
            (rule.severity == Severity::error ? errors : losses).rules.push_back(&rule);
    RuleGroup syntax{"Errors of syntax", false, {}};
    for (const DiagnosticRule& rule : syntaxRules()) syntax.rules.push_back(&rule);
    RuleGroup models{"Simulation models", false, {}};
    for (const DiagnosticRule& rule : modelRules()) models.rules.push_back(&rule);
    return {std::move(errors),
            std::move(syntax),
            std::move(losses),
            std::move(models),
            lintGroup("Declarations", declarationRows()),
            lintGroup("References of mappings", referenceRows()),
            lintGroup("By trying mappings", trialRows()),
            lintGroup("Configuration", configurationRows()),
            lintGroup("Waivers", waiverRows())};
}

std::vector<std::string> allCodes() {
    std::vector<std::string> codes;
    for (const RuleGroup& group : ruleGroups())
        for (const DiagnosticRule* rule : group.rules) codes.emplace_back(rule->name);
    return codes;
}

bool isThoroughRule(std::string_view code) {
    static constexpr LintCode others[] = {LintCode::similarNames,  LintCode::needlessBound, LintCode::noGroup,
                                          LintCode::noDescription, LintCode::similarGroup,  LintCode::brokenMapLibrary};
    const auto isOf = [&](const LintRow& row) { return row.rule.name == code; };
    const auto isOther = [&](LintCode other) { return lintRules()[static_cast<std::size_t>(other)].name == code; };
    return std::ranges::any_of(trialRows(), isOf) || std::ranges::any_of(others, isOther) ||
           code == ruleOf(DiagnosticCode::mapLibraryRefused).name;
}

const DiagnosticRule* findRule(std::string_view code) {
    for (const RuleGroup& group : ruleGroups())
        for (const DiagnosticRule* rule : group.rules)
            if (rule->name == code) return rule;
    return nullptr;
}

static std::string indented(std::string_view text) {
    std::string result = "\n    ";
    for (const char c : text) result += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return result + "\n";
}

std::string explanationOf(const DiagnosticRule& rule) {
    std::string text = std::string(rule.name) + " (" + std::string(nameOf(rule.severity)) + ")\n\n";
    text += std::string(rule.explanation) + "\n";
    if (!rule.bad.empty()) text += "\nSaid of:\n" + indented(rule.bad);
    if (!rule.mended.empty()) text += "\nMended:\n" + indented(rule.mended);
    return text;
}

void sortByPlace(std::vector<Diagnostic>& diagnostics) {
    const auto key = [](const Diagnostic& one) { return std::tie(one.place.order, one.place.column, one.code); };
    std::ranges::stable_sort(diagnostics, [&](const Diagnostic& a, const Diagnostic& b) { return key(a) < key(b); });
}

} // namespace hdnt::author
