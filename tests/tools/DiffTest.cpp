#include "hdnt/compare/HDNTComparison.h"
#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

namespace {

const char* const oldLibrary = R"(library "L" {
function int f ( int );
block "GONE" { internal = true; }
block "A" { primgroup = "G:S"; maturityLevel = beta;
    pin "I" input; pin "E" input;
    pin "D[3:0]" input;
    pin "C" input clock { property int "L" { default = 1 } }
    property int "W" { min = 1, max = 8 }
    property int "X" { min = 1, max = 8 }
    property int "U" { default = 0, units = "a`b" }
} mapsto {
    inst "U0" "A";
    if (f(1) > 2) { signal "s"; }
}
block "B" { pin "I" input; }
}
)";

// The same with one change of every kind, laid out otherwise.
const char* const newLibrary = R"(library "L" { // later
function int f ( bool );
block "A" { primgroup = "G"; maturityLevel = production;
    pin "E" input; pin "I" input; pin "D[4:0]" input;
    pin "C" input clock { property int "L" { default = 2 } }
    property int "W" { min = 0, max = 8 }   property int "X" { min = 1, max = 7 }
    property int "U" { default = 0, units = "c" }
} mapsto {
    inst "U0" "B";
    if (f(1) > 2) { }
}
block "B" { pin "I" input; pin "O" output; }
block "NEW" { test = true; }
}
)";

const char* const expectedText = R"(library L
  breaking    function f: formals int -> bool  (new.btl:2)

GONE
  breaking    block removed: internal true  (old.btl:3)

A
  compatible  block maturity: beta -> production  (new.btl:3)
  compatible  block subgroup: "S" -> none  (new.btl:3)
  breaking    pin order: I, E -> E, I  (new.btl:3)
  breaking    pin D: range [3:0] -> [4:0]  (new.btl:4)
  breaking    property C/L: default 1 -> 2  (new.btl:5)
  compatible  property W: minimum 1 -> 0  (new.btl:6)
  breaking    property X: maximum 8 -> 7  (new.btl:6)
  text only   property U: units "a`b" -> "c"  (new.btl:7)
  breaking    instance mapping/U0: type "A" -> "B"  (new.btl:9)
  breaking    signal mapping/if/then/{}/s removed  (old.btl:13)

B
  compatible  pin O added: direction output, type data  (new.btl:12)

NEW
  compatible  block added: test true  (new.btl:13)

14 changes: 8 breaking, 5 compatible, 1 text only
)";

const char* const expectedMarkdown = R"(# Changes in `L`

14 changes: 8 breaking, 5 compatible, 1 text only

## Breaking changes

- function `f`: formals `int` → `bool`
- `GONE`: block removed: `internal true`
- `A`: pin order: `I, E` → `E, I`
- `A`: pin `D`: range `[3:0]` → `[4:0]`
- `A`: property `C/L`: default `1` → `2`
- `A`: property `X`: maximum `8` → `7`
- `A`: instance `mapping/U0`: type `"A"` → `"B"`
- `A`: signal `mapping/if/then/{}/s` removed

## New

- `B`: pin `O` added: `direction output, type data`
- `NEW`: block added: `test true`

## Changed

- `A`: block maturity: `beta` → `production`
- `A`: block subgroup: `"S"` → `none`
- `A`: property `W`: minimum `1` → `0`

## Text only

- `A`: property `U`: units `` "a`b" `` → `"c"`
)";

struct DiffTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.write("old.btl", oldLibrary);
        directory.write("new.btl", newLibrary);
    }
};

} // namespace

