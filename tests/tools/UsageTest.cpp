#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>

namespace {

struct UsageTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
};

std::set<std::string> longOptions(const std::string& text) {
    static const std::regex option("--([a-z]+)");
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

} // namespace

TEST_F(UsageTest, WrongUsageIsOneLineAndStatusTwo) {
    directory.write("good.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    directory.write("wrong.csv", "1800;GLUE\n");
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"frobnicate"},
        {"--frobnicate"},
        {"check", "--frobnicate"},
        {"check", ""},
        {"check", "--format", "xml", "good.btl"},
        {"check", "-j", "many", "good.btl"},
        {"check", "-j", "-1", "good.btl"},
        {"check", "-I"},
        {"check", "--root", "missing", "good.btl"},
        {"check", "--parent", "common"},
        {"--data", "missing", "list"},
        {"--data", "good.btl", "list"},
        {"--cells", "missing.csv", "list"},
        {"--cells", "wrong.csv", "list"},
        {"--param", "arch.enableTestFeatures", "list"},
        {"--param", "arch.enableTestFeatures=perhaps", "list"},
        {"--limit", "includeDepth=-1", "list"},
        {"--limit", "includeDepth=99999999999", "list"},
        {"--limit", "includeWidth=1", "list"},
        {"--color", "blue", "list"},
        {"list", "extra"},
        {"list", "--parent", "common"},
        {"list", "-l", "missing.btl"},
        {"show"},
        {"show", ""},
        {"expand"},
        {"expand", ""},
        {"expand", "--all", "HOLD"},
        {"expand", "--all", "--set", "WIDTH=1"},
        {"expand", "--all", "--connect", "I"},
        {"expand", "HOLD", "--set", "WIDTH"},
        {"expand", "HOLD", "--set", "=1"},
        {"expand", "HOLD", "--format", "text"},
        {"expand", "HOLD", "-l", "missing.btl"},
        {"diff", "good.btl"},
        {"diff", "good.btl", "missing.btl"},
        {"diff", "good.btl", "good.btl", "good.btl"},
        {"diff", "good.btl", "good.btl", "--format", "sarif"},
        {"diff", "good.btl", "good.btl", "--fail-on", "textOnly"},
        {"help", "chek"},
        {"print"},
        {"print", ""},
        {"print", "good.btl", "good.btl"},
        {"print", "missing.btl"},
        {"format"},
        {"format", ""},
        {"format", "missing.btl"},
        {"format", "--check", "--in-place", "good.btl"},
        {"format", "--in-place", "-"},
        {"--generate", "poem"},
        {"check", "two\nlines"},
    };
    for (const std::vector<std::string>& arguments : cases) {
        const Outcome outcome = ntl.run(arguments);
        std::string line;
        for (const std::string& argument : arguments) line += argument + " ";
        SCOPED_TRACE(line);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(linesOf(outcome.err).size(), 1U) << outcome.err;
        EXPECT_EQ(outcome.err.find("ntl: "), 0U) << outcome.err;
    }
}

TEST_F(UsageTest, BrokenConfigurationIsUnusable) {
    directory.makeDir("data");
    directory.write("data/HDNTApplicationData.cfg", "CELLS = {\n oops\n");
    const Outcome outcome = ntl.run({"--data", "data", "list"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("HDNTApplicationData.cfg:"), std::string::npos);
    EXPECT_EQ(linesOf(outcome.err).size(), 1U);
}

TEST_F(UsageTest, HelpAndVersion) {
    EXPECT_EQ(ntl.run({"--version"}).out.find("ntl "), 0U);
    const Outcome help = ntl.run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* const command : {"check", "lint", "list", "show", "expand", "print", "format", "diff",
                                      "compare-models", "explain", "serve", "help"}) {
        EXPECT_NE(help.out.find(std::string("\n  ") + command + " "), std::string::npos);
        const Outcome own = ntl.run({command, "--help"});
        EXPECT_EQ(own.status, 0);
        EXPECT_EQ(own.err, "");
        EXPECT_EQ(own.out.find(std::string("Usage: ntl ") + command), 0U);
        for (const std::string& line : linesOf(own.out)) EXPECT_LE(line.size(), 80U) << line;
        EXPECT_EQ(ntl.run({"help", command}).out, own.out);
    }
}

// As its reader's program sees it.
TEST_F(UsageTest, ThePageOfTheManualIsSound) {
    const std::string page = directory.write("ntl.1", ntl.run({"--generate", "man"}).out);
    const std::string shown = page + ".txt";
    const std::string said = page + ".err";
    ASSERT_EQ(std::system(("groff -man -ww -Tascii -P-cbou " + page + " >" + shown + " 2>" + said).c_str()), 0);
    EXPECT_EQ(readFile(said), "");
    for (const char* const text :
         {"\n   compare-models - hold", "\n       --max-errors N\n", "\n       HDNT_DATA_PATH\n", "\n       no-group\n",
          "[--werror[=CODE,...]]", "EXIT STATUS"})
        EXPECT_NE(readFile(shown).find(text), std::string::npos) << text;
}

