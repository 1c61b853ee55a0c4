#include "tests/author/Desk.h"
#include "tests/author/Editor.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <map>

// What is said of the library that a document belongs to.
namespace {

using support::Dialogue;
using support::Editor;
using support::Json;
using support::rangeOf;

using Texts = std::map<std::string, std::string>;

std::string uriOf(const TempDir& folder, const std::string& file) { return "file://" + folder.path(file); }

std::string libraryOf(const std::string& blocks) { return "library \"L\" {\n" + blocks + "\n}\n"; }

const std::string gate = "block \"FLOP_RISE\" { pin \"D\" input; pin \"Q\" output; }";
const std::string pair = "block \"BUFFER\" { pin \"I\" input; pin \"O\" output; }\n"
                         "block \"PAIR\" { pin \"I\" input; pin \"J\" input; pin \"O\" output; }\n"
                         "mapsto { inst \"a\" \"BUFFER\";\n"
                         "signal \"in\" : \"I\", \"a\" \"I\"; signal \"out\" : \"a\" \"O\", \"O\"; }";
const std::string quiet =
    "rules = { off = [ \"config-unknown-property\", \"config-unknown-pin\", \"unregistered-block\", \"no-group\", "
    "\"no-description\" ]; };\n";
const std::string hint = "block \"FLOP_RISE\" { pin \"D\" input; property 4'h \"N\" { min = 4'h0, default = 4'h1 } }";

// What was said last of each file below the folder: "file line:code ...; ...".
std::string lastSaid(const std::vector<Json>& messages, const TempDir& folder) {
    std::map<std::string, std::string> last;
    for (const Json& message : messages)
        if (message.value("method", "") == "textDocument/publishDiagnostics") {
            const auto& uri = message["params"]["uri"].get_ref<const std::string&>();
            const std::string file = std::filesystem::path(uri.substr(7)).lexically_relative(folder.path()).string();
            last[file] = support::brieflyOf(message["params"]["diagnostics"]);
        }
    std::string all;
    for (const auto& [file, said] : last)
        if (!said.empty() && !file.starts_with("..")) all += (all.empty() ? "" : "; ") + file + ' ' + said;
    return all;
}

struct ServerLibraries : testing::Test {
    TempDir folder;

    std::string uri(const std::string& file) const { return uriOf(folder, file); }
    void write(const Texts& texts) const {
        for (const auto& [file, text] : texts) {
            folder.makeDir(std::filesystem::path(file).parent_path().string());
            folder.write(file, text);
        }
    }
    // A text whose library is judged until somebody ends that.
    std::string endless() const {
        mkfifo(folder.path("waits.inc").c_str(), 0600);
        return libraryOf("INCLUDE\n" + folder.path("waits.inc") + ";\n" + gate);
    }
};

} // namespace

