#include "hdnt/frontend/Keywords.internal.h"
#include "tests/author/Desk.h"

#include <gtest/gtest.h>

#include <iterator>

// Where names are declared and used, over the files of a library.
namespace {

using support::Desk;
using support::Json;

const std::string gates = "library \"base\" {\n"
                          "  function int f(int);\n"
                          "  block \"GATE\" {\n"
                          "    pin \"A[3:0]\" input { property int \"DELAY\" { min = 0 } }\n"
                          "    pin \"O\" output;\n"
                          "    property int \"SIZE\" { min = 0 }\n"
                          "  }\n"
                          "}\n";

// A library of two files with an included one, over another library. The text is that of the first file.
Desk deskWith(const std::string& text) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ]; include = [ \"parts\" ];")
        .file("below/base.btl", gates)
        .file("parts/pins.inc", "pin \"X\" input;\n")
        .file("b.btl",
              "library \"L\" {\n"
              "  block \"Part\" {\nINCLUDE pins.inc;\n    pin \"Y[1:0]\" output; property bool \"ON\" true; }\n"
              "  block \"OTHER\" { pin \"Y\" output; } mapsto { inst \"p\" \"PART\";\n"
              "    signal \"s\" : \"p\" \"y[1]\"; }\n}\n")
        .file("a.btl", text)
        .open("a.btl", text);
    return desk;
}

// The marked place in a mapping, with an umlaut before it in its line.
std::string mapping(const std::string& statements) {
    return "library \"L\" {\n  block \"USER\" { pin \"IN\" input; property int \"N\" { min = 0 } } mapsto {\n" +
           statements + "\n  }\n}\n";
}

struct Case {
    std::string text;
    std::string expected;
};

} // namespace

