#include "tests/author/Desk.h"

#include <gtest/gtest.h>

// What the server knows of a text beside its names: what calls take, what stands behind names, who uses whom.
namespace {

using support::Desk;
using support::Json;

const std::string below = "library \"base\" {\n"
                          "  // Takes *both*\n"
                          "  function 8'h maskOf(4'b, bool);\n"
                          "  function bool none();\n"
                          "  function int broken(int, ;\n"
                          "  block \"GATE\" {\n"
                          "    pin \"A[3:0]\" input { property int \"DELAY\" { min = 0, units = \"ns\" } }\n"
                          "    pin \"O\" output;\n"
                          "    property string \"MODE\" { values { \"FAST\", \"SLOW\" }, default = \"SLOW\" }\n"
                          "    property 8'h \"MASK\" { default = \"8'h00\" }\n"
                          "    property \"BARE\" { default = 1 }\n"
                          "    property int \"ODD\" { default = 1, units = ns }\n"
                          "    pin \"R[x]\" input; pin \"T[\" input;\n"
                          "  }\n"
                          "}\n";

Desk deskWith(const std::string& text) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ]; include = [ \"parts\" ];").file("below/base.btl", below);
    desk.file("a.btl", text).open("a.btl", text);
    return desk;
}

std::string mapping(const std::string& statements) {
    return "library \"L\" {\n  block \"USER\" { pin \"IN[1:0]\" input; pin \"E\" input; } mapsto {\n" + statements;
}

struct Case {
    std::string text;
    std::string expected;
};

} // namespace

