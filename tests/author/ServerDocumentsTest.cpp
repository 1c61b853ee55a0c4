#include "tests/author/Dialogue.h"
#include "tests/author/Typist.h"

#include <gtest/gtest.h>

#include <random>

// Documents that are open: their changes, and what is said of them.
namespace {

using support::Dialogue;
using support::Json;
using support::rangeOf;
using support::Typist;

const Json utf8 = {{"general", {{"positionEncodings", {"utf-8"}}}}};
const Json nothing = Json::object();

Json resultOf(const std::vector<Json>& messages, int id) {
    for (const Json& message : messages)
        if (message.contains("result") && message["id"] == id) return message["result"];
    return "no result";
}

// "name@line:character detail(children)"
std::string outline(const Json& symbols) {
    std::string all;
    for (const Json& symbol : symbols) {
        const Json& at = symbol["selectionRange"]["start"];
        all += (all.empty() ? "" : " ") + symbol["name"].get<std::string>() + '@' + at["line"].dump() + ':' +
               at["character"].dump();
        if (symbol.contains("detail")) all += '[' + symbol["detail"].get<std::string>() + ']';
        if (!symbol["children"].empty()) all += '(' + outline(symbol["children"]) + ')';
    }
    return all;
}

} // namespace

TEST(ServerDocuments, LargeOutlinesEndAtBlocks) {
    const auto outlineOf = [](int blocks) {
        std::string text = "library \"L\" {\n";
        for (int i = 0; i < blocks; ++i)
            text += "block \"B\" { pin \"A\" input; pin \"B\" input; pin \"C\" input; pin \"D\" output; }\n";
        Dialogue dialogue;
        return resultOf(dialogue.initialize().open("a", text + "}\n").ask("documentSymbol", "a").run(), 2);
    };
    const Json small = outlineOf(2);
    const Json large = outlineOf(4100);
    EXPECT_TRUE(outline(small).starts_with("L@0:8(B@1:6(A@1:16[input] B@1:31[input]"));
    EXPECT_TRUE(outline(large).starts_with("L@0:8(B@1:6 B@2:6 B@3:6 "));
}

// Each as the first letters of its type, and its text.
TEST(ServerDocuments, TokensHaveTheirTypes) {
    const std::string text = "/* a\n b */ library \"L\" {\nblock \"\xf0\x9d\x84\x9e\" { pin \"A\" input; "
                             "property string \"P\" { default = \"t\" } } mapsto {\n"
                             "inst \"i\" \"B\"; connect \"s\" : \"i\" \"X\", \"A\";\n"
                             "if (f(\"P\", 3)) assign block property \"i\" \"Q\" \"v\"; } }\n";
    const auto typesIn = [&](const std::string& what, const Json& params) {
        const Json result = resultOf(Dialogue().initialize(utf8).open("a", text).ask(what, "a", params).run(), 2);
        std::string all;
        std::size_t begin = 0;
        std::size_t character = 0;
        for (std::size_t i = 0; i < result["data"].size(); i += 5) {
            const auto number = [&](std::size_t which) { return result["data"][i + which].get<std::size_t>(); };
            for (std::size_t lines = number(0); lines > 0; --lines) begin = text.find('\n', begin) + 1;
            character = number(0) > 0 ? number(1) : character + number(1);
            all += std::string(1, "cksnftvpPm"[number(3)]) + text.substr(begin + character, number(2)) + ' ';
        }
        return all;
    };
    const std::string last = "kif ff s\"P\" n3 kassign kblock kproperty v\"i\" P\"Q\" s\"v\" ";
    EXPECT_EQ(typesIn("semanticTokens/full", Json::object()),
              "c/* a c b */ klibrary s\"L\" kblock t\"\xf0\x9d\x84\x9e\" kpin p\"A\" kinput kproperty kstring P\"P\" "
              "kdefault s\"t\" kmapsto kinst v\"i\" t\"B\" kconnect v\"s\" v\"i\" p\"X\" p\"A\" " +
                  last);
    EXPECT_EQ(typesIn("semanticTokens/range", {{"range", rangeOf(4, 0, 5, 0)}}), last);
}

