#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

struct ExportTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};

    void SetUp() override {
        directory.write("one.btl", "library \"one\" { block \"HOLD\" { pin \"A\" input; } block \"a b\" { } "
                                   "block \"MOVE\" { pin \"O\" output; pin \"M\" internal; } }\n");
    }
    Outcome exported(std::vector<std::string> words) {
        words.insert(words.begin(), {"export", "-l", "one.btl"});
        return ntl.run(words);
    }
    std::string text(const std::string& name) const { return readFile(directory.path(name)); }
};

} // namespace

TEST_F(ExportTest, OrderOfNamesMakesNoDifference) {
    const Outcome both = exported({"verilog", "MOVE", "hold", "MOVE"});
    EXPECT_EQ(both.out, exported({"verilog", "HOLD", "move"}).out);
    EXPECT_LT(both.out.find("module HOLD"), both.out.find("module MOVE"));
    EXPECT_EQ(both.out.find("a\\x20b"), both.out.npos);
    EXPECT_EQ(both.err, "ntl: MOVE: M: internal, no port\n");
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(exported({"verilog", "HOLD"}).status, 0);
}

TEST_F(ExportTest, MappingsOfBlocksThatHaveThem) {
    directory.write("maps.btl", "library \"maps\" { function bool host(); block \"PLAIN\" { pin \"O\" output; } "
                                "block \"TIED\" { pin \"O\" output; } mapsto { signal \"@1\" : \"O\"; } "
                                "block \"ASKS\" { } mapsto { if (host()) { } } }\n");
    directory.write("few.btl", R"(library "few" { function int intProperty(string);
        block "GATE" { property int "M" { default = 1 } pin "A" input; }
        block "USER" { property int "N" { min = 1, max = 8, default = 2 } property int "L" { min = 0, max = 9, default = 3 }
            pin "A" input; } mapsto {
            inst "g" "GATE"; assign block property "g" "M" intProperty("N") + 1; signal "a" : "A", "g" "A"; } })");
    const std::string few = ntl.run({"export", "verilog-map", "-l", "few.btl"}).out;
    EXPECT_EQ(countOf(few, "if (!(N >= 1 && N <= 8)) begin : refused\n"), 1U) << few;
    EXPECT_EQ(countOf(few, "refused"), 1U) << "of what nothing depends on, every value will do";
    const auto exported = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"export", "verilog-map", "-l", "maps.btl"});
        return ntl.run(words);
    };
    const std::string asks = "ntl: ASKS: calls host(), which only the host can answer\n";
    EXPECT_EQ(exported({"TIED"}).status, 0);
    EXPECT_EQ(exported({"PLAIN", "ASKS"}).err, "ntl: PLAIN: no mapping\n" + asks);
    const Outcome split = exported({"--split", "maps"});
    EXPECT_EQ(split.err, asks);
    EXPECT_EQ(split.status, 1);
    EXPECT_EQ(text("maps/TIED.v"), exported({"TIED"}).out);
    EXPECT_FALSE(fs::exists(directory.path("maps/PLAIN.v")) || fs::exists(directory.path("maps/ASKS.v")));
}

TEST_F(ExportTest, MapLibrariesOfOthersCount) {
    directory.makeDir("data/maplib");
    directory.write("cells.btl", libraryOf("block \"GATE_BUFFER\" { pin \"A\" input; }\n"
                                           "block \"GATE_INVERT\" { pin \"A\" input; }"));
    const std::string maps = R"(library "x" { block "GATE_INVERT" mapsto { } block "GATE_BUFFER" mapsto { } })";
    directory.write("data/maplib/GATE_INVERT.btl", maps);
    const std::vector<std::string> words = {"export", "csv-blocks", "-l", "cells.btl", "--data", "data"};
    EXPECT_EQ(countOf(ntl.run(words).out, ",mapsto,"), 2U) << "that of the first is in the library of the second";
    directory.write("data/maplib/GATE_INVERT.btl", maps + std::string(1000, '\n'));
    std::vector<std::string> limited = words;
    limited.insert(limited.end(), {"--limit", "inputBytes=1000"});
    const Outcome broken = ntl.run(limited);
    EXPECT_NE(broken.out.find("GATE_INVERT"), std::string::npos);
    EXPECT_NE(broken.err.find("ntl: GATE_INVERT: mapping: "), std::string::npos) << broken.err;
    EXPECT_EQ(broken.status, 1);
}