TEST_F(DiffTest, EveryKindOfChangeInEveryForm) {
    const auto outputOf = [&](const char* format) {
        const Outcome outcome = ntl.run({"diff", "--format", format, "old.btl", "new.btl"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(ntl.run({"diff", "--format", format, "old.btl", "new.btl"}).out, outcome.out);
        return outcome.out;
    };
    EXPECT_EQ(outputOf("text"), expectedText);
    EXPECT_EQ(outputOf("markdown"), expectedMarkdown);
    const Json json = Json::parse(outputOf("json"));
    EXPECT_EQ(json["exitStatus"], 1);
    EXPECT_EQ(json["new"], Json({{"path", "new.btl"}, {"library", "L"}}));
    EXPECT_EQ(json["counts"], Json({{"breaking", 8}, {"compatible", 5}, {"text only", 1}}));
    ASSERT_EQ(json["differences"].size(), 14U);
    std::string lines;
    for (const Json& item : json["differences"])
        for (const char* const key : {"effect", "change", "element", "facet", "path"})
            lines += item[key].get<std::string>() + (key == std::string("path") ? "\n" : " ");
    EXPECT_EQ(lines, "breaking changed function formals f\n"
                     "breaking removed block whole GONE\n"
                     "compatible changed block maturity A\n"
                     "compatible changed block subgroup A\n"
                     "breaking changed pin order A\n"
                     "breaking changed pin range A/D\n"
                     "breaking changed property default A/C/L\n"
                     "compatible changed property minimum A/W\n"
                     "breaking changed property maximum A/X\n"
                     "text only changed property units A/U\n"
                     "breaking changed instance type A/mapping/U0\n"
                     "breaking removed signal whole A/mapping/if/then/{}/s\n"
                     "compatible added pin whole B/O\n"
                     "compatible added block whole NEW\n");
    const Json& gone = json["differences"][1];
    EXPECT_EQ(gone["block"], "GONE");
    EXPECT_EQ(gone["old"], "internal true");
    EXPECT_EQ(gone["new"], Json());
    EXPECT_EQ(gone["oldLocation"], Json({{"file", "old.btl"}, {"line", 3}}));
    EXPECT_EQ(gone["newLocation"], Json());
    EXPECT_EQ(json["differences"][0]["block"], Json());
}

// Files of one name in two releases; an INCLUDE that is missing is said.
TEST_F(DiffTest, EachSideHasItsOwnIncludesAndParent) {
    for (const char* const side : {"a", "b"}) {
        directory.makeDir(side);
        directory.write(side + std::string("/pins.inc"),
                        "pin \"I\" input" + std::string(*side == 'a' ? "" : " clock") + ";\n");
        directory.write(side + std::string("/lib.btl"), libraryOf("block \"HOLD\" {\nINCLUDE pins.inc ;\n}"));
    }
    directory.write("parent.btl", libraryOf("function bool f ( );"));
    const Outcome same = ntl.run({"diff", "-I", "a", "a", "b", "--parent", "parent.btl"});
    EXPECT_EQ(same.out + std::to_string(same.status), "no differences\n0");
    const Outcome own = ntl.run({"diff", "a/lib.btl", "b/lib.btl", "--include-old", "a", "--include-new", "b"});
    EXPECT_EQ(own.out, "HOLD\n  breaking    pin I: type data -> clock  (b/pins.inc:1)\n\n"
                       "1 change: 1 breaking, 0 compatible, 0 text only\n");
    const Outcome missing = ntl.run({"diff", "a/lib.btl", "b/lib.btl", "--include-new", "b"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("a/lib.btl:3:8: warning: "), std::string::npos) << missing.err;
    EXPECT_NE(missing.err.find("[include-not-found]"), std::string::npos);
}

TEST_F(DiffTest, WhatCannotBeRunIsStatusTwoAndSaysWhy) {
    directory.write("faulty.btl", libraryOf("block \"HOLD\" { pin \"O\" output; pin \"O\" output; }"));
    directory.write("broken.btl", "library");
    directory.makeDir("empty");
    const struct {
        const char* before;
        const char* after;
        const char* reason;
    } cases[] = {
        {"none.btl", "new.btl", "ntl: none.btl: cannot be opened"},
        {"old.btl", "faulty.btl", "ntl: faulty.btl: 1 error"},
        {"broken.btl", "faulty.btl", "ntl: broken.btl: 1 error"},
        {"broken.btl", "faulty.btl", "ntl: faulty.btl: 1 error"}, // both are said
        {"", "new.btl", "ntl: OLD or NEW is empty"},
    };
    for (const auto& [before, after, reason] : cases) {
        const Outcome outcome = ntl.run({"diff", before, after});
        EXPECT_EQ(outcome.status, 2) << before;
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
    }
    const Outcome parent = ntl.run({"diff", "old.btl", "new.btl", "--parent", "broken.btl"});
    EXPECT_EQ(parent.status, 2);
    EXPECT_NE(parent.err.find("ntl: parent library: broken.btl: 1 error"), std::string::npos) << parent.err;
    const Outcome tests = ntl.run({"--param", "arch.enableTestFeatures=false", "diff", "old.btl", "new.btl"});
    EXPECT_EQ(tests.out.find("NEW"), std::string::npos);
}

// The manual has the table of the library.
TEST(Diff, EveryRuleIsInTheManual) {
    const std::string manual = readFile(NTL_SOURCE_DIR "/docs/ntl.md");
    size_t at = 0;
    for (const HDNTComparison::Rule& rule : HDNTComparison::rules()) {
        const std::string line = std::string("\n| ") + (rule.element ? HDNTComparison::nameOf(*rule.element) : "any") +
                                 " | " + (rule.facet ? HDNTComparison::nameOf(*rule.facet) : "any") + " | " +
                                 (rule.trend ? HDNTComparison::nameOf(*rule.trend) : "any") + " | " +
                                 HDNTComparison::nameOf(rule.effect) + " | " + rule.reason + " |\n";
        const size_t found = manual.find(line, at);
        EXPECT_NE(found, std::string::npos) << line << "is not there, or not behind the rule before it";
        at = found == std::string::npos ? at : found;
    }
}

TEST_F(DiffTest, TheClassThatCountsForTheStatusCanBeChosen) {
    const auto library = [](const std::string& units, int maximum) {
        return libraryOf("block \"B\" { property int \"N\" { min = 0, max = " + std::to_string(maximum) +
                         ", default = 1, units = \"" + units + "\" } }");
    };
    directory.write("1.btl", library("m", 5));
    const struct {
        std::string text;
        int any, compatible, breaking;
    } cases[] = {
        {library("m", 5), 0, 0, 0}, {library("s", 5), 1, 0, 0}, {library("s", 6), 1, 1, 0}, {library("m", 4), 1, 1, 1}};
    for (const auto& each : cases) {
        directory.write("2.btl", each.text);
        const auto status = [&](const char* failOn) {
            return ntl.run({"diff", "--fail-on", failOn, "1.btl", "2.btl"}).status;
        };
        EXPECT_EQ(status("any"), each.any) << each.text;
        EXPECT_EQ(status("compatible"), each.compatible) << each.text;
        EXPECT_EQ(status("breaking"), each.breaking) << each.text;
    }
    EXPECT_EQ(Json::parse(ntl.run({"diff", "1.btl", "1.btl", "--format=json"}).out)["exitStatus"], 0);
}