// What the editor shows to choose from: "title: text with its edits", in the order of the list.
TEST(ServerDocuments, MendsAreOffered) {
    const std::string text = "library \"L\" {\nblock \"\xc3\x84\" { pin \"A\" inptu; pin \"B\" output }\n"
                             "mapsto { inst \"i\" \"GATE_ND\"; } } ) \n";
    const auto at = [](int line, int character, int end) { return rangeOf(line, character, line, end); };
    const Json unknown = {{"range", at(2, 18, 27)},
                          {"message", "no block \"GATE_ND\"; did you mean GATE_AND, GATE_OR?"}};
    const Json literal = {{"textDocument", {{"codeAction", {{"codeActionLiteralSupport", Json::object()}}}}}};
    const auto offered = [&](const Json& range, const Json& context, const Json& capabilities) {
        const Json actions = resultOf(Dialogue()
                                          .initialize(capabilities)
                                          .open("a", text)
                                          .ask("codeAction", "a", {{"range", range}, {"context", context}})
                                          .run(),
                                      2);
        std::string all;
        for (const Json& action : actions) {
            all += action["title"].get<std::string>() + (action.contains("diagnostics") ? " (said)" : "") +
                   (action.contains("isPreferred") ? "!:" : ":");
            for (const Json& edit : action["edit"]["changes"]["a"])
                all += " " + edit["range"]["start"]["character"].dump() + "-" +
                       edit["range"]["end"]["character"].dump() + " " + edit["newText"].get<std::string>();
            all += "\n";
        }
        return all;
    };
    const Json quick = {{"diagnostics", Json::array()}, {"only", {"quickfix"}}};
    EXPECT_EQ(offered(at(1, 24, 24), quick, literal), "Write 'input'!: 20-25 input\n");
    EXPECT_EQ(offered(at(1, 0, 60), quick, literal), "Write 'input'!: 20-25 input\nInsert ';'!: 41-41 ;\n");
    EXPECT_EQ(offered(at(2, 20, 20), {{"diagnostics", Json::array({unknown})}, {"only", {"quickfix"}}}, literal),
              "Write 'GATE_AND' (said): 19-26 GATE_AND\nWrite 'GATE_OR' (said): 19-26 GATE_OR\n");
    EXPECT_EQ(offered(at(0, 0, 0), {{"diagnostics", Json::array()}}, literal),
              "Mend all that there is one way to mend: 20-25 input 41-41 ;\n");
    EXPECT_EQ(offered(at(1, 0, 60), quick, nothing), "");
    const auto only = [](const char* kind) { return Json{{"only", {kind}}}; };
    EXPECT_EQ(offered(at(1, 24, 24), only(""), literal),
              "Write 'input'!: 20-25 input\nMend all that there is one way to mend: 20-25 input 41-41 ;\n");
    for (const char* kind : {"quick", "quickfix.more", "refactor"})
        EXPECT_EQ(offered(at(1, 0, 60), only(kind), literal), "");
    // The client's own diagnostic of a mend, and others that have no name to put in
    const Json misspelt = {{"range", at(1, 20, 25)}, {"message", "x"}, {"code", "misspelt-word"}};
    Json other = misspelt, context = {{"only", {"quickfix"}}};
    other["code"] = "missing-token";
    for (const auto& [said, isIt] : {std::pair(misspelt, true), std::pair(other, false), std::pair(unknown, false)}) {
        context["diagnostics"] = Json::array({said});
        EXPECT_EQ(offered(at(1, 24, 24), context, literal).starts_with("Write 'input' (said)"), isIt) << said;
    }
    const std::string name(50, 'G');
    const std::pair<std::string, std::string> messages[] = {
        {"\"\" or \"GATE_XD\"; did you mean GATE_AND?", ""},
        {"\"i\" \"G; did you mean A?", ""},
        {"\"GATE_XD\", \"GATE_ND\"; did you mean " + name + "?",
         "Write '" + name.substr(0, 40) + "...' (said)!: 19-26 " + name + "\n"},
    };
    for (const auto& [message, expected] : messages) {
        context["diagnostics"] = Json::array({Json{{"range", at(2, 9, 27)}, {"message", message}}});
        EXPECT_EQ(offered(at(2, 20, 20), context, literal), expected) << message;
    }
}

