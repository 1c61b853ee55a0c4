#include "author/syntax/SyntaxTree.h"
#include "tests/support/Library.h"
#include "tests/support/Mutant.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

// The grammar that is written by hand against the library's parser, and what must hold of every tree.
namespace {

using hdnt::author::SyntaxNode;
using hdnt::author::SyntaxTree;
using hdnt::frontend::NtlGrammar;
using hdnt::frontend::NtlPart;
using hdnt::frontend::SourceItems;
using hdnt::frontend::TokenSet;

/// Receives nothing and does not recover: where it stops, the parser stops.
class Judge : public hdnt::frontend::GrammarEvents {
public:
    explicit Judge(const SourceItems& items) : items_(items) { skip(); }
    int token() const { return item_ < items_.size() ? items_[item_].kind : 0; }
    void take(const TokenSet& couldBe) {
        allowed_ &= couldBe.contains(token());
        ++item_;
        skip();
    }
    static constexpr bool recovers = true;
    using Mark = int;
    void open(NtlPart) {}
    void close(NtlPart) {}
    Mark mark() const { return 0; }
    Mark operandMark() const { return 0; }
    void openAt(Mark, NtlPart) {}
    bool lacks(const TokenSet& expected) {
        allowed_ &= !expected.contains(token());
        return false;
    }
    int start() const { return 0; }
    template <typename Again>
    bool recover(int, Again&&) {
        return false;
    }
    bool deeper() { return true; }
    void shallower() {}

    /// Of the token it stopped at; the length of the text at its end.
    std::size_t offset() const { return item_ < items_.size() ? items_[item_].offset : items_.text().size(); }
    /// Whether each taken token was said to be expected, and the refused one not.
    bool allowed() const { return allowed_; }

private:
    void skip() {
        while (item_ < items_.size() && !items_[item_].isToken()) ++item_;
    }

    const SourceItems& items_;
    std::size_t item_ = 0;
    bool allowed_ = true;
};

/// Where the library's parser reports its syntax error; none: it does not.
class FirstError : public HDNTErrorListener {
public:
    explicit FirstError(const std::string& text) : previous_(HDNTError::setListener(this)) {
        static HDNTLibrary root(nullptr); // each root library would read the configuration
        NtlFreeScannerMem();
        HDNTLibrary library(&root);
        library.parseString(text);
    }
    ~FirstError() override { HDNTError::setListener(previous_); }
    bool report(const HDNTReport& report) override {
        if (report.message == "syntax error") offset = hdnt::diagnosticOf(report).place.offset;
        return true;
    }
    static constexpr std::size_t none = static_cast<std::size_t>(-2);
    std::size_t offset = none;

private:
    HDNTErrorListener* previous_;
};

void expectTree(const SyntaxTree& tree, const std::string& text) {
    ASSERT_EQ(tree.text(), text);
    std::vector<const SyntaxNode*> open;
    for (std::size_t i = 0; i < tree.nodes().size(); ++i) {
        const SyntaxNode& node = tree.nodes()[i];
        while (!open.empty() && open.back()->next <= i) open.pop_back();
        ASSERT_GT(node.next, i) << text;
        ASSERT_LE(node.begin, node.end) << text;
        if (!open.empty()) {
            ASSERT_LE(node.next, open.back()->next) << text;
            ASSERT_GE(node.begin, open.back()->begin) << text;
            ASSERT_LE(node.end, std::max(open.back()->end, open.back()->begin)) << text;
        }
        open.push_back(&node);
    }
}

void expectLaw(const std::string& text, bool withTree = true) {
    SourceItems items;
    hdnt::frontend::SourceProblem problem;
    const bool clean = items.read(text, problem);
    Judge judge(items);
    const bool accepted = NtlGrammar(judge).file();
    const std::size_t refused = FirstError(text).offset;
    ASSERT_EQ(accepted, refused == FirstError::none) << text;
    ASSERT_TRUE(judge.allowed()) << text;
    if (!accepted && judge.offset() < text.size()) {
        ASSERT_EQ(judge.offset(), refused) << text;
    }
    if (!withTree) return;
    SyntaxTree tree;
    ASSERT_TRUE(tree.read(text));
    expectTree(tree, text);
    ASSERT_EQ(tree.messages().empty(), accepted && clean) << text;
}

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
        for (const std::string& text : textsIn(folder)) ASSERT_NO_FATAL_FAILURE(expectLaw(text));
    ASSERT_NO_FATAL_FAILURE(expectLaw(support::everything));
}

