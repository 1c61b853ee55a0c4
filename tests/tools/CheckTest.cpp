#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>

namespace {

const std::string data = NTL_SOURCE_DIR "/data";
const std::string goodText = libraryOf(R"(block "GATE_AND_2" { pin "I" input; pin "O" output; })");
const std::string badText = libraryOf(R"(block "GATE_AND_2" { pin "O" output tieLow; })");
const std::string badReport = R"(
*** Error line 2.
file: bad.btl line: 2.
block "GATE_AND_2" { pin "O" output tieLow; }
                     ^^^^^^^^^^^^^^^^^^^^^^
*** Invalid tieoff of output pin "O"

)";

size_t linesIn(const std::string& folder, const std::string& start, const std::string& end) {
    size_t count = 0;
    const auto isMeant = [&](const std::string& line) {
        return line.size() >= start.size() + end.size() && line.compare(0, start.size(), start) == 0 &&
               line.compare(line.size() - end.size(), end.size(), end) == 0;
    };
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        for (const std::string& line : linesOf(readFile(entry.path()))) count += isMeant(line);
    return count;
}

struct CheckTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.write("good.btl", goodText);
        directory.write("bad.btl", badText);
    }
};

} // namespace

TEST_F(CheckTest, ShippedDataIsGood) {
    const std::string shared = std::filesystem::canonical(data).string();
    const auto blocksIn = [](const std::string& folder) { return linesIn(data + folder, "  block \"", "\" {"); };
    const size_t common = blocksIn("/tessels") + blocksIn("/tessels.test");
    const Outcome checked = ntl.run({"check"});
    EXPECT_EQ(checked.status, 0);
    EXPECT_EQ(checked.err, "");
    const std::vector<std::string> lines = linesOf(checked.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], shared + "/tessels: " + std::to_string(common) + " blocks, no errors");
    EXPECT_EQ(lines[1].find(shared + "/simulation.btl: "), 0U);

    const Outcome without = ntl.run({"check", "--param", "arch.enableTestFeatures=false"});
    EXPECT_EQ(without.status, 0);
    const size_t ordinary = blocksIn("/tessels") - linesIn(data + "/tessels", "    test = true;", "");
    EXPECT_EQ(linesOf(without.out)[0], shared + "/tessels: " + std::to_string(ordinary) + " blocks, no errors");
}

TEST_F(CheckTest, ThreeFaultsAreReportedAsTheyStand) {
    directory.write("three_faults.btl", readFile(data + "/examples/three_faults.btl"));
    const Outcome outcome = ntl.run({"check", "three_faults.btl"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, R"(
*** Error line 10.
file: three_faults.btl line: 10.
    pin "D[3]"   input  data  tieLow;
    ^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^
*** Pin D[3] is being redefined.


*** Error line 17.
file: three_faults.btl line: 17.
    pin "O" output data tieLow;
    ^^^^^^^^^^^^^^^^^^^^^^^^^^^
*** Invalid tieoff of output pin "O"


*** Error line 26.
file: three_faults.btl line: 26.
    property 8'h "POLYNOMIAL" { values { 8'h48, 8'h60 }, default = 8'h50 }
    ^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^
*** Property POLYNOMIAL default value not one of allowed values.

ntl: three_faults.btl: 3 errors
)");
}

