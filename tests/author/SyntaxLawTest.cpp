#include "tests/support/SyntaxLaw.h"

#include "tests/support/Library.h"
#include "tests/support/Mutant.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace {

using hdnt::author::SyntaxTree;

std::vector<std::string> textsIn(const std::string& folder) {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".btl") continue;
        std::ifstream file(entry.path(), std::ios::binary);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        const bool fragment = text.find("library \"") == text.npos;
        const bool spliced = text.find("INCLUDE") != text.npos || text.find("INLINE") != text.npos;
        if (!fragment && !spliced && text.find("#ifArch") == text.npos) texts.push_back(std::move(text));
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

} // namespace

TEST(SyntaxLaw, SameVerdictAndFirstErrorOnTexts) {
    for (const char* const folder : {HDNT_DATA, HDNT_TEST_CORPUS})
        for (const std::string& text : textsIn(folder)) ASSERT_EQ(support::brokenVerdict(text), "") << text;
    EXPECT_EQ(support::brokenVerdict(support::everything), "");
}

TEST(SyntaxLaw, SameVerdictAndFirstErrorOnMutants) {
    const support::Tokens tokens = support::tokensOf(support::everything);
    std::mt19937 random(7);
    for (int i = 0; i < HDNT_MUTANTS; ++i) {
        const std::string text = support::mutant(tokens, random);
        ASSERT_EQ(support::brokenVerdict(text, i % 20 == 0), "") << text;
    }
}

// Deeper than the tree nests: its nodes still lie in each other, and there is no more to do than the text is long.
TEST(SyntaxLaw, TreesOfTextsThatNestTooDeep) {
    const std::string head = "library \"L\" { block \"A\" mapsto { assign block property \"U\" \"P\" ";
    for (const char* const opening : {"-(", "(-", "1 * (2 + ", "a(-(1 + ", "a(1, ", "!"})
        for (const int times : {3997, 3998, 3999, 4001, 100000}) {
            std::string text = head;
            for (int i = 0; i < times; ++i) text += opening;
            text += "1 + 2";
            SyntaxTree tree;
            ASSERT_TRUE(tree.read(text));
            EXPECT_EQ(support::brokenTree(tree, text), "") << opening;
            EXPECT_FALSE(tree.messages().empty());
        }
}

// Edits in a row, as they are typed, against a fresh read of each text.
TEST(SyntaxLaw, AnEditedTreeIsThatOfTheNewText) {
    std::vector<std::string> texts = textsIn(HDNT_DATA "/tessels");
    const std::string pieces[] = {"\"",
                                  "{",
                                  "}",
                                  ";",
                                  "/*",
                                  "*/",
                                  "//",
                                  "\n",
                                  " ",
                                  "pin",
                                  "block \"A\" {\n",
                                  "#",
                                  "\r",
                                  "a",
                                  "INCLUDE x ;\n",
                                  "}\n",
                                  "mapsto {",
                                  "\n#endif\n",
                                  "="};
    std::mt19937 random(9);
    for (int i = 0; i < HDNT_MUTANTS / 25; ++i) {
        constexpr int row = 5;
        static SyntaxTree tree;
        if (i % row == 0) {
            ASSERT_TRUE(tree.read(texts[static_cast<std::size_t>(i / row) % texts.size()]));
        }
        const std::string text(tree.items().text());
        const std::size_t offset = random() % text.size();
        const std::size_t most = random() % 20 == 0 ? 300 : 6;
        const std::size_t length = std::min(random() % 2 == 0 ? 0 : random() % most, text.size() - offset);
        const std::string piece = random() % 4 == 0 ? "" : pieces[random() % std::size(pieces)];
        SyntaxTree fresh;
        ASSERT_TRUE(fresh.read(std::string(text).replace(offset, length, piece)));
        ASSERT_TRUE(tree.edit(offset, length, piece));
        ASSERT_EQ(support::difference(tree, fresh), "") << i << ": " << offset << ' ' << length << ' ' << piece;
    }
}

TEST(SyntaxLaw, AnyBytesMakeATree) {
    std::mt19937 random(8);
    const std::string bytes = "\"\"{}();,=<>+-*/%!|&'~ \t\n\r\xef\xbb\xbf\xe2\x80\x9c#08'hbxAZ_pin";
    for (int i = 0; i < HDNT_MUTANTS / 20; ++i) {
        std::string text = support::everything;
        for (std::size_t changes = random() % 20; changes > 0; --changes)
            text[random() % text.size()] = bytes[random() % bytes.size()];
        text.resize(random() % 4 == 0 ? random() % text.size() : text.size());
        SyntaxTree tree;
        ASSERT_TRUE(tree.read(text));
        ASSERT_EQ(support::brokenTree(tree, text), "") << i;
    }
}
