#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

namespace {

struct WarningCase {
    std::string code;
    std::string text;
    std::string place;   // line:column in the file
    std::string message; // a part of it
};

// Each text stands inside `library "l" {`, from line 2 on.
const std::vector<WarningCase>& warningCases() {
    static const std::string open = "block \"HOLD\" { pin \"A\" input;\n";
    static const std::vector<WarningCase> cases = {
        {"default-outside", open + "property int \"N\" { min = 1, max = 5, default = 9 } }", "3:1", "default 9"},
        {"default-outside", open + "property int \"N\" { min = 1, max = 5 } }", "3:1", "default 0"},
        {"default-outside", open + "property int \"N\" { values { 1, 2 }, default = 3 } }", "3:1", "not one of"},
        {"default-outside", open + "property double \"N\" { min = 1.5, max = 2.5, default = 1.25 } }", "3:1", "1.25"},
        {"default-outside", open + "property string \"N\" { values { \"A\" }, default = \"B\" } }", "3:1", "\"B\""},
        {"default-outside", open + "property 8'h \"N\" { min = 8'h10, max = 8'h20, default = 8'h9 } }", "3:1", "8'h9"},
        {"default-outside", "block \"HOLD\" { pin \"A\" input {\n\tproperty int \"N\" { min = 1, max = 5 } } }", "3:2",
         "of pin \"A\""},
        {"min-above-max", open + "property int \"N\" { min = 5, max = 1, default = 3 } }", "3:1", "minimum 5"},
        {"min-above-max", open + "property double \"N\" { min = 0.5, max = 0.25 } }", "3:1", "maximum 0.25"},
        {"min-above-max", open + "property 8'b \"N\" { min = 8'b0101, max = 8'b011 } }", "3:1", "8'b0101"},
        {"text-too-wide", open + "property 4'h \"N\" { default = 5'h1 } }", "3:1", "default 5'h1"},
        {"text-too-wide", open + "property 8'h \"N\" { default = 4'h1F } }", "3:1",
         "4'h1F of property \"N\" is wider than 4"},
        {"bit-text-form", open + "property 4'h \"N\" { default = 4'h } }", "3:1", "default 4'h of"},
        {"bit-text-form", open + "property 4'b \"N\" { min = 4'b, default = 4'b1 } }", "3:1", "minimum 4'b of"},
        {"bit-text-form", open + "property 4'b \"N\" { values { 4'b1, 4'b }, default = 4'b1 } }", "3:1",
         "value 4'b of"},
        {"text-too-wide", open + "property 4'h \"N\" { min = 4'h0, max = 4'h10 } }", "3:1", "maximum 4'h10"},
        {"text-too-wide", open + "property 2'b \"N\" { values { 2'b01, 2'b100 }, default = 2'b01 } }", "3:1",
         "value 2'b100"},
        {"pin-lower-case", "block \"HOLD\" {\npin \"Clk\" input; }", "3:1", "\"Clk\""},
        {"pin-property-case",
         "block \"HOLD\" { pin \"A\" input {\nproperty bool \"P\" true;\n\tproperty bool \"p\" true; } }", "4:2",
         "\"P\" and \"p\""},
        {"unregistered-block", "\nblock \"NO_SUCH_CELL\" { pin \"A\" input; }", "3:1", "\"NO_SUCH_CELL\""},
        {"include-skipped", "INCLUDE hold.inc ;\nINCLUDE hold.inc ;", "3:8", "\"hold.inc\""},
        {"include-not-found", open + "} INLINE missing.inc ;", "3:9", "\"missing.inc\""},
        {"include-not-found", "block \"HOLD\" { pin \"A\" input; } /* \xc3\xbc */ INLINE missing.inc ;", "2:47",
         "\"missing.inc\""},
        {"include-not-opened", open + "} INCLUDE folder ;", "3:10", "/folder\""},
        {"include-text", "INCLUDE\t\xc3\xbc hold.inc\nhold.inc ;", "2:9", ": \xc3\xbc hold.inc"},
        {"unterminated-string", open + "property int \"N { default = 0 } }", "3:14", "\"N { default = 0 } }"},
        {"dropped-mapping", open + "}\nblock \"HOLD\" mapsto { }\n block \"GATE_AND_2\" mapsto { }", "5:2",
         "\"GATE_AND_2\" is dropped: no block of that name was declared before"},
        {"dropped-mapping", open + "}\nblock \"hold\" mapsto { }", "4:1", "not a registered cellview type"},
        {"include-trailing-text", "INCLUDE hold.inc ; block \"AND\" { }", "2:20", ": block \"AND\" { }"},
        {"number-overflow", open + "property int \"N\" { min = 4294967296 } }", "3:26", "it is read as 0"},
        {"repeated-option", open + "test = false;\ntest = false; }", "4:1", "\"test\" was given before"},
        {"ignored-option", open + "property int \"N\" { values { 1 }, max = 1 } }", "3:1", "\"max\" has no effect"},
        {"function-redeclared", open + "} function int f();\nfunction int f();", "4:1", "\"f\" was declared"},
        {"mapping-replaced", open + "} mapsto { }\nblock \"HOLD\" mapsto { }", "4:1", "\"HOLD\" replaces"},
        {"statement-dropped", open + "} mapsto {\n { } }", "4:2", "in braces"},
        {"inversion-dropped",
         "block \"HOLD\" { pin \"A\" input {\nproperty bool \"P\" true; } } mapsto {\nassign pin property \"~A\", "
         "\"P\" true; }",
         "4:21", "pin \"A\""},
        {"unterminated-comment", open + "} }\n/* and so on", "4:1", "not closed"},
    };
    return cases;
}

// The entries of the configuration have a table of cases of their own.
constexpr const char* configurationCodes = "config-";

std::set<std::string> codesOfTable(const Json& sarif) {
    std::set<std::string> codes;
    for (const Json& rule : sarif["runs"][0]["tool"]["driver"]["rules"])
        if (rule["defaultConfiguration"]["level"] == "warning") codes.insert(rule["id"].get<std::string>());
    std::erase_if(codes, [](const std::string& code) { return code.starts_with(configurationCodes); });
    return codes;
}

struct CheckFormatsTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.makeDir("folder");
        directory.write("hold.inc", "block \"HOLD\" { pin \"A\" input; }");
    }
};

} // namespace