// After each message the changed document is as one that was opened with its text.
TEST(ServerDocuments, ChangesGiveWhatAnOpenedTextGives) {
    for (const bool isUtf8 : {false, true}) {
        std::mt19937 random(isUtf8 ? 7 : 8);
        Typist typist([&] { return random(); }, isUtf8);
        Dialogue dialogue;
        dialogue.initialize(isUtf8 ? utf8 : nothing).open("changed", typist.text());
        constexpr int steps = 400;
        for (int step = 0; step < steps; ++step) {
            dialogue.change("changed", typist.type()).open("opened", typist.text());
            for (const char* const uri : {"changed", "opened"})
                dialogue.ask("documentSymbol", uri).ask("foldingRange", uri);
        }
        const std::vector<Json> messages = dialogue.run();
        constexpr std::size_t before = 2;
        constexpr std::size_t each = 6;
        ASSERT_EQ(messages.size(), before + each * steps);
        for (std::size_t at = before; at < messages.size(); at += each) {
            ASSERT_EQ(messages[at]["params"]["diagnostics"], messages[at + 1]["params"]["diagnostics"]) << at;
            ASSERT_EQ(messages[at + 2]["result"], messages[at + 4]["result"]) << at;
            ASSERT_EQ(messages[at + 3]["result"], messages[at + 5]["result"]) << at;
        }
    }
}

TEST(ServerDocuments, PositionsAreClampedAndCounted) {
    const std::string smile = "\xf0\x9f\x98\x80";
    const std::string name = "library \"\xc3\xa4" + smile + "b\" { }";
    struct Change {
        std::string text;
        Json capabilities;
        Json range;
        std::string inserted;
        std::string outline;
    };
    const Change changes[] = {
        {name, nothing, rangeOf(0, 12, 0, 12), "X", "\xc3\xa4" + smile + "Xb@0:8"},
        {name, nothing, rangeOf(0, 11, 0, 12), "X", "\xc3\xa4Xb@0:8"}, // between the halves is before
        {name, nothing, rangeOf(0, 13, 0, 12), "X", "\xc3\xa4" + smile + "X@0:8"},
        {name, utf8, rangeOf(0, 15, 0, 16), "X", "\xc3\xa4" + smile + "X@0:8"},
        {name, utf8, rangeOf(0, 13, 0, 15), "X", "\xc3\xa4Xb@0:8"},
        {"library\n{ }", nothing, rangeOf(0, 99, 0, 99), " \"N\"", "N@0:8"},
        {"library\n{ }", utf8, rangeOf(0, 99, 0, 99), " \"N\"", "N@0:8"},
        {"library\r\n{ }", nothing, rangeOf(0, 99, 0, 99), " \"N\"", "N@0:8"},
        {"\rlibrary\r{ }", nothing, rangeOf(1, 99, 1, 99), " \"N\"", "N@1:8"},
        {"library \"L\" { ", nothing, rangeOf(99, 3, 99, 4), "block \"B\" { } }", "L@0:8(B@0:20)"},
        {"", nothing, rangeOf(0, 0, 0, 0), "library \"L\" { }", "L@0:8"},
    };
    for (const Change& change : changes) {
        const Json list = {{{"range", change.range}, {"text", change.inserted}}};
        const auto messages = Dialogue()
                                  .initialize(change.capabilities)
                                  .open("a", change.text)
                                  .change("a", list)
                                  .ask("documentSymbol", "a")
                                  .run();
        EXPECT_EQ(outline(resultOf(messages, 2)), change.outline) << change.text << change.range;
    }
}

