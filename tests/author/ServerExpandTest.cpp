#include "tests/author/Desk.h"
#include "tests/author/Editor.h"
#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <utility>

// What mappings become, in a process beside the one that answers.
namespace {

using support::Desk;
using support::Json;

Json expand(const std::string& uri, const std::string& block) {
    return {{"command", "ntl.expand"}, {"arguments", {{{"uri", uri}, {"block", block}}}}};
}

const std::string mapped =
    "library \"L\" {\n"
    "  function int intProperty(string);\n"
    "  block \"USER\" { pin \"I\" input; property int \"N\" { values { 1, 5 }, default = 1 } } mapsto {\n"
    "    inst \"g\" \"GATE\"; signal \"s\" : \"I\", \"g\" \"A\";\n"
    "    if (intProperty(\"N\") > 4) inst \"h\" \"GATE\"; else { }\n"
    "  }\n";

} // namespace

TEST(ServerExpand, LensesOnMappings) {
    Desk desk;
    desk.open("a.btl", mapped + "  block \"OTHER\" { }\n  block \"oth\xc3\xa4r\" expandsto {\n  } block mapsto { ^");
    std::string lenses;
    for (const Json& lens : desk.result("textDocument/codeLens")) {
        EXPECT_EQ(lens["command"]["title"], "expand");
        EXPECT_EQ(lens["command"]["command"], "ntl.expand");
        const Json& argument = lens["command"]["arguments"].at(0);
        EXPECT_EQ(argument["uri"], desk.uri("a.btl"));
        lenses += desk.brief({{"uri", argument["uri"]}, {"range", lens["range"]}}) + " of " +
                  argument["block"].get<std::string>() + "; ";
    }
    EXPECT_EQ(lenses, "a.btl:2:\"USER\" of USER; a.btl:7:\"oth\xc3\xa4r\" of oth\xc3\xa4r; ");
}

// Of the text in the editor, over its parents, whatever is wrong elsewhere.
TEST(ServerExpand, EachResultWithItsSetting) {
    Desk desk;
    desk.file(".ntl.cfg", "parents = [ \"below/base.btl\" ];")
        .file("below/base.btl", "library \"base\" { block \"GATE\" { pin \"A\" input; } }")
        .file("a.btl", "library \"L\" { }")
        .file("b.btl", "library \"L\" { block \"FAULTY\" { pin } }")
        .open("a.btl", mapped + "  block \"WRONG\" { pin \"A\" } mapsto { ^ }\n  block \"ODD\" { pin \"P\" input; } "
                                "mapsto { signal \"s\" : \"Q\"; }\n}\n");
    const std::string common = "    inst \"g\" \"GATE\";            // a.btl:4\n"
                               "    signal \"s\" : \"I\", \"g\" \"A\";  // a.btl:4\n";
    const std::string other = "    inst \"g\" \"GATE\";            // a.btl:4\n"
                              "    inst \"h\" \"GATE\";            // a.btl:5, in then of if at a.btl:5\n"
                              "    signal \"s\" : \"I\", \"g\" \"A\";  // a.btl:4\n";
    const Json result = desk.result("workspace/executeCommand", expand(desk.uri("a.btl"), "user"));
    EXPECT_EQ(result["uri"], desk.uri("a.btl"));
    EXPECT_EQ(result["block"], "user");
    EXPECT_EQ(
        result["text"].get<std::string>(),
        "// With the defaults\nblock \"USER\" mapsto {           // a.btl:3\n    // if at a.btl:5 does not hold\n" +
            common + "}\n\n// With N = 5\nblock \"USER\" mapsto {           // a.btl:3; with N = 5\n" +
            "    // if at a.btl:5 holds\n" + other + "}\n");
    const std::string odd = desk.result("workspace/executeCommand", expand(desk.uri("a.btl"), "ODD"))["text"];
    EXPECT_EQ(odd.substr(0, odd.find("block")),
              "// With the defaults\n// " + desk.path("a.btl") + ":8:56: Block ODD has no pin Q.\n");

    const std::pair<std::string, std::string> refusals[] = {
        {"WRONG", "block 'WRONG' has faults: line 7: expected input, output, bidir or internal instead of '}'"},
        {"FAULTY", "block 'FAULTY' has faults: line 1: expected a text in quotes instead of '}'"},
        {"GATE", "block 'GATE' has no mapping"},
        {"NONE", "block 'NONE' is not declared"},
    };
    for (const auto& [block, reason] : refusals) {
        const Json answer = desk.ask("workspace/executeCommand", expand(desk.uri("a.btl"), block));
        EXPECT_EQ(answer["error"]["code"], -32803);
        EXPECT_EQ(answer["error"]["message"], reason);
    }
    // A project that cannot be followed, and one that tries less
    const auto withProject = [&](const std::string& project) {
        return desk.file(".ntl.cfg", project).ask("workspace/executeCommand", expand(desk.uri("a.btl"), "user"));
    };
    EXPECT_EQ(withProject("parents = [ \"none.btl\" ];")["error"]["message"],
              "Could not open file: " + desk.path("none.btl") + ": No such file or directory");
    EXPECT_EQ(withProject("parents = [ ")["error"]["message"],
              desk.path(".ntl.cfg") + ":1: syntax error; mend it here or just before");
    const std::string less = withProject("parents = [ \"below/base.btl\" ]; budget = 1;")["result"]["text"];
    EXPECT_TRUE(less.ends_with(common + "}\n\n// What other settings give is left out.\n")) << less;
}

