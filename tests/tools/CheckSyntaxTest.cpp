#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

// What a check says of faults of syntax, beside the library's own reports.
namespace {

struct CheckSyntaxTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};

    /// Standard output of `--format short` for a library of that text, which stands from line 2 on.
    std::string shortOf(const std::string& text, const std::string& name = "l.btl") {
        directory.write(name, libraryOf(text));
        const Outcome outcome = ntl.run({"check", "-I.", "--format", "short", name});
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
};

const std::string missing = "block \"HOLD\" { pin \"A\" input }\n";
const std::string saidMissing = "l.btl:2:29: error: expected ';' after 'input' [missing-token]\n";

} // namespace

TEST_F(CheckSyntaxTest, EveryFaultIsSaidBehindTheLibrarysReports) {
    directory.write("l.btl",
                    libraryOf(missing + "block \"GATE_AND_2\" { pin \"B\" inptu;\npin \"C\" output; }\n"
                                        "block \"GATE_OR_2\" {\npin \"D\" output;\nblock \"GATE_INVERT\" { }"));
    const Outcome outcome = ntl.run({"check", "l.btl"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              R"(
*** Error line 2.
file: l.btl line: 2.
block "HOLD" { pin "A" input }
                             ^
*** syntax error

1: library "l" {
2: block "HOLD" { pin "A" input }
)" + saidMissing +
                  "l.btl:3:30: error: expected input, output, bidir or internal; did you mean input? [misspelt-word]\n"
                  "l.btl:5:19: error: this '{' is not closed before 'block' [unclosed-brace]\n"
                  "l.btl:6:16: note: expected '}' here\n"
                  "ntl: l.btl: 3 errors\n");
}

TEST_F(CheckSyntaxTest, SoManyOfAnInput) {
    std::string text;
    for (int i = 0; i < 25; ++i) text += "block \"GATE_AND_2\" { pin \"A\" input }\n";
    directory.write("l.btl", libraryOf(text));
    const struct {
        std::vector<std::string> options;
        size_t lines;
        std::string left;
    } cases[] = {{{}, 20, "l.btl: 5 more errors left out; --max-errors 0 says all"},
                 {{"--max-errors", "24"}, 24, "l.btl: 1 more error left out; --max-errors 0 says all"},
                 {{"--max-errors", "0"}, 25, "l.btl:26:35: error: expected ';' after 'input' [missing-token]"}};
    for (const auto& each : cases) {
        std::vector<std::string> arguments = {"check", "l.btl"};
        arguments.insert(arguments.end(), each.options.begin(), each.options.end());
        const std::vector<std::string> lines = linesOf(ntl.run(arguments).err);
        size_t said = 0;
        for (const std::string& line : lines) said += line.ends_with("[missing-token]");
        EXPECT_EQ(said, each.lines);
        EXPECT_EQ(lines.back(), "ntl: l.btl: 25 errors");
        EXPECT_EQ(lines[lines.size() - 2], each.left);
    }
    for (const char* const format : {"json", "short", "sarif"})
        EXPECT_EQ(countOf(ntl.run({"check", "--format", format, "--max-errors", "1", "l.btl"}).out,
                          "expected ';' after 'input'"),
                  25U);
}

// The last line counts what its author would, and the reports of the library are all there.
TEST_F(CheckSyntaxTest, WhatIsWrongAllOverCountsOnce) {
    const std::string good = "library \"l\" {\nblock \"HOLD\" { pin \"A\" input; }\n}\n";
    std::string returns = good;
    for (size_t at = 0; (at = returns.find('\n', at)) != returns.npos; at += 2) returns.insert(at, "\r");
    const struct {
        std::string text;
        size_t reports;
        std::string last;
    } cases[] = {
        {returns, 3, "ntl: l.btl: 1 error"},
        {"\xef\xbb\xbf" + returns, 6, "ntl: l.btl: 2 errors"},
        {"library \"l\" {\nblock \"HOLD\" { pin \xe2\x80\x9c"
         "A\xe2\x80\x9d input; }\n}\n",
         4, "ntl: l.btl: 1 error"},
        {returns.insert(returns.find(" { pin"), " { pin \"B\" output tieLow; } block \"GATE_AND_2\""), 4,
         "ntl: l.btl: 2 errors"},
        {"# # #" + good, 3, "ntl: l.btl: 3 errors"},
    };
    for (const auto& each : cases) {
        directory.write("l.btl", each.text);
        const Outcome outcome = ntl.run({"check", "l.btl"});
        EXPECT_EQ(countOf(outcome.err, "*** Error line"), each.reports) << outcome.err;
        EXPECT_EQ(linesOf(outcome.err).back(), each.last);
        EXPECT_EQ(outcome.status, 1);
    }
}

TEST_F(CheckSyntaxTest, TheRestIsJudged) {
    const std::string doubled = "block \"GATE_AND_2\" { pin \"A\" input; pin \"A\" input; }\n";
    const std::string own = "block \"OWN\" { }\n";
    const std::string saidOwn = ": warning: block \"OWN\" is not in the table of cells [unregistered-block]\n";
    const struct {
        std::string text;
        std::string said;
    } cases[] = {
        {missing + doubled, saidMissing + "l.btl:3:37: error: Pin A is being redefined. [pin-redefined]\n"
                                          "l.btl:3:22: note: first declared here [pin-redefined]\n"},
        {missing + own, saidMissing + "l.btl:3:1" + saidOwn},
        {doubled + "block \"HOLD\" { pin \"A\" input }\n" + own,
         "l.btl:2:37: error: Pin A is being redefined. [pin-redefined]\n"
         "l.btl:2:22: note: first declared here [pin-redefined]\n"
         "l.btl:3:29: error: expected ';' after 'input' [missing-token]\nl.btl:4:1" +
             saidOwn},
        {"pin \"a\" input;\nblock \"HOLD\" { pin \"a\" input; }",
         "l.btl:2:1: error: expected block, function or '}' instead of 'pin' [unexpected-token]\n"
         "l.btl:3:16: warning: pin \"a\" has lower-case letters and cannot be looked up by name [pin-lower-case]\n"},
        // In the line of a faulty one, behind a tab
        {"block \"HOLD\" { pin \"A\" input }\t /* \xc3\xa4\t*/ " + own, saidMissing + "l.btl:2:41" + saidOwn},
        {"pin \"A\" input;\n" + own,
         "l.btl:2:1: error: expected block, function or '}' instead of 'pin' [unexpected-token]\nl.btl:3:1" + saidOwn},
        {"\r\n" + missing + own, "l.btl:2:1: error: carriage return; lines end with a newline alone [carriage-return]\n"
                                 "l.btl:3:29: error: expected ';' after 'input' [missing-token]\nl.btl:4:1" +
                                     saidOwn},
        {missing + own + "/* no end", saidMissing + "l.btl:3:1" + saidOwn +
                                          "l.btl:3:16: error: expected '}' after '}' [unclosed-brace]\n"
                                          "l.btl:4:1: warning: comment that does not end; add */ [open-comment]\n"},
        {missing + own + "}INLINE", saidMissing + "l.btl:3:1" + saidOwn +
                                        "l.btl:4:2: warning: expected ';' and the end of the line "
                                        "[open-file-statement]\n"},
        // Only because something is left out
        {missing + "block \"HOLD\" expandsto { }", saidMissing},
        {"function int ask;\nblock \"HOLD\" { pin \"A\" input; } expandsto { if (ask() == 1) inst \"a\" \"B\"; }",
         "l.btl:2:17: error: expected '(' instead of ';' [unexpected-token]\n"},
        // Not only
        {missing + "block \"GATE_AND_2\" expandsto { }",
         saidMissing + "l.btl:3:1: warning: mapping of block \"GATE_AND_2\" is dropped: no block of that name was "
                       "declared before [dropped-mapping]\n"},
    };
    for (const auto& each : cases) EXPECT_EQ(shortOf(each.text), each.said) << each.text;
}

// Without its head or its end a library is one all the same.
TEST_F(CheckSyntaxTest, TheRestOfATextThatIsNoLibrary) {
    const std::string own = "\nblock \"OWN\" { }\n";
    const std::string saidOwn = "l.btl:2:1: warning: block \"OWN\" is not in the table of cells [unregistered-block]\n";
    const std::pair<std::string, std::string> cases[] = {
        {"libary \"l\" {" + own + "}", "l.btl:1:1: error: expected library instead of 'libary' [misspelt-word]\n"},
        {"library \"l\"" + own + "}", "l.btl:2:1: error: expected '{' before 'block' [missing-token]\n"},
        {"library \"l\" {" + own + "} }",
         "l.btl:3:1: error: this '}' has no '{', so that '}' stands outside [stray-brace]\n"
         "l.btl:3:3: note: what stands outside [stray-brace]\n"},
    };
    for (const auto& [text, said] : cases) {
        directory.write("l.btl", text);
        const std::string out = ntl.run({"check", "--format=short", "l.btl"}).out;
        EXPECT_EQ(out, said < saidOwn ? said + saidOwn : saidOwn + said) << text;
    }
}

// A faulty part of a block leaves the block out; what is only read later has its say, too.
TEST_F(CheckSyntaxTest, IncludedFiles) {
    directory.write("pins.inc", "pin \"A\" input\npin \"B\" input;\nINLINE more.inc ;\n");
    directory.write("more.inc", "maturityLevel = beta;\n");
    directory.write("late.inc", "block \"GATE_OR_2\" { pin \"A\" inpt; }\nblock \"OWN\" { }\n");
    directory.write("comment.inc", "// nothing\n");
    EXPECT_EQ(shortOf("block \"HOLD\" { INCLUDE pins.inc ;\npin \"A\" output; }\nINCLUDE comment.inc ;\n"
                      "INCLUDE late.inc ;\nblock \"HOLD\" expandsto { }"),
              "./late.inc:1:29: error: expected input, output, bidir or internal; did you mean input? [misspelt-word]\n"
              "./late.inc:2:1: warning: block \"OWN\" is not in the table of cells [unregistered-block]\n"
              "./pins.inc:1:14: error: expected ';' after 'input' [missing-token]\n");
    // What a part is a part of, only the library knows.
    directory.write("values.inc", "1, 2 3\n");
    EXPECT_EQ(shortOf("block \"HOLD\" { property int \"N\" { values {\nINLINE values.inc ;\n}, default = 1 } }\n"
                      "block \"OWN\" { }"),
              "./values.inc:1:6: error: syntax error [syntax-error]\n"
              "l.btl:5:1: warning: block \"OWN\" is not in the table of cells [unregistered-block]\n");
}

TEST_F(CheckSyntaxTest, FilesOfAFolder) {
    directory.makeDir("folder");
    directory.write("folder/a.btl", libraryOf(missing));
    directory.write("folder/b.btl", libraryOf("block \"HOLD\" expandsto { }\nblock \"OWN\" { pin \"A\" inptu; }"));
    directory.write("folder/c.btl", libraryOf("block \"GATE_AND_2\" { pin \"A\" output tieLow; }"));
    const Outcome outcome = ntl.run({"check", "folder"});
    EXPECT_EQ(countOf(outcome.err, "*** syntax error"), 2U);
    EXPECT_EQ(linesOf(outcome.err).back(), "ntl: folder: 3 errors");
    EXPECT_EQ(ntl.run({"check", "folder", "--format", "short"}).out,
              "folder/a.btl:2:29: error: expected ';' after 'input' [missing-token]\n"
              "folder/b.btl:3:23: error: expected input, output, bidir or internal; did you mean input? "
              "[misspelt-word]\nfolder/c.btl:2:22: error: Invalid tieoff of output pin \"A\" [tie-of-output]\n");
}

TEST_F(CheckSyntaxTest, StandardInputIsReadOnce) {
    directory.write("l.btl", libraryOf(missing + "block \"HOLD\" { pin \"A\" output tieLow; }"));
    ntl.standardInput = directory.path("l.btl");
    EXPECT_EQ(ntl.run({"check", "-", "--format", "short"}).out,
              "/dev/stdin:2:29: error: expected ';' after 'input' [missing-token]\n"
              "/dev/stdin:3:16: error: Invalid tieoff of output pin \"A\" [tie-of-output]\n");
}

TEST_F(CheckSyntaxTest, ShortFormHasNothingElse) {
    directory.write("good.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    directory.write("open.btl", libraryOf("block \"HOLD\" { pin \"A input;\n }"));
    directory.write("own.btl", libraryOf("block \"OWN\" { }"));
    const Outcome outcome =
        ntl.run({"check", "--format=short", "good.btl", "open.btl", "own.btl", "missing.btl", "good.btl"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "open.btl:2:20: error: text without its second quote; add it [open-string]\n"
              "own.btl:2:1: warning: block \"OWN\" is not in the table of cells [unregistered-block]\n"
              "missing.btl:1:1: error: missing.btl: cannot be opened: No such file or directory [unusable-input]\n");
}

TEST_F(CheckSyntaxTest, DocumentsHoldBoth) {
    directory.write("l.btl", libraryOf(missing));
    const Json json = Json::parse(ntl.run({"check", "--format", "json", "l.btl"}).out)["inputs"][0];
    EXPECT_EQ(json["reason"], "l.btl: 1 error");
    ASSERT_EQ(json["diagnostics"].size(), 2U);
    EXPECT_EQ(json["diagnostics"][0]["code"], "syntax-error");
    EXPECT_EQ(json["diagnostics"][1]["code"], "missing-token");
    const Json run = Json::parse(ntl.run({"check", "--format", "sarif", "l.btl"}).out)["runs"][0];
    ASSERT_EQ(run["results"].size(), 2U);
    for (const Json& result : run["results"])
        EXPECT_EQ(run["tool"]["driver"]["rules"][result["ruleIndex"].get<size_t>()]["id"], result["ruleId"]);
}
