#include "tests/author/Desk.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <utility>

// Names that get another one, over the files of a library.
namespace {

using support::Desk;
using support::Json;

const std::string parent =
    "library \"base\" {\n"
    "  function int far(int);\n"
    "  block \"GATE\" { pin \"A[3:0]\" input; pin \"O\" output; property int \"DELAY\" { min = 0 } }\n"
    "}\n";
const std::string second = "library \"L\" {\n"
                           "  block \"Part\" {\n"
                           "    pin \"Y[1:0]\" output; pin \"X\" input { property int \"SLOPE\" { min = 0 } }\n"
                           "    property bool \"ON\" true;\n"
                           "  }\n"
                           "  block \"OTHER\" { pin \"Z\" output; } mapsto {\n"
                           "    inst \"p\" \"PART\";\n"
                           "    signal \"s\" : \"p\" \"y[1]\";\n"
                           "  }\n"
                           "}\n";
// An umlaut stands before names in a line.
const std::string first =
    "library \"L\" {\n"
    "  function int f(int);\n"
    "  block \"USER\" { pin \"IN\" input; pin \"Q\" input; property int \"N\" { min = 0 } } mapsto {\n"
    "    inst \"p\" \"part\"; /* \xc3\xa4 */ inst \"g\" \"GATE\";\n"
    "    signal \"s[1:0]\" : \"p\" \"Y\"; signal \"t\";\n"
    "    connect \"s[0]\" : \"~IN\", \"g\" \"A[0]\", \"p\" \"y[0]\";\n"
    "    assign block property \"p\" \"on\" true;\n"
    "    assign pin property \"p\" \"X\", \"slope\" 1;\n"
    "    if (isConnected(\"in\") && intProperty(\"N\") > f(1)) far(2);\n"
    "  }\n"
    "}\n";

// The library's first file is open and has the mark, the other one is not.
Desk deskWith(const std::string& text, const std::string& other = second) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ];").file("below/base.btl", parent);
    return std::move(desk.file("b.btl", other).file("a.btl", text).open("a.btl", text));
}

std::string marked(const std::string& text, const std::string& before) {
    return std::string(text).insert(text.find(before) + before.size(), "^");
}

using Texts = std::map<std::string, std::string>;

// The texts after the edits. Those that are out of order, or of one place, are not what they should be.
Texts applied(const Desk& desk, const Json& changes) {
    Texts texts;
    for (const auto& [uri, edits] : changes.items()) {
        const std::string name = uri.substr(desk.uri("").size() + 1);
        std::string text = desk.text(name);
        std::size_t before = text.size() + 1;
        for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
            const std::size_t begin = Desk::offsetIn(desk.text(name), (*edit)["range"]["start"]);
            const std::size_t end = Desk::offsetIn(desk.text(name), (*edit)["range"]["end"]);
            EXPECT_LT(end, before);
            before = begin;
            text.replace(begin, end - begin, (*edit)["newText"].get<std::string>());
        }
        texts[name] = text;
    }
    return texts;
}

// The words that changed, as "file:line:word", or why nothing does.
std::string outcome(Desk desk, const std::string& newName) {
    const Json answer = desk.ask("textDocument/rename", {{"newName", newName}});
    if (answer.contains("error")) return answer["error"]["message"];
    std::string all;
    for (const auto& [name, text] : applied(desk, answer["result"]["changes"])) {
        std::istringstream oldLines(desk.text(name)), lines(text);
        std::string oldLine, line, oldWord, word;
        for (int number = 0; std::getline(oldLines, oldLine) && std::getline(lines, line); ++number) {
            std::istringstream oldWords(oldLine), words(line);
            while (oldWords >> oldWord && words >> word)
                if (word != oldWord) all += (all.empty() ? "" : " ") + name + ':' + std::to_string(number) + ':' + word;
        }
    }
    return all;
}

struct Case {
    std::string before; ///< the mark stands behind it
    std::string newName;
    std::string expected;
};

} // namespace