TEST(ServerNames, Definitions) {
    const std::string parts = "inst \"g\" \"gate\"; inst \"p\" \"Part\"; signal \"s[3:0]\" : \"IN\"; signal \"t\";\n";
    const Case cases[] = {
        {mapping("inst \"g\" \"g^ate\";"), "below/base.btl:2:GATE"},
        {mapping("/* \xc3\xa4 */ inst \"g\" \"GATE^\";"), "below/base.btl:2:GATE"},
        {mapping("inst \"p\" ^\"PART\";"), "b.btl:1:Part"},
        {mapping(parts + "connect \"s[^1]\" : \"IN\";"), "a.btl:2:s[3:0]"},
        {mapping(parts + "connect \"t\" : \"^g\" \"A[2]\";"), "a.btl:2:g"},
        {mapping(parts + "connect \"t\" : \"g\" \"a[^2]\";"), "below/base.btl:3:A[3:0]"},
        {mapping(parts + "connect \"t\" : \"p\" \"X^\";"), "parts/pins.inc:0:X"},
        {mapping(parts + "connect \"t\" : \"~in^\";"), "a.btl:1:IN"},
        {mapping(parts + "assign block property \"p\" \"o^n\" true;"), "b.btl:3:ON"},
        {mapping(parts + "assign block property \"^p\" \"on\" true;"), "a.btl:2:p"},
        {mapping(parts + "assign pin property \"g\" \"A[0]\", \"delay^\" 1;"), "below/base.btl:3:DELAY"},
        {mapping(parts + "if (intProperty(\"^n\") > 1) f(1);"), "a.btl:1:N"},
        {mapping(parts + "if (isConnected(\"^IN\")) { }"), "a.btl:1:IN"},
        {mapping(parts + "f^(1);"), "below/base.btl:1:f"},
        {mapping(parts + "connect \"S^\" : \"IN\";"), ""},
        {mapping(parts + "F^(1);"), ""},
        {mapping("inst \"g\" \"NONE^\";"), ""},
        {mapping("in^st \"g\" \"GATE\";"), ""},
        {mapping(parts + "assign pin property \"g\" \"~A[0]\", \"delay^\" 1;"), "below/base.btl:3:DELAY"},
        {mapping(parts + "f(1, \"IN^\"); other(\"N\");"), ""},
        {mapping(parts + "other(\"^N\");"), ""},
        {mapping(parts + "if (stringProperty(\"X\") == \"^N\") { }"), ""},
        // Of instances in branches, the one whose block has the pin
        {mapping("if (true) inst \"x\" \"PART\"; else inst \"x\" \"GATE\"; connect \"t\" : \"x\" \"A^\";"),
         "below/base.btl:3:A[3:0]"},
        {mapping("if (true) inst \"x\" \"PART\"; else inst \"x\" \"GATE\"; connect \"t\" : \"x\" \"NONE^\";"), ""},
        {"library \"L\" {\n block \"pa^rt\" mapsto { }\n}", "b.btl:1:Part"},
        // Statements that no block includes
        {"inst \"g\" \"GA^TE\";", "below/base.btl:2:GATE"},
        {"connect \"t\" : \"IN^\";", ""},
        {"^", ""},
        // Faults before, at and behind the place
        {mapping("inst \"p\"; connect \"t\" : \"p\" \"X^\";"), ""},
        {mapping("assign pin property , \"DELAY^\" 1;"), ""},
        {"library \"L\" { block \"B\" { } mapsto { inst \"p\" ^\"", ""},
        {"library \"L\" { block \"B\" \"GATE^\" { } }", ""},
        {"library \"L\" { block \"B\" { connect \"s\" : \"g\" \"A^\"; } }", ""},
        {mapping("inst \"x\" ; ( inst \"p\" \"PART^\" connect"), "b.btl:1:Part"},
        {"library \"L\" {\n block \"B { \n block \"C\" { pin \"I\" input } mapsto { inst \"p\" \"PART\"; connect \"s\" "
         ": "
         "\"p\" \"Y^\"; ",
         "b.btl:3:Y[1:0]"},
        {"library \"L\" {\nINCLUDE  pin^s.inc ; // more\n}\n", "parts/pins.inc:0:"},
        {"library \"L\" {\nINCLUDE  no^ne.inc;\n}\n", ""},
    };
    for (const Case& each : cases) {
        Desk desk = deskWith(each.text);
        EXPECT_EQ(desk.briefs(desk.result("textDocument/definition")), each.expected) << each.text;
        EXPECT_EQ(desk.briefs(desk.result("textDocument/declaration")), each.expected) << each.text;
    }
}

TEST(ServerNames, WhatIsOpenCountsBeforeTheFile) {
    Desk desk = deskWith(mapping("inst \"p\" \"PART^\";"));
    desk.open("b.btl", "library \"L\" {\n\n\n block \"PART\" { }\n}");
    EXPECT_EQ(desk.briefs(desk.result("textDocument/definition")), "b.btl:3:PART");
}

TEST(ServerNames, LinksForClientsThatKnowThem) {
    Desk desk = deskWith(mapping("inst \"p\" \"PART^\";"));
    desk.client({{"textDocument", {{"definition", {{"linkSupport", true}}}}}});
    const Json link = desk.result("textDocument/definition").at(0);
    EXPECT_EQ(desk.brief(link), "b.btl:1:Part");
    EXPECT_EQ(link["targetRange"], support::rangeOf(1, 2, 3, 51));
    EXPECT_EQ(link["originSelectionRange"], support::rangeOf(2, 10, 2, 14));
}