TEST_F(ServerLibraries, WhatLintSaysOfTheTextsThatThereAre) {
    struct Case {
        Texts files;
        Texts open;
        std::string said;
    };
    const Case cases[] = {
        {{{"a.btl", libraryOf(gate)}}, {{"b.btl", libraryOf(gate)}}, ""},
        {{{"a.btl", libraryOf(gate)}, {"b.btl", ""}}, {{"b.btl", libraryOf("\n" + gate)}}, "b.btl 3:block-redefined"},
        {{}, {{"a.btl", libraryOf(hint)}}, "a.btl 2:needless-bound"},
        {{{"a.btl", libraryOf(hint)}, {"b.btl", libraryOf("block \"LATCH_RISE\" { pin \"D\" input; }")}},
         {{"b.btl", libraryOf("block \"LATCH_RISE\" { pin \"d\" input; }")}},
         "a.btl 2:needless-bound; b.btl 2:pin-lower-case"},
        {{{".ntl.cfg", quiet + "include = [ \"parts\" ];"},
          {"a.btl", libraryOf("block \"FLOP_RISE\" {\nINCLUDE\npins.inc;\n}")},
          {"parts/pins.inc", "pin \"D\" input;\n"}},
         {{"parts/pins.inc", "pin \"D\" input;\npin \"D\" input;\n"}},
         "parts/pins.inc 2:pin-redefined"},
        // A part of two libraries
        {{{".ntl.cfg", quiet + "include = [ \"parts\" ];"},
          {"x/a.btl", ""},
          {"y/b.btl", ""},
          {"parts/pins.inc", "pin \"D\" input;\npin \"D\" input;\n"}},
         {{"x/a.btl", libraryOf("block \"FLOP_RISE\" {\nINCLUDE\npins.inc;\n}")},
          {"y/b.btl", libraryOf("block \"FLOP_RISE\" {\nINCLUDE\npins.inc;\n}")}},
         "parts/pins.inc 2:pin-redefined"},
        {{{".ntl.cfg", quiet + "parents = [ \"below/base.btl\" ];"},
          {"below/base.btl", libraryOf(gate)},
          {"a.btl", ""}},
         {{"a.btl", libraryOf("block \"LATCH_RISE\" { pin \"D\" input; } expandsto {\n"
                              "inst \"a\" \"FLOP_RISE\";\ninst \"b\" \"NONE_SUCH\"; }")}},
         "a.btl 4:unknown-block 3:open-input"},
        {{{".ntl.cfg", quiet + "parents = [ \"below/base.btl\" ];"},
          {"below/base.btl", libraryOf(gate + gate)},
          {"a.btl", ""}},
         {{"a.btl", libraryOf(hint)}},
         "a.btl 1:?; below/base.btl 2:block-redefined"},
        {{{".ntl.cfg", "rules = { only = [ \"unregistered-block\" ]; }; cells = [ \"cells.csv\" ];"},
          {"cells.csv", "3999,OWN_CELL\n"}},
         {{"a.btl", libraryOf("block \"OWN_CELL\" { pin \"D\" input; }\nblock \"OTHER_CELL\" { pin \"D\" input; }")}},
         "a.btl 3:unregistered-block"},
        {{{".ntl.cfg", "rules = { off = [ \"no-group\",\n\"none-such\" ]; };"}},
         {{"a.btl", libraryOf(hint)}},
         ".ntl.cfg 2:?"},
        {{{".ntl.cfg", quiet + "exceptions = ( { path = \"b*\"; off = [ \"needless-bound\" ]; } );"},
          {"a.btl", libraryOf(hint)},
          {"b.btl", libraryOf("block \"LATCH_RISE\" { pin \"D\" input; property 4'h \"N\" { min = 4'h0 } }")}},
         {{"a.btl", libraryOf(hint)}},
         "a.btl 2:needless-bound"},
        {{}, {{"a.btl", libraryOf("// ntl: allow needless-bound: shown to readers\n" + hint)}}, ""},
        // One block is faulty, of which the tree speaks; the other one is judged.
        {{},
         {{"a.btl", libraryOf("block \"LATCH_RISE\" { pin \"d\" input }\n" + hint)}},
         "a.btl 2:missing-token 3:needless-bound"},
        {{{"a.btl", ""}, {"b.btl", libraryOf("block \"LATCH_RISE\" { pin \"d\" input }\n")}},
         {{"a.btl", libraryOf(hint)}},
         "a.btl 2:needless-bound; b.btl 2:missing-token"},
        {{}, {{"a.btl", libraryOf(gate) + "/* open"}}, "a.btl 4:open-comment"},
        {{}, {{"a.btl", libraryOf(pair)}}, "a.btl 4:unused-input"},
    };
    for (const Case& each : cases) {
        std::filesystem::remove_all(folder.path());
        folder.makeDir("");
        if (!each.files.contains(".ntl.cfg")) folder.write(".ntl.cfg", quiet);
        write(each.files);
        Dialogue dialogue;
        dialogue.initialize();
        for (const auto& [file, text] : each.open) dialogue.open(uri(file), text);
        EXPECT_EQ(lastSaid(dialogue.run(), folder), each.said) << each.open.begin()->second;
    }
}