TEST(ServerRename, ChangesAllPlaces) {
    const Case cases[] = {
        {"inst \"p", "q", "a.btl:3:\"q\" a.btl:4:\"q\" a.btl:5:\"q\" a.btl:6:\"q\" a.btl:7:\"q\""},
        {"\"s[", "wire", "a.btl:4:\"wire[1:0]\" a.btl:5:\"wire[0]\""},
        {"signal \"t", "\"t 2\"", "a.btl:4:\"t"},
        {"\"par", "PIECE", "a.btl:3:\"PIECE\"; b.btl:1:\"PIECE\" b.btl:6:\"PIECE\";"},
        {"\"par", "PART", "a.btl:3:\"PART\"; b.btl:1:\"PART\""},
        {"\"p\" \"y[0", "W", "a.btl:4:\"W\"; a.btl:5:\"W[0]\"; b.btl:2:\"W[1:0]\" b.btl:7:\"W[1]\";"},
        {"\"~I", "IN2", "a.btl:2:\"IN2\" a.btl:5:\"~IN2\", a.btl:8:(isConnected(\"IN2\")"},
        {"\"on", "OFF", "a.btl:6:\"OFF\" b.btl:3:\"OFF\""},
        {"\"slo", "EDGE", "a.btl:7:\"EDGE\" b.btl:2:\"EDGE\""},
        {"intProperty(\"N", "M", "a.btl:2:\"M\" a.btl:8:intProperty(\"M\")"},
        {"> f", "g", "a.btl:1:g(int); a.btl:8:g(1))"},
        {"signal \"t", "\"u\"", "a.btl:4:\"u\";"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(outcome(deskWith(marked(first, each.before)), each.newName), each.expected) << each.before;
}

TEST(ServerRename, SaysWhyItDoesNot) {
    const std::string characters = "no name holds a quote, a line end or a control character";
    const std::string function = "a function is named by up to 31 letters, digits and underscores, and no keyword";
    const std::string plain = "such a name consists of letters, digits, underscores and \"@\"";
    const auto unwritable = [](const std::string& name, const std::string& why) {
        return '"' + name + "\" cannot be written here: " + why;
    };
    const Case cases[] = {
        {"blo", "x", "here is no name that can be changed"},
        {"\"GAT", "x", "\"GATE\" is declared in a parent library, in base.btl"},
        {"\"A", "x", "\"A\" is declared in a parent library, in base.btl"},
        {"fa", "x", "\"far\" is declared in a parent library, in base.btl"},
        {"isConn", "x", "\"isConnected\" is declared nowhere"},
        {"inst \"p", "", unwritable("", "a name has at least one character")},
        {"inst \"p", "\"\"", unwritable("", "a name has at least one character")},
        {"inst \"p", "a\"b", unwritable("a\"b", characters)},
        {"\"par", "a\nb", unwritable("a\nb", characters)},
        {"signal \"t", "a\tb", unwritable("a\tb", characters)},
        {"signal \"t", "u[2]", unwritable("u[2]", "only the name before the brackets is changed")},
        {"signal \"t", "@1", unwritable("@1", "a signal of that name is a constant")},
        {"signal \"t", "@0", unwritable("@0", "a signal of that name is a constant")},
        {"signal \"t", "\"t", unwritable("\"t", characters)},
        {"signal \"t", "a\x7f", unwritable("a\x7f", characters)},
        {"\"p\" \"y[0", "U@", unwritable("U@", "the name of a bus has no \"@\"")},
        {"pin \"IN", "U[2]", unwritable("U[2]", "only the name before the brackets is changed")},
        {"\"par", "a b", unwritable("a b", plain)},
        {"\"on", "\xc3\x84", unwritable("\xc3\x84", plain)},
        {"pin \"IN", "in", unwritable("in", "a pin with lower-case letters in its name is found by nobody")},
        {"> f", "2f", unwritable("2f", function)},
        {"> f", "f g", unwritable("f g", function)},
        {"> f", "preset", unwritable("preset", function)},
        {"> f", std::string(32, 'f'), unwritable(std::string(32, 'f'), function)},
        {"inst \"p", "g", "\"g\" is taken: a.btl:4 has it"},
        {"signal \"t", "s", "\"s\" is taken: a.btl:5 has it"},
        {"\"par", "other", "\"other\" is taken: b.btl:6 has it"},
        {"\"par", "gate", "\"gate\" is taken: a.btl:4 has it"},
        {"pin \"IN", "Q", "\"Q\" is taken: a.btl:3 has it"},
        {"> f", "far", "\"far\" is taken: a.btl:9 has it"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(outcome(deskWith(marked(first, each.before)), each.newName), each.expected) << each.before;
    EXPECT_EQ(outcome(deskWith("library \"L\" {\nINCLUDE b^.btl;\n}\n"), "x"), "here is no name that can be changed");
    for (const char* constant : {"@0", "@1"}) {
        const std::string text =
            "library \"L\" { block \"B\" { } mapsto { signal \"^" + std::string(constant) + "\"; } }";
        EXPECT_EQ(outcome(deskWith(text), "x"), '"' + std::string(constant) + "\" is a constant");
    }
    Desk mapped = deskWith(marked(first, "\"USE"));
    setenv("HDNT_DATA_PATH", mapped.path("data").c_str(), 1);
    mapped.file("data/maplib/USER.btl", "library \"L\" { block \"USER\" mapsto { } }");
    EXPECT_EQ(outcome(std::move(mapped), "x"), "\"USER\" has a map library of its name, USER.btl");
}

TEST(ServerRename, WhatIsTakenElsewhereIsFree) {
    EXPECT_EQ(outcome(deskWith(marked(first, "signal \"t")), "p"), "a.btl:4:\"p\";");
    EXPECT_EQ(outcome(deskWith(marked(first, "inst \"g")), "s"), "a.btl:3:\"s\" a.btl:5:\"s\"");
    EXPECT_EQ(outcome(deskWith(marked(first, "intProperty(\"N")), "ON"), "a.btl:2:\"ON\" a.btl:8:intProperty(\"ON\")");
    EXPECT_EQ(outcome(deskWith(marked(first, "> f")), std::string(31, 'f')).substr(0, 9), "a.btl:1:f");
}

TEST(ServerRename, IncludedFiles) {
    const std::string head = "library \"L\" {\n block \"C\" {\nINLINE pins.inc;\n } mapsto {\n  inst \"p\" \"PART\";\n"
                             "  signal \"s\" : \"p\" \"Y[1]\";\nINLINE wires.inc;\n }\n";
    const std::string again = head + " block \"D\" {\nINLINE pins.inc;\n } mapsto {\nINLINE wires.inc;\n }\n}\n";
    const std::string once = head + "}\n";
    const std::string inside = "inst \"q\" \"PART\";\nconnect \"s\" : \"q\" \"Y[0]\", \"I\";\n";
    struct {
        std::string text, wires, newName, expected;
    } const cases[] = {
        {marked(once, "inst \"p"), inside, "r", "a.btl:4:\"r\" a.btl:5:\"r\""},
        {marked(once, "inst \"p"), inside, "q", "\"q\" is taken: wires.inc:1 has it"},
        {marked(once, "signal \"s"), inside, "t", "a.btl:5:\"t\" wires.inc:1:\"t\""},
        {marked(again, "signal \"s"), inside, "t", "wires.inc is included more than once"},
        {marked(once, "\"Y"), inside, "Z",
         "a.btl:5:\"Z[1]\"; b.btl:2:\"Z[1:0]\" b.btl:7:\"Z[1]\"; wires.inc:1:\"Z[0]\","},
        {once, marked(inside, "\"I"), "J", "pins.inc:0:\"J\" wires.inc:1:\"J\";"},
        {again, marked(inside, "\"I"), "J", "pins.inc is included more than once"},
        {once, marked(inside, "inst \"q"), "r", "wires.inc is a part of a mapping in another file"},
        {once, marked(inside, "connect \"s"), "t", "\"s\" is declared nowhere"},
    };
    for (const auto& each : cases) {
        Desk desk;
        desk.file(".ntl.cfg", "include = [ \".\" ];").file("b.btl", second).file("pins.inc", "pin \"I\" input;\n");
        desk.file("a.btl", each.text).open("a.btl", each.text);
        desk.file("wires.inc", each.wires).open("wires.inc", each.wires);
        EXPECT_EQ(outcome(std::move(desk), each.newName), each.expected) << each.text << each.wires;
    }
}

TEST(ServerRename, TextsWithFaults) {
    const std::string text = "library \"L\" {\n block \"B { \n block \"C\" { pin \"I\" input } mapsto {\n"
                             " inst \"p^\" \"Part\"; connect \"s\" : \"p\" \"Y\"; assign ( \"p\" \"X\"";
    EXPECT_EQ(outcome(deskWith(text), "q"), "a.btl:3:\"q\" a.btl:3:\"q\"");
}

TEST(ServerRename, PreparesWithTheBaseOfTheName) {
    Desk desk = deskWith(marked(first, "\"~I"));
    const Json prepared = desk.result("textDocument/prepareRename");
    EXPECT_EQ(prepared["range"], support::rangeOf(5, 23, 5, 25));
    EXPECT_EQ(prepared["placeholder"], "IN");
    const Json bus = deskWith(marked(first, "\"s[0")).result("textDocument/prepareRename");
    EXPECT_EQ(bus["range"], support::rangeOf(5, 13, 5, 14));
    EXPECT_EQ(bus["placeholder"], "s");
    const Json error = deskWith(marked(first, "\"GAT")).ask("textDocument/prepareRename")["error"];
    EXPECT_EQ(error["code"], -32803);
    EXPECT_EQ(error["message"], "\"GATE\" is declared in a parent library, in base.btl");
}

TEST(ServerRename, VersionsForClientsThatKnowThem) {
    Desk desk = deskWith(marked(first, "\"par"));
    desk.client({{"workspace", {{"workspaceEdit", {{"documentChanges", true}}}}}});
    const Json edit = desk.result("textDocument/rename", {{"newName", "PIECE"}});
    EXPECT_FALSE(edit.contains("changes"));
    const Json& changes = edit["documentChanges"];
    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0]["textDocument"], Json({{"uri", desk.uri("a.btl")}, {"version", 1}}));
    EXPECT_EQ(changes[1]["textDocument"], Json({{"uri", desk.uri("b.btl")}, {"version", nullptr}}));
    EXPECT_EQ(changes[0]["edits"].size(), 1U);
    EXPECT_EQ(changes[1]["edits"].size(), 2U);
}

// A library of the workspace that is over the one with the name.
TEST(ServerRename, ReachesLibrariesOverThisOne) {
    const auto deskAt = [](const std::string& before, const std::string& other) {
        Desk desk;
        const std::string text = marked(parent, before);
        desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ];").file("b.btl", other).file("a.btl", first);
        desk.file("below/base.btl", text).open("below/base.btl", text);
        return desk;
    };
    const std::string own =
        "library \"L\" { block \"Part\" { pin \"Y\" output; } block \"GATE\" { pin \"A\" input; } }\n";
    const struct {
        std::string before, newName, other, expected;
    } cases[] = {
        {"\"GA", "PORT", second, "a.btl:3:\"PORT\"; below/base.btl:2:\"PORT\""},
        {"\"GA", "other", second, "\"other\" is taken in a library over this one, in b.btl"},
        {"\"GA", "PORT", own, "below/base.btl:2:\"PORT\""},
        {"\"A", "B", second, "a.btl:5:\"B[0]\", below/base.btl:2:\"B[3:0]\""},
        {"fa", "near", second, "a.btl:8:near(2); below/base.btl:1:near(int);"},
        {"fa", "f", second, "\"f\" is taken in a library over this one, in a.btl"},
    };
    for (const auto& each : cases) {
        Desk desk = deskAt(each.before, each.other);
        desk.inWorkspace();
        EXPECT_EQ(outcome(std::move(desk), each.newName), each.expected) << each.before;
    }
    EXPECT_EQ(outcome(deskAt("\"GA", second), "PORT"), "below/base.btl:2:\"PORT\"");
    for (const bool isUri : {true, false}) { // as older clients say it
        Desk desk = deskAt("\"GA", second);
        desk.startedWith(isUri ? Json{{"rootUri", desk.uri("")}} : Json{{"rootPath", desk.path("")}});
        EXPECT_EQ(outcome(std::move(desk), "PORT"), cases[0].expected);
    }
    for (const char* change : {"added", "removed"}) {
        Desk desk = deskAt("\"GA", second);
        Json event = {{"added", Json::array()}, {"removed", Json::array()}};
        event[change].push_back(desk.asFolder());
        const bool isAdded = event["removed"].empty();
        if (!isAdded) desk.inWorkspace();
        desk.notified("workspace/didChangeWorkspaceFolders", {{"event", event}});
        EXPECT_EQ(outcome(std::move(desk), "PORT"), isAdded ? cases[0].expected : "below/base.btl:2:\"PORT\"");
    }
    Desk beside = deskAt("\"GA", second);
    beside.open("a.btl", first);
    EXPECT_EQ(outcome(std::move(beside), "PORT"), cases[0].expected);
}

// Whatever name of the library is changed: references at the new one find as many places as before.
TEST(ServerRename, KeepsTheNumberOfReferences) {
    const Json with = {{"context", {{"includeDeclaration", true}}}};
    std::size_t renamed = 0;
    for (std::size_t quote = first.find('"'); quote != first.npos; quote = first.find('"', quote + 1)) {
        Desk desk = deskWith(std::string(first).insert(quote + 1, "^"));
        const Json answer = desk.ask("textDocument/rename", {{"newName", "ANOTHER_1"}});
        quote = first.find('"', quote + 1);
        if (answer.contains("error")) continue;
        ++renamed;
        Texts texts = applied(desk, answer["result"]["changes"]);
        const std::string& text = texts["a.btl"];
        ASSERT_NE(text.find("ANOTHER_1"), text.npos);
        Desk after = deskWith(marked(text, "ANOTHER_"), texts.contains("b.btl") ? texts["b.btl"] : second);
        EXPECT_EQ(after.result("textDocument/references", with).size(),
                  desk.result("textDocument/references", with).size())
            << text;
    }
    EXPECT_GE(renamed, 20U);
}