TEST(ServerExpand, FunctionsOfTheHostAnswerEitherWay) {
    Desk desk;
    desk.open("a.btl", "library \"L\" { function bool host(int); block \"GATE\" { pin \"A\" input; }\n"
                       "block \"USER\" { pin \"I\" input; } mapsto { if (host(1)) inst \"g\" \"GATE\"; ^ } }\n");
    const std::string text = desk.result("workspace/executeCommand", expand(desk.uri("a.btl"), "USER"))["text"];
    const std::size_t other = text.find("// With host() = true");
    ASSERT_NE(other, text.npos) << text;
    EXPECT_EQ(text.substr(0, other).find("inst \"g\""), text.npos) << text;
    EXPECT_NE(text.find("inst \"g\"", other), text.npos) << text;
}

TEST(ServerExpand, NoMoreThanTwelve) {
    std::string text =
        "library \"L\" {\n function int intProperty(string);\n block \"USER\" { property int \"N\" { values { ";
    for (int i = 0; i < 20; ++i) text += std::to_string(i) + ", ";
    text += "20 }, default = 0 } } mapsto { inst \"g\" \"USER\"; assign block property \"g\" \"N\" intProperty(\"N\"); "
            "}\n}\n";
    support::Dialogue dialogue;
    dialogue.initialize()
        .open("untitled:new", text)
        .request("workspace/executeCommand", expand("untitled:new", "USER"));
    const std::string shown = dialogue.run().back()["result"]["text"];
    std::size_t count = 0;
    for (std::size_t at = shown.find("// With "); at != shown.npos; at = shown.find("// With ", at + 1)) ++count;
    EXPECT_EQ(count, 12U);
    EXPECT_TRUE(shown.ends_with("}\n\n// What other settings give is left out.\n")) << shown;
}

// A library that is never read to its end: others are answered meanwhile, and it ends alone.
TEST(ServerExpand, AnswersLater) {
    TempDir folder;
    mkfifo(folder.path("waits.inc").c_str(), 0600);
    const auto isAnswerTo = [](int id) {
        return [id](const Json& message) { return message.value("id", Json()) == id && !message.contains("method"); };
    };
    support::Editor editor;
    editor.initialize().open("untitled:a", mapped + "INCLUDE\n" + folder.path("waits.inc") + ";\n}\n");
    editor.open("untitled:b", "library \"L\" { block \"B\" { } mapsto { inst \"b\" \"B\"; } }");
    for (const auto& [uri, block] : {std::pair("untitled:a", "USER"), {"untitled:b", "B"}, {"untitled:a", "USER"}})
        editor.request("workspace/executeCommand", expand(uri, block));
    editor.ask("codeLens", "untitled:b");
    EXPECT_EQ(editor.await(isAnswerTo(5))["result"].size(), 1U);
    editor.notify("$/cancelRequest", {{"id", 2}});
    EXPECT_EQ(editor.await(isAnswerTo(2))["error"]["code"], -32800);
    EXPECT_EQ(editor.await(isAnswerTo(3))["result"]["block"], "B");
    const pid_t worker = editor.awaitWorker();
    ASSERT_GT(worker, 0);
    kill(worker, SIGKILL);
    const Json killed = editor.await(isAnswerTo(4))["error"];
    EXPECT_EQ(killed["code"], -32803);
    EXPECT_EQ(killed["message"], "block 'USER' is not expanded: killed by signal 9 (Killed)");
    editor.request("workspace/executeCommand", expand("untitled:a", "USER")).request("shutdown").notify("exit");
    EXPECT_EQ(editor.await(isAnswerTo(6))["error"]["code"], -32800);
    EXPECT_EQ(editor.end(), 0);
}
