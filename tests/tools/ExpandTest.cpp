#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>

namespace {

const char* const ownLibrary = R"(library "own" {
    function int intProperty ( string );
    function bool boolProperty ( string );
    function bool isConnected ( string );
    function bool reserve ( string, int );
    block "HOLD" {
        pin "D[3:0]" input;
        pin "E" input { property double "LOAD" { min = 0.0, max = 10.0, default = 1.0 } }
        pin "Q[3:0]" output;
        pin "PAD" bidir;
        property int "DEPTH" { min = 1, max = 4, default = 2 }
        property string "MODE" { values { "SLOW", "FAST" }, default = "SLOW" }
    }
    block "TOP" {
        pin "A[3:0]" input; pin "EN" input; pin "O" output; pin "PAD" bidir;
        property int "WIDTH" { min = 1, max = 9, default = 4 }
        property bool "FAST" false;
        property string "TEXT" { default = "" }
    }
    expandsto {
        reserve("left", intProperty("WIDTH"));
        inst "one" "HOLD";
        signal "a[3:0]";
        connect "a[3]" : "A[3]", "one" "D[3]";
        connect "a[2]" : "A[2]", "one" "D[2]";
        connect "a[1]" : "A[1]", "one" "D[1]";
        connect "a[0]" : "A[0]", "one" "~D[0]";
        signal "pad" : "PAD", "one" "PAD";
        signal "@1";
        signal "en";
        if (isConnected("EN")) connect "en" : "EN", "one" "E";
        else connect "@1" : "one" "E";
        if (intProperty("WIDTH") > 4) {
	assign block property "one" "DEPTH" intProperty("WIDTH") - 4;
            if (boolProperty("FAST")) assign block property "one" "MODE" "FAST";
            else { inst "two" "HOLD"; signal "q" : "one" "~Q[0]", "two" "D[0]", "two" "D[1]"; }
        }
        assign pin property "one" "E", "LOAD" 2.5;
    }
    block "OUTER" { pin "A[3:0]" input; pin "O" output; } mapsto {
        inst "left" "TOP";
        inst "right" "TOP";
        signal "s" : "left" "O", "right" "EN", "O";
        signal "a" : "A[0]", "left" "A[0]";
        assign block property "right" "WIDTH" 5;
    }
    block "RING_A" { pin "A" input; } mapsto { inst "b" "RING_B"; }
    block "RING_B" { pin "A" input; } mapsto { inst "a" "RING_A"; }
    block "KEPT" { pin "A" input; } modifiedby { inst "g" "NO_SUCH"; signal "s" : "A", "h" "X"; }
    block "BROKEN" { } mapsto { inst "g" "HOLD"; if (true) signal "D["; }
}
)";

struct ExpandTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override { directory.write("own.btl", ownLibrary); }
    Outcome own(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"expand", "-l", "own.btl"});
        return ntl.run(arguments);
    }
    Json document(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--format", "json"});
        const Outcome outcome = own(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out)["blocks"][0];
    }
};

bool hasLine(const std::string& text, const std::string& pattern) {
    const std::vector<std::string> lines = linesOf(text);
    const std::regex expected(pattern);
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& line) { return std::regex_search(line, expected); });
}

std::string withoutComments(const std::string& text) {
    std::string result;
    for (const std::string& line : linesOf(text)) {
        const std::string code = line.substr(0, line.find("//"));
        const size_t end = code.find_last_not_of(' ');
        if (end != code.npos) result += code.substr(0, end + 1) + "\n";
    }
    return result;
}

// The blocks of the shipped library that have a mapping, for an architecture.
std::vector<std::string> mappedBlocks(NtlTool& ntl, const std::string& architecture) {
    std::vector<std::string> arguments = {"list", "--json"};
    if (!architecture.empty()) arguments.insert(arguments.end(), {"--arch", architecture});
    std::vector<std::string> names;
    const Json list = Json::parse(ntl.run(arguments).out);
    for (const Json& block : list["blocks"])
        if (!block["section"].is_null()) names.push_back(block["name"]);
    return names;
}

bool dotIsInstalled() { return std::system("command -v dot >/dev/null 2>&1") == 0; }

} // namespace

