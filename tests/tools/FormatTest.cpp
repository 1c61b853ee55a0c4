#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

const char* const ugly = "library \"l\"{block \"HOLD\"{pin \"A\" input;}} // end\n";
const char* const neat = "library \"l\" {\n  block \"HOLD\" {\n    pin \"A\" input;\n  }\n}  // end\n";

struct FormatTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};

    std::string text(const std::string& name) const { return readFile(directory.path(name)); }
    struct stat statusOf(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(stat(directory.path(name).c_str(), &status), 0);
        return status;
    }
    size_t fileCount() const {
        size_t count = 0; // the tool's output stands in hidden files beside
        for (const auto& entry : fs::directory_iterator(directory.path()))
            count += entry.path().filename().string().front() != '.';
        return count;
    }
};

} // namespace

TEST_F(FormatTest, WritesChecksAndReplaces) {
    directory.write("ugly.btl", ugly);
    directory.write("neat.btl", neat);
    directory.write("empty.btl", "");
    const std::vector<std::string> all = {"ugly.btl", "neat.btl", "empty.btl"};
    const auto run = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), all.begin(), all.end());
        return ntl.run(arguments);
    };
    EXPECT_EQ(run({"format"}).out, std::string(neat) + neat);
    EXPECT_EQ(text("ugly.btl"), ugly);
    const Outcome checked = run({"format", "--check"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, "ugly.btl\n");
    EXPECT_EQ(checked.err, "");

    chmod(directory.path("ugly.btl").c_str(), 0640);
    const struct stat before = statusOf("neat.btl");
    const Outcome replaced = run({"format", "--in-place"});
    EXPECT_EQ(replaced.status, 0);
    EXPECT_EQ(replaced.out + replaced.err, "");
    EXPECT_EQ(text("ugly.btl"), neat);
    EXPECT_EQ(statusOf("ugly.btl").st_mode & 07777U, 0640U);
    EXPECT_EQ(statusOf("neat.btl").st_ino, before.st_ino);
    EXPECT_EQ(fileCount(), 3U);
    EXPECT_EQ(run({"format", "--check"}).status, 0);
}

TEST_F(FormatTest, LeavesAloneWhatItRefuses) {
    const std::map<std::string, std::string> cases = {
        {"crlf.btl", "pin \"A\" input;\r\npin \"B\" input;\r\n"},
        {"string.btl", "pin \"A input;\n"},
        {"comment.btl", "pin \"A\" input; /* no end\n"},
        {"statement.btl", "INCLUDE a.btl;"},
        {"packed.btl", std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\x03\0\0\0\0\0\0\0\0\0", 20)},
    };
    directory.write("last.btl", ugly);
    std::vector<std::string> arguments = {"format", "--in-place"};
    for (const auto& [name, bytes] : cases) {
        directory.write(name, bytes);
        chmod(directory.path(name).c_str(), 0604);
        arguments.push_back(name);
    }
    arguments.emplace_back("last.btl");
    std::map<std::string, struct stat> before;
    for (const auto& [name, bytes] : cases) before[name] = statusOf(name);
    const Outcome outcome = ntl.run(arguments);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("crlf.btl:1:15: error: carriage return; end lines with a newline alone (and 1 more)\n"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(text("last.btl"), neat);
    for (const auto& [name, bytes] : cases) {
        EXPECT_EQ(text(name), bytes);
        const struct stat after = statusOf(name);
        EXPECT_EQ(after.st_ino, before[name].st_ino);
        EXPECT_EQ(after.st_mode, before[name].st_mode);
        EXPECT_EQ(after.st_mtim.tv_nsec, before[name].st_mtim.tv_nsec);
        EXPECT_NE(outcome.err.find("ntl: " + name + ": not formatted\n"), std::string::npos);
    }
    EXPECT_EQ(ntl.run({"format", "crlf.btl", "missing.btl", "last.btl"}).status, 2);
    const Outcome limited = ntl.run({"format", "--limit", "inputBytes=10", "last.btl"});
    EXPECT_EQ(limited.err, "ntl: last.btl: longer than the limit inputBytes\n");
    EXPECT_EQ(limited.status, 2);
}

TEST_F(FormatTest, ASymbolicLinkStaysOne) {
    directory.makeDir("below");
    directory.write("below/target.btl", ugly);
    fs::create_symlink("below/target.btl", directory.path("link.btl"));
    EXPECT_EQ(ntl.run({"format", "--in-place", "link.btl"}).status, 0);
    EXPECT_TRUE(fs::is_symlink(directory.path("link.btl")));
    EXPECT_EQ(text("below/target.btl"), neat);
    fs::create_symlink("nowhere", directory.path("broken.btl"));
    EXPECT_EQ(ntl.run({"format", "--in-place", "broken.btl"}).status, 2);
}

TEST_F(FormatTest, AFullDiskLeavesTheOldText) {
    std::string large = "library \"l\"{\n";
    for (int i = 0; i < 1000; ++i) large += "function int f(int);";
    large += "}\n";
    directory.write("large.btl", large);
    ntl.fileSize = 4096;
    const Outcome outcome = ntl.run({"format", "--in-place", "large.btl"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(linesOf(outcome.err).size(), 1U) << outcome.err;
    EXPECT_EQ(text("large.btl"), large);
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FormatTest, ReadsStandardInput) {
    directory.write("ugly.btl", ugly);
    ntl.standardInput = directory.path("ugly.btl");
    EXPECT_EQ(ntl.run({"format", "-"}).out, neat);
    const Outcome checked = ntl.run({"format", "--check", "-"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, "-\n");
}

TEST_F(FormatTest, WalksFolders) {
    directory.makeDir("from/below");
    directory.write("from/below/b.btl", ugly);
    directory.write("from/a.btl", neat);
    directory.write("from/c.btl", ugly);
    directory.write("from/notes.txt", ugly);
    const Outcome checked = ntl.run({"format", "--check", "from"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, "from/below/b.btl\nfrom/c.btl\n");
    EXPECT_EQ(ntl.run({"format", "from"}).out, std::string(neat) + neat + neat);
    EXPECT_EQ(ntl.run({"format", "--in-place", "from"}).status, 0);
    EXPECT_EQ(text("from/below/b.btl"), neat);
    EXPECT_EQ(text("from/notes.txt"), ugly);
}

TEST_F(FormatTest, FixesLineEnds) {
    const std::string mixed = "pin \"A\" input;\r\n\r\npin \"B\" input;\r// end\r\r\n";
    const std::string fixed = "pin \"A\" input;\n\npin \"B\" input;\n// end\n";
    directory.write("mixed.btl", mixed);
    EXPECT_EQ(ntl.run({"format", "--check", "mixed.btl"}).err.find("mixed.btl:1:15: error: carriage return"), 0U);
    const Outcome checked = ntl.run({"format", "--check", "--fix-line-ends", "mixed.btl"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, "mixed.btl\n");
    EXPECT_EQ(ntl.run({"format", "--fix-line-ends", "mixed.btl"}).out, fixed);
    EXPECT_EQ(ntl.run({"format", "--fix-line-ends", "--in-place", "mixed.btl"}).status, 0);
    EXPECT_EQ(text("mixed.btl"), fixed);
    directory.write("string.btl", "pin \"A\r\" input;\n");
    EXPECT_EQ(ntl.run({"format", "--fix-line-ends", "--in-place", "string.btl"}).status, 1);
    EXPECT_EQ(text("string.btl"), "pin \"A\r\" input;\n");
}
