// The command from outside; the texts themselves have tests of their own.
#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::string>;

const std::string declared = "  pin \"I\" input;\n  pin \"O\" output;\n";
const std::string broken = libraryOf("block \"HOLD\" { pin \"IO\" }");

struct PrintCommandTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};

    Outcome print(Arguments arguments) {
        arguments.insert(arguments.begin(), "print");
        return ntl.run(arguments);
    }
};

bool has(const std::string& text, const std::string& what) { return text.find(what) != text.npos; }

} // namespace

TEST_F(PrintCommandTest, ASourceReadsBackToTheSameLibrary) {
    directory.makeDir("parts");
    directory.makeDir("from");
    directory.write("parts/pins.btl", declared);
    directory.write("from/1.btl",
                    libraryOf("block \"GATE_BUFFER\" { INLINE pins.btl ;\n"
                              "property 8'h \"H\" { default = 8'h0A } }\n"
                              "block \"PROBE\" { test = true; property double \"D\" { default = 0.1 } }"));
    directory.write("from/2.btl", libraryOf("block \"GATE_BUFFER\" retargetsto { signal \"s\" : \"I\", \"O\"; }\n"
                                            "block \"GATE_INVERT\" mapsto { signal \"s\" : \"I\"; }"));
    for (const bool source : {false, true}) {
        const Outcome outcome =
            print(source ? Arguments{"--source", "from", "-I", "parts"} : Arguments{"from", "-I", "parts"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out.find("library \"l\""), 0U) << outcome.out;
        EXPECT_FALSE(has(outcome.out + outcome.err, "Loading File"));
        EXPECT_TRUE(has(outcome.err, "from/2.btl:3:1: warning: mapping of block \"GATE_INVERT\" is dropped: "));
        EXPECT_TRUE(has(outcome.out, "block \"PROBE\"")) << outcome.out;
        EXPECT_EQ(has(outcome.out, "default = 8'h0A"), source) << outcome.out;
        directory.write("written.btl", outcome.out);
    }
    EXPECT_EQ(ntl.run({"check", "written.btl"}).out, "written.btl: 2 blocks, no errors, 1 warning\n");
    const Outcome difference = ntl.run({"diff", "-I", "parts", "from", "written.btl"});
    EXPECT_EQ(difference.out, "no differences\n");
    EXPECT_EQ(difference.status, 0);
    EXPECT_EQ(print({"--source", "written.btl"}).out, readFile(directory.path("written.btl")));
    EXPECT_FALSE(has(print({"from", "--param", "arch.enableTestFeatures=false"}).out, "PROBE"));
}

TEST_F(PrintCommandTest, WhatFailsWritesNothing) {
    directory.makeDir("data/maplib");
    directory.write("data/maplib/HOLD.btl", broken);
    directory.write("good.btl", libraryOf("block \"GATE_BUFFER\" { } block \"HOLD\" { }"));
    directory.write("faulty.btl", broken);
    const Arguments withMaps = {"--data", "data", "--param", "ntl.enableMapLib=true", "good.btl"};
    const struct {
        Arguments arguments;
        int status;
        const char* lastLine;
    } cases[] = {
        {{"faulty.btl"}, 1, "ntl: faulty.btl: 1 error"},
        {{"--source", "faulty.btl"}, 1, "ntl: faulty.btl: 1 error"},
        {{"--parent", "faulty.btl", "good.btl"}, 1, "ntl: faulty.btl: 1 error"},
        {{"--parent", "missing.btl", "good.btl"}, 2, "ntl: missing.btl: cannot be opened: No such file or directory"},
        {withMaps, 1, "ntl: HOLD: Invalid maplib ntl file: HOLD"},
    };
    for (const auto& [arguments, status, lastLine] : cases) {
        const Outcome outcome = print(arguments);
        EXPECT_EQ(outcome.status, status) << lastLine;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(linesOf(outcome.err).back(), lastLine);
    }
}

TEST_F(PrintCommandTest, SourceIsWhatTheLibraryItselfHolds) {
    directory.makeDir("data/maplib");
    directory.write("data/maplib/HOLD.btl", libraryOf("block \"HOLD\" mapsto { inst \"mapped\" \"HOLD\"; }"));
    directory.write("parent.btl", libraryOf("block \"GATE_BUFFER\" {\n" + declared + "}"));
    directory.write("child.btl", libraryOf("block \"HOLD\" { }\nblock \"GATE_BUFFER\" mapsto { signal \"given\"; }"));
    const Arguments common = {"--data", "data", "--parent", "parent.btl", "child.btl"};
    for (const auto& [more, mapped, parents] : {std::tuple{Arguments{}, false, true},
                                                {{"--param", "ntl.enableMapLib=true"}, true, true},
                                                {{"--param", "ntl.enableMapLib=true", "--source"}, false, false}}) {
        Arguments arguments = common;
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = print(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(has(outcome.out, "block \"HOLD\""));
        EXPECT_EQ(has(outcome.out, "inst \"mapped\""), mapped) << outcome.out;
        EXPECT_EQ(has(outcome.out, "signal \"given\""), parents) << outcome.out;
        EXPECT_EQ(outcome.err,
                  parents ? "" : "ntl: the mapping of block 'GATE_BUFFER' of a parent library is not written\n");
    }
}
