// What is said, and how severely: options, waivers, project files, baselines.
#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

namespace {

struct RulesTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.write("own.btl", libraryOf("block \"GLUE\" { pin \"i\" input; }"));
        directory.write("bad.btl", libraryOf("block \"GLUE\" { pin \"O\" output tieLow; }"));
        directory.write("include.btl", libraryOf("INCLUDE nowhere.inc ;"));
        directory.write("mapping.btl", libraryOf("block \"GATE_INVERT\" { pin \"I\" input; pin \"O\" output; }\n"
                                                 "block \"GATE_AND_2\" { pin \"I\" input; pin \"O\" output; }\n"
                                                 "block \"GATE_AND_2\" expandsto { inst \"a\" \"GATE_INVERT\";\n"
                                                 "signal \"i\" : \"I\", \"a\" \"I\";\n"
                                                 "signal \"o\" : \"a\" \"O\", \"O\";\n"
                                                 "connect \"o\" : \"a\" \"P\"; }"));
    }
};

// "severity code" of each line that has a code, then the status.
std::string said(const Outcome& outcome) {
    std::string text;
    for (const std::string& line : linesOf(outcome.err)) {
        const std::size_t code = line.rfind(" [");
        if (line.empty() || line.back() != ']' || code == line.npos) continue;
        for (const std::string severity : {"error", "warning", "note"})
            if (line.find(": " + severity + ": ") != line.npos)
                text += severity + " " + line.substr(code + 2, line.size() - code - 3) + ", ";
    }
    return text + std::to_string(outcome.status);
}

} // namespace

TEST_F(RulesTest, OptionsSayWhatIsSaid) {
    const struct {
        std::vector<std::string> arguments;
        std::string said;
        std::string lastLine = {};
    } cases[] = {
        {{"own.btl"}, "warning unregistered-block, warning pin-lower-case, 0"},
        {{"own.btl", "--no-rule", "pin-lower-case"}, "warning unregistered-block, 0"},
        {{"own.btl", "--rule", "pin-lower-case"}, "warning pin-lower-case, 0"},
        {{"own.btl", "--rule", "pin-lower-case", "--no-rule", "pin-lower-case"}, "0"},
        {{"--severity", "pin-lower-case=error", "own.btl"},
         "error pin-lower-case, warning unregistered-block, 1",
         "ntl: own.btl: 1 error"},
        {{"--severity=pin-lower-case=off", "own.btl", "--severity=unregistered-block=note", "--werror"},
         "note unregistered-block, 0"},
        {{"--werror=pin-lower-case,unregistered-block", "own.btl"},
         "error unregistered-block, error pin-lower-case, 1",
         "ntl: own.btl: 2 errors"},
        {{"--werror=pin-lower-case", "--no-rule=pin-lower-case", "own.btl"}, "warning unregistered-block, 0"},
        {{"--werror", "own.btl"},
         "warning unregistered-block, warning pin-lower-case, 1",
         "ntl: own.btl: 2 warnings (--werror)"},
        {{"include.btl", "--severity", "include-not-found=error"}, "error include-not-found, 1"},
        {{"include.btl", "--rule", "no-group"}, "0"},
        {{"mapping.btl", "--rule", "unknown-pin"}, "error unknown-pin, 1", "ntl: mapping.btl: 1 error"},
        {{"mapping.btl", "--rule", "unknown-pin", "--severity", "unknown-pin=warning"}, "warning unknown-pin, 0"},
        {{"bad.btl", "--rule", "no-group"}, "1", "ntl: bad.btl: 1 error"},
    };
    for (const auto& each : cases) {
        std::vector<std::string> arguments = {"check"};
        arguments.insert(arguments.end(), each.arguments.begin(), each.arguments.end());
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(said(outcome), each.said) << outcome.err;
        if (!each.lastLine.empty()) {
            EXPECT_EQ(linesOf(outcome.err).back(), each.lastLine);
        }
    }
    const Json json = Json::parse(
        ntl.run({"lint", "--format=json", "--werror=pin-lower-case", "--rule=pin-lower-case", "own.btl"}).out);
    EXPECT_EQ(json["inputs"][0]["status"], "errors");
    EXPECT_EQ(json["inputs"][0]["diagnostics"][0]["severity"], "error");
}

