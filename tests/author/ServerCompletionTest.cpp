#include "author/syntax/SyntaxTree.h"
#include "tests/author/Desk.h"

#include <gtest/gtest.h>

// What is proposed at a place, in whole texts and in those that are being typed.
namespace {

using support::Desk;
using support::Json;

const std::string gates = "library \"base\" {\n"
                          "  function int f(int);\n"
                          "  block \"HIDDEN\" { }\n"
                          "  block \"GATE\" {\n"
                          "    pin \"A[3:0]\" input data { property int \"DELAY\" { min = 0 } }\n"
                          "    pin \"O\" output;\n"
                          "    property string \"MODE\" { values { \"FAST\", \"SLOW\" }, default = \"SLOW\" }\n"
                          "    property int \"SIZE\" { values { 4, 8 }, default = 4 }\n"
                          "    property bool \"ON\" true;\n"
                          "  }\n"
                          "}\n";

Desk deskWith(const std::string& text) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ]; include = [ \"parts\" ];")
        .file("below/base.btl", gates)
        .file("parts/pins.inc", "pin \"X\" input;\n")
        .file("parts/deep/more.inc", "")
        .file("parts/.hidden.inc", "")
        .file("parts/of two.inc", "")
        .file("b.btl", "library \"L\" {\n  // Holds one\n  block \"HIDDEN\" { INCLUDE pins.inc;\n } \n"
                       "  block \"Part\" { INCLUDE pins.inc;\n pin \"Y[1:0]\" output; }\n}\n")
        .file("a.btl", text)
        .open("a.btl", text);
    return desk;
}

const std::string head = "library \"L\" {\n  block \"USER\" {\n    pin \"IN\" input;\n"
                         "    property int \"N\" { min = 0 }"
                         "    property string \"KIND\" { values { \"ON\", \"OFF\" }, default = \"ON\" }"
                         "    property 1'b \"BITS\" { values { 1'b0, 1'b1 }, default = 1'b0 }\n  } mapsto {\n"
                         "    inst \"g\" \"GATE\"; inst \"p\" \"part\"; signal \"s[3:0]\";\n";
// Whole behind the place, and with nothing behind it.
std::string whole(const std::string& statements) {
    return head + statements + "\n    connect \"s\" : \"IN\";\n  }\n}\n";
}
std::string begun(const std::string& statements) { return head + statements; }

// "label" or "label:detail" of each, in the order in which they are shown.
std::string labelsOf(const Json& list) {
    std::map<std::string, std::string> sorted;
    for (const Json& item : list["items"])
        sorted[item["sortText"]] =
            item["label"].get<std::string>() + (item.contains("detail") ? ":" : "") + item.value("detail", "");
    std::string all;
    for (const auto& [place, label] : sorted) all += (all.empty() ? "" : ", ") + label;
    return all;
}

std::string accepted(Desk& desk, const Json& list, const std::string& label) {
    for (const Json& item : list["items"])
        if (item["label"] == label)
            return desk.brief({{"uri", desk.uri("a.btl")}, {"range", item["textEdit"]["range"]}}) + " -> " +
                   item["textEdit"]["newText"].get<std::string>() + " by " +
                   item.value("filterText", item["label"].get<std::string>());
    return "none";
}

// A snippet with the words that stand in its places.
std::string filledIn(std::string body) {
    for (std::size_t at = body.find('$'); at != body.npos; at = body.find('$')) {
        const bool isNamed = body[at + 1] == '{';
        const std::size_t end = isNamed ? body.find('}', at) + 1 : at + 2;
        const std::size_t colon = body.find(':', at);
        body.replace(at, end - at, isNamed ? body.substr(colon + 1, end - colon - 2) : "I");
    }
    return body;
}

struct Case {
    std::string text;
    std::string expected;
};

} // namespace