TEST(ServerDocuments, FaultyChangesAreSaid) {
    const Json place = {{"line", -1}, {"character", 0}};
    const Json changes[] = {
        {{{"text", 3}}},
        {{{"range", rangeOf(0, 0, 0, 0)}}},
        {{{"range", {{"start", place}, {"end", place}}}, {"text", ""}}},
        {{{"range", {{"start", {{"line", 0.5}, {"character", 0}}}, {"end", place}}}, {"text", ""}}},
        {"none"},
    };
    for (const Json& change : changes) {
        const auto messages = Dialogue().initialize().open("a", "").change("a", change).run();
        EXPECT_EQ(support::briefly(messages), "1 result, textDocument/publishDiagnostics, window/logMessage") << change;
    }
}

TEST(ServerDocuments, DiagnosticsSayWhereAndOfWhichVersion) {
    const Json related = {{"textDocument", {{"publishDiagnostics", {{"relatedInformation", true}}}}}};
    const std::string text = "library \"L\" { block \"A\" {\n  pin \"A\" input {\n    property bool \"P\" true;\n"
                             "  pin \"B\" input;\n} }";
    const auto said = Dialogue().initialize(related).open("a", text).run().at(1)["params"];
    const Json expected = {
        {"range", rangeOf(1, 16, 1, 17)},
        {"severity", 1},
        {"code", "unclosed-brace"},
        {"source", "ntl"},
        {"message", "this '{' is not closed before 'pin'"},
        {"relatedInformation",
         {{{"location", {{"uri", "a"}, {"range", rangeOf(2, 27, 2, 27)}}}, {"message", "expected '}' here"}}}}};
    EXPECT_EQ(said, (Json{{"uri", "a"}, {"version", 1}, {"diagnostics", {expected}}}));
    const auto later = Dialogue()
                           .initialize()
                           .open("a", text)
                           .change("a", {{{"range", rangeOf(2, 27, 2, 27)}, {"text", " }"}}}, 9)
                           .notify("textDocument/didClose", {{"textDocument", {{"uri", "a"}}}})
                           .ask("foldingRange", "a")
                           .run();
    ASSERT_EQ(support::briefly(later), "1 result, textDocument/publishDiagnostics, textDocument/publishDiagnostics, "
                                       "textDocument/publishDiagnostics, 2 -32602");
    EXPECT_FALSE(later[1]["params"]["diagnostics"][0].contains("relatedInformation"));
    EXPECT_EQ(later[2]["params"], (Json{{"uri", "a"}, {"version", 9}, {"diagnostics", Json::array()}}));
    EXPECT_EQ(later[3]["params"], (Json{{"uri", "a"}, {"diagnostics", Json::array()}}));
    const Json unversioned = {{"textDocument", {{"uri", "a"}, {"version", nullptr}}},
                              {"contentChanges", Json::array({Json{{"text", "$"}}})}};
    const Json last =
        Dialogue().initialize().open("a", text).notify("textDocument/didChange", unversioned).run().back();
    EXPECT_FALSE(last["params"].contains("version"));
    EXPECT_FALSE(last["params"]["diagnostics"].empty());
}