TEST_F(RulesTest, WhatCannotBeSaidIsRefused) {
    const std::string always = "is an error of the text, which is always said and always an error";
    const struct {
        std::string option;
        std::string reason;
    } cases[] = {
        {"--rule=pin-lowercase", "--rule: no code 'pin-lowercase'; did you mean pin-lower-case?"},
        {"--no-rule=pin-redefined", "--no-rule: 'pin-redefined' " + always},
        {"--severity=syntax-error=warning", "--severity: 'syntax-error' " + always},
        {"--severity=no-group=warn", "--severity: 'warn' is no severity; write error, warning, note or off"},
        {"--severity=no-group", "--severity: 'no-group' has no '='; write NAME=VALUE"},
        {"--werror=no-grup", "--werror: no code 'no-grup'; did you mean no-group?"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = ntl.run({"check", each.option, "own.btl"});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.err, "ntl: " + each.reason + "\n");
    }
}

TEST_F(RulesTest, CodesAreExplained) {
    const Outcome explained = ntl.run({"explain", "pin-lower-case", "open-inptu", "syntax-error"});
    EXPECT_EQ(explained.err, "ntl: no code 'open-inptu'; did you mean open-input?\n");
    EXPECT_EQ(explained.status, 1);
    EXPECT_TRUE(explained.out.starts_with("pin-lower-case (warning)\n\n")) << explained.out;
    EXPECT_EQ(countOf(explained.out, "\n\nsyntax-error (error)\n\n"), 1U);
    EXPECT_NE(explained.out.find("\nMended:\n\n    library \"example\" {\n"), std::string::npos) << explained.out;
    const Outcome listed = ntl.run({"lint", "--list-rules"});
    std::vector<std::string> all = linesOf(listed.out);
    EXPECT_EQ(all.size(), 1 + countOf(readFile(NTL_SOURCE_DIR "/docs/lint.md"), "\n### `"));
    all.front() = "explain"; // for the heads of the columns
    for (std::string& line : all) line = line.substr(0, line.find(' '));
    const Outcome each = ntl.run(all);
    EXPECT_EQ(each.status, 0);
    for (std::size_t i = 1; i < all.size(); ++i)
        EXPECT_EQ(countOf("\n" + each.out, "\n" + all[i] + " ("), 1U) << all[i];
}

TEST_F(RulesTest, CommentsWaiveFindings) {
    directory.makeDir("parts");
    directory.write("parts/a.inc", "// ntl: allow unregistered-block: a part\nblock \"GLUE_2\" { }");
    directory.write("waived.btl", "// ntl: allow unregistered-block, include-not-found: ours\n" +
                                      libraryOf("INCLUDE nowhere.inc ;\nblock \"GLUE\" { }\nINCLUDE a.inc ;"));
    EXPECT_EQ(said(ntl.run({"check", "--werror", "-Iparts", "waived.btl"})), "0");
    directory.write("parts/a.inc", "// ntl: allow unregistered-block until 2020-01-01: a part\nblock \"GLUE_2\" { }");
    EXPECT_EQ(said(ntl.run({"check", "-Iparts", "waived.btl"})),
              "warning unregistered-block, warning waiver-expired, 0");
    directory.write("unused.btl", "// ntl: allow no-group, min-above-max: none\n" + libraryOf(""));
    EXPECT_EQ(said(ntl.run({"check", "unused.btl", "--severity=waiver-unused=error"})), "error waiver-unused, 1");
    EXPECT_EQ(said(ntl.run({"lint", "unused.btl"})), "warning waiver-unused, warning waiver-unused, 0");
    directory.write("failing.btl", "// ntl: allow include-not-found, no-group: ours\n" +
                                       libraryOf("INCLUDE nowhere.inc ;\nblock \"A\" { pin \"O\" output tieLow; }"));
    EXPECT_EQ(said(ntl.run({"check", "failing.btl"})), "1");
}

