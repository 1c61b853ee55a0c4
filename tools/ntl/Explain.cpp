// What codes mean: `ntl explain`, `ntl lint --list-rules` and docs/lint.md.
#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

namespace ntl {

using hdnt::DiagnosticRule;
using hdnt::author::RuleGroup;

int runExplain(const Settings& settings) {
    int status = Fine;
    std::string text;
    for (const std::string& code : settings.codes) {
        if (const DiagnosticRule* const rule = hdnt::author::findRule(code)) {
            text += (text.empty() ? "" : "\n") + hdnt::author::explanationOf(*rule);
            continue;
        }
        complain("no code '" + code + "'" + hdnt::author::question(code, hdnt::author::allCodes()));
        status = Faulty;
    }
    writeOutput(text);
    return status;
}

int listRules() {
    Table table({"code", "severity", "meaning"});
    for (const RuleGroup& group : hdnt::author::ruleGroups())
        for (const DiagnosticRule* rule : group.rules)
            if (group.isOfRules)
                table.add(
                    {std::string(rule->name), std::string(nameOf(rule->severity)), std::string(rule->explanation)});
    writeOutput(table.text());
    return Fine;
}

static std::string example(const char* title, std::string_view text) {
    return text.empty() ? "" : std::string("\n") + title + "\n\n```text\n" + std::string(text) + "\n```\n";
}

std::string rulesDocument() {
    std::string text = "# Rules\n\n"
                       "What `ntl check` and `ntl lint` say of libraries that the library accepts. Made by `ntl "
                       "--generate lint` from the table of rules; `ntl explain CODE` says the same in the terminal.\n";
    for (const RuleGroup& group : hdnt::author::ruleGroups()) {
        if (!group.isOfRules) continue;
        text += "\n## " + std::string(group.title) + "\n";
        for (const DiagnosticRule* rule : group.rules) {
            text += "\n### `" + std::string(rule->name) + "`\n\n";
            text += std::string(nameOf(rule->severity)) + ". " + std::string(rule->explanation) + "\n";
            text += example("Said of:", rule->bad) + example("Mended:", rule->mended);
        }
    }
    return text;
}

} // namespace ntl
