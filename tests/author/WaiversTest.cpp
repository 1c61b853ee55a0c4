#include "author/lint/Waivers.h"

#include "author/lint/lint.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

// Comments that waive findings.
namespace {

using hdnt::Diagnostic;
using hdnt::author::Judged;

constexpr std::chrono::year_month_day day{std::chrono::year(2026), std::chrono::month(6), std::chrono::day(30)};

/// A finding of the code for each place of the mark "@", which is taken out of the text.
std::vector<Diagnostic> marked(std::string& text, const std::string& code) {
    std::vector<Diagnostic> findings;
    for (std::size_t at = text.find('@'); at != text.npos; at = text.find('@')) {
        text.erase(at, 1);
        Diagnostic& finding = findings.emplace_back();
        finding.severity = hdnt::Severity::warning;
        finding.code = code;
        finding.place.file = "t.btl";
        finding.place.line = 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
        finding.place.offset = at;
    }
    return findings;
}

// "line:column-end code: message" of what is left, with line breaks between.
std::string left(std::string text, const std::string& code = "no-group", Judged judged = Judged::AllRules) {
    std::vector<Diagnostic> findings = marked(text, code);
    hdnt::author::applyWaivers(findings, {"t.btl"}, {day, judged, {{"t.btl", text}}});
    std::string all;
    for (const Diagnostic& one : findings)
        all += std::to_string(one.place.line) + ':' + std::to_string(one.place.column) + '-' +
               std::to_string(one.place.endColumn) + ' ' + one.code + (one.message.empty() ? "" : ": ") + one.message +
               '\n';
    return all;
}

const std::string gone = "; write \"ntl: allow CODE: reason\"\n";
const std::string kept = "2:0-0 no-group\n";

} // namespace