TEST(ServerNames, References) {
    const std::string all =
        mapping("inst \"p\" \"part\"; if (true) inst \"g\" \"GATE\"; signal \"s[1:0]\" : \"p\" \"Y\";\n"
                "connect \"s[0]\" : \"~IN\", \"g\" \"A[0]\", \"p\" \"y[0]\";\n"
                "assign pin property \"g\" \"a[1]\", \"DELAY\" 2; f(f(1)); isConnected(\"in\");");
    const auto marked = [&](const std::string& before) {
        std::string text = all;
        return text.insert(text.find(before) + before.size(), "^");
    };
    const Case cases[] = {
        {marked("inst \"p\" \"par"), "a.btl:2:part b.btl:1:Part b.btl:4:PART"},
        {marked("\"p\" \"Y"), "a.btl:2:Y a.btl:3:y[0] b.btl:3:Y[1:0] b.btl:5:y[1]"},
        {marked("inst \"p"), "a.btl:2:p a.btl:2:p a.btl:3:p"},
        {marked("\"s[0"), "a.btl:2:s[1:0] a.btl:3:s[0]"},
        {marked("\"GAT"), "a.btl:2:GATE below/base.btl:2:GATE"},
        {marked("\"A["), "a.btl:3:A[0] a.btl:4:a[1] below/base.btl:3:A[3:0]"},
        {marked("\"DEL"), "a.btl:4:DELAY below/base.btl:3:DELAY"},
        {marked("; f("), "a.btl:4:f a.btl:4:f below/base.btl:1:f"},
        {marked("pin \"I"), "a.btl:1:IN a.btl:3:IN a.btl:4:in"},
        {marked("property int \"N"), "a.btl:1:N"},
        {"library \"L\" {\n block \"OWN\" { pin \"D^[1:0]\" input; } mapsto {\n signal \"s\" : \"D[0]\"; } }",
         "a.btl:1:D[1:0] a.btl:2:D[0]"},
    };
    for (const Case& each : cases) {
        Desk desk = deskWith(each.text);
        const Json with = {{"context", {{"includeDeclaration", true}}}};
        EXPECT_EQ(desk.briefs(desk.result("textDocument/references", with)), each.expected) << each.text;
    }
}

TEST(ServerNames, ReferencesWithoutDeclarationsAndInParts) {
    Desk desk = deskWith(mapping("inst \"p\" \"PART\"; connect \"s\" : \"p\" \"Y^\";"));
    Json params = {{"context", {{"includeDeclaration", false}}}};
    EXPECT_EQ(desk.briefs(desk.result("textDocument/references", params)), "a.btl:2:Y b.btl:5:y[1]");
    params["partialResultToken"] = 7;
    const auto said = desk.conversation("textDocument/references", params);
    ASSERT_EQ(said.size(), 3U);
    EXPECT_EQ(said[0]["params"]["token"], 7);
    EXPECT_EQ(desk.briefs(said[0]["params"]["value"]), "a.btl:2:Y");
    EXPECT_EQ(desk.briefs(said[1]["params"]["value"]), "b.btl:5:y[1]");
    EXPECT_EQ(said[2]["result"], Json::array());
}

// A block of the parent that has the name of an own one is another one.
TEST(ServerNames, OwnBlocksHideThoseOfParents) {
    Desk desk = deskWith("library \"L\" {\n block \"GATE\" { }\n block \"B\" { } mapsto { inst \"g\" \"gate^\"; }\n}");
    const Json with = {{"context", {{"includeDeclaration", true}}}};
    EXPECT_EQ(desk.briefs(desk.result("textDocument/references", with)), "a.btl:1:GATE a.btl:2:gate");
}

TEST(ServerNames, HighlightsAndLinksOfTheDocument) {
    Desk desk = deskWith(mapping("inst \"p\" \"PAR^T\"; inst \"q\" \"Part\";\nINLINE pins.inc;\nINLINE none.inc;"));
    std::string highlights;
    for (const Json& one : desk.result("textDocument/documentHighlight"))
        highlights += one["kind"].dump() + '@' + one["range"]["start"]["character"].dump() + ' ';
    EXPECT_EQ(highlights, "2@10 2@27 ");
    const Json links = desk.result("textDocument/documentLink");
    ASSERT_EQ(links.size(), 1U);
    EXPECT_EQ(links[0]["target"], desk.uri("parts/pins.inc"));
    EXPECT_EQ(links[0]["range"], support::rangeOf(3, 7, 3, 15));
}