TEST_F(ServerLibraries, WhatTheClientCanShow) {
    const Json all = {{"textDocument",
                       {{"publishDiagnostics",
                         {{"relatedInformation", true},
                          {"dataSupport", true},
                          {"codeDescriptionSupport", true},
                          {"tagSupport", {{"valueSet", {1, 2}}}}}}}}};
    write({{".ntl.cfg", quiet}, {"a.btl", libraryOf("/* \xf0\x9f\x98\x80 */ " + gate)}});
    const auto said = [&](const std::string& text, const Json& capabilities) {
        const auto messages = Dialogue().initialize(capabilities).open(uri("b.btl"), text).run();
        return messages.back()["params"]["diagnostics"].at(0);
    };
    folder.write("b.btl", "");
    const Json related = said(libraryOf(gate), all)["relatedInformation"];
    const Json expected = {{"location", {{"uri", uri("a.btl")}, {"range", rangeOf(1, 9, 1, 9 + 52)}}},
                           {"message", "first declared here"}};
    EXPECT_EQ(related, Json::array({expected}));
    EXPECT_FALSE(said(libraryOf(gate), Json::object()).contains("relatedInformation"));
    std::filesystem::remove(folder.path("a.btl"));
    for (const bool isTagged : {true, false}) {
        const Json one = said(libraryOf(pair), isTagged ? all : Json::object());
        EXPECT_EQ(one["code"], "unused-input");
        EXPECT_EQ(one.value("tags", Json()), isTagged ? Json::array({1}) : Json());
        EXPECT_EQ(one.contains("data") || one.contains("codeDescription"), isTagged);
    }
}

// All that is said has one mend, and with all of them nothing is said any more.
TEST_F(ServerLibraries, WhatRulesFindIsMended) {
    const std::string text =
        "library \"L\" {\n"
        "// ntl: allow open-input: long mended\n"
        "block \"FLOP_RISE\" { // ntl: allow no-group: nor this\n"
        "pin \"d[1:0]\" input data; pin \"Q\" output { property int \"P\" { default = 1 } }\n"
        "property int \"N\" { min = 9, max = /* most */ 3, default = 4 }\n"
        "property 8'h \"H\" { min = 8'h00, max = 8'hff, default = 8'h01 }\n"
        "property 8'h \"J\" { min = 8'h01, max = 8'hFF } property 8'h \"K\" { min = 8'h00, max = 8'h0F }\n"
        "} mapsto { assign pin property \"~Q\", \"P\" 1; }\n"
        "  INCLUDE parts.inc; block \"LATCH_RISE\" { }\n"
        "}\n";
    const std::string mended = "library \"L\" {\n"
                               "block \"FLOP_RISE\" {\n"
                               "pin \"D[1:0]\" input data; pin \"Q\" output { property int \"P\" { default = 1 } }\n"
                               "property int \"N\" { min = 3, max = /* most */ 9, default = 4 }\n"
                               "property 8'h \"H\" { default = 8'h01 }\n"
                               "property 8'h \"J\" { min = 8'h01 } property 8'h \"K\" { min = 8'h00, max = 8'h0F }\n"
                               "} mapsto { assign pin property \"Q\", \"P\" 1; }\n"
                               "  INCLUDE parts.inc;\nblock \"LATCH_RISE\" { }\n"
                               "}\n";
    write({{".ntl.cfg", quiet + "include = [ \".\" ];"}, {"parts.inc", ""}, {"a.btl", text}});
    Editor editor;
    editor.initialize({{"textDocument", {{"codeAction", {{"codeActionLiteralSupport", Json::object()}}}}}});
    editor.open(uri("a.btl"), text);
    EXPECT_TRUE(editor.awaitSaid(
        uri("a.btl"), "4:pin-lower-case 5:min-above-max 8:inversion-dropped 9:include-trailing-text 2:waiver-unused "
                      "3:waiver-unused 6:needless-bound 6:needless-bound 7:needless-bound"))
        << editor.said(uri("a.btl"));
    const auto actions = [&](const char* kind) {
        editor.ask("codeAction", uri("a.btl"),
                   {{"range", rangeOf(0, 0, 9, 0)}, {"context", {{"diagnostics", Json::array()}, {"only", {kind}}}}});
        return editor.await([](const Json& message) { return message.contains("result"); })["result"];
    };
    EXPECT_EQ(actions("quickfix").size(), 9U);
    const Json all = actions("source.fixAll");
    ASSERT_EQ(all.size(), 1U);
    std::string after = text;
    const Json edits = all[0]["edit"]["changes"][uri("a.btl")];
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        const std::size_t begin = support::Desk::offsetIn(text, (*edit)["range"]["start"]);
        const std::size_t end = support::Desk::offsetIn(text, (*edit)["range"]["end"]);
        after.replace(begin, end - begin, (*edit)["newText"].get<std::string>());
    }
    EXPECT_EQ(after, mended);
    editor.change(uri("a.btl"), {{{"text", after}}});
    EXPECT_TRUE(editor.awaitSaid(uri("a.btl"), "")) << editor.said(uri("a.btl"));
}

