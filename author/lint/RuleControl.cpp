#include "author/lint/RuleControl.h"

#include "author/exchange/compareModels.h"
#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"

#include <algorithm>

namespace hdnt::author {

namespace {

std::string refusalOfCode(std::string_view code) {
    if (findRule(code)) return {};
    return "no code '" + std::string(code) + "'" + question(std::string(code), allCodes());
}

bool isAlwaysError(std::string_view code) {
    const DiagnosticRule* const rule = findRule(code);
    const auto isIt = [&](const DiagnosticRule& one) { return &one == rule; };
    return rule && rule->severity == Severity::error && std::ranges::none_of(lintRules(), isIt) &&
           std::ranges::none_of(modelRules(), isIt);
}

} // namespace

std::string refusalOfControl(std::string_view code) {
    if (!isAlwaysError(code)) return refusalOfCode(code);
    return "'" + std::string(code) + "' is an error of the text, which is always said and always an error";
}

std::string RuleControl::only(std::string_view code) {
    std::string refusal = refusalOfCode(code);
    if (refusal.empty()) only_.emplace(code);
    return refusal;
}

std::string RuleControl::turnOff(std::string_view code) {
    std::string refusal = refusalOfControl(code);
    if (refusal.empty()) severities_[std::string(code)] = std::nullopt;
    return refusal;
}

std::string RuleControl::setSeverity(std::string_view code, Severity severity) {
    std::string refusal = severity == Severity::error ? refusalOfCode(code) : refusalOfControl(code);
    if (refusal.empty()) severities_[std::string(code)] = severity;
    return refusal;
}

std::string RuleControl::set(std::string_view code, std::string_view word) {
    if (word == "off") return turnOff(code);
    for (const Severity severity : {Severity::error, Severity::warning, Severity::note})
        if (nameOf(severity) == word) return setSeverity(code, severity);
    return "'" + std::string(word) + "' is no severity; write error, warning, note or off";
}

void RuleControl::add(const RuleControl& stronger) {
    if (!stronger.only_.empty()) only_ = stronger.only_;
    std::erase_if(severities_, [&](const auto& one) { return !one.second && stronger.only_.contains(one.first); });
    for (const auto& [code, severity] : stronger.severities_) severities_[code] = severity;
}

bool RuleControl::speaksOf(std::string_view code) const { return only_.contains(code) || severities_.contains(code); }

bool RuleControl::isOff(const Diagnostic& finding) const {
    const auto found = severities_.find(finding.code);
    if (found != severities_.end() && !found->second) return true;
    if (only_.empty() || only_.contains(finding.code)) return false;
    return finding.severity != Severity::error || !isAlwaysError(finding.code);
}

void RuleControl::apply(std::vector<Diagnostic>& findings) const {
    std::erase_if(findings, [&](const Diagnostic& one) { return isOff(one); });
    for (Diagnostic& finding : findings) {
        const auto found = severities_.find(finding.code);
        if (found != severities_.end()) finding.severity = *found->second;
    }
}

} // namespace hdnt::author