TEST_F(RulesTest, ProjectFilesSayWhatHoldsForTheirInputs) {
    directory.makeDir("project/legacy/parts");
    directory.write("project/cells.csv", "1800,GLUE\n");
    directory.write("project/base.btl", libraryOf("block \"HOLD\" { pin \"I\" input; }"));
    directory.write("project/legacy/parts/a.inc", "block \"GLUE\" { pin \"i\" input; }");
    directory.write("project/legacy/old.btl",
                    libraryOf("INCLUDE a.inc ;\nblock \"HOLD\" expandsto { signal \"s\" : \"I\"; }"));
    directory.write("project/legacy/new.btl", libraryOf("INCLUDE a.inc ;"));
    const std::string cells = "cells = [ \"cells.csv\" ]; include = [ \"legacy/parts\" ]; ";
    const std::string exception = "exceptions = ( { path = \"legacy/*.inc\"; off = [ \"pin-lower-case\" ]; } );";
    const struct {
        std::string text;
        std::vector<std::string> arguments;
        std::string said;
    } cases[] = {
        {"", {"legacy/new.btl"}, "warning include-not-found, 0"},
        {cells, {"legacy/new.btl"}, "warning pin-lower-case, 0"},
        {"budget = \"much\";" + cells, {"legacy/new.btl", "--no-project"}, "warning include-not-found, 0"},
        {cells + exception, {"legacy/new.btl"}, "0"},
        {cells + exception, {"legacy/new.btl", "--severity=pin-lower-case=note"}, "note pin-lower-case, 0"},
        {cells + "rules = { off = [ \"pin-lower-case\" ]; };", {"legacy/new.btl"}, "0"},
        {cells + "rules = { off = [ \"pin-lower-case\" ]; };",
         {"legacy/new.btl", "--rule=pin-lower-case"},
         "warning pin-lower-case, 0"},
        {cells + "rules = { severity = { pin-lower-case = \"error\"; }; };",
         {"legacy/new.btl"},
         "error pin-lower-case, 1"},
        {cells + exception, {"legacy/old.btl"}, "warning dropped-mapping, 0"},
        {cells + exception + "parents = [ \"base.btl\" ];", {"legacy/old.btl", "--rule=dropped-mapping"}, "0"},
        {cells + exception + "parents = [ \"base.btl\" ];",
         {"legacy/old.btl", "--parent=legacy/new.btl"},
         "warning dropped-mapping, 0"},
        {"cells = [ \"missing.csv\" ];", {"legacy/new.btl"}, "2"},
        {"parents = [ \"missing.btl\" ];", {"legacy/new.btl"}, "2"},
        {"budget = \"much\";", {"legacy/new.btl"}, "2"},
    };
    for (const auto& each : cases) {
        directory.write("project/.ntl.cfg", each.text);
        std::vector<std::string> arguments = {"check"};
        for (const std::string& argument : each.arguments) {
            const bool isParent = argument.starts_with("--parent=");
            arguments.push_back(isParent             ? "--parent=project/" + argument.substr(9)
                                : argument[0] == '-' ? argument
                                                     : "project/" + argument);
        }
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(said(outcome), each.said) << each.text << outcome.err;
    }
}

TEST_F(RulesTest, EachInputHasItsOwnProjectFile) {
    directory.makeDir("a");
    directory.makeDir("b");
    for (const std::string folder : {"a", "b"})
        directory.write(folder + "/x.btl", libraryOf("block \"GLUE\" { pin \"i\" input; }"));
    directory.write("a/.ntl.cfg", "rules = { only = [ \"pin-lower-case\" ]; };");
    directory.write("b/.ntl.cfg", "rules = { severity = { pin-lower-case = \"off\"; }; };");
    EXPECT_EQ(said(ntl.run({"check", "a/x.btl", "b/x.btl"})), "warning pin-lower-case, warning unregistered-block, 0");
    directory.write("b/.ntl.cfg", "\nrules = 1;");
    const Outcome refused = ntl.run({"check", "a/x.btl", "b/x.btl"});
    EXPECT_EQ(refused.err, "ntl: b/.ntl.cfg:2: 'rules' is not a group; write { ... }\n");
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.out, "");
}

