// What codes mean: `ntl explain`, `ntl lint --list-rules` and the table of docs/lint.md.
#include "author/lint/lint.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Options.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

namespace ntl {

using hdnt::DiagnosticRule;

static std::vector<std::string> codes() {
    std::vector<std::string> names;
    for (const DiagnosticRule* rule : hdnt::author::allRules()) names.emplace_back(rule->name);
    return names;
}

int runExplain(const Settings& settings) {
    int status = Fine;
    std::string text;
    for (const std::string& code : settings.codes) {
        if (const DiagnosticRule* const rule = hdnt::author::findRule(code)) {
            text += (text.empty() ? "" : "\n") + hdnt::author::explanationOf(*rule);
            continue;
        }
        complain("no code '" + code + "'" + suggestion(code, codes()));
        status = Faulty;
    }
    writeOutput(text);
    return status;
}

int listRules() {
    Table table({"code", "severity", "meaning"});
    for (const DiagnosticRule* rule : hdnt::author::allRules())
        table.add({std::string(rule->name), std::string(nameOf(rule->severity)), std::string(rule->explanation)});
    writeOutput(table.text());
    return Fine;
}

} // namespace ntl