// Beside the data there is the page of the rules, when all was installed.
TEST_F(ServerLibraries, CodesAreLinkedToTheirExplanations) {
    write({{"share/hdnt/data/cellviews.csv", ""}, {"share/doc/hdnt/docs/lint.md", ""}, {".ntl.cfg", quiet}});
    setenv("HDNT_DATA_PATH", folder.path("share/hdnt/data").c_str(), 1);
    const Json links = {{"textDocument", {{"publishDiagnostics", {{"codeDescriptionSupport", true}}}}}};
    const auto messages = Dialogue()
                              .initialize(links)
                              .open(uri("a.btl"), libraryOf("block \"LATCH_RISE\" { pin \"D\" input }\n" + hint))
                              .run();
    const Json& list = messages.back()["params"]["diagnostics"];
    ASSERT_EQ(support::brieflyOf(list), "2:missing-token 3:needless-bound");
    EXPECT_FALSE(list[0].contains("codeDescription"));
    EXPECT_EQ(list[1]["codeDescription"]["href"], uri("share/doc/hdnt/docs/lint.md") + "#needless-bound");
}

TEST_F(ServerLibraries, FindingsMoveWithTheTextAndEndWithIt) {
    write({{".ntl.cfg", quiet}, {"a.btl", libraryOf(hint)}});
    const std::string a = uri("a.btl");
    Editor editor;
    editor.initialize().open(a, libraryOf(hint));
    ASSERT_TRUE(editor.awaitSaid(a, "2:needless-bound"));
    editor.change(a, {{{"range", rangeOf(0, 0, 0, 0)}, {"text", "\n\n"}}}, 2);
    const Json moved = editor.await("textDocument/publishDiagnostics");
    EXPECT_EQ(support::brieflyOf(moved["params"]["diagnostics"]), "4:needless-bound");
    EXPECT_EQ(moved["params"]["version"], 2);
    const int property = static_cast<int>(hint.find("property"));
    editor.change(a, {{{"range", rangeOf(3, property + 3, 3, property + 3)}, {"text", "x"}}}, 3);
    EXPECT_EQ(support::brieflyOf(editor.await("textDocument/publishDiagnostics")["params"]["diagnostics"]),
              "4:misspelt-word");
    editor.change(a, {{{"text", libraryOf(hint)}}}, 4);
    ASSERT_TRUE(editor.awaitSaid(a, "2:needless-bound"));
    // What is closed is as its file, which the editor may not have saved.
    editor.notify("textDocument/didClose", {{"textDocument", {{"uri", a}}}});
    EXPECT_EQ(support::brieflyOf(editor.await("textDocument/publishDiagnostics")["params"]["diagnostics"]),
              "2:needless-bound");
    editor.open(a, libraryOf(hint));
    editor.change(a, {{{"text", libraryOf(gate)}}}, 5);
    ASSERT_TRUE(editor.awaitSaid(a, ""));
    editor.notify("textDocument/didClose", {{"textDocument", {{"uri", a}}}});
    EXPECT_TRUE(editor.awaitSaid(a, "2:needless-bound"));
    // And what its file says changes with the file.
    folder.write("a.btl", libraryOf("\n" + hint));
    editor.notify("workspace/didChangeWatchedFiles", {{"changes", {{{"uri", a}, {"type", 2}}}}});
    EXPECT_TRUE(editor.awaitSaid(a, "3:needless-bound"));
    folder.write(".ntl.cfg", "rules = { only = [ \"no-group\" ]; };\n");
    editor.notify("workspace/didChangeWatchedFiles", {{"changes", {{{"uri", uri(".ntl.cfg")}, {"type", 2}}}}});
    EXPECT_TRUE(editor.awaitSaid(a, ""));
    // A text that was never saved leaves nothing behind.
    const std::string other = "file://" + folder.makeDir("other") + "/b.btl";
    editor.open(other, "library \"L\" { block \"A\" { pin \"D\" input; pin \"D\" input; } }");
    EXPECT_TRUE(editor.awaitSaid(other, "1:pin-redefined"));
    editor.notify("textDocument/didClose", {{"textDocument", {{"uri", other}}}});
    EXPECT_TRUE(editor.awaitSaid(other, ""));
    EXPECT_TRUE(editor.await("textDocument/publishDiagnostics", 1000).is_null());
    editor.request("shutdown").notify("exit");
    EXPECT_EQ(editor.end(), 0);
}