TEST_F(RulesTest, BaselinesHideWhatIsKnownWhereverItMoves) {
    const auto block = [](const std::string& name, const std::string& pins) {
        return "block \"" + name + "\" { " + pins + "}\n";
    };
    const std::string low = "pin \"i\" input; ";
    directory.makeDir("lib");
    directory.write("lib/a.btl", libraryOf(block("GLUE", low) + block("HOLD", "pin \"j\" input; pin \"k\" input; ")));
    const std::vector<std::string> known = {"check", "lib/a.btl", "--baseline=lib/known"};
    EXPECT_EQ(said(ntl.run(known)), "2");
    const Outcome written = ntl.run({"check", "lib/a.btl", "--werror", "--write-baseline=lib/known"});
    EXPECT_EQ(written.status, 0);
    EXPECT_EQ(written.err, "ntl: lib/known: 4 entries written\n");
    EXPECT_EQ(readFile(directory.path("lib/known")), "# ntl baseline 1: code, file, element, count\n"
                                                     "unregistered-block\ta.btl\tblock GLUE\t1\n"
                                                     "pin-lower-case\ta.btl\tblock GLUE/pin i\t1\n"
                                                     "pin-lower-case\ta.btl\tblock HOLD/pin j\t1\n"
                                                     "pin-lower-case\ta.btl\tblock HOLD/pin k\t1\n");
    EXPECT_EQ(ntl.run(known).err, "");

    directory.write("lib/a.btl",
                    libraryOf("\n\n" + block("HOLD", "pin \"k\" input; pin \"l\" input; ") + block("GLUE", low)));
    const Outcome moved = ntl.run(known);
    EXPECT_EQ(said(moved), "warning pin-lower-case, 0");
    EXPECT_NE(moved.err.find("pin \"l\""), std::string::npos);
    EXPECT_EQ(linesOf(moved.err).back(),
              "ntl: lib/known: 1 entry no longer occurs; --write-baseline writes it without");
    EXPECT_EQ(ntl.run({"check", "own.btl", "--baseline=lib/known", "--rule=no-group"}).err, "");

    directory.write("lib/a.btl", libraryOf(block("GLUE", "pin \"O\" output tieLow; ")));
    EXPECT_EQ(linesOf(ntl.run({"check", "lib/a.btl", "--write-baseline=lib/known"}).err).back(),
              "ntl: lib/known: not written, since an input has errors");
    EXPECT_EQ(ntl.run({"check", "own.btl", "--write-baseline=missing/known"}).status, 2);
}

TEST_F(RulesTest, WhatIsAlikeIsCounted) {
    const std::string pins =
        "block \"HOLD\" { pin \"I\" input; pin \"O\" output; } block \"GATE_INVERT\" { pin \"I\" input; "
        "pin \"O\" output; }\nblock \"HOLD\" expandsto { inst \"a\" \"GATE_INVERT\"; signal \"s\" : ";
    const auto library = [&](int times) {
        std::string list = "\"I\"";
        for (int i = 0; i < times; ++i) list += ", \"a\" \"P\"";
        return libraryOf(pins + list + "; }");
    };
    const auto checked = [&](const std::string& option) {
        return said(ntl.run({"check", "a.btl", "--rule=unknown-pin", option + "=known"}));
    };
    directory.write("a.btl", library(2));
    ASSERT_EQ(checked("--write-baseline"), "0");
    EXPECT_EQ(linesOf(readFile(directory.path("known"))).back(), "unknown-pin\ta.btl\tblock HOLD/signal s\t2");
    EXPECT_EQ(checked("--baseline"), "0");
    directory.write("a.btl", library(3));
    EXPECT_EQ(checked("--baseline"), "error unknown-pin, 1");
    for (const std::string text : {"", "library\n", "# ntl baseline 1: code, file, element, count\nno-group\ta\tb\n"}) {
        directory.write("known", text);
        EXPECT_EQ(checked("--baseline"), "2") << text;
    }
}