TEST_F(UsageTest, MisspelledWordsSuggestOthers) {
    const struct {
        std::vector<std::string> arguments;
        std::string err;
        int status = 2;
    } cases[] = {
        {{"chekc", "a.btl", "--format", "json"}, "no command 'chekc'; did you mean check?; see 'ntl --help'"},
        {{"frobnicate"}, "no command 'frobnicate'; see 'ntl --help'"},
        {{"help", "fromat"}, "no command 'fromat'; did you mean format?"},
        {{"check", "--frmat=json"}, "no option '--frmat=json'; did you mean --format?; see 'ntl check --help'"},
        {{"--colour", "never", "list"}, "no option '--colour'; did you mean --color?; see 'ntl list --help'"},
        {{"list", "-x"}, "no option '-x'; see 'ntl list --help'"},
        {{"list", "--prefix", "show", "--deep"}, "no option '--deep'; see 'ntl list --help'"},
        {{"list", "--arch", "coper"},
         "--arch: no architecture 'coper'; did you mean copper?; there are meadow, harbor, copper"},
        {{"list", "--group", "LOGC"}, "no block is in the group 'LOGC'; did you mean LOGIC?", 1},
        {{"list", "--group", "logic:gat"}, "no block is in the group 'logic:gat'; did you mean LOGIC:GATE?", 1},
    };
    for (const auto& each : cases) {
        const Outcome outcome = ntl.run(each.arguments);
        EXPECT_EQ(outcome.status, each.status);
        EXPECT_EQ(outcome.err, "ntl: " + each.err + "\n");
    }
    EXPECT_EQ(ntl.run({"help"}).out, ntl.run({"--help"}).out);
}

// A broken configuration does not keep one from reading about the tool.
TEST_F(UsageTest, HelpNeedsNoData) {
    directory.makeDir("data");
    directory.write("data/HDNTApplicationData.cfg", "CELLS = {\n oops\n");
    EXPECT_EQ(ntl.run({"--data", "data", "help", "list"}).status, 0);
    EXPECT_EQ(ntl.run({"--data", "data", "explain", "unknown-pin"}).status, 0);
    directory.write("data/HDNTApplicationData.cfg", "CELLS = { };");
    EXPECT_EQ(ntl.run({"--data", "data", "list", "--arch", "anything"}).status, 0);
}

TEST_F(UsageTest, PagesKnowEveryOption) {
    std::set<std::string> wanted;
    for (const char* const command :
         {"check", "list", "show", "expand", "print", "format", "diff", "compare-models", "help"})
        wanted.merge(longOptions(ntl.run({command, "--help"}).out));
    wanted.merge(longOptions(ntl.run({"--help"}).out));
    const std::string page = std::regex_replace(readFile(NTL_GENERATED_DIR "/ntl.1"), std::regex("\\\\-"), "-");
    const std::string manual = readFile(NTL_SOURCE_DIR "/docs/ntl.md");
    for (const std::string& text : {page, manual}) {
        const std::set<std::string> found = longOptions(text);
        for (const std::string& option : wanted)
            EXPECT_TRUE(found.count(option)) << option << " in\n" << text.substr(0, 40);
    }
}

TEST_F(UsageTest, ExamplesOfTheManualAreTrue) {
    const std::string manual = readFile(NTL_SOURCE_DIR "/docs/ntl.md") +
                               readFile(NTL_SOURCE_DIR "/docs/configuration.md") +
                               readFile(NTL_SOURCE_DIR "/docs/families.md") + readFile(NTL_SOURCE_DIR "/README.md");
    const std::string fence = "\n```console\n";
    std::filesystem::copy(NTL_SOURCE_DIR "/data/examples", directory.path("work"),
                          std::filesystem::copy_options::recursive);
    const std::string tool = NTL_TOOL;
    size_t examples = 0;
    for (size_t at = manual.find(fence); at != manual.npos; at = manual.find(fence, at + 1), ++examples) {
        const size_t start = at + fence.size();
        std::string commands = "exec 2>&1; PATH=" + tool.substr(0, tool.rfind('/')) + ":$PATH; cd " +
                               directory.path("work") + "; unset NTL_PATH HDNT_CELLVIEWS\n";
        std::string expected;
        for (const std::string& line : linesOf(manual.substr(start, manual.find("\n```\n", start) - start)))
            (line.compare(0, 2, "$ ") == 0 ? commands : expected) +=
                (line.compare(0, 2, "$ ") == 0 ? line.substr(2) : line) + "\n";
        FILE* const shell = popen(commands.c_str(), "r");
        ASSERT_NE(shell, nullptr);
        std::string output;
        std::array<char, 4096> buffer;
        while (const size_t count = fread(buffer.data(), 1, buffer.size(), shell)) output.append(buffer.data(), count);
        pclose(shell);
        EXPECT_EQ(output, expected) << commands;
    }
    EXPECT_GE(examples, 10U);
}