TEST(ServerNames, HoverShowsTheDeclaration) {
    const std::string declared = "library \"L\" {\n  // Far off\n\n  /* Adds *two*\n   * numbers.\n   */\n"
                                 "  block \"SUM\" {\n    primgroup = \"LOGIC\"; // behind\n    // The first\n"
                                 "    pin \"A[1:0]\" input data tieLow { property int \"D\" { min = 0 } }\n"
                                 "    pin \"C\" input; pin \"E\" input;\n"
                                 "    property string \"M\" { values { \"X\", \"Y\" }, default = \"X\" }\n"
                                 "    property int \"N\" { default = 1 }\n"
                                 "  } mapsto { }\n  function int f(int, bool);\n"
                                 "  block \"USE\" { } mapsto { inst \"s\" \"sum\"; ";
    const std::string sheet = "```ntl\nblock \"SUM\"\n  primgroup = \"LOGIC\"\n  pin \"A[1:0]\" input data tieLow\n"
                              "  pin \"C\" input\n  pin \"E\" input\n"
                              "  property string \"M\" { values { \"X\", \"Y\" }, default = \"X\" }\n"
                              "  property int \"N\" { default = 1 }\nmapsto\n```\n"
                              "\nAdds \\*two\\*  \nnumbers.\n";
    const Case cases[] = {
        {"inst \"t\" \"su^m\";", sheet},
        {"connect \"\" : \"^s\" \"A\"", "```ntl\ninst \"s\" \"sum\"\n```\n\nBlock USE\n" + sheet},
        {"connect \"\" : \"s\" \"a[^0]\";",
         "```ntl\npin \"A[1:0]\" input data tieLow\n```\n\nThe first\n\n2 bits, function: addend\n\nBlock SUM\n"},
        {"assign block property \"s\" \"^m\" ", "```ntl\nproperty string \"M\" { values { \"X\", \"Y\" }, default = "
                                                "\"X\" }\n```\n\nHow it \\*adds\\*\n\nBlock SUM\n"},
        {"connect \"\" : \"s\" \"^C\"", "```ntl\npin \"C\" input\n```\n\nfunction: carry\n\nBlock SUM\n"},
        {"connect \"\" : \"s\" \"^E\"", "```ntl\npin \"E\" input\n```\n\nBlock SUM\n"},
        {"assign block property \"s\" \"^n\" ", "```ntl\nproperty int \"N\" { default = 1 }\n```\n\nBlock SUM\n"},
        {"signal \"alo^ne\";", "```ntl\nsignal \"alone\"\n```\n\nBlock USE\n"},
        {"\nINLINE pa^rt.inc;\n", "parts/part.inc\n"},
        {"f^(", "```ntl\nfunction int f(int, bool)\n```\n"},
        {"inst \"t\" \"NO^NE\";", ""},
        {"signal \"n[1:0]\"; connect \"n[0]\" : \"s\" \"~A[0]\"; connect \"m\" : \"O\"; if (true) connect \"^n[1]\" : "
         "\"O\";",
         "```ntl\nsignal \"n[1:0]\"\n```\n\nBlock USE\n"
         "```ntl\nconnect \"n[0]\" : \"s\" \"~A[0]\"\nconnect \"n[1]\" : \"O\"\n```\n"},
        {"in^st \"t\" \"SUM\";",
         "```ntl\ninst\n```\n\nPuts an instance of a block into the mapping: its name, and the name of the block.\n"},
    };
    for (const Case& each : cases) {
        Desk desk = deskWith(declared + each.text);
        desk.file("tessel.desc.cfg", "SUM = { M = \"How it *adds*\"; N = 3; };")
            .file("HDNTApplicationData.cfg",
                  "CELLS = { SUM = { pinFunctions = { A = \"addend\"; C = \"carry\"; }; }; };")
            .file("parts/part.inc", "");
        setenv("HDNT_CONFIG_PATH", desk.path("").c_str(), 1);
        const Json hover = desk.result("textDocument/hover");
        std::string said = hover.is_null() ? "" : hover["contents"]["value"].get<std::string>();
        if (said.ends_with("/parts/part.inc\n")) said.erase(0, said.find("parts"));
        EXPECT_EQ(said, each.expected) << each.text;
    }
}

