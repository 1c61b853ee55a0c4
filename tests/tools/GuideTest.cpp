#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

const char* const one =
    "library \"small\" {\n"
    "  block \"HOLD\" {\n    pin \"A\" input data tieLow;\n    pin \"O\" output data;\n  } mapsto {\n"
    "    inst \"u\" \"PASS\";\n    signal \"a\" : \"A\", \"u\" \"I\";\n"
    "    signal \"o\" : \"u\" \"O\", \"O\";\n  }\n"
    "  block \"PASS\" { pin \"I\" input; pin \"O\" output; }\n}\n";

struct GuideTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};

    Outcome guide(std::vector<std::string> more = {}) {
        directory.write("one.btl", one);
        more.insert(more.begin(), {"guide", "out", "-l", "one.btl"});
        return ntl.run(more);
    }
    std::string page(const std::string& name) const { return readFile(directory.path("out/" + name)); }
    bool isThere(const std::string& name) const { return fs::exists(directory.path(name)); }
    // Beside the folder, hidden files with the tool's output stand.
    size_t drafts() const {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(directory.path()))
            count += entry.path().filename().string().starts_with(".out.") ? 1 : 0;
        return count;
    }
};

} // namespace

TEST_F(GuideTest, FolderIsReplacedAsAWhole) {
    ASSERT_EQ(guide().out, "out/index.html: 9 pages\n");
    ASSERT_TRUE(isThere("out/blocks/PASS.html"));
    const std::string before = page("blocks/HOLD.html");
    EXPECT_EQ(guide().status, 0);
    EXPECT_EQ(page("blocks/HOLD.html"), before);
    directory.write("one.btl", "library \"small\" { block \"HOLD\" { pin \"A\" input; } }\n");
    EXPECT_EQ(ntl.run({"guide", "out", "-l", "one.btl"}).status, 0);
    EXPECT_FALSE(isThere("out/blocks/PASS.html"));
    EXPECT_EQ(drafts(), 0U);
}

TEST_F(GuideTest, FoldersOfOthersAreLeftAlone) {
    fs::create_directories(directory.path("out"));
    EXPECT_EQ(guide().status, 0) << "an empty folder is as good as none";
    directory.write("out/mine.txt", "mine");
    Outcome refused = guide();
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("holds 'mine.txt', which no guide wrote; name an empty or a new folder"),
              std::string::npos)
        << refused.err;
    EXPECT_TRUE(isThere("out/index.html"));
    fs::remove(directory.path("out/mine.txt"));

    std::ofstream(directory.path("out/guide.css"), std::ios::app) << "body { color: red }\n";
    refused = guide();
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("'guide.css' was changed since a guide wrote it"), std::string::npos) << refused.err;

    fs::remove_all(directory.path("out"));
    directory.write("out", "a file");
    EXPECT_NE(guide().err.find("is no folder"), std::string::npos);
    EXPECT_EQ(readFile(directory.path("out")), "a file");
    EXPECT_EQ(drafts(), 0U);
}

TEST_F(GuideTest, LinksLeadToTheFolderThatIsWritten) {
    fs::create_directories(directory.path("place/real"));
    fs::create_directory_symlink(directory.path("place/real"), directory.path("out"));
    EXPECT_EQ(guide().status, 0);
    EXPECT_TRUE(fs::is_symlink(directory.path("out")));
    EXPECT_TRUE(isThere("place/real/index.html"));
    EXPECT_EQ(ntl.run({"guide", "new/deep/out", "-l", "one.btl"}).status, 0);
    EXPECT_TRUE(isThere("new/deep/out/index.html"));
}

TEST_F(GuideTest, PagesSayWhatChangedSince) {
    directory.write("old.btl",
                    "library \"small\" { block \"HOLD\" { pin \"A\" input; } block \"PASS\" { pin \"I\" input; pin "
                    "\"O\" output; } }\n");
    ASSERT_EQ(guide({"--compare", "old.btl", "--title", "Small & <new>"}).status, 0);
    EXPECT_NE(page("changes.html").find("<a href=\"blocks/HOLD.html\">HOLD</a>: pin <code>O</code> added"),
              std::string::npos);
    EXPECT_NE(page("blocks/HOLD.html").find("Changes since old.btl"), std::string::npos);
    EXPECT_NE(page("blocks/HOLD.html").find("<li>pin <code>O</code> added"), std::string::npos);
    EXPECT_EQ(page("blocks/PASS.html").find("<li>pin"), std::string::npos);
    EXPECT_NE(page("index.html").find("<title>Small &amp; &lt;new&gt;</title>"), std::string::npos);
    EXPECT_EQ(guide({"--compare", "missing.btl"}).status, 2);
}