TEST_F(CheckTest, OneInputDoesNotSpoilTheNext) {
    const Outcome outcome = ntl.run({"check", "bad.btl", "good.btl"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "good.btl: 1 block, no errors\n2 libraries: 1 with errors\n");
    EXPECT_EQ(outcome.err, badReport + "ntl: bad.btl: 1 error\n");
}

TEST_F(CheckTest, OutputDoesNotDependOnTheNumberOfWorkers) {
    std::vector<std::string> arguments = {"check", "-j1"};
    for (int i = 0; i < 12; ++i) {
        const std::string name = "input" + std::to_string(i) + ".btl";
        std::string blocks;
        for (int block = 0; block < (12 - i) * 40; ++block)
            blocks += "block \"OWN_" + std::to_string(block) + "\" { pin \"I\" input; }\n";
        directory.write(name, i % 3 == 1 ? badText : libraryOf(blocks));
        arguments.push_back(name);
    }
    const Outcome one = ntl.run(arguments);
    arguments[1] = "-j5";
    const Outcome five = ntl.run(arguments);
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(five.status, 1);
    EXPECT_EQ(one.out, five.out);
    EXPECT_EQ(one.err, five.err);
    EXPECT_EQ(linesOf(one.out).front(), "input0.btl: 480 blocks, no errors, 480 warnings");
    EXPECT_EQ(linesOf(one.out).size(), 9U);
    EXPECT_EQ(linesOf(one.out).back(), "12 libraries: 4 with errors, 2,080 warnings");
}

TEST_F(CheckTest, InputsOfEveryKind) {
    const struct {
        std::string name;
        std::string text;
        int status;
        std::string out;
        std::string lastLine; // of standard error
    } cases[] = {
        {"good.btl", goodText, 0, "good.btl: 1 block, no errors\n", ""},
        {"empty.btl", "", 1, "", "ntl: empty.btl: 1 error"},
        {"blank.btl", "\n\n", 1, "", "ntl: blank.btl: 1 error"},
        {"nothing.btl", libraryOf(""), 0, "nothing.btl: 0 blocks, no errors\n", ""},
        {"crlf.btl", "library \"l\" {\r\n}\r\n", 1, "", "ntl: crlf.btl: 1 error"},
        {"nul.btl", libraryOf(std::string("block \"GATE_AND_2\" { pin \"I\" input; \0 }", 39)), 1, "",
         "ntl: nul.btl: 1 error"},
        {"cut.btl", std::string("\x1f\x8b\x08\x00\x00\x00\x00\x00", 8), 2, "",
         "ntl: cut.btl: cannot be opened: archive is cut short"},
        {"order.btl", libraryOf(R"(block "HOLD" { pin "A" internal; pin "B" input; })"), 1, "",
         "ntl: order.btl: Internal pins must be last in list, in tessel HOLD"},
        {"two words #$.btl", goodText, 0, "two words #$.btl: 1 block, no errors\n", ""},
        {"control\x1b[1m.btl", goodText, 0, "control\\x1b[1m.btl: 1 block, no errors\n", ""},
        {"[a,b].btl", goodText, 0, "[a,b].btl: 1 block, no errors\n", ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        directory.write(each.name, each.text);
        const Outcome outcome = ntl.run({"check", each.name});
        EXPECT_EQ(outcome.status, each.status);
        EXPECT_EQ(outcome.out, each.out);
        const std::vector<std::string> lines = linesOf(outcome.err);
        EXPECT_EQ(lines.empty(), each.status == 0);
        if (!lines.empty()) {
            EXPECT_EQ(lines.back(), each.lastLine);
        }
    }
}

TEST_F(CheckTest, WhatCannotBeOpened) {
    directory.makeDir("folder/inner.btl");
    for (const char* const name : {"missing.btl", "folder", "good.btl/below"}) {
        SCOPED_TRACE(name);
        const Outcome outcome = ntl.run({"check", "good.btl", name});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "good.btl: 1 block, no errors\n2 libraries: 1 with errors\n");
        EXPECT_NE(linesOf(outcome.err).back().find("cannot be opened: "), std::string::npos);
    }
}

TEST_F(CheckTest, QuietSaysOnlyWhatIsWrong) {
    directory.write("warns.btl", libraryOf("block \"OWN\" { }"));
    const Outcome both = ntl.run({"check", "good.btl", "warns.btl"});
    EXPECT_EQ(linesOf(both.out).back(), "2 libraries: no errors, 1 warning");
    const Outcome quiet = ntl.run({"check", "-q", "good.btl", "warns.btl", "bad.btl"});
    EXPECT_EQ(quiet.out, "");
    EXPECT_EQ(quiet.err, both.err + badReport + "ntl: bad.btl: 1 error\n");
    EXPECT_EQ(quiet.status, 1);
    EXPECT_EQ(linesOf(ntl.run({"check", "--werror", "good.btl", "warns.btl"}).out).back(),
              "2 libraries: 1 with errors, 1 warning");
    EXPECT_EQ(Json::parse(ntl.run({"check", "--quiet", "--format=json", "good.btl"}).out)["inputs"].size(), 1U);
}

TEST_F(CheckTest, ReadsStandardInput) {
    ntl.standardInput = directory.path("good.btl");
    EXPECT_EQ(ntl.run({"check", "-"}).out, "-: 1 block, no errors\n");
    EXPECT_EQ(linesOf(ntl.run({"print", "-"}).out).front(), "library \"l\"");
    EXPECT_EQ(ntl.run({"check", "-", "-"}).status, 2);
    ASSERT_EQ(ntl.run({"check", "-", "--depfile", "check.d"}).status, 0);
    EXPECT_EQ(readFile(directory.path("check.d")), "check.d:\n");
    ntl.standardInput = directory.path("bad.btl");
    const Outcome bad = ntl.run({"check", "-", "good.btl"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("file: /dev/stdin line: 2."), std::string::npos) << bad.err;
    EXPECT_EQ(linesOf(bad.out).front(), "good.btl: 1 block, no errors");
}

// What comes through a pipe can be read once only, but has the same places.
TEST_F(CheckTest, FindingsOfAPipeHaveColumns) {
    const std::string text = libraryOf("\tblock \"MY_GLUE\" { pin \"A\" input;\n  pin \"a\" input; }");
    directory.write("warns.btl", text);
    const auto saidOf = [&](const std::string& format, const std::string& name) {
        const Outcome outcome = ntl.run({"lint", "--format", format, name});
        return std::regex_replace(outcome.out + outcome.err, std::regex("/dev/stdin|warns\\.btl|(^|\")-(?=[:\"])"),
                                  "$1X");
    };
    for (const char* const format : {"text", "short", "json"}) {
        const std::string ofFile = saidOf(format, "warns.btl");
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(ends[1]);
        ntl.standardInput = "/dev/fd/" + std::to_string(ends[0]);
        EXPECT_EQ(saidOf(format, "-"), ofFile);
        EXPECT_NE(ofFile.find("unregistered-block"), ofFile.npos);
        close(ends[0]);
    }
}

// A file from elsewhere has a fault in each line: all are reported, in order, before the tool's own lines.
TEST_F(CheckTest, ReportsOfEachLineOfALongFile) {
    constexpr int lines = 5000;
    std::string text = "library \"l\" {\r\n";
    for (int i = 2; i < lines; ++i) text += "\r\n";
    directory.write("returns.btl", text + "}\r\n");
    const std::string err = ntl.run({"check", "returns.btl"}).err;
    size_t at = 0;
    for (int line = 1; line <= lines; ++line) {
        const std::string report = "\n*** Error line " + std::to_string(line) + ".\nfile: returns.btl line: ";
        at = err.find("\n*** Error line", at);
        ASSERT_EQ(err.compare(std::min(at, err.size()), report.size(), report), 0) << line;
        ++at;
    }
    EXPECT_EQ(linesOf(err).back(), "ntl: returns.btl: 1 error");
    EXPECT_GT(err.find("[carriage-return]"), at);
    EXPECT_EQ(countOf(ntl.run({"check", "--format", "short", "returns.btl"}).out, "\n"), 1U);
    const Json json = Json::parse(ntl.run({"check", "--format", "json", "returns.btl"}).out);
    EXPECT_EQ(json["inputs"][0]["diagnostics"].size(), lines + 1U);
}

TEST_F(CheckTest, AFolderWithoutLibrariesIsSaidToBeEmpty) {
    directory.makeDir("folder/below.btl.d");
    directory.write("folder/notes.txt", "not NTL");
    const std::vector<std::vector<std::string>> cases = {{"check", "folder"},
                                                         {"check", "--parent", "folder", "good.btl"},
                                                         {"list", "-l", "folder"},
                                                         {"print", "folder"},
                                                         {"diff", "good.btl", "folder"},
                                                         {"format", "folder"}};
    for (const std::vector<std::string>& arguments : cases) {
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments[0];
        EXPECT_NE(outcome.err.find("folder: holds no .btl file\n"), std::string::npos) << outcome.err;
    }
}

TEST_F(CheckTest, FoldersAreOneLibrary) {
    directory.makeDir("folder");
    directory.write("folder/b.btl", badText);
    directory.write("folder/a.btl", goodText);
    directory.write("folder/notes.txt", "not NTL");
    const Outcome clash = ntl.run({"check", "folder"});
    EXPECT_EQ(clash.status, 1);
    EXPECT_NE(clash.err.find("has already been defined at location 2"), std::string::npos);
    EXPECT_EQ(linesOf(clash.err).back(), "ntl: folder: 2 errors");

    directory.write("folder/b.btl", libraryOf(R"(block "GATE_INVERT" { pin "I" input; })"));
    EXPECT_EQ(ntl.run({"check", "folder"}).out, "folder: 2 blocks, no errors\n");
}

TEST_F(CheckTest, MappingsFindBlocksOfEarlierFiles) {
    const std::vector<std::string> names = {"GATE_AND_2", "GATE_INVERT", "HOLD"};
    std::string blocks;
    std::string mappings;
    for (const std::string& name : names) {
        blocks += "block \"" + name + "\" { pin \"I\" input; pin \"O\" output; }\n";
        mappings += "block \"" + name + "\" expandsto { signal \"s\" : \"I\", \"O\"; }\n";
    }
    const auto expectMappings = [&](const Json& section) {
        const Json list = Json::parse(ntl.run({"list", "-l", "folder", "--json"}).out);
        EXPECT_EQ(list["blocks"].size(), names.size());
        for (const Json& block : list["blocks"]) EXPECT_EQ(block["section"], section);
    };
    directory.makeDir("folder");
    directory.write("folder/a.btl", libraryOf(blocks));
    directory.write("folder/b.btl", libraryOf(mappings));
    EXPECT_EQ(ntl.run({"check", "folder"}).out, "folder: 3 blocks, no errors\n");
    expectMappings("expandsto");

    directory.write("folder/a.btl", libraryOf(mappings));
    directory.write("folder/b.btl", libraryOf(blocks));
    const Outcome swapped = ntl.run({"check", "folder"});
    EXPECT_EQ(swapped.status, 0);
    EXPECT_EQ(swapped.out, "folder: 3 blocks, no errors, 3 warnings\n");
    std::string expected;
    for (size_t i = 0; i < names.size(); ++i)
        expected += "folder/a.btl:" + std::to_string(i + 2) + ":1: warning: mapping of block \"" + names[i] +
                    "\" is dropped: no block of that name was declared before [dropped-mapping]\n";
    EXPECT_EQ(swapped.err, expected);
    expectMappings(nullptr);
}

// The simulation library stands on the common one, whose faults are said once.
TEST_F(CheckTest, ABrokenCommonLibraryIsReportedOnce) {
    directory.makeDir("data/tessels");
    directory.write("data/tessels/a.btl", libraryOf("block \"HOLD\" { pin \"A\" input; pin \"A\" input; }"));
    directory.write("data/simulation.btl", libraryOf("block \"GATE_AND_2\" { pin \"A\" input; }"));
    const Outcome outcome = ntl.run({"--data", "data", "check"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find("is being redefined"), outcome.err.rfind("is being redefined")) << outcome.err;
    const std::vector<std::string> lines = linesOf(outcome.err);
    EXPECT_EQ(
        std::vector(lines.end() - 2, lines.end()),
        (std::vector<std::string>{"ntl: data/tessels: 1 error",
                                  "ntl: data/simulation.btl: not checked, since the library below it has errors"}));
}

TEST_F(CheckTest, FilesAreFoundInSearchDirectories) {
    directory.makeDir("parts");
    directory.write("parts/gate.inc", R"(block "GATE_INVERT" { pin "I" input; })");
    directory.write("main.btl", libraryOf("INCLUDE gate.inc ;"));
    for (const bool byOption : {true, false}) {
        if (!byOption) ntl.environment["NTL_PATH"] = "nowhere:parts";
        const Outcome outcome =
            byOption ? ntl.run({"check", "-I", "parts", "main.btl"}) : ntl.run({"check", "main.btl"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, "main.btl: 1 block, no errors\n");
        EXPECT_EQ(outcome.err, "");
    }
    directory.write("syntax.btl", "library \"l\" {\n  block 7\n}\n");
    const Outcome syntax = ntl.run({"check", "syntax.btl"});
    EXPECT_EQ(syntax.out, "");
    EXPECT_NE(syntax.err.find("1: library \"l\" {\n2:   block 7\n"), std::string::npos);
}

TEST_F(CheckTest, Parents) {
    EXPECT_EQ(ntl.run({"check", "--parent", "common", "good.btl"}).out, "good.btl: 1 block, no errors\n");
    EXPECT_EQ(ntl.run({"check", "--parent", "good.btl", "good.btl"}).status, 0);
    const Outcome broken = ntl.run({"check", "--parent", "bad.btl", "good.btl", "good.btl"});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.out, "");
    EXPECT_EQ(broken.err, badReport + "ntl: bad.btl: 1 error\n");
    EXPECT_EQ(ntl.run({"check", "--parent", "missing.btl", "good.btl"}).status, 2);
    directory.write(".ntl.cfg", "parents = [ \"bad.btl\" ];\n");
    const Outcome project = ntl.run({"check", "good.btl"});
    EXPECT_EQ(project.err, badReport + "ntl: good.btl: parent library: bad.btl: 1 error\n");
    EXPECT_EQ(project.status, 1);
}

TEST_F(CheckTest, TablesOfCellsAreAddedToTheOneBuiltIn) {
    directory.write("own.btl", libraryOf("block \"GLUE\" { }\nblock \"GLUE_2\" { }"));
    directory.write("first.csv", "1800,GLUE\n");
    directory.write("second.csv", "1801,GLUE_2\n");
    directory.write("wrong.csv", "1801,GLUE_3\n");
    EXPECT_EQ(countOf(ntl.run({"check", "own.btl"}).err, "[unregistered-block]"), 2U);
    EXPECT_EQ(countOf(ntl.run({"check", "own.btl", "--cells", "first.csv"}).err, "[unregistered-block]"), 1U);
    ntl.environment["HDNT_CELLVIEWS"] = "second.csv";
    EXPECT_EQ(ntl.run({"check", "--werror", "own.btl", "--cells", "first.csv"}).status, 0);
    const Outcome refused = ntl.run({"check", "own.btl", "--cells", "wrong.csv"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "ntl: second.csv:1: value 1801 of GLUE_2 is that of GLUE_3 already\n");
}

TEST_F(CheckTest, LimitsAndRoot) {
    directory.makeDir("parts");
    directory.write("parts/gate.inc", R"(block "GATE_INVERT" { pin "I" input; })");
    directory.write("main.btl", libraryOf("INCLUDE gate.inc ;\nblock \"HOLD\" { pin \"A[9:0]\" input; }"));
    directory.makeDir("elsewhere");
    EXPECT_EQ(ntl.run({"check", "-Iparts", "--werror", "main.btl"}).status, 0);
    const Outcome root = ntl.run({"check", "-Iparts", "--werror", "--root", "elsewhere", "main.btl"});
    EXPECT_EQ(root.status, 1);
    EXPECT_NE(root.err.find("[include-not-opened]"), std::string::npos);
    EXPECT_EQ(linesOf(root.err).back(), "ntl: main.btl: 1 warning (--werror)");
    const Outcome range = ntl.run({"--limit", "rangeElements=9", "check", "-Iparts", "main.btl"});
    EXPECT_EQ(range.status, 1);
    EXPECT_NE(range.err.find("more than 9 (limit rangeElements)"), std::string::npos);
    EXPECT_EQ(ntl.run({"check", "--limit=rangeElements=10", "-Iparts", "main.btl"}).status, 0);
}

TEST_F(CheckTest, FilesOfSomeoneElse) {
    directory.makeDir("own");
    directory.write("secret.inc", "a secret");
    directory.write("own/.ntl.cfg", "rules = 3;");
    directory.write("own/gate.inc", R"(block "GATE_INVERT" { pin "I" input; })");
    directory.write("own/main.btl", libraryOf("INCLUDE gate.inc ;\nINLINE ../secret.inc ;"));
    const Outcome trusted = ntl.run({"check", "-Iown", "--no-project", "own/main.btl"});
    EXPECT_NE(trusted.err.find("secret"), std::string::npos);
    EXPECT_EQ(trusted.status, 1);
    const Outcome mistrusted = ntl.run({"check", "--untrusted", "-Iown", "own/main.btl"});
    EXPECT_EQ(mistrusted.err.find("a secret"), std::string::npos);
    EXPECT_NE(mistrusted.err.find("not below the folder of own/main.btl (limit ownFolderOnly) [include-not-opened]"),
              std::string::npos)
        << mistrusted.err;
    EXPECT_EQ(mistrusted.status, 0);
    ASSERT_EQ(mkfifo(directory.path("own/pipe.inc").c_str(), 0600), 0); // an opening that does not come back
    directory.write("own/slow.btl", libraryOf("INCLUDE pipe.inc ;"));
    const Outcome slow =
        ntl.run({"check", "--untrusted", "--limit=seconds=1", "-Iown", "own/slow.btl", "own/main.btl"});
    EXPECT_EQ(slow.status, 1);
    EXPECT_NE(slow.err.find("own/slow.btl: ended, since the limit seconds is over"), std::string::npos) << slow.err;
    EXPECT_NE(slow.out.find("own/main.btl: 1 block"), std::string::npos);
    const Outcome print = ntl.run({"print", "--limit=seconds=1", "-Iown", "own/slow.btl"});
    EXPECT_EQ(print.err, "ntl: more time than the limit seconds allows\n");
    EXPECT_EQ(print.status, 2);
}