TEST(ServerNames, HoverKnowsEveryWordOfTheLanguage) {
    std::string text;
    for (const auto& keyword : hdnt::frontend::keywords) text += std::string(keyword.spelling) + " none.inc;\n";
    support::Dialogue dialogue;
    dialogue.initialize().open("untitled:words", text);
    for (std::size_t line = 0; line < std::size(hdnt::frontend::keywords); ++line)
        dialogue.ask("hover", "untitled:words", {{"position", {{"line", line}, {"character", 1}}}});
    std::size_t answered = 0;
    for (const Json& message : dialogue.run()) {
        if (!message.contains("result") || message["id"] == 1) continue;
        const std::string word(hdnt::frontend::keywords[answered++].spelling);
        ASSERT_TRUE(message["result"].is_object()) << word;
        const std::string value = message["result"]["contents"]["value"];
        EXPECT_TRUE(value.starts_with("```ntl\n" + word + "\n```\n\n") && value.ends_with(".\n")) << value;
    }
    EXPECT_EQ(answered, std::size(hdnt::frontend::keywords));
}

TEST(ServerNames, SymbolsOfTheWorkspace) {
    const Case cases[] = {{"par", "Part"}, {"oer", "OTHER"}, {"e", "USER OTHER GATE"}, {"F", "f"}, {"zz", ""}};
    for (const Case& each : cases) {
        Desk desk = deskWith(mapping("^"));
        std::string names;
        for (const Json& symbol : desk.result("workspace/symbol", {{"query", each.text}}))
            names += (names.empty() ? "" : " ") + symbol["name"].get<std::string>();
        EXPECT_EQ(names, each.expected) << each.text;
    }
}

// Files of mappings in the data, whose blocks are declared in libraries.
TEST(ServerNames, MapLibrariesBelongToTheirBlocks) {
    const std::string map = "library \"L\" {\n#ifArch \"x\"\n  block \"USER\" mapsto { inst \"g\" \"GATE\"; "
                            "signal \"s\" : \"IN\", \"g\" \"A[0]\"; }\n#endif\n}\n";
    Desk desk = deskWith(mapping("inst \"g\" \"GATE\"; signal \"s\" : \"^IN\";"));
    setenv("HDNT_DATA_PATH", desk.path("data").c_str(), 1);
    desk.file("data/maplib/USER.btl", map).file("data/maplib/NOWHERE.btl", map);
    // One in the way of reading
    desk.file("c.btl", "\x1f\x8b no archive").file("data/maplib/b.btl", "\x1f\x8b");
    EXPECT_EQ(desk.briefs(desk.result("textDocument/references", {{"context", {{"includeDeclaration", true}}}})),
              "a.btl:1:IN a.btl:2:IN data/maplib/USER.btl:2:IN");
    // Such a file is over the common library.
    Desk alone;
    setenv("HDNT_DATA_PATH", alone.path("data").c_str(), 1);
    const std::string marked = std::string(map).insert(map.find("GATE"), "^");
    alone.file("data/tessels", gates).file("data/maplib/USER.btl", marked).open("data/maplib/USER.btl", marked);
    EXPECT_EQ(alone.briefs(alone.result("textDocument/definition")), "data/tessels:2:GATE");
}