// A message may quote a text that is cut within a character, and a text may be none.
TEST(ServerDocuments, OddTexts) {
    std::string long_ = "library \"L\" { block ";
    for (int i = 0; i < 40; ++i) long_ += "\"x\xc3\xa4";
    const Json texts[] = {long_, "BZh91AY&SY", std::string("a\0b", 3),        "\xef\xbb\xbf{",
                          "/*",  "\r",         "\"\xc3\xa4\n\xf0\x9f\x98\x80"};
    for (const Json& text : texts) {
        Dialogue dialogue;
        dialogue.initialize().open("a", text);
        for (const char* const what : {"documentSymbol", "foldingRange", "formatting"}) dialogue.ask(what, "a");
        dialogue.ask("selectionRange", "a",
                     {{"positions", {rangeOf(0, 0, 0, 0)["start"], rangeOf(9, 9, 0, 0)["start"]}}});
        dialogue.change("a", {{{"range", rangeOf(0, 0, 0, 4)}, {"text", "library \"L\" { } //"}}})
            .ask("documentSymbol", "a");
        const auto messages = dialogue.run();
        ASSERT_EQ(messages.size(), 8U) << text;
        EXPECT_FALSE(messages[1]["params"]["diagnostics"].empty()) << text;
        EXPECT_EQ(outline(messages[7]["result"]), "L@0:8") << text;
    }
    // What becomes an archive while it is typed, and a text again.
    const auto messages = Dialogue()
                              .initialize()
                              .open("a", "library \"L\" { }")
                              .change("a", {{{"range", rangeOf(0, 0, 0, 0)}, {"text", "BZh91AY&SY"}}})
                              .ask("documentSymbol", "a")
                              .change("a", {{{"range", rangeOf(0, 0, 0, 10)}, {"text", ""}}})
                              .ask("documentSymbol", "a")
                              .run();
    ASSERT_EQ(messages.size(), 6U);
    EXPECT_FALSE(messages[2]["params"]["diagnostics"].empty());
    EXPECT_EQ(outline(messages[3]["result"]), "");
    EXPECT_EQ(messages[4]["params"]["diagnostics"], Json::array());
    EXPECT_EQ(outline(messages[5]["result"]), "L@0:8");
}

TEST(ServerDocuments, OutlineFoldsAndSelections) {
    const std::string text = "// one\n// two\nlibrary \"L\" {\n"
                             "function int f(string);\n"
                             "block \"A\" {\n"
                             "  pin \"P[1:0]\" input clock tieLow;\n"
                             "  property 8'h \"H\" {\n    default = 8'h1\n  }\n"
                             "} expandsto {\n"
                             "  if (1 < 2) {\n    inst \"i\" \"B\";\n  }\n"
                             "  signal \"s\" : \"P\", \"i\" \"X\";\n"
                             "}\n}\n";
    const auto messages = Dialogue()
                              .initialize()
                              .open("a", text)
                              .ask("documentSymbol", "a")
                              .ask("foldingRange", "a")
                              .ask("selectionRange", "a",
                                   {{"positions", {rangeOf(13, 21, 3, 10)["start"], rangeOf(13, 21, 3, 10)["end"]}}})
                              .run();
    EXPECT_EQ(outline(resultOf(messages, 2)), "L@2:8(f@3:13 A@4:6(P[1:0]@5:6[input clock tieLow] H@6:15[8'h] "
                                              "expandsto@9:2(i@11:9[\"B\"] s@13:9)))");
    std::string folds;
    for (const Json& fold : resultOf(messages, 3))
        folds += fold["startLine"].dump() + '-' + fold["endLine"].dump() + (fold.contains("kind") ? "c " : " ");
    EXPECT_EQ(folds, "4-13 6-7 9-13 10-11 0-1c ");
    std::string selections;
    for (Json each : resultOf(messages, 4))
        for (;; each = Json(each["parent"])) {
            const Json& range = each["range"];
            selections += range["start"]["line"].dump() + ':' + range["start"]["character"].dump() + '-' +
                          range["end"]["line"].dump() + ':' + range["end"]["character"].dump() + ' ';
            if (!each.contains("parent")) break;
        }
    EXPECT_EQ(selections, "13:20-13:23 13:20-13:27 13:2-13:28 9:2-14:1 4:0-14:1 2:0-15:1 0:0-16:0 "
                          "3:9-3:12 3:0-3:23 2:0-15:1 0:0-16:0 ");
}