TEST(SyntaxLaw, SameVerdictAndFirstErrorOnMutants) {
    const support::Tokens tokens = support::tokensOf(support::everything);
    std::mt19937 random(7);
    for (int i = 0; i < HDNT_MUTANTS; ++i)
        ASSERT_NO_FATAL_FAILURE(expectLaw(support::mutant(tokens, random), i % 20 == 0)) << i;
}

// Deeper than the tree nests: its nodes still lie in each other, and there is no more to do than the text is long.
TEST(SyntaxLaw, TreesOfTextsThatNestTooDeep) {
    const std::string head = "library \"L\" { block \"A\" mapsto { assign block property \"U\" \"P\" ";
    for (const char* const opening : {"-(", "(-", "1 * (2 + ", "a(-(1 + ", "a(1, ", "!"})
        for (const int times : {3998, 4001, 100000}) {
            std::string text = head;
            for (int i = 0; i < times; ++i) text += opening;
            SyntaxTree tree;
            ASSERT_TRUE(tree.read(text));
            ASSERT_NO_FATAL_FAILURE(expectTree(tree, text)) << opening;
            EXPECT_FALSE(tree.messages().empty());
        }
}

namespace {

bool operator==(const SyntaxNode& a, const SyntaxNode& b) {
    return std::tie(a.begin, a.end, a.next, a.token, a.part) == std::tie(b.begin, b.end, b.next, b.token, b.part);
}

void expectSame(const SyntaxTree& edited, const SyntaxTree& fresh) {
    ASSERT_EQ(edited.items().text(), fresh.items().text());
    ASSERT_EQ(edited.items().size(), fresh.items().size());
    ASSERT_EQ(edited.items().refusals(), fresh.items().refusals());
    for (std::size_t i = 0; i < fresh.items().size(); ++i) {
        const auto& a = edited.items()[i];
        const auto& b = fresh.items()[i];
        ASSERT_TRUE(a.offset == b.offset && a.length == b.length && a.kind == b.kind && a.newlines == b.newlines &&
                    a.multiLine == b.multiLine && a.startsLine == b.startsLine && a.endsLine == b.endsLine)
            << i << " at " << b.offset;
    }
    ASSERT_EQ(edited.messages().size(), fresh.messages().size());
    for (std::size_t i = 0; i < fresh.messages().size(); ++i) {
        const auto& a = edited.messages()[i];
        const auto& b = fresh.messages()[i];
        ASSERT_EQ(std::tie(a.code, a.offset, a.length, a.text, a.relatedText),
                  std::tie(b.code, b.offset, b.length, b.text, b.relatedText));
        ASSERT_TRUE(b.relatedText.empty() || a.relatedOffset == b.relatedOffset);
    }
    ASSERT_EQ(edited.nodes().size(), fresh.nodes().size());
    for (std::size_t i = 0; i < fresh.nodes().size(); ++i) ASSERT_TRUE(edited.nodes()[i] == fresh.nodes()[i]) << i;
    ASSERT_EQ(edited.text(), fresh.text());
}

} // namespace

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
        ASSERT_NO_FATAL_FAILURE(expectSame(tree, fresh)) << i << ": " << offset << ' ' << length << ' ' << piece;
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
        ASSERT_NO_FATAL_FAILURE(expectTree(tree, text)) << i;
    }
}
