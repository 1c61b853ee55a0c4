#pragma once

#include "author/syntax/SyntaxTree.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/model/HDNTLibrary.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

// The grammar that is written by hand against the library's parser, and what must hold of every tree. Laws answer with
// what is broken, with nothing where they hold.
namespace support {

using hdnt::author::SyntaxNode;
using hdnt::author::SyntaxTree;

/// Receives nothing and does not recover: where it stops, the parser stops.
class GrammarJudge : public hdnt::frontend::GrammarEvents {
public:
    explicit GrammarJudge(const hdnt::frontend::SourceItems& items) : items_(items) { skip(); }
    int token() const { return item_ < items_.size() ? items_[item_].kind : 0; }
    void take(const hdnt::frontend::TokenSet& couldBe) {
        allowed_ &= couldBe.contains(token());
        ++item_;
        skip();
    }
    static constexpr bool recovers = true;
    using Mark = int;
    void open(hdnt::frontend::NtlPart) {}
    void close(hdnt::frontend::NtlPart) {}
    Mark mark() const { return 0; }
    Mark operandMark() const { return 0; }
    void openAt(Mark, hdnt::frontend::NtlPart) {}
    bool lacks(const hdnt::frontend::TokenSet& expected) {
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

    const hdnt::frontend::SourceItems& items_;
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

/// Nodes lie in each other, and nothing of the text is lost.
inline std::string brokenTree(const SyntaxTree& tree, const std::string& text) {
    if (tree.text() != text) return "other text";
    std::vector<const SyntaxNode*> open;
    for (std::size_t i = 0; i < tree.nodes().size(); ++i) {
        const SyntaxNode& node = tree.nodes()[i];
        while (!open.empty() && open.back()->next <= i) open.pop_back();
        if (node.next <= i || node.begin > node.end) return "a node of no length";
        if (!open.empty() && (node.next > open.back()->next || node.begin < open.back()->begin ||
                              node.end > std::max(open.back()->end, open.back()->begin)))
            return "a node reaches out of what it is in";
        open.push_back(&node);
    }
    return "";
}

/// Grammar, parser and tree are of one mind about a text without INCLUDE, INLINE and directives.
inline std::string brokenVerdict(const std::string& text, bool withTree = true) {
    hdnt::frontend::SourceItems items;
    hdnt::frontend::SourceProblem problem;
    const bool clean = items.read(text, problem);
    GrammarJudge judge(items);
    const bool accepted = hdnt::frontend::NtlGrammar(judge).file();
    const std::size_t refused = FirstError(text).offset;
    if (accepted != (refused == FirstError::none)) return "another verdict than the parser's";
    if (!judge.allowed()) return "a token was taken that was not expected, or refused though it was";
    if (!accepted && judge.offset() < text.size() && judge.offset() != refused) return "another first error";
    if (!withTree) return "";
    SyntaxTree tree;
    if (!tree.read(text)) return "no tree";
    const bool isLibrary =
        tree.content() == hdnt::frontend::NtlList::none; // else it is read as what a file is included for
    if (isLibrary && tree.messages().empty() != (accepted && clean))
        return "messages of an accepted text, or none of a refused one";
    return brokenTree(tree, text);
}

inline bool operator==(const hdnt::author::SyntaxMessage& a, const hdnt::author::SyntaxMessage& b) {
    return std::tie(a.code, a.offset, a.length, a.text, a.relatedText) ==
               std::tie(b.code, b.offset, b.length, b.text, b.relatedText) &&
           (b.relatedText.empty() || a.relatedOffset == b.relatedOffset);
}

/// What an edited tree has otherwise than one of a fresh read of the same text.
inline std::string difference(const SyntaxTree& edited, const SyntaxTree& fresh) {
    if (edited.items().text() != fresh.items().text()) return "another text";
    if (edited.items().size() != fresh.items().size()) return "another number of items";
    if (edited.items().refusals() != fresh.items().refusals()) return "other refusals";
    for (std::size_t i = 0; i < fresh.items().size(); ++i) {
        const auto& a = edited.items()[i];
        const auto& b = fresh.items()[i];
        if (std::tie(a.offset, a.length, a.kind, a.newlines) != std::tie(b.offset, b.length, b.kind, b.newlines) ||
            a.multiLine != b.multiLine || a.startsLine != b.startsLine || a.endsLine != b.endsLine)
            return "another item at " + std::to_string(b.offset);
    }
    if (!std::equal(edited.messages().begin(), edited.messages().end(), fresh.messages().begin(),
                    fresh.messages().end(), [](const auto& a, const auto& b) { return a == b; }))
        return "other messages";
    if (!std::equal(edited.nodes().begin(), edited.nodes().end(), fresh.nodes().begin(), fresh.nodes().end(),
                    [](const SyntaxNode& a, const SyntaxNode& b) {
                        return std::tie(a.begin, a.end, a.next, a.token, a.part) ==
                               std::tie(b.begin, b.end, b.next, b.token, b.part);
                    }))
        return "other nodes";
    return edited.text() == fresh.text() ? "" : "other text";
}

} // namespace support