TEST_F(CheckFormatsTest, EveryWarningIsRaisedWhereItBelongs) {
    for (const WarningCase& each : warningCases()) {
        SCOPED_TRACE(each.text);
        directory.write("w.btl", libraryOf(each.text));
        const Outcome outcome = ntl.run({"check", "-I.", "w.btl"});
        std::vector<std::string> warnings;
        for (const std::string& line : linesOf(outcome.err))
            if (line.find(": warning: ") != line.npos) warnings.push_back(line);
        ASSERT_EQ(warnings.size(), 1U) << outcome.err;
        EXPECT_EQ(warnings[0].find("w.btl:" + each.place + ": warning: "), 0U) << warnings[0];
        EXPECT_NE(warnings[0].find(each.message), std::string::npos) << warnings[0];
        EXPECT_NE(warnings[0].find(" [" + each.code + "]"), std::string::npos) << warnings[0];
        const bool loads = each.code != "unterminated-string";
        EXPECT_EQ(outcome.status, loads ? 0 : 1) << outcome.err;
        EXPECT_EQ(outcome.out, loads ? "w.btl: 1 block, no errors, 1 warning\n" : "");
    }
}

std::set<std::string> codesIn(const std::string& text, const std::regex& row) {
    std::set<std::string> codes;
    for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
        codes.insert((*match)[1]);
    return codes;
}

std::set<std::string> codesOfRules() {
    return codesIn(readFile(NTL_SOURCE_DIR "/docs/lint.md"), std::regex("\n### `([a-z-]+)`"));
}