TEST_F(ServerLibraries, RelatedPlacesMoveWithTheText) {
    write({{".ntl.cfg", quiet}});
    const std::string a = uri("a.btl");
    Editor editor;
    editor.initialize({{"textDocument", {{"publishDiagnostics", {{"relatedInformation", true}}}}}})
        .open(a, libraryOf(gate + "\n" + gate));
    ASSERT_TRUE(editor.awaitSaid(a, "3:block-redefined"));
    for (const int line : {3, 5}) {
        editor.change(a, {{{"range", rangeOf(0, 0, 0, 0)}, {"text", "\n\n"}}}, line);
        const Json moved = editor.await("textDocument/publishDiagnostics")["params"]["diagnostics"];
        EXPECT_EQ(moved.at(0)["relatedInformation"].at(0)["location"]["range"], rangeOf(line, 0, line, 52)) << moved;
    }
    editor.request("shutdown").notify("exit");
    EXPECT_EQ(editor.end(), 0);
}

TEST_F(ServerLibraries, NewerChangesEndOlderWorkers) {
    const std::string a = uri("a.btl");
    Editor editor;
    editor.initialize().open(a, endless());
    pid_t worker = editor.awaitWorker();
    for (int version = 2; version < 6; ++version) {
        ASSERT_GT(worker, 0);
        editor.change(a, {{{"range", rangeOf(0, 0, 0, 0)}, {"text", "\n"}}}, version).ask("foldingRange", a);
        EXPECT_FALSE(editor.await([](const Json& message) { return message.contains("result"); }).is_null());
        const pid_t before = worker;
        worker = editor.awaitWorker(before);
        EXPECT_NE(kill(before, 0), 0);
    }
    editor.notify("textDocument/didSave", {{"textDocument", {{"uri", a}}}});
    EXPECT_GT(editor.awaitWorker(worker), 0);
    editor.request("shutdown").notify("exit");
    EXPECT_EQ(editor.end(), 0);
}

