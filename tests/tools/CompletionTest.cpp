#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

namespace {

using Words = std::vector<std::string>;

const std::string ownText = libraryOf(R"(
block "OWN_DRUM" {
    primgroup = "MUSIC:BEAT";
    pin "A" input;
    property string "SKIN" { values { "calf", "goat" } }
    property int "SIZE" { min = 3, max = 9 }
    property bool "TUNED" { default = true }
    property double "FREE" { default = 1.0 }
}
block "OWN_FLUTE" { pin "A" input; })");

struct CompletionTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.write("own.btl", ownText);
        directory.write("broken.btl", "library \"l\" {\nblok\n}\n");
    }

    Words complete(const Words& words) {
        Words arguments = {"--complete", "--"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        Words lines = linesOf(outcome.out);
        for (std::string& line : lines) line = line.substr(0, line.find('\t'));
        return lines;
    }
};

bool contains(const Words& all, const std::string& one) { return std::find(all.begin(), all.end(), one) != all.end(); }

} // namespace

TEST_F(CompletionTest, WhatMayStandThere) {
    const struct {
        Words words;
        Words expected;
    } cases[] = {
        {{"exp"}, {"expand", "export", "explain"}},
        {{"help", "sh"}, {"show"}},
        {{"import", ""}, {"json", "verilog"}},
        {{"check", ""}, {":files"}},
        {{"check", "--parent", ""}, {":files", "common"}},
        {{"check", "-I", ""}, {":directories"}},
        {{"check", "--root=some"}, {":directories"}},
        {{"check", "--max"}, {"--max-errors"}},
        {{"check", "--format", "s"}, {"short", "sarif"}},
        {{"check", "--format=js"}, {"--format=json"}},
        {{"list", "extra", ""}, {}},
        {{"frobnicate", "exp"}, {"expand", "export", "explain"}},
        {{"--arch", ""}, {"meadow", "harbor", "copper"}},
        {{"list", "--arch=co"}, {"--arch=copper"}},
        {{"list", "--arch", "nowhere", "--arch", "c"}, {"copper"}},
        {{"show", "-l", "own.btl", ""}, {"OWN_DRUM", "OWN_FLUTE"}},
        {{"show", "-lown.btl", "own_f"}, {"OWN_FLUTE"}},
        {{"show", "own_f"}, {}},
        {{"show", "--library=own.btl", "--parent", "common", "gate_and_2"}, {"GATE_AND_2"}},
        {{"show", "-l", "own.btl", "--", "own_d"}, {"OWN_DRUM"}},
        {{"show", "-l", "broken.btl", ""}, {}},
        {{"show", "-l", "missing.btl", ""}, {}},
        {{"show", "-l", "-", ""}, {}},
        {{"list", "-l", "own.btl", "--group", ""}, {"MUSIC", "MUSIC:BEAT"}},
        {{"list", "-l", "own.btl", "--group", "music:"}, {"MUSIC:BEAT"}},
        {{"expand", "own_drum", "-l", "own.btl", "--set", ""}, {"SKIN=", "SIZE=", "TUNED=", "FREE="}},
        {{"expand", "OWN_DRUM", "-l", "own.btl", "--set", "s"}, {"SKIN=", "SIZE="}},
        {{"expand", "OWN_DRUM", "-l", "own.btl", "--set", "SKIN="}, {"SKIN=calf", "SKIN=goat"}},
        {{"expand", "OWN_DRUM", "-l", "own.btl", "--set=SIZE="}, {"--set=SIZE=3", "--set=SIZE=9"}},
        {{"expand", "OWN_DRUM", "-l", "own.btl", "--set", "TUNED=f"}, {"TUNED=false"}},
        {{"expand", "OWN_DRUM", "-l", "own.btl", "--set", "FREE="}, {}},
        {{"expand", "OWN_FLUTE", "-l", "own.btl", "--set", ""}, {}},
        {{"lint", "--rule", "open-i"}, {"open-input"}},
        {{"lint", "--no-rule=open-i"}, {"--no-rule=open-input"}},
        {{"lint", "--severity", "open-i"}, {"open-input="}},
        {{"lint", "--severity", "open-input=o"}, {"open-input=off"}},
        {{"lint", "--werror=open-i"}, {"--werror=open-input"}},
        {{"lint", "--werror=unknown-pin,open-i"}, {"--werror=unknown-pin,open-input"}},
        {{"explain", "syntax-er"}, {"syntax-error"}},
        {{"lint", "--rule", "syntax-er"}, {}},
        {{},
         {"check", "lint", "list", "show", "expand", "print", "format", "diff", "guide", "export", "import",
          "compare-models", "explain", "serve", "help"}},
        {{"export", "csv-p"}, {"csv-pins", "csv-properties"}},
    };
    for (const auto& each : cases) {
        std::string line;
        for (const std::string& word : each.words) line += word + " ";
        EXPECT_EQ(complete(each.words), each.expected) << line;
    }
    const Words shipped = complete({"show", ""});
    EXPECT_TRUE(contains(shipped, "GATE_AND_2") && !contains(shipped, "OWN_DRUM"));
    const Words copper = complete({"show", "--arch", "copper", ""});
    EXPECT_LT(copper.size(), shipped.size());
    EXPECT_FALSE(copper.empty());
}