// Those of rules are raised by the examples of their page.
TEST_F(CheckFormatsTest, WarningTableIsComplete) {
    directory.write("w.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    std::set<std::string> raised = codesOfRules();
    for (const WarningCase& each : warningCases()) raised.insert(each.code);
    raised.insert({"open-comment", "open-file-statement"}); // only behind an error
    raised.insert("extra-module");                          // of models
    for (const std::string& code : codesOfTable(Json::parse(ntl.run({"check", "--format=sarif", "w.btl"}).out)))
        EXPECT_TRUE(raised.contains(code)) << code;
}

TEST_F(CheckFormatsTest, EveryCodeIsDocumented) {
    directory.write("w.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    const Json sarif = Json::parse(ntl.run({"check", "--format=sarif", "w.btl"}).out);
    std::set<std::string> documented = codesOfRules();
    documented.merge(
        codesIn(readFile(NTL_SOURCE_DIR "/docs/ntl.md"), std::regex("\n\\| `([a-z-]+)` \\|[^|\n]+\\|[^|\n]+\\|")));
    for (const Json& rule : sarif["runs"][0]["tool"]["driver"]["rules"])
        EXPECT_TRUE(documented.contains(rule["id"])) << rule["id"];
}

TEST_F(CheckFormatsTest, PageOfRulesIsThatOfTheTable) {
    EXPECT_EQ(ntl.run({"--generate", "lint"}).out, readFile(NTL_SOURCE_DIR "/docs/lint.md"));
}

TEST_F(CheckFormatsTest, JsonHoldsWhatTheTextSays) {
    directory.write("good.btl", libraryOf("block \"OWN\" { pin \"A\" input; }"));
    directory.write("bad.btl", libraryOf("block \"HOLD\" { pin \"O\" output tieLow; }\n#"));
    const std::vector<std::string> arguments = {"check", "--format", "json", "bad.btl", "missing.btl", "good.btl"};
    const Outcome outcome = ntl.run(arguments);
    EXPECT_EQ(outcome.out, ntl.run(arguments).out);
    EXPECT_EQ(outcome.status, 2);
    const Json json = Json::parse(outcome.out);
    EXPECT_EQ(json["version"], 2);
    EXPECT_EQ(json["command"], "check");
    EXPECT_EQ(json["exitStatus"], 2);
    ASSERT_EQ(json["inputs"].size(), 3U);
    const Json& bad = json["inputs"][0];
    EXPECT_EQ(bad["status"], "errors");
    EXPECT_EQ(bad["reason"], "bad.btl: 2 errors");
    ASSERT_EQ(bad["diagnostics"].size(), 3U);
    EXPECT_EQ(bad["diagnostics"][0]["message"], "Unrecognized char: '#'");
    EXPECT_EQ(bad["diagnostics"][1], Json::parse(R"({"severity": "error", "code": "tie-of-output",
        "message": "Invalid tieoff of output pin \"O\"", "detail": null, "location": {"file": "bad.btl", "line": 2,
        "column": 16, "endColumn": 38, "offset": 29, "endOffset": 51, "textLine": 2},
        "text": "block \"HOLD\" { pin \"O\" output tieLow; }", "related": []})"));
    EXPECT_EQ(bad["diagnostics"][2]["message"], "'#' is outside the language");
    EXPECT_EQ(json["inputs"][1]["status"], "unusable");
    EXPECT_EQ(json["inputs"][2]["status"], "warnings");
    EXPECT_EQ(json["inputs"][2]["blockCount"], 1);
    EXPECT_EQ(json["inputs"][2]["files"], Json::array({"good.btl"}));
    EXPECT_EQ(json["inputs"][2]["diagnostics"][0]["code"], "unregistered-block");
}

// Those of the parent are not among them, unless it is the input itself.
TEST_F(CheckFormatsTest, FilesAreThoseOfTheInput) {
    directory.write("own.btl", libraryOf("block \"OWN\" { pin \"A\" input; }"));
    directory.makeDir("folder");
    directory.write("over.btl", libraryOf("INCLUDE part.inc;\nINLINE part.inc;"));
    directory.write("part.inc", "");
    directory.write("bad.btl", libraryOf("#"));
    directory.write("folder/a.btl", libraryOf(""));
    using Names = std::vector<std::string>;
    const Names own = {"own.btl"};
    const Names over = {"over.btl", "./part.inc", "./part.inc"};
    const Names bad = {"bad.btl"};
    const std::tuple<const char*, Names, std::vector<Names>> cases[] = {
        {"own.btl", {"over.btl", "own.btl"}, {over, own}},
        {"over.btl", {"over.btl", "bad.btl", "over.btl", "folder"}, {over, bad, over, {"folder/a.btl"}}},
        {"folder", {"folder", "own.btl"}, {{"folder/a.btl"}, own}},
        {"common", {"own.btl"}, {own}},
        {"bad.btl", {"own.btl", "bad.btl"}, {bad}}, // broken, so that no input is read
    };
    for (const auto& [parent, inputs, expected] : cases) {
        Names arguments = {"check", "--format=json", "-I.", "--parent", parent};
        arguments.insert(arguments.end(), inputs.begin(), inputs.end());
        const Json document = Json::parse(ntl.run(arguments).out);
        std::vector<Names> found;
        for (const Json& input : document["inputs"]) found.push_back(input["files"]);
        EXPECT_EQ(found, expected) << parent;
    }
}

TEST_F(CheckFormatsTest, SarifPlacesResults) {
    directory.write("a b.btl", libraryOf("block \"OWN\" { pin \"A\" input; }\n#"));
    const Json log = Json::parse(ntl.run({"check", "--format", "sarif", "a b.btl", "missing.btl"}).out);
    EXPECT_EQ(log["version"], "2.1.0");
    const Json& run = log["runs"][0];
    ASSERT_EQ(run["results"].size(), 4U);
    for (const Json& result : run["results"])
        EXPECT_EQ(run["tool"]["driver"]["rules"][result["ruleIndex"].get<size_t>()]["id"], result["ruleId"]);
    EXPECT_EQ(run["results"][0]["locations"][0]["physicalLocation"],
              Json::parse(R"({"artifactLocation": {"uri": "a%20b.btl"},
                              "region": {"startLine": 3, "startColumn": 1, "endColumn": 2}})"));
    EXPECT_EQ(run["results"][1]["ruleId"], "outside-language");
    EXPECT_EQ(run["results"][2]["ruleId"], "unregistered-block");
    EXPECT_EQ(run["results"][3]["ruleId"], "unusable-input");
}

TEST_F(CheckFormatsTest, BytesThatAreNoTextKeepJsonValid) {
    directory.write("w.btl", libraryOf("block \"O\xff\x01WN\" { pin \"A\" input; }"));
    const Outcome outcome = ntl.run({"check", "--format", "json", "w.btl"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(
        Json::parse(outcome.out)["inputs"][0]["diagnostics"][0]["message"].get<std::string>().find("\xef\xbf\xbd"),
        std::string::npos);
}

TEST_F(CheckFormatsTest, DependencyRulesAreEscaped) {
    directory.write("my $x#.btl", libraryOf("INCLUDE hold.inc ;"));
    directory.write("folder/a.btl", libraryOf(""));
    const Outcome outcome =
        ntl.run({"check", "-I.", "--depfile", "deps", "--deptarget", "a stamp", "my $x#.btl", "folder"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readFile(directory.path("deps")), "a\\ stamp: \\\n  my\\ $$x\\#.btl \\\n  ./hold.inc\n"
                                                "a\\ stamp: \\\n  folder \\\n  folder/a.btl\n"
                                                "\n./hold.inc:\n\nfolder:\n\nfolder/a.btl:\n\nmy\\ $$x\\#.btl:\n");
    EXPECT_EQ(ntl.run({"check", "folder", "--depfile", "no/such/place"}).status, 2);
}