TEST_F(ExpandTest, EachLineSaysWhereItComesFrom) {
    const Outcome outcome = own({"top", "--set", "width=5", "--connect", "EN"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(
        outcome.out,
        R"(block "TOP" expandsto {                                      // own.btl:20; with width = 5, EN connected
    // if at own.btl:31 holds
    // if at own.btl:33 holds
    // if at own.btl:35 does not hold, in then of if at own.btl:33
    inst "one" "HOLD";                                       // own.btl:22
    inst "two" "HOLD";                                       // own.btl:36, in else of if at own.btl:35, in then of if at own.btl:33
    signal "a[3]" : "A[3]", "one" "D[3]";                    // own.btl:24; signal: own.btl:23
    signal "a[2]" : "A[2]", "one" "D[2]";                    // own.btl:25; signal: own.btl:23
    signal "a[1]" : "A[1]", "one" "D[1]";                    // own.btl:26; signal: own.btl:23
    signal "a[0]" : "A[0]", "one" "~D[0]";                   // own.btl:27; signal: own.btl:23
    signal "pad" : "PAD", "one" "PAD";                       // own.btl:28
    signal "@1";                                             // own.btl:29
    signal "en" : "EN", "one" "E";                           // own.btl:31, in then of if at own.btl:31; signal: own.btl:30
    signal "q" : "one" "~Q[0]", "two" "D[0]", "two" "D[1]";  // own.btl:36, in else of if at own.btl:35, in then of if at own.btl:33
    assign pin property "one" "E", "LOAD" 2.5;               // own.btl:38
    assign block property "one" "DEPTH" 1;                   // own.btl:34, in then of if at own.btl:33
    // call reserve("left", 5), for the host to make: own.btl:21
}
)");
    const Outcome plain = own({"TOP"});
    EXPECT_TRUE(
        hasLine(plain.out, R"(^    signal "@1" : "one" "E"; +// own.btl:32, in else of if at own.btl:31; signal)"));
    EXPECT_TRUE(hasLine(plain.out, R"(^    signal "en"; +// own.btl:30$)"));
    EXPECT_EQ(plain.out.find("DEPTH"), std::string::npos);
}

TEST_F(ExpandTest, TextReadsBackToTheSameNetlist) {
    for (const char* const architecture : {"", "meadow", "harbor", "copper"}) {
        SCOPED_TRACE(architecture);
        const std::vector<std::string> names = mappedBlocks(ntl, architecture);
        EXPECT_GE(names.size(), 60U);
        std::vector<std::string> arguments = {"expand", "--arch", architecture};
        if (!*architecture) arguments.resize(1);
        arguments.insert(arguments.end(), names.begin(), names.end());
        const Outcome first = ntl.run(arguments);
        EXPECT_EQ(first.status, 0) << first.err;
        EXPECT_EQ(first.err, "");
        EXPECT_EQ(countOf("\n" + first.out, "\nblock \""), names.size());
        directory.write("again.btl", libraryOf(first.out));
        EXPECT_EQ(ntl.run({"check", "--parent", "common", "--werror", "again.btl"}).status, 0);
        arguments.insert(arguments.end(), {"-l", "again.btl", "--parent", "common"});
        const Outcome second = ntl.run(arguments);
        EXPECT_EQ(second.status, 0) << second.err;
        EXPECT_EQ(withoutComments(second.out), withoutComments(first.out));
        EXPECT_EQ(second.out.find("tessels"), std::string::npos);
        EXPECT_TRUE(hasLine(second.out, "// again.btl:2$"));
    }
}

TEST_F(ExpandTest, WhatIsRefusedIsSaid) {
    const struct {
        std::vector<std::string> arguments;
        std::string err;
    } cases[] = {
        {{"TOP", "--set", "WIDTH=10"}, "ntl: TOP: --set WIDTH=10: WIDTH: 10 is above 9; allowed are 1 to 9\n"},
        {{"TOP", "--set", "WIDTH=2.5"}, "ntl: TOP: --set WIDTH=2.5: WIDTH: '2.5' is no int value; write 1 to 9\n"},
        {{"TOP", "--set", "FAST=yes"}, "ntl: TOP: --set FAST=yes: FAST: 'yes' is no bool value; write true or false\n"},
        {{"HOLD", "--set", "MODE=FAT"},
         "ntl: HOLD: --set MODE=FAT: MODE: 'FAT' is none of SLOW, FAST; did you mean FAST?\n"},
        {{"TOP", "--set", "WITDH=1"},
         "ntl: TOP: --set WITDH=1: Block TOP has no property WITDH. Did you mean WIDTH?\n"},
        {{"TOP", "--connect", "ENN"}, "ntl: TOP: --connect ENN: Block TOP has no pin ENN. Did you mean EN?\n"},
        {{"TOP", "--set", "ABC=1", "--connect", "XYZ"},
         "ntl: TOP: --set ABC=1: Block TOP has no property ABC.\nntl: TOP: --connect XYZ: Block TOP has no pin XYZ.\n"},
        {{"TOPP"}, "ntl: no block 'TOPP'; did you mean TOP?\n"},
        {{"HOLD"}, "ntl: block 'HOLD' has no mapping\n"},
        {{"HOLD", "--arch", "copper"}, "ntl: block 'HOLD' has no mapping for the architecture 'copper'\n"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = own(each.arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, each.err);
    }
    const Outcome both = own({"HOLD", "OUTER", "--format", "json"});
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(Json::parse(both.out)["blocks"].size(), 1U);
    EXPECT_NE(ntl.run({"expand", "PAD_IN_DIFF"}).err.find("PAD_IN_DIFF.btl with --arch"), std::string::npos);
}

TEST_F(ExpandTest, AllMappedBlocksAreExpanded) {
    for (const char* const architecture : {"", "copper"}) {
        std::vector<std::string> arguments = {"expand", "--all", "--format", "json"};
        if (*architecture) arguments.insert(arguments.end(), {"--arch", architecture});
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::vector<std::string> names;
        const Json document = Json::parse(outcome.out);
        for (const Json& block : document["blocks"]) names.push_back(block["block"]);
        EXPECT_EQ(names, mappedBlocks(ntl, architecture));
    }
    directory.write("none.btl", libraryOf("block \"HOLD\" { }"));
    const Outcome none = ntl.run({"expand", "--all", "-l", "none.btl"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "ntl: no block has a mapping\n");
}

TEST_F(ExpandTest, JsonHoldsOrigins) {
    const Json block = document({"TOP", "--set", "WIDTH=5", "--connect", "A", "--set", "TEXT=a\"b"});
    EXPECT_EQ(block["block"], "TOP");
    EXPECT_EQ(block["values"], Json::parse(R"({"WIDTH": "5", "TEXT": "a\"b"})"));
    EXPECT_EQ(block["connected"], Json::parse(R"(["A"])"));
    ASSERT_EQ(block["levels"].size(), 1U);
    const Json& level = block["levels"][0];
    EXPECT_EQ(level["location"]["line"], 20);
    std::vector<bool> taken;
    for (const Json& branch : level["branches"]) taken.push_back(branch["taken"]);
    EXPECT_EQ(taken, (std::vector<bool>{false, true, false}));
    EXPECT_EQ(level["branches"][2]["origin"]["branch"], 1);
    ASSERT_EQ(level["instances"].size(), 2U);
    EXPECT_EQ(level["instances"][1]["origin"]["branch"], 2);
    const Json depth = level["instances"][0]["properties"][1];
    EXPECT_EQ(depth, Json::parse(R"({"pin": null, "name": "DEPTH", "value": 1, "origin": {"branch": 1, "location":
        {"file": "own.btl", "line": 34, "column": 2, "endColumn": 63, "offset": 1304, "endOffset": 1365, "textLine": 34}}})"));
}

// One of everything. Places are told apart above: here a line stands for each, and an origin is a line and a branch.
TEST_F(ExpandTest, JsonHoldsEveryKey) {
    directory.write("keys.btl", libraryOf(R"(function bool reserve(int); function bool ready();
        block "LEAF" { pin "I" input { property double "LOAD" { default = 1.0 } } property int "N" { default = 1 } }
        mapsto { signal "t" : "I"; }
        block "TOP" { pin "D" input { property double "LOAD" { default = 1.0 } } property int "N" { default = 1 } }
        expandsto {
            if (true) { assign block property "u" "N" 2; assign pin property "u" "I", "LOAD" 0.5; }
            inst "u" "LEAF"; inst "x" "NONE"; reserve(1); ready();
            signal "s" : "D", "u" "~I";
            assign pin property "D", "LOAD" 2.5;
        })"));
    Json found = Json::parse(ntl.run({"expand", "TOP", "-l", "keys.btl", "--deep", "--format", "json", "--set", "N=3",
                                      "--connect", "D", "--arch", "meadow"})
                                 .out);
    for (std::vector<Json*> left = {&found}; !left.empty();) {
        Json& each = *left.back();
        left.pop_back();
        if (each.contains("origin"))
            each["origin"] = Json::array({each["origin"]["location"]["line"], each["origin"]["branch"]});
        if (each.contains("location")) each["location"] = each["location"]["line"];
        if (each.is_structured())
            for (Json& inner : each) left.push_back(&inner);
    }
    EXPECT_EQ(found, Json::parse(R"({"version": 2, "command": "expand", "path": "keys.btl", "architecture": "meadow",
      "blocks": [{"block": "TOP", "values": {"N": "3"}, "connected": ["D"],
        "problems": [{"level": 0, "message": "There is no block NONE.", "location": 8}],
        "levels": [{"path": "", "outer": null, "type": "TOP", "section": "expandsto", "location": 6, "isMapLibrary": false,
            "branches": [{"taken": true, "origin": [7, null]}],
            "instances": [{"name": "u", "type": "LEAF", "exists": true, "level": 1, "properties": [
                {"pin": null, "name": "N", "value": 2, "origin": [7, 0]},
                {"pin": "I", "name": "LOAD", "value": 0.5, "origin": [7, 0]}], "origin": [8, null]},
              {"name": "x", "type": "NONE", "exists": false, "level": null, "properties": [], "origin": [8, null]}],
            "signals": [{"name": "s", "origin": [9, null]}],
            "connections": [
                {"signal": "s", "instance": null, "pin": "D", "inverted": false, "origin": [9, null]},
                {"signal": "s", "instance": "u", "pin": "I", "inverted": true, "origin": [9, null]}],
            "pinProperties": [{"pin": "D", "name": "LOAD", "value": 2.5, "origin": [10, null]}],
            "calls": [{"name": "reserve", "arguments": [1], "made": false, "origin": [8, null]},
                {"name": "ready", "arguments": [], "made": false, "origin": [8, null]}]},
          {"path": "u", "outer": 0, "type": "LEAF", "section": "mapsto", "location": 4, "isMapLibrary": false,
            "branches": [], "instances": [], "signals": [{"name": "t", "origin": [4, null]}],
            "connections": [{"signal": "t", "instance": null, "pin": "I", "inverted": false, "origin": [4, null]}],
            "pinProperties": [], "calls": []}]}]})"));
    const Json plain = document({"TOP"});
    EXPECT_EQ(plain["values"], Json::object());
    EXPECT_EQ(plain["problems"], Json::array());
}

TEST_F(ExpandTest, DeepShowsEveryLevel) {
    const Outcome outcome = own({"OUTER", "--deep"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(hasLine(outcome.out, R"(inst "right" "TOP"; .*expanded below as right$)"));
    const size_t right = outcome.out.find("\n// right\nblock \"TOP\" expandsto {");
    ASSERT_NE(right, std::string::npos);
    EXPECT_EQ(outcome.out.substr(0, right).find("DEPTH"), std::string::npos);
    EXPECT_TRUE(hasLine(outcome.out.substr(right), "\"DEPTH\" 1;"));
    EXPECT_TRUE(hasLine(outcome.out.substr(right), "if at own.btl:31 holds$"));

    const Json levels = document({"OUTER", "--deep"})["levels"];
    ASSERT_EQ(levels.size(), 3U);
    EXPECT_EQ(levels[2]["path"], "right");
    EXPECT_EQ(levels[2]["outer"], 0);
    EXPECT_EQ(levels[0]["instances"][1]["level"], 2);
    EXPECT_EQ(levels[2]["instances"][0]["level"], nullptr);
}

TEST_F(ExpandTest, ProblemsAreReportedAndTheRestIsThere) {
    const struct {
        std::vector<std::string> arguments;
        std::string err;
        std::string line;
    } cases[] = {
        {{"TOP", "--set", "WIDTH=9"},
         "own.btl:34:2: error: DEPTH: 5 is above 4; allowed are 1 to 4\n",
         "^ *inst \"one\" \"HOLD\";"},
        {{"RING_A", "--deep"},
         "own.btl:48:48: error: Mappings lead in a circle: RING_A -> RING_B -> RING_A\n",
         R"(inst "a" "RING_A";)"},
        {{"KEPT"},
         "own.btl:49:50: error: There is no block NO_SUCH.\nown.btl:49:88: error: There is no instance h.\n",
         R"(signal "s" : "A", "h" "X";)"},
        {{"BROKEN"},
         "own.btl:50:60: error: \"D[\" is no name: with brackets it is letters, digits and \"_\" before one bit or a "
         "range, as in D[3] or D[3:0].\n",
         R"(inst "g" "HOLD";)"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = own(each.arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, each.err);
        EXPECT_TRUE(hasLine(outcome.out, each.line)) << outcome.out;
        EXPECT_FALSE(hasLine(outcome.out, "\"DEPTH\"")) << outcome.out;
    }
    const Outcome json = own({"KEPT", "--format", "json"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(Json::parse(json.out)["blocks"][0]["problems"][0]["location"]["line"], 49);
    EXPECT_EQ(own({"RING_A"}).status, 0);
    EXPECT_NE(own({"OUTER", "--deep", "--limit", "expansionInstances=2"}).err.find("(limit expansionInstances)"),
              std::string::npos);
}

TEST_F(ExpandTest, MapLibrariesArePlacedInTheirFiles) {
    const struct {
        const char* architecture;
        const char* pattern;
    } cases[] = {
        {"meadow", R"(inst "positive" "PAD_IN_GATED"; +// PAD_IN_DIFF.btl:(\d+)$)"},
        {"copper", R"(inst "positive" "PAD_IN"; +// PAD_IN_DIFF.btl:(\d+)$)"},
    };
    const std::vector<std::string> file = linesOf(readFile(NTL_SOURCE_DIR "/data/maplib/PAD_IN_DIFF.btl"));
    for (const auto& each : cases) {
        const Outcome outcome = ntl.run({"expand", "PAD_IN_DIFF", "--arch", each.architecture});
        std::smatch match;
        std::vector<std::string> lines = linesOf(outcome.out);
        const std::regex pattern(each.pattern);
        const auto found = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return std::regex_search(line, match, pattern);
        });
        ASSERT_NE(found, lines.end()) << outcome.out << outcome.err;
        const std::string& source = file.at(std::stoul(match[1]) - 1);
        EXPECT_NE(found->find(source.substr(source.find("inst"))), std::string::npos) << source;
    }
    const Outcome off = ntl.run({"expand", "DELAY_FIXED_SHORT", "--param", "ntl.enableMapLib=false"});
    EXPECT_EQ(off.status, 1);
    EXPECT_EQ(ntl.run({"expand", "DELAY_FIXED_SHORT"}).status, 0);
}

TEST_F(ExpandTest, DrawingsShowBusesConstantsAndInversions) {
    const std::string dot = own({"TOP", "--set", "WIDTH=5", "--format", "dot"}).out;
    for (const char* const pattern :
         {R"(^digraph "TOP" \{$)", R"(label=<TOP expandsto<BR/>reserve\(&quot;left&quot;, 5\)>)",
          R"(PORT="p1">D\[3:0\]<)", R"(^  n\d -> n0:p1:w \[penwidth=3, label="A\[3:1\] to D\[3:1\]"\];$)",
          R"(^  n\d -> n0:p1:w \[arrowhead=odotnormal, label="a\[0\]"\];$)",
          R"(^  n0:p\d:e -> n1:p\d:w \[dir=both, arrowtail=odot, label="q"\];$)", R"(shape=square.* label="1"\];$)",
          "DEPTH = 1<", R"(\[dir=none, label="pad"\];$)"})
        EXPECT_TRUE(hasLine(dot, pattern)) << pattern << " in\n" << dot;
    directory.write("bus.btl", libraryOf(R"(block "HOLD" { pin "A[3:0]" input; pin "B[3:0]" output; pin "C[3:0]" input;
        pin "P" input; pin "R" input; } expandsto {
        inst "one" "HOLD"; signal "s" : "A", "one" "A"; signal "t" : "one" "B[0]", "B[3]"; signal "u" : "one" "B[2]";
        signal "p" : "P", "one" "C[2]", "one" "C[1]"; signal "v" : "R", "one" "C[3]"; })"));
    const std::string bus = ntl.run({"expand", "HOLD", "-l", "bus.btl", "--format", "dot"}).out;
    for (const char* const pattern : {R"(PORT="p1">B\[2,0\]<)", R"( -> n0:p0:w \[penwidth=3, label="A\[3:0\]"\];$)",
                                      R"( -> n0:p2:w \[penwidth=3, label="P to C\[2:1\]"\];$)",
                                      R"( -> n0:p2:w \[label="v"\];$)", R"(style=dashed.* label="u"\];$)"})
        EXPECT_TRUE(hasLine(bus, pattern)) << pattern << " in\n" << bus;
    directory.write("shift.btl", libraryOf(R"(block "HOLD" { pin "A[3:0]" input; } expandsto {
        inst "one" "HOLD"; signal "s" : "A[1]", "one" "A[0]"; signal "t" : "A[2]", "one" "A[1]"; })"));
    const std::string shifted = ntl.run({"expand", "HOLD", "-l", "shift.btl", "--format", "dot"}).out;
    EXPECT_TRUE(hasLine(shifted, R"(label="A\[2:1\] to A\[1:0\]"\];$)")) << shifted;
    const auto repeated = [](const std::string& text, int times) {
        std::string result;
        for (int i = 0; i < times; ++i) result += text;
        return result;
    };
    for (const auto& [value, label] : {std::pair("x" + repeated("é", 39), "x" + repeated("é", 39)),
                                       {"x" + repeated("é", 40), "x" + repeated("é", 36) + "..."}}) {
        directory.write("text.btl", libraryOf(R"(block "TOP" { property string "T" { default = "" } } block "HOLD" { }
            mapsto { inst "one" "TOP"; assign block property "one" "T" ")" +
                                              value + "\"; }"));
        const std::string text = ntl.run({"expand", "HOLD", "-l", "text.btl", "--format", "dot"}).out;
        EXPECT_NE(text.find(">T = " + label + "<"), text.npos) << text;
    }
    const std::string deep = own({"OUTER", "--deep", "--format", "dot"}).out;
    EXPECT_TRUE(hasLine(deep, "^  subgraph cluster_2 \\{$")) << deep;
    EXPECT_TRUE(hasLine(deep, "^    label=<right: TOP expandsto<BR/>")) << deep;
    EXPECT_TRUE(hasLine(own({"KEPT", "--format", "dot"}).out, R"(<B>KEPT</B><BR/>\(stays\))"));
}

TEST_F(ExpandTest, GraphvizDrawsTheShippedMappings) {
    if (!dotIsInstalled()) GTEST_SKIP() << "dot is not installed";
    std::vector<std::string> arguments = {"expand", "--deep", "--format", "dot", "--arch", "copper"};
    for (const std::string& name : mappedBlocks(ntl, "copper")) arguments.push_back(name);
    const Outcome outcome = ntl.run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    directory.write("all.dot", outcome.out + own({"KEPT", "TOP", "--format", "dot"}).out);
    const std::string command =
        "dot -Tplain " + directory.path("all.dot") + " >" + directory.path("plain") + " 2>" + directory.path("said");
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(readFile(directory.path("said")), "");
    EXPECT_EQ(countOf("\n" + readFile(directory.path("plain")), "\ngraph "), arguments.size() - 6 + 2);
}