// Every option that --help names is offered, and nothing of the completion is in the help.
TEST_F(CompletionTest, AllOptions) {
    for (const char* const command :
         {"check", "lint", "list", "show", "expand", "print", "format", "diff", "export", "compare-models"}) {
        const Words offered = complete({command, "-"});
        const std::string help = ntl.run({command, "--help"}).out;
        EXPECT_EQ(help.find("--complete"), help.npos);
        size_t named = 0;
        for (const std::string& line : linesOf(help))
            if (line.compare(0, 3, "  -") == 0) {
                const std::string option = line.substr(2, line.find_first_of(" ,[", 2) - 2);
                EXPECT_TRUE(contains(offered, option) || option == "-h") << command << option;
                ++named;
            }
        EXPECT_GT(named, 6U);
    }
}

// As bash divides the words: behind "=" and ":" a new one begins, and only that is put in place.
TEST_F(CompletionTest, Bash) {
    const struct {
        const char* words;
        const char* expected;
    } cases[] = {
        {"ntl exp", "expand export explain "},
        {"ntl list -l own.btl --group MUSIC :", "BEAT "},
        {"ntl expand OWN_DRUM -l own.btl --set SKIN = g", "goat "},
        {"ntl expand OWN_DRUM -l own.btl --set SKIN =", "calf goat "},
        {"ntl expand OWN_DRUM -l own.btl --set SK", "SKIN= "},
        {"ntl expand FLOP_FALL_CLEAR --set INIT = 1\\\\\\'b", "1\\'b0 1\\'b1 "},
        {"ntl lint --werror = open-i", "open-input "},
        {"ntl list --arch = co", "copper "},
        {"ntl check --depfile = ow", "own.btl "},
        {"ntl check bro", "broken.btl "},
        {"ntl show -l own.btl ''", "OWN_DRUM OWN_FLUTE "},
    };
    const std::string tool = NTL_TOOL;
    for (const auto& each : cases) {
        const std::string script = "cd " + directory.path() + "; PATH=" + tool.substr(0, tool.rfind('/')) +
                                   ":$PATH; . " NTL_GENERATED_DIR "/completions/ntl; COMP_WORDS=(" + each.words +
                                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _ntl; printf '%s ' \"${COMPREPLY[@]}\"";
        directory.write("run.sh", script);
        FILE* const shell = popen(("bash " + directory.path("run.sh") + " 2>&1").c_str(), "r");
        ASSERT_NE(shell, nullptr);
        std::array<char, 4096> buffer;
        const std::string output(buffer.data(), fread(buffer.data(), 1, buffer.size(), shell));
        pclose(shell);
        EXPECT_EQ(output, each.expected) << each.words;
    }
}