TEST(ServerCompletion, Names) {
    const std::string blocks = "HIDDEN, Part, USER, GATE";
    const std::string pins = "A:[3:0] input data, O:output";
    const std::string statements = "assign, connect, if, inst, signal, f:function int f(int)";
    const Case cases[] = {
        {"inst \"x\" \"^\";", blocks},
        {"inst \"x\" \"G^", blocks},
        {"inst \"x\" ^", blocks},
        {"inst \"^\" \"GATE\";", ""},
        {"connect \"^\" : \"IN\";", "s:[3:0]"},
        {"connect \"^ : \"IN\";", "s:[3:0]"},
        {"signal \"^", "t"},
        {"connect \"s\" : \"IN\", \"^\" \"A\";", "g:GATE, p:part"},
        {"connect \"s\" : \"g\" \"^\";", pins},
        {"connect \"s\" : \"g\" \"A^", pins},
        {"connect \"s\" : \"IN\", \"g\" ^", pins},
        {"connect \"s\" : \"p\" \"^", "X:input, Y:[1:0] output"},
        {"assign block property \"g\" \"^\" 1;", "MODE:string, ON:bool, SIZE:int"},
        {"assign block property \"g\" \"^", "MODE:string, ON:bool, SIZE:int"},
        {"assign pin property \"g\" \"A[1]\", \"^", "DELAY:int"},
        {"assign block property \"g\" \"mode\" \"^\";", "FAST, SLOW"},
        {"assign block property \"g\" \"mode\" \"^", "FAST, SLOW"},
        {"assign block property \"g\" \"SIZE\" ^", "4, 8, f:function int f(int)"},
        {"if (stringProperty(\"KIND\") == \"^\") { }", "OFF, ON"},
        {"if (f(1) > 2 && stringProperty(\"Kind\") != \"^", "OFF, ON"},
        {"if (stringProperty(\"BITS\") == ^) { }", "1'b0, 1'b1, f:function int f(int)"},
        {"if (intProperty(\"BITS\") == \"^\") { }", "1'b0, 1'b1"},
        {"if (\"KIND\" == \"^\") { }", ""},
        {"if (f(\"KIND\") == \"^\") { }", ""},
        {"if (f(1, \"KIND\") == \"^\") { }", ""},
        {"if (isConnected(\"IN\") == \"^\") { }", ""},
        {"if (stringProperty(\"NONE\") == \"^\") { }", ""},
        {"if (stringProperty(\"KIND\") > \"^\") { }", ""},
        {"if ((1) == \"^\") { }", ""},
        {"assign block property \"g\" \"NONE\" \"^\";", ""},
        {"assign block property \"g\" \"ON\" t^;", "false, true, f:function int f(int)"},
        {"if (intProperty(\"^\") > 1) { }", "BITS:1'b, KIND:string, N:int"},
        {"if (intProperty(\"^", "BITS:1'b, KIND:string, N:int"},
        {"if (isConnected(\"^\")) { }", "IN:input"},
        {"if (t^", "false, true, f:function int f(int)"},
        {"if (f(1) ^", ""},
        {"assign ^", "block, pin"},
        {"co^", statements},
        {"inst \"x\" ; ( inst ^ \"y\" inst \"x\" \"GATE\"; ^", ""},
        {"if (true) inst \"x\" \"GATE\"; ^", "assign, connect, else, if, inst, signal, f:function int f(int)"},
        {"/* ^ */", ""},
        {"// ^", ""},
        {"connect \"s\" : \"g\" \"A\"^", ""},
    };
    for (const Case& each : cases)
        for (const auto text : {whole, begun}) {
            Desk desk = deskWith(text("    connect \"t\" : \"IN\";\n    " + each.text));
            EXPECT_EQ(labelsOf(desk.result("textDocument/completion")), each.expected) << text(each.text);
        }
}