// Behind what hovering shows of the name, when there is one.
TEST(ServerNames, HoverSaysTheValueOfAnExpression) {
    const std::string text =
        "library \"L\" {\n  function int intProperty(string); function string stringProperty(string);\n"
        "  function bool isConnected(string); function int hostTable(int);\n"
        "  block \"USER\" {\nINCLUDE pins.inc;\n    property int \"N\" { min = 0, default = 3 }\n"
        "    property string \"M\" { default = \"FAST\" } } mapsto {\n";
    const Case cases[] = {
        {"if (intProperty(\"N\") ^> 2) { }", "bool true"},
        {"if (^isConnected(\"X\") && intProperty(\"N\") == 4) { }", "bool false"},
        {"if (isConnected(\"X\") |^| intProperty(\"N\") == 3) { }", "bool true"},
        {"if (^- intProperty(\"N\") < 0) { }", "int -3"},
        {"if (2 * ^(intProperty(\"N\") + 1) > 1) { }", "int 4"},
        {"if (2 ^* (intProperty(\"N\") + 1) > 1) { }", "int 8"},
        {"if (str^ingProperty(\"M\") == \"SLOW\") { }", "string \"FAST\""},
        {"assign block property \"i\" \"P\" 1.5 ^/ 2.0;", "double 0.75"},
        {"assign block property \"i\" \"P\" 1 ^/ 0;", "Divide by zero"},
        {"if (hostTable^(1) > 0) { }", "HDNTNetlist: no implementation of function hostTable"},
        {"if (1 ^+ \"a\" > 0) { }", "HDNTNetlist: mismatched expression types"},
        {"if (1 ^+ > 0) { }", ""},
        {"if (1 + ^2 > 0) { }", ""},
    };
    for (const Case& each : cases) {
        Desk desk = deskWith(text + each.text + "\n  }\n}\n");
        const Json hover = desk.result("textDocument/hover");
        const std::string said = hover.is_null() ? "" : hover["contents"]["value"].get<std::string>();
        const std::string before = "\nWith the defaults: ";
        const std::size_t at = said.find(before);
        std::string value = at == said.npos ? "" : said.substr(at + before.size());
        std::erase(value, '\\');
        EXPECT_EQ(value, each.expected.empty() ? "" : each.expected + "\n") << each.text << said;
    }
}

// The last word before what is put in, and that.
TEST(ServerNames, OpenPinsCanBeConnected) {
    const Case cases[] = {
        {mapping("    inst \"g^\" \"GATE\"; // a gate\n    connect \"t\" : \"g\" \"~a[2]\", \"h\" \"O\"; // t"),
         "t|    connect \"\" : \"g\" \"A[3]\";|    connect \"\" : \"g\" \"A[1]\";|"
         "    connect \"\" : \"g\" \"A[0]\";|    connect \"\" : \"g\" \"O\";"},
        {mapping("  if (f(1)) {\n\tinst ^\"g\" \"GATE\";\n\tsignal \"s\" : \"g\" \"A\"; }"),
         "\"A\";|\tconnect \"\" : \"g\" \"O\";"},
        {mapping("inst \"p\" \"p^art\"; signal \"s\" : \"p\" \"Y[1]\", \"p\" \"Y[0]\", \"p\" \"X\";"), "nothing"},
        {mapping("inst \"p^\" \"NOWHERE\";"), "nothing"},
        {mapping("signal \"^s\";"), "nothing"},
        {mapping("inst \"^w\" \"WIDE\"; signal \"s\" : \"w\" \"A\"; }\n"
                 "  block \"WIDE\" { pin \"A[2147483647:-2147483648]\" input;"),
         "nothing"},
        {"^", "nothing"},
    };
    for (const Case& each : cases) {
        Desk desk = deskWith(each.text);
        desk.client({{"textDocument", {{"codeAction", {{"codeActionLiteralSupport", Json::object()}}}}}});
        const std::string& text = desk.text("a.btl");
        const Json place = support::positionIn(text, each.text.find('^'), false);
        const Json list = desk.result("textDocument/codeAction",
                                      {{"range", {{"start", place}, {"end", place}}},
                                       {"context", {{"diagnostics", Json::array()}, {"only", {"refactor"}}}}});
        std::string said = "nothing";
        for (const Json& action : list) {
            const Json& edit = action["edit"]["changes"].begin().value()[0];
            const std::size_t offset = Desk::offsetIn(text, edit["range"]["start"]);
            const std::string added = edit["newText"];
            said = text.substr(text.rfind(' ', offset - 1) + 1, offset - text.rfind(' ', offset - 1) - 1) + added;
        }
        std::replace(said.begin(), said.end(), '\n', '|');
        EXPECT_EQ(said, each.expected) << each.text;
    }
}