TEST_F(GuideTest, PagesLeadToWhatBelongsTogether) {
    directory.write("some.btl",
                    "library \"some\" {\n"
                    "  block \"HOLD\" { primgroup = \"G\"; pin \"A\" input; } mapsto { inst \"u\" \"PASS\"; }\n"
                    "  block \"PASS\" { pin \"I\" input; property string \"MODE\" { values { \"FAST\", \"SLOW\" }, "
                    "default = \"FAST\", description = \"How\" } }\n"
                    "  block \"TWIN\" { primgroup = \"G\"; pin \"I\" input; } mapsto { }\n}\n");
    EXPECT_EQ(ntl.run({"guide", "out", "-l", "some.btl"}).status, 0);
    EXPECT_EQ(countOf(page("search.js"), "\"How FAST, SLOW\""), 1U) << "values are found by the search, too";
    const struct {
        std::string page;
        bool mapsTo, isUsed, seeAlso;
    } pages[] = {{"HOLD", true, false, true}, {"PASS", false, true, false}, {"TWIN", false, false, true}};
    for (const auto& [name, mapsTo, isUsed, seeAlso] : pages) {
        const std::string text = page("blocks/" + name + ".html");
        EXPECT_EQ(text.find("<dt>Maps to</dt>") != text.npos, mapsTo) << name;
        EXPECT_EQ(text.find("<dt>Is used by</dt>") != text.npos, isUsed) << name;
        EXPECT_EQ(text.find("<dt>See also, in ") != text.npos, seeAlso) << name;
    }
}

TEST_F(GuideTest, BrokenMapLibrariesAreSaid) {
    directory.makeDir("data/maplib");
    directory.write("data/maplib/HOLD.btl", "library \"l\" { block 7 }");
    directory.write("own.btl", libraryOf("block \"HOLD\" { pin \"A\" input; }"));
    const Outcome outcome = ntl.run({"guide", "out", "-l", "own.btl", "--data", "data", "--arch", "meadow"});
    EXPECT_EQ(outcome.status, 1);
    const std::string reason = "Invalid maplib ntl file: HOLD";
    EXPECT_EQ(linesOf(outcome.err).back(), "ntl: HOLD: mapping for meadow: " + reason);
    EXPECT_EQ(countOf(page("blocks/HOLD.html"), reason), 1U);
    directory.write("data/HDNTApplicationData.cfg", "CELLS = { };\n");
    EXPECT_EQ(linesOf(ntl.run({"guide", "all", "-l", "own.btl", "--data", "data"}).err).back(),
              "ntl: HOLD: mapping: " + reason);
    fs::remove(directory.path("data/HDNTApplicationData.cfg"));
    const Outcome lint =
        ntl.run({"lint", "own.btl", "--data", "data", "--rule", "broken-map-library", "--format", "short"});
    EXPECT_EQ(lint.status, 1);
    for (const char* said : {"own.btl:2:1: error: map library of block \"HOLD\", architecture \"meadow\": ",
                             "data/maplib/HOLD.btl:1:21: error: syntax error [syntax-error]\n"})
        EXPECT_EQ(countOf(lint.out, said), 1U) << lint.out;
}

TEST_F(GuideTest, WhatCannotBeDoneIsSaid) {
    EXPECT_EQ(guide({"--arch", "nowhere"}).status, 2);
    directory.write("bad.btl", "library \"x\" { block }\n");
    EXPECT_EQ(ntl.run({"guide", "bad", "-l", "bad.btl"}).status, 1);
    EXPECT_FALSE(isThere("bad"));
    EXPECT_EQ(ntl.run({"guide", "", "-l", "one.btl"}).status, 2);
    EXPECT_NE(ntl.run({"guide", ".", "-l", "one.btl"}).err.find("holds the working directory"), std::string::npos);
    EXPECT_EQ(ntl.run({"guide", "/proc/out", "-l", "one.btl"}).status, 2);
}