TEST(ServerCompletion, KeywordsOfDeclarations) {
    const std::string library = "library \"L\" {\n  block \"B\" {\n    ";
    const Case cases[] = {
        {"^", "assign, block, connect, function, if, inst, internal, library, maturityLevel, pin, primgroup, property, "
              "signal, test, f:function int f(int)"},
        {"library \"L\" {\n ^", "block, function"},
        {"library \"L\" {\n ^\n block \"B\" { }\n}\n", "block, function"},
        {"library \"L\" {\n function b^\n block \"B\" { }\n}\n", "1'b, 4'h, bool, double, int, string"},
        {"library \"L\" {\n function int ^\n block \"B\" { }\n}\n", ""},
        {"pin \"A\" input;\np^", "internal, maturityLevel, pin, primgroup, property, test"},
        {library + "p^\n  }\n}\n", "internal, maturityLevel, pin, primgroup, property, test"},
        {library + "maturityLevel = ^", "beta, deprecated, early, production"},
        {library + "pin \"A\" ^;\n  }\n}\n", "bidir, input, internal, output"},
        {library + "property int \"N\" { ^", "constraintsOnly, default, min, muxControl, simulation, test, values"},
        {library + "property string \"N\" { values { \"P\", \"Q\" }, default = \"^", "P, Q"},
        {library + "property 4'h \"N\" { values { 4'h1, 4'h2 }, default = ^ }\n  }\n}\n", "4'h1, 4'h2"},
        {library + "property bool \"N\" { default = ^", "false, true"},
        {library + "property int \"N\" { min = ^", ""},
        {library + "primgroup = \"^\";\n } block \"C\" { test = true; primgroup = \"LOGIC\"; }", "LOGIC"},
        {library + "property \"N\" { default = ^ }\n  }\n}\n", ""},
        {library + "property \"N\" { default = 1 } } mapsto { if (intProperty(\"^", "N"},
        {"if (\"A\" == \"^", ""},
        {library + "property ^", "1'b, 4'h, bool, double, int, string"},
        {library + "INCLUDE ^", "pins.inc, deep/"},
        {library + "INCLUDE deep/^;\n } }", "deep/more.inc"},
        {library + "INCLUDE none/^;\n } }", ""},
        {library + "INCLUDE pins.inc; ^", ""},
        {"block \"B\" { } ^", "block, expandsto, function, mapsto, modifiedby, retargetsto"},
        {library + "} ^", "block, expandsto, function, mapsto, modifiedby, retargetsto"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(labelsOf(deskWith(each.text).result("textDocument/completion")), each.expected) << each.text;
}

TEST(ServerCompletion, NamesInIncludedFiles) {
    Desk desk = deskWith(whole("INCLUDE body.inc;"));
    const std::string text = "inst \"o\" \"GATE\";\nconnect \"t\" : \"^";
    desk.file("parts/body.inc", text).open("parts/body.inc", text);
    EXPECT_EQ(labelsOf(desk.result("textDocument/completion")), "o:GATE, IN:input");
}

TEST(ServerCompletion, WhatIsAcceptedCanBeUsed) {
    struct Edit {
        std::string text, label, expected;
    };
    const Edit cases[] = {
        {whole("inst \"x\" \"G^A\";"), "GATE", "a.btl:6:\"GA\" -> \"GATE\" by \"GATE\""},
        {whole("inst \"x\" \"G^"), "GATE", "a.btl:6:\"G -> \"GATE\" by \"GATE\""},
        {whole("inst \"x\" \"G^; inst \"y\" \"GATE\";"), "GATE", "a.btl:6:\"G -> \"GATE\" by \"GATE\""},
        {whole("inst \"x\" G^;"), "GATE", "a.btl:6:G -> \"GATE\" by GATE"},
        {whole("/* \xc3\xa4 */ connect \"s\" : \"~I^\";"), "IN", "a.btl:6:\"~I\" -> \"~IN\" by \"~IN\""},
        {whole("con^n \"s\" : \"IN\";"), "connect", "a.btl:6:conn -> connect by connect"},
    };
    for (const Edit& each : cases) {
        Desk desk = deskWith(each.text);
        EXPECT_EQ(accepted(desk, desk.result("textDocument/completion"), each.label), each.expected) << each.text;
    }
}

TEST(ServerCompletion, SnippetsAreWholeDeclarations) {
    const Json withSnippets = {{"textDocument", {{"completion", {{"completionItem", {{"snippetSupport", true}}}}}}}};
    const std::string texts[] = {"library \"L\" {\n ^\n}\n", "library \"L\" {\n block \"B\" {\n ^\n }\n}\n"};
    std::size_t count = 0;
    for (const std::string& text : texts) {
        Desk desk = deskWith(text);
        const Json list = desk.client(withSnippets).result("textDocument/completion");
        for (const Json& item : list["items"]) {
            if (item["kind"] != 15) continue;
            ++count;
            EXPECT_EQ(item["insertTextFormat"], 2);
            const std::string body = filledIn(item["textEdit"]["newText"]);
            hdnt::author::SyntaxTree tree;
            EXPECT_TRUE(tree.read(std::string(text).replace(text.find('^'), 1, body)));
            EXPECT_TRUE(tree.messages().empty()) << body << tree.messages().front().text;
        }
    }
    EXPECT_EQ(count, 3U);
}

TEST(ServerCompletion, AQuoteThatEndsAStringAsksForNothing) {
    const Json typed = {{"context", {{"triggerKind", 2}, {"triggerCharacter", "\""}}}};
    const Case cases[] = {{"connect \"s\" : \"g\"^", ""}, {"connect \"s\" : \"^", "g:GATE, p:part, IN:input"}};
    for (const Case& each : cases)
        EXPECT_EQ(labelsOf(deskWith(whole(each.text)).result("textDocument/completion", typed)), each.expected);
}

TEST(ServerCompletion, BlocksSayMoreWhenAsked) {
    Desk desk = deskWith(whole("inst \"x\" \"^\";"));
    const Json item = desk.result("textDocument/completion")["items"][0];
    EXPECT_FALSE(item.contains("documentation"));
    const Json more = desk.result("completionItem/resolve", item);
    EXPECT_EQ(more["documentation"]["value"], "```ntl\nblock \"HIDDEN\"\n  pin \"X\" input\n```\n\nHolds one\n");
    EXPECT_EQ(more["label"], "HIDDEN");
}

TEST(ServerCompletion, ManyAreNarrowedByWhatIsTyped) {
    std::string blocks = "library \"L\" {\n";
    for (int i = 0; i < 1200; ++i) blocks += "block \"B" + std::to_string(i) + "\" { }\n";
    blocks += "block \"ZETA\" { }\nblock \"M\" { } mapsto { inst \"i\" ";
    const Json all = deskWith(blocks + "\"^").result("textDocument/completion");
    EXPECT_EQ(all["items"].size(), 500U);
    EXPECT_EQ(all["isIncomplete"], true);
    EXPECT_EQ(labelsOf(deskWith(blocks + "\"zt^").result("textDocument/completion")), "ZETA");
}
