#include "tools/ntl/RuleOptions.h"

#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <algorithm>
#include <sstream>

namespace ntl {

std::vector<OptionSpec> severityOptions() {
    return {{"--rule", "CODE",
             "Say only what has this code, and errors of the text. May be repeated; 'ntl lint --list-rules' lists the "
             "codes.",
             &Settings::onlyRules, Completion::Rule},
            {"--no-rule", "CODE", "Say nothing that has this code. May be repeated.", &Settings::rulesOff,
             Completion::Rule},
            {"--severity", "CODE=SEVERITY",
             "Say what has this code as error, warning or note, or not at all: off. May be repeated.",
             &Settings::severities, Completion::RuleSeverity},
            {"--werror",
             "CODE,...",
             "Let warnings count as errors: all, or with codes behind '=' those that have one of them.",
             &Settings::warningsAreErrors,
             Completion::RuleList,
             {},
             false,
             true}};
}

std::vector<OptionSpec> ruleOptions() {
    std::vector<OptionSpec> options = severityOptions();
    const std::vector<OptionSpec> more = {
        {"--no-project", "", "Read no file .ntl.cfg of a project.", &Settings::noProject},
        {"--baseline", "FILE", "Say nothing of the findings that are in FILE.", &Settings::baseline, Completion::File},
        {"--write-baseline", "FILE", "Write the findings to FILE instead of saying them.", &Settings::newBaseline,
         Completion::File}};
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

// What --werror gives without an argument.
static const char* const all = "true";

static void take(const std::string& option, const std::string& refusal) {
    if (!refusal.empty()) throw Failure(Unusable, option + ": " + refusal);
}

hdnt::author::RuleControl rulesOf(const Settings& settings) {
    hdnt::author::RuleControl rules;
    for (const std::string& codes : settings.warningsAreErrors) {
        std::istringstream list(codes == all ? "" : codes);
        for (std::string code; std::getline(list, code, ',');)
            take("--werror", rules.setSeverity(code, hdnt::Severity::error));
    }
    for (const std::string& text : settings.severities) {
        const auto [code, word] = splitAssignment("--severity", text);
        take("--severity", rules.set(code, word));
    }
    for (const std::string& code : settings.onlyRules) take("--rule", rules.only(code));
    for (const std::string& code : settings.rulesOff) take("--no-rule", rules.turnOff(code));
    return rules;
}

bool allWarningsAreErrors(const Settings& settings) {
    return std::find(settings.warningsAreErrors.begin(), settings.warningsAreErrors.end(), all) !=
           settings.warningsAreErrors.end();
}

} // namespace ntl