TEST(ServerDocuments, FormattingEditsNoMoreThanItMust) {
    struct Text {
        std::string before;
        Json range; ///< null: nothing is edited
        std::string inserted;
    };
    const Text texts[] = {
        {"library \"L\" { }\n", nullptr, ""},
        {"library \"L\" {\n  block \"A\" {\n    pin  \"B\" input;\n  }\n}\n", rangeOf(2, 0, 3, 0),
         "    pin \"B\" input;\n"},
        {"library \"L\" {\n  block \"A\" { }\n}", rangeOf(2, 0, 2, 1), "}\n"},
        {"library \"L\" {\n  block \"A\" { }\n}\n\n\n", rangeOf(3, 0, 5, 0), ""},
        {"library \"L\" {\n  block \"A\" {\n    pin \"B\" input; pin \"C\" input;\n  }\n}\n", rangeOf(2, 0, 3, 0),
         "    pin \"B\" input;\n    pin \"C\" input;\n"},
    };
    for (const Text& text : texts) {
        const auto messages = Dialogue().initialize().open("a", text.before).ask("formatting", "a").run();
        const Json expected =
            text.range.is_null() ? Json::array() : Json::array({{{"range", text.range}, {"newText", text.inserted}}});
        EXPECT_EQ(resultOf(messages, 2), expected) << text.before;
    }
    const auto refused = Dialogue().initialize().open("a", "library \"L\" {\r\n}").ask("formatting", "a").run();
    EXPECT_EQ(support::briefly(refused), "1 result, textDocument/publishDiagnostics, 2 -32803");
}

// Only what is asked for is laid out, as the whole text would be.
TEST(ServerDocuments, StretchesAreFormatted) {
    const std::string first = "block \"A\" {\npin \"P\"   input;\n}\n";
    const std::string second = "/* \xc3\xa4 */ block   \"B\" {\npin \"Q\"   input;pin   \"R\" output;\n}\n";
    const std::string text = "library \"L\" {\n" + first + second + "}\n";
    const auto with = [&](const std::string& before, const std::string& after) {
        return std::string(text).replace(text.find(before), before.size(), after);
    };
    const auto edited = [&](const std::string& what, const Json& params, const std::string& before) {
        const Json edits = resultOf(Dialogue().initialize(utf8).open("a", before).ask(what, "a", params).run(), 2);
        if (edits.is_null()) return std::string("nothing");
        std::string after = before;
        for (const Json& edit : edits) {
            const auto offsetOf = [&](const Json& position) {
                std::size_t begin = 0;
                for (int line = position["line"]; line > 0; --line) begin = before.find('\n', begin) + 1;
                return begin + position["character"].get<std::size_t>();
            };
            const std::size_t begin = offsetOf(edit["range"]["start"]);
            after.replace(begin, offsetOf(edit["range"]["end"]) - begin, edit["newText"].get<std::string>());
        }
        return after;
    };
    const Json options = {{"tabSize", 2}, {"insertSpaces", true}};
    const auto range = [&](int line, int character, int endLine, int end) {
        return edited("rangeFormatting", {{"range", rangeOf(line, character, endLine, end)}, {"options", options}},
                      text);
    };
    const auto typed = [&](int line, int character, const std::string& before) {
        const Json position = {{"line", line}, {"character", character}};
        return edited("onTypeFormatting", {{"position", position}, {"ch", ";"}, {"options", options}}, before);
    };
    EXPECT_EQ(range(2, 0, 3, 0), with("pin \"P\"   input;", "    pin \"P\" input;"));
    EXPECT_EQ(range(5, 0, 5, 16), with("pin \"Q\"   input;", "    pin \"Q\" input;"));
    EXPECT_EQ(range(1, 0, 4, 0), with(first, "  block \"A\" {\n    pin \"P\" input;\n  }\n"));
    EXPECT_EQ(range(0, 0, 8, 0), edited("formatting", {{"options", options}}, text));
    EXPECT_EQ(typed(5, 16, text), with("pin \"Q\"   input;", "    pin \"Q\" input;"));
    EXPECT_EQ(typed(6, 1, text), with(second, "/* \xc3\xa4 */ block \"B\" {\n    pin \"Q\" input;\n"
                                              "    pin \"R\" output;\n  }\n"));
    EXPECT_EQ(typed(0, 0, text), "nothing");
    EXPECT_EQ(typed(6, 1, text + "}"), "nothing");
}