// The label with the active parameter in brackets, and the documentation.
TEST(ServerKnowing, SignatureHelp) {
    const std::string mask = "8'h maskOf([4'b], bool) Takes *both*", second = "8'h maskOf(4'b, [bool]) Takes *both*";
    const std::string standard = "bool isConnected([string]) Whether the pin of that name of the block is connected.";
    const Case cases[] = {
        {"if (maskOf(^1, 2) > 1) { } } }", mask},
        {"if (maskOf(1^, 2) > 1) { } } }", mask},
        {"if (maskOf(1,^ 2) > 1) { } } }", second},
        {"if (maskOf(1, 2^) > 1) { } } }", second},
        {"if (maskOf(1, 2)^ > 1) { } } }", ""},
        {"if (maskOf^(1, 2) > 1) { } } }", ""},
        {"maskOf(1, 2, ^", "8'h maskOf(4'b, bool) Takes *both*"},
        {"none(^", "bool none()"},
        {"broken(1^", "int broken([int])"},
        {"/* \xc3\xa4\xf0\x9f\x98\x80 */ maskOf(\"\xc3\xa4, (\", ^", second},
        {"maskOf(\"a, b^", mask},
        {"maskOf(1, isConnected(\"E\", (2, ^",
         "bool isConnected(string) Whether the pin of that name of the block is connected."},
        {"maskOf(1, isConnected(^", standard},
        {"maskOf(isConnected(\"E\"), ^", second},
        {"maskOf((1 + 2), (3 *^", second},
        {"maskOf((1,2,3), ^", second},
        {"assign block property \"g\" \"MODE\" maskOf(^; inst \"b\" \"GATE\";", mask},
        {"maskOf(1 inst \"a^\" \"GATE\";", ""},
        {"if (^", ""},
        {"unknown(^", ""},
        {"} function int maskOf(int, ^", ""},
    };
    for (const Case& each : cases) {
        const Json knows = Json::parse(R"({"textDocument": {"signatureHelp": {"signatureInformation":
            {"parameterInformation": {"labelOffsetSupport": true}}}}})");
        const Json help = deskWith(mapping(each.text)).client(knows).result("textDocument/signatureHelp");
        std::string shown;
        if (!help.is_null()) {
            const Json& one = help["signatures"].at(0);
            shown = one["label"];
            if (help.contains("activeParameter")) {
                const Json& offsets = one["parameters"].at(help["activeParameter"].get<std::size_t>())["label"];
                shown.insert(offsets[1].get<std::size_t>(), "]").insert(offsets[0].get<std::size_t>(), "[");
            }
            if (one.contains("documentation")) shown += " " + one["documentation"].get<std::string>();
        }
        EXPECT_EQ(shown, each.expected) << each.text;
    }
    EXPECT_TRUE(deskWith("(^1, 2").result("textDocument/signatureHelp").is_null());
    const Json help = deskWith(mapping("maskOf(^")).result("textDocument/signatureHelp");
    EXPECT_EQ(help["signatures"][0]["parameters"], Json::parse(R"([{"label": "4'b"}, {"label": "bool"}])"));
}

// The text with each hint where it stands, in braces; the mark is where the range begins, which ends with its line.
TEST(ServerKnowing, InlayHints) {
    const std::string head = "inst \"g\" \"Gate\"; signal \"s[7:4]\"; signal \"one\";\n";
    const Case cases[] = {
        {"^connect \"s\" : \"g\" \"A\", \"g\" \"~a\", \"g\" \"O\", \"in\", \"~IN\", \"E\";",
         "connect \"s{[7:4]}\" : \"g\" \"A{[3:0]}\", \"g\" \"~a{[3:0]}\", \"g\" \"O\", \"in{[1:0]}\", \"~IN{[1:0]}\", "
         "\"E\";"},
        {"^connect \"s[4]\" : \"g\" \"A[0]\"; connect \"one\" : \"g\" \"B\", \"h\" \"A\"; connect \"S\" : \"A\";", ""},
        {"signal \"t\" :\n ^\"g\" \"A\",", " \"g\" \"A{[3:0]}\","},
        {"/* \xc3\xa4\xf0\x9f\x98\x80 */ ^ assign block property \"g\" \"mode\" \"FAST\"; assign block property \"g\" "
         "\"MASK\" \"8'hFF\";",
         "/* \xc3\xa4\xf0\x9f\x98\x80 */  assign block property \"g\" \"mode\"{: string} \"FAST\"; assign block "
         "property \"g\" \"MASK\"{: 8'h} \"8'hFF\";"},
        {"^assign pin property \"g\" \"A[1]\", \"delay\" 1; assign pin property \"E\", \"DELAY\" 1;",
         "assign pin property \"g\" \"A[1]\", \"delay\"{: int, ns} 1; assign pin property \"E\", \"DELAY\" 1;"},
        {"assign pin property \"g\" \"A[1]\", ^\"delay\" 1;",
         "assign pin property \"g\" \"A[1]\", \"delay\"{: int, ns} 1;"},
        {"^if (isConnected(\"IN\") && isConnected(\"E\") && intProperty(\"IN\") == 1) { }",
         "if (isConnected(\"IN{[1:0]}\") && isConnected(\"E\") && intProperty(\"IN\") == 1) { }"},
        {"connect \"s\" : ^\"g\" \"A\", \"in\";", "connect \"s\" : \"g\" \"A{[3:0]}\", \"in{[1:0]}\";"},
        {"if (true) inst \"x\" \"GATE\"; else inst \"x\" \"gate\";\n^connect \"s\" : \"x\" \"A\";",
         "connect \"s{[7:4]}\" : \"x\" \"A{[3:0]}\";"},
        {"connect \"s\" : \"E\"; }\n  function int f(int);\n  block \"B\" { pin \"P[2:0]\" input; } mapsto {\n"
         "^connect \"s\" : \"P\";\n} block \"C\" { pin \"P[3:0]\" input; } mapsto {\nconnect \"s\" : \"P\"; } }",
         "connect \"s\" : \"P{[2:0]}\";"},
        // Where nobody knows which counts, and in texts with faults
        {"^signal \"q[\"; signal \"r[x]\"; connect \"q\" : \"g\" \"R\"; connect \"r\" : \"g\" \"T\";", ""},
        {"^signal \"q[7:0\"; connect \"q\" : \"g\" \"R\";", ""},
        {"^assign block property \"g\" \"BARE\" 1; assign block property \"g\" \"ODD\" 1;",
         "assign block property \"g\" \"BARE\" 1; assign block property \"g\" \"ODD\"{: int} 1;"},
        {"^connect : \"g\" \"A\"; connect \"s\" : ; connect \"s\" : \"g\" \"A\" \"O\";",
         "connect : \"g\" \"A{[3:0]}\"; connect \"s{[7:4]}\" : ; connect \"s{[7:4]}\" : \"g\" \"A{[3:0]}\" \"O\";"},
        {"^assign pin property \"g\" \"A\" 1; assign pin property , \"DELAY\" 1; assign pin property 1;",
         "assign pin property \"g\" \"A{[3:0]}\" 1; assign pin property , \"DELAY\" 1; assign pin property 1;"},
        {"^if (isConnected() && isConnected(1) && isConnected(\"IN\" && isConnected) { }",
         "if (isConnected() && isConnected(1) && isConnected(\"IN{[1:0]}\" && isConnected) { }"},
        {"if (true) inst \"x\" \"GATE\"; else inst \"x\" \"USER\";\n^connect \"one\" : \"x\" \"A\", \"x\" \"IN\";", ""},
        {"signal \"s[3:0]\";\n^connect \"s\" : \"E\";", ""},
        {"^assign block property \"g\" ; connect \"s\" \"g\" \"A\" assign block property \"MODE\" \"FAST\";",
         "assign block property \"g\" ; connect \"s{[7:4]}\" \"g\" \"A\" assign block property \"MODE\" "
         "\"FAST\";"},
    };
    for (const Case& each : cases) {
        std::string text = mapping(head + each.text);
        const std::size_t mark = text.find('^');
        Desk desk = deskWith(text);
        text.erase(mark, 1);
        const Json begin = support::positionIn(text, mark, false);
        const Json end = support::positionIn(text, std::min(text.find('\n', mark), text.size()), false);
        Json hints = desk.result("textDocument/inlayHint", {{"range", {{"start", begin}, {"end", end}}}});
        std::reverse(hints.begin(), hints.end());
        for (const Json& hint : hints)
            text.insert(Desk::offsetIn(text, hint["position"]), "{" + hint["label"].get<std::string>() + "}");
        const std::size_t lineBegin = text.rfind('\n', mark) + 1;
        EXPECT_EQ(hints.empty() ? "" : text.substr(lineBegin, text.find('\n', mark) - lineBegin), each.expected)
            << each.text;
    }
    Desk parts = deskWith(mapping("\nINCLUDE rest.inc;\n } }"));
    const std::string rest = "inst \"g\" \"GATE\"; connect \"s\" : \"g\" \"A\", \"IN\";";
    parts.file("parts/rest.inc", rest).open("parts/rest.inc", "^" + rest);
    const Json all = {{"start", {{"line", 0}, {"character", 0}}}, {"end", {{"line", 1}, {"character", 0}}}};
    EXPECT_EQ(parts.result("textDocument/inlayHint", {{"range", all}}).size(), 2U) << "the block is in another file";
}

namespace {

// Blocks and functions of several files, one of them in a parent and one with its netlist in a file of its own.
Desk deskOfUsers() {
    const std::string user =
        "library \"L\" {\n"
        "  block \"USER\" { } mapsto { inst \"g\" \"g^ate\"; if (none()) inst \"h\" \"GATE\"; }\n"
        "  block \"TOP\" { } expandsto { inst \"u\" \"User\"; inst \"n\" \"NOWHERE\"; \nINLINE rest.inc;\n }\n"
        "  block \"GATE_2\" { }\n  block \"TWICE\" { } mapsto { }\n}\n";
    Desk desk = deskWith(user);
    desk.file("parts/rest.inc", "inst \"r\" \"GATE\";\n");
    desk.file("b.btl", "library \"L\" { }")
        .open("b.btl", "library \"L\" {\n block \"GATE\" mapsto { inst \"t\" "
                       "\"TOP\"; inst \"u\" \"USER\";\n inst \"v\" \"USER\"; }\n}");
    return desk;
}

std::string pointsOf(const Desk& desk, const Json& calls, const char* end) {
    std::string all;
    for (const Json& call : calls) {
        const Json& item = call[end];
        all += (all.empty() ? "" : "; ") + desk.brief({{"uri", item["uri"]}, {"range", item["selectionRange"]}}) +
               " of " + item["name"].get<std::string>() + " at";
        for (const Json& range : call["fromRanges"])
            all += ' ' + range["start"]["line"].dump() + ':' + range["start"]["character"].dump();
    }
    return all;
}

} // namespace

TEST(ServerKnowing, CallHierarchy) {
    Desk desk = deskOfUsers();
    const Json items = desk.result("textDocument/prepareCallHierarchy");
    ASSERT_EQ(items.size(), 1U); // where its mapping is
    EXPECT_EQ(desk.brief({{"uri", items[0]["uri"]}, {"range", items[0]["selectionRange"]}}), "b.btl:1:GATE");
    const auto ask = [&](const std::string& direction, const Json& item) {
        return desk.result("callHierarchy/" + direction, {{"item", item}});
    };
    const Json uses = ask("incomingCalls", items[0]);
    EXPECT_EQ(pointsOf(desk, uses, "from"), "a.btl:1:USER of USER at 1:28 1:57; parts/rest.inc:0: of TOP at 0:0");
    const Json madeOf = ask("outgoingCalls", items[0]);
    EXPECT_EQ(pointsOf(desk, madeOf, "to"), "a.btl:2:TOP of TOP at 1:23; a.btl:1:USER of USER at 1:39 2:1");
    EXPECT_EQ(pointsOf(desk, ask("outgoingCalls", madeOf[0]["to"]), "to"), "a.btl:1:USER of USER at 2:30");
    EXPECT_EQ(pointsOf(desk, ask("outgoingCalls", uses[1]["from"]), "to"), "b.btl:1:GATE of GATE at 0:0");
    const Json called = ask("outgoingCalls", uses[0]["from"]);
    EXPECT_EQ(pointsOf(desk, called, "to"), "b.btl:1:GATE of GATE at 1:28 1:57; below/base.btl:3:none of none at 1:49");
    EXPECT_EQ(pointsOf(desk, ask("incomingCalls", called[1]["to"]), "from"), "a.btl:1:USER of USER at 1:49");

    // What is gone meanwhile
    desk.open("a.btl", "library \"L\" {\n block \"TOP\" mapsto {\n");
    EXPECT_EQ(ask("outgoingCalls", madeOf[0]["to"]), Json::array());
    EXPECT_EQ(ask("incomingCalls", madeOf[1]["to"]), Json::array());
    Json closed = items[0];
    closed["data"]["uri"] = "file:///nowhere.btl";
    EXPECT_EQ(ask("incomingCalls", closed), nullptr);
    closed["data"] = nullptr;
    EXPECT_EQ(desk.ask("callHierarchy/incomingCalls", {{"item", closed}})["error"]["code"], -32602);
}