TEST(Waivers, CoverWhatStandsBehindThemOrBeforeThemInTheirLine) {
    const std::string w = "// ntl: allow no-group: r\n";
    const std::string behind = " // ntl: allow no-group: r";
    const std::pair<std::string, std::string> cases[] = {
        {"library \"l\" {\n" + w + "@block \"A\" { @pin \"I\" input; }\n@block \"B\" { }\n}", "4:0-0 no-group\n"},
        {"library \"l\" {\n@block \"A\" {\n" + w +
             "@pin \"I\" input { @property int \"P\" { default = 1 } }\n@test = true; }\n}",
         "2:0-0 no-group\n5:0-0 no-group\n"},
        {"library \"l\" {\nblock \"A\" {\n@pin \"I\" input;" + behind + "\n@pin \"J\" input;\n} }", "4:0-0 no-group\n"},
        {"library \"l\" {\n@block \"A\" {" + behind + "\n@pin \"I\" input;\n}\n@block \"B\" { } }", "5:0-0 no-group\n"},
        {"library \"l\" {\n@block \"A\" {\n@pin \"I\" input;\n}" + behind + "\n@block \"B\" { } }", "5:0-0 no-group\n"},
        {"library \"l\" {\nblock \"A\" {\npin \"I\" input;\n} mapsto {\nif (true) {" + behind +
             "\n@inst \"a\" \"B\"; }\n@inst \"b\" \"B\";\n} }",
         "7:0-0 no-group\n"},
        {w + "\n// more\nlibrary \"l\" {\n@block \"A\" { }\n}", ""},
        {"library \"l\" {\n" + w + "@INCLUDE a.inc ;\n@INCLUDE b.inc ;\n}", "4:0-0 no-group\n"},
        {w + "@block \"A\" { }\n@block \"B\" { }", "3:0-0 no-group\n"},
        {"library \"l\" {\n/* ntl: allow no-group\n   until 2026-06-30:\n   r */\n@block \"A\" { }\n}", ""},
        {"library \"l\" {\n" + w + "// ntl: allow no-group until 2030-01-01: s\n@block \"A\" { }\n}", ""},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(left(text), expected) << text;
}

TEST(Waivers, ThoseWithAFaultSaySoAndWaiveNothing) {
    const std::string form = "1:1-$ waiver-form: waiver without effect: ";
    std::vector<std::pair<std::string, std::string>> cases = {
        {"", kept + form + "no code" + gone},
        {"no-group", kept + form + "no reason" + gone},
        {"no-group:", kept + form + "no reason" + gone},
        {"no-group until 2026-06-30", kept + form + "no reason" + gone},
        {": r", kept + form + "no code" + gone},
        {"no-group,: r", kept + form + "no code" + gone},
        {"no-grup: r", kept + form + "no code 'no-grup'; did you mean no-group?\n"},
        {"pin-redefined: r",
         kept + form + "'pin-redefined' is an error of the text, which is always said and always an error\n"},
        {"waiver-unused: r", kept + form + "'waiver-unused' cannot be waived\n"},
        {"no-group, xuntil 2026-06-29: r", kept + form + "no code 'xuntil 2026-06-29'\n"},
        {"no-group until 2026-06-29: r", kept + "1:1-$ waiver-expired: the waiver ended on 2026-06-29\n"},
        {"no-group until 2026-06-30: r", ""},
        {"no-group, min-above-max: r", "1:1-$ waiver-unused: nothing here is min-above-max, which the waiver allows\n"},
    };
    for (const std::string date : {"2026-02-30", "June", "2026-6-30", "2026/06-30", "2026-06/30", "20x6-06-30",
                                   "2026-+6-30", "2026-00-30", "2026-06-00", "2026-13-01", "2026-06-3x"})
        cases.emplace_back("no-group until " + date + ": r",
                           kept + form + "'" + date + "' is no date; write YEAR-MONTH-DAY\n");
    for (const auto& [said, expected] : cases) {
        const std::string comment = std::string("// ntl: allow") + (said.empty() ? "" : " ") + said;
        std::string wanted = expected;
        if (const std::size_t at = wanted.find('$'); at != wanted.npos)
            wanted.replace(at, 1, std::to_string(comment.size() + 1));
        EXPECT_EQ(left(comment + "\nlibrary \"l\" { @block \"A\" { } }"), wanted) << said;
    }
    EXPECT_EQ(left("library \"l\" {\n@block \"A\" {\n// ntl: allow no-group: r\n} }"),
              kept + "3:1-26 waiver-form: waiver without effect: no statement stands behind it\n");
}

TEST(Waivers, OfWhatWasNotJudgedNothingIsSaid) {
    const std::string text = "// ntl: allow no-group, min-above-max, include-not-found: r\nlibrary \"l\" { }";
    const auto count = [&](Judged judged) {
        const std::string all = left(text, "", judged);
        return std::count(all.begin(), all.end(), '\n');
    };
    EXPECT_EQ(count(Judged::Nothing), 0);
    EXPECT_EQ(count(Judged::QuickRules), 2);
    EXPECT_EQ(count(Judged::AllRules), 3);
}

TEST(Waivers, OtherCommentsAndTextsWithFaults) {
    EXPECT_EQ(left("// ntl: allowed no-group: r\nlibrary \"l\" { @block \"A\" { } }"), kept);
    EXPECT_EQ(left("// see ntl: allow no-group: r\nlibrary \"l\" { @block \"A\" { } }"), kept);
    EXPECT_EQ(left("library \"l\" { block \"ntl: allow\" { }\n@block \"A\" { } }"), kept);
    EXPECT_EQ(left("library \"l\" {\n@block \"A\" { // ntl: allow no-group: r\n pin ; }\nblock"), "");
}

TEST(Waivers, ExamplesOfTheRules) {
    for (const char* const code : {"waiver-form", "waiver-expired", "waiver-unused"}) {
        const hdnt::DiagnosticRule& rule = *hdnt::author::findRule(code);
        for (const std::string_view text : {rule.bad, rule.mended}) {
            const auto library = support::loaded(std::string(text));
            ASSERT_NE(library, nullptr);
            std::vector<Diagnostic> findings = hdnt::lint(*library);
            for (Diagnostic& one : findings) one.place.file = "t.btl";
            hdnt::author::applyWaivers(findings, {"t.btl"}, {day, Judged::AllRules, {{"t.btl", std::string(text)}}});
            std::string said;
            for (const Diagnostic& one : findings)
                if (one.code != "unregistered-block") said += one.code;
            EXPECT_EQ(said, text == rule.bad ? code : "");
        }
    }
}