TEST_F(ExportTest, FilesAreReplacedAsAWhole) {
    directory.write("out.v", "older");
    chmod(directory.path("out.v").c_str(), 0640);
    EXPECT_EQ(exported({"verilog", "HOLD", "-o", "out.v"}).out, "");
    EXPECT_EQ(text("out.v"), exported({"verilog", "HOLD"}).out);
    EXPECT_EQ(fs::status(directory.path("out.v")).permissions(), fs::perms(0640));
    EXPECT_EQ(exported({"verilog", "HOLD", "-o", "new.v"}).status, 0);
    EXPECT_EQ(text("new.v"), text("out.v"));
    EXPECT_EQ(exported({"verilog", "HOLD", "-o", "/dev/stdout"}).out, text("out.v"));
    EXPECT_EQ(exported({"verilog", "HOLD", "-o", "/dev/full"}).err,
              "ntl: /dev/full: cannot be written: No space left on device\n");
    EXPECT_NE(exported({"verilog", "-o", "none/out.v"}).err.find("cannot make a file beside it"), std::string::npos);
    EXPECT_EQ(exported({"verilog", "NOTHING", "-o", "out.v"}).status, 1);
    EXPECT_EQ(text("out.v"), text("new.v")) << "nothing was found, so nothing is written";
    for (const auto& entry : fs::directory_iterator(directory.path()))
        EXPECT_EQ(entry.path().string().find(".v."), std::string::npos) << entry.path();
}

TEST_F(ExportTest, SplitIntoFiles) {
    const auto names = [&](const std::string& folder) {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(directory.path(folder)))
            found.push_back(entry.path().filename());
        std::sort(found.begin(), found.end());
        return found;
    };
    EXPECT_EQ(exported({"csv", "--split", "a/tables"}).status, 0);
    EXPECT_EQ(names("a/tables"), (std::vector<std::string>{"blocks.csv", "pins.csv", "properties.csv"}));
    EXPECT_EQ(exported({"csv-pins", "--split", "pins"}).status, 0);
    EXPECT_EQ(names("pins"), (std::vector<std::string>{"HOLD.csv", "MOVE.csv", "a_b-e2bca18b.csv"}));
    EXPECT_EQ(exported({"vhdl", "--split", "packages"}).status, 1);
    EXPECT_EQ(text("packages/a_b-e2bca18b.vhd")
                  .find("-- Names that are not as the library has them:\n--     a b is \\a b\\\n"),
              0);
    for (const char* name : {"HOLD", "MOVE"})
        EXPECT_EQ(text(std::string("packages/") + name + ".vhd").find("library ieee;\n"), 0) << "its own names alone";
}

TEST_F(ExportTest, WhatCannotBeMeant) {
    const struct {
        std::vector<std::string> words;
        std::string error;
    } cases[] = {
        {{"verilgo"}, "no form 'verilgo'; did you mean verilog?"},
        {{"csv"}, "csv is several tables: name a folder for them, or one of them, as in csv-blocks"},
        {{"verilog", "-o", "a", "--split", "b"}, "--output and --split exclude each other; see 'ntl export --help'"},
        {{"verilog", "--split", "one.btl"}, "one.btl: cannot be made: Not a directory"},
    };
    for (const auto& each : cases) {
        const Outcome refused = exported(each.words);
        EXPECT_EQ(refused.err, "ntl: " + each.error + "\n");
        EXPECT_EQ(refused.status, 2);
    }
}