TEST_F(ServerLibraries, WorkersThatDieAreSaidOnce) {
    const std::string a = uri("a.btl");
    Editor editor;
    editor.initialize().open(a, endless() + "}");
    for (int version = 2; version < 4; ++version) {
        const pid_t worker = editor.awaitWorker();
        ASSERT_GT(worker, 0);
        ASSERT_EQ(kill(worker, SIGKILL), 0);
        const Json logged = editor.await("window/logMessage", version == 2 ? 20000 : 1000);
        const std::string said = folder.path() + " is not judged: killed by signal 9 (Killed)";
        EXPECT_EQ(logged, version > 2 ? Json()
                                      : Json({{"jsonrpc", "2.0"},
                                              {"method", "window/logMessage"},
                                              {"params", {{"type", 2}, {"message", said}}}}));
        editor.change(a, {{{"range", rangeOf(0, 0, 0, 0)}, {"text", " "}}}, version);
    }
    EXPECT_EQ(editor.said(a), "5:stray-brace");
    editor.request("shutdown").notify("exit");
    EXPECT_EQ(editor.end(), 0);
}

TEST_F(ServerLibraries, LongWorkIsShown) {
    const Json capabilities = {{"window", {{"workDoneProgress", true}}},
                               {"workspace", {{"didChangeWatchedFiles", {{"dynamicRegistration", true}}}}}};
    const std::string a = uri("a.btl");
    Editor editor;
    editor.initialize(capabilities).open(a, endless());
    const Json registration = editor.await("client/registerCapability");
    EXPECT_EQ(registration["params"]["registrations"][0]["registerOptions"]["watchers"],
              (Json{{{"globPattern", "**/*.btl"}}, {{"globPattern", "**/.ntl.cfg"}}}));
    editor.answer(registration);
    const Json create = editor.await("window/workDoneProgress/create");
    EXPECT_TRUE(editor.await("$/progress", 200).is_null());
    editor.answer(create);
    EXPECT_EQ(editor.await("$/progress")["params"]["value"]["kind"], "begin");
    editor.change(a, {{{"text", ""}}});
    const Json end = editor.await("$/progress");
    EXPECT_EQ(end["params"], (Json{{"token", create["params"]["token"]}, {"value", {{"kind", "end"}}}}));
    editor.notify("exit");
    EXPECT_EQ(editor.end(), 1);
}

// A client that writes all before it reads anything.
TEST_F(ServerLibraries, OutputWaitsForTheReader) {
    std::string blocks;
    for (int i = 0; i < 1000; ++i) blocks += "block \"B" + std::to_string(i) + "\" { pin \"A\" input; }\n";
    Editor editor;
    alarm(120);
    editor.initialize().open("a", libraryOf(blocks));
    for (int i = 0; i < 15; ++i) editor.change("a", {{{"text", libraryOf(blocks)}}}, i).ask("documentSymbol", "a");
    editor.request("shutdown").notify("exit");
    EXPECT_EQ(editor.end(), 0);
    EXPECT_EQ(editor.messages.size(), 1U + 1 + 15 * 2 + 1);
}

TEST_F(ServerLibraries, ManyDiagnosticsAndManyChanges) {
    std::string faults;
    for (int i = 0; i < 1500; ++i) faults += "block \"B\" { pin \"A\" input }\n";
    const auto messages = Dialogue()
                              .initialize()
                              .open("a", "")
                              .open("b", "")
                              .change("a", {{{"text", "{"}}}, 2)
                              .change("b", {{{"text", "{"}}}, 2)
                              .change("a", {{{"text", libraryOf(faults)}}}, 3)
                              .ask("foldingRange", "b")
                              .run();
    ASSERT_EQ(support::briefly(messages), "1 result, textDocument/publishDiagnostics, textDocument/publishDiagnostics, "
                                          "textDocument/publishDiagnostics, textDocument/publishDiagnostics, 2 result");
    EXPECT_EQ(messages[3]["params"]["version"], 3);
    const Json& list = messages[3]["params"]["diagnostics"];
    ASSERT_EQ(list.size(), 500U);
    EXPECT_EQ(list[499]["message"], "1001 more are not shown");
}
