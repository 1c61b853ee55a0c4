#include "author/syntax/SyntaxTree.h"

#include "author/syntax/Recovery.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace hdnt::author {

namespace {

using Code = SyntaxCode;

struct Row {
    SyntaxCode code;
    DiagnosticRule rule;
};

constexpr Severity E = Severity::error;
constexpr Severity W = Severity::warning;

constexpr Row rows[] = {
    {Code::missingToken, {"missing-token", E, "%", "Something is missing behind the place: write it there."}},
    {Code::unexpectedToken,
     {"unexpected-token", E, "%", "What stands here does not belong here: remove it, or mend what is before it."}},
    {Code::misspeltWord, {"misspelt-word", E, "%", "The word is none of the language's, or none that may stand here."}},
    {Code::wrongToken, {"wrong-token", E, "%", "Something else has to stand in this place."}},
    {Code::wrongOrder, {"wrong-order", E, "%", "The parts are right, their order is not: the language lays it down."}},
    {Code::numberForm,
     {"number-form", E, "%",
      "A double has a point, an int has none, and bit vectors are written as in 8'hFF and 4'b1010."}},
    {Code::trailingComma, {"trailing-comma", E, "%", "A comma stands between two things, not behind the last one."}},
    {Code::unclosedBrace,
     {"unclosed-brace", E, "%", "A brace is opened and never closed; which one is told by the indents."}},
    {Code::strayBrace,
     {"stray-brace", E, "%",
      "A brace is closed that was not opened, so that what follows stands outside of what it belongs to."}},
    {Code::nestedTooDeep,
     {"nested-too-deep", E, "%",
      "Parentheses or statements are nested deeper than can be read; what follows is not looked at."}},
    {Code::outsideLanguage,
     {"outside-language", E, "%", "The language has no such character outside strings and comments."}},
    {Code::carriageReturn, {"carriage-return", E, "%", "Lines end with a newline alone."}},
    {Code::byteOrderMark,
     {"byte-order-mark", E, "%",
      "A text begins with its first character; save it as UTF-8 without a byte order mark."}},
    {Code::typographicQuote,
     {"typographic-quote", E, "%", "Texts stand in plain quotes (\"); word processors replace them by others."}},
    {Code::openString, {"open-string", E, "%", "A text in quotes ends in its line."}},
    {Code::openComment,
     {"open-comment", W, "%", "A comment begun with /* ends with */; all behind it is passed over."}},
    {Code::openFileStatement,
     {"open-file-statement", W, "%", "INCLUDE and INLINE end with a semicolon and the end of the line."}},
    {Code::longWord, {"long-word", E, "%", "A word outside quotes has at most 31 characters."}},
};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < std::size(rows); ++i)
        if (static_cast<std::size_t>(rows[i].code) != i) return false;
    return true;
}
static_assert(inOrder() && std::size(rows) == static_cast<std::size_t>(Code::longWord) + 1);

/// Lines and columns of offsets that grow. A copy looks ahead.
class PlaceFinder {
public:
    PlaceFinder(std::string_view text, const std::string& file) : text_(text), file_(file) {}

    Place place(std::size_t offset, std::size_t length) {
        if (offset < line_) return PlaceFinder(text_, file_).place(offset, length);
        for (std::size_t end = text_.find('\n', line_); end < offset; end = text_.find('\n', line_)) {
            line_ = end + 1;
            ++number_;
        }
        const std::size_t lineEnd = std::min(text_.find('\n', offset), text_.size());
        const std::size_t end = std::min(offset + std::max<std::size_t>(length, 1), std::max(lineEnd, offset));
        Place place;
        place.file = file_;
        place.line = place.textLine = place.order = number_;
        place.column = columnOf(offset);
        place.endColumn = length == 0 ? place.column : columnOf(end);
        place.offset = offset;
        place.endOffset = length == 0 ? offset : end;
        constexpr std::size_t longestLine = 4096;
        if (lineEnd - line_ <= longestLine) place.text = text_.substr(line_, lineEnd - line_);
        return place;
    }

private:
    int columnOf(std::size_t offset) const {
        return static_cast<int>(platform::characters(text_.substr(line_, offset - line_))) + 1;
    }

    std::string_view text_;
    const std::string& file_;
    std::size_t line_ = 0;
    int number_ = 1;
};

} // namespace

const std::vector<DiagnosticRule>& syntaxRules() {
    static const std::vector<DiagnosticRule> rules = [] {
        std::vector<DiagnosticRule> all;
        for (const Row& row : rows) all.push_back(row.rule);
        return all;
    }();
    return rules;
}

// What the first token begins. Of a word that is none of the language's, what it is likely to be; a call aside.
static NtlList contentOf(const frontend::SourceItems& items, const Recovery& recovery) {
    using Grammar = frontend::NtlGrammar<Recovery>;
    constexpr std::array lists = {NtlList::elements, NtlList::entities, NtlList::statements};
    int first = recovery.token();
    if (first == T_Identifier) {
        std::size_t item = 0;
        while (items[item].kind != T_Identifier) ++item;
        const std::string_view word = items.textOf(item++);
        while (item < items.size() && !items[item].isToken()) ++item;
        if (item < items.size() && items[item].kind == '(') return NtlList::statements;
        TokenSet all = {T_Library};
        for (const NtlList list : lists) all |= Grammar::firstOf(list);
        first = likelyToken(word, all);
    }
    for (const NtlList list : lists)
        if (Grammar::firstOf(list).contains(first)) return list;
    return NtlList::none;
}

bool SyntaxTree::read(std::string text) {
    nodes_.clear();
    messages_.clear();
    faults_.clear();
    faultItems_.clear();
    if (!items_.read(std::move(text), refusal_) && items_.size() == 0 && items_.refusals().empty() &&
        refusal_.count > 0)
        return false;
    parse();
    return true;
}

void SyntaxTree::parse() {
    Recovery recovery(items_, nodes_, {faults_, faultItems_});
    frontend::NtlGrammar grammar(recovery);
    content_ = contentOf(items_, recovery);
    const bool whole = content_ == NtlList::none ? grammar.file() : grammar.fragment(content_);
    if (!whole) recovery.sayLast();
    recovery.layAround();
    trials_ = recovery.trials();
    nodes_.front().end = static_cast<std::uint32_t>(items_.size());
    collectMessages();
}

void SyntaxTree::collectMessages() {
    messages_ = messagesOfItems(items_);
    messages_.insert(messages_.end(), faults_.begin(), faults_.end());
    std::stable_sort(messages_.begin(), messages_.end(),
                     [](const auto& a, const auto& b) { return a.offset < b.offset; });
}

std::vector<Diagnostic> SyntaxTree::diagnostics(const std::string& file) const {
    std::vector<Diagnostic> all;
    PlaceFinder places(items_.text(), file);
    for (const SyntaxMessage& message : messages_) {
        const DiagnosticRule& rule = syntaxRules()[static_cast<std::size_t>(message.code)];
        Diagnostic& diagnostic = all.emplace_back();
        diagnostic.severity = rule.severity;
        diagnostic.code = rule.name;
        diagnostic.place = places.place(message.offset, message.length);
        diagnostic.message = message.text;
        if (!message.relatedText.empty())
            diagnostic.related.push_back({PlaceFinder(places).place(message.relatedOffset, 1), message.relatedText});
    }
    return all;
}

// Walks the nodes, and writes what stands between the items with the item behind it.
std::uint32_t SyntaxTree::elementBefore(std::size_t offset) const {
    std::uint32_t element = 0;
    for (std::uint32_t node = 1; node < nodes_.size(); node = nodes_[node].next) {
        if (nodes_[node].isFault() || nodes_[node].begin == nodes_[node].end) continue;
        if (items_[nodes_[node].begin].offset >= offset) break;
        element = node;
    }
    return element;
}

std::string SyntaxTree::text() const {
    std::string out;
    std::size_t item = 0;
    std::size_t offset = 0;
    const auto writeTo = [&](std::size_t end) {
        for (; item < end; ++item) {
            const auto& written = items_[item];
            out += items_.text().substr(offset, written.offset - offset);
            out += items_.textOf(written);
            offset = written.offset + written.length;
        }
    };
    for (const SyntaxNode& node : nodes_) writeTo(node.begin);
    writeTo(nodes_.empty() ? 0 : nodes_.front().end);
    return out + std::string(items_.text().substr(offset));
}

namespace {

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
constexpr std::array<std::string_view, 7> typographicQuotes = {
    "\xe2\x80\x9c", "\xe2\x80\x9d", "\xe2\x80\x9e", "\xe2\x80\x98", "\xe2\x80\x99", "\xc2\xab", "\xc2\xbb"};

bool hasQuote(std::string_view text) {
    return std::any_of(typographicQuotes.begin(), typographicQuotes.end(),
                       [&](std::string_view quote) { return text.find(quote) != text.npos; });
}

/// What is often wrong all over a text is said once, at the first place, with its number.
class ItemMessages {
public:
    explicit ItemMessages(const SourceItems& items) : items_(items) {}

    std::vector<SyntaxMessage> run() {
        for (const std::uint32_t offset : items_.refusals()) take(offset);
        say(returns_, Code::carriageReturn, "carriage return; lines end with a newline alone", "such places");
        say(quotes_, Code::typographicQuote, "typographic quote; write \"", "such places");
        return std::move(messages_);
    }

private:
    struct Count {
        std::uint32_t offset = 0;
        std::size_t number = 0;
        void add(std::uint32_t at) {
            if (number++ == 0) offset = at;
        }
    };

    void say(const Count& count, SyntaxCode code, std::string text, std::string_view what) {
        if (count.number == 0) return;
        if (count.number > 1) text += " (" + std::to_string(count.number) + " " + std::string(what) + ")";
        messages_.push_back({code, count.offset, 1, std::move(text), 0, {}});
    }

    void add(SyntaxCode code, std::uint32_t offset, std::uint32_t length, std::string text,
             std::optional<SyntaxMend> mend = {}) {
        messages_.push_back({code, offset, length, std::move(text), 0, {}, std::move(mend)});
    }

    // The item that a refused offset is in.
    const SourceItem& itemAt(std::uint32_t offset) {
        while (item_ + 1 < items_.size() && items_[item_].offset + items_[item_].length <= offset) ++item_;
        return items_[item_];
    }

    void take(std::uint32_t offset) {
        if (items_.size() == 0) return;
        const SourceItem& item = itemAt(offset);
        switch (item.kind) {
        case SourceItem::Unrecognized: return takeRun(item, offset);
        case SourceItem::OpenString:
            return add(Code::openString, item.offset, item.length, "text without its second quote; add it");
        case SourceItem::BlockComment:
            return add(Code::openComment, item.offset, 2, "comment that does not end; add */");
        case SourceItem::FileStatement:
            return add(Code::openFileStatement, item.offset, item.length, "expected ';' and the end of the line");
        default:
            return add(Code::longWord, item.offset, item.length,
                       "word of " + std::to_string(item.length) + " characters; shorten it to 31");
        }
    }

    void takeRun(const SourceItem& item, std::uint32_t offset) {
        if (offset != item.offset) return; // said with the first of the run
        const std::string_view text = items_.textOf(item);
        if (offset == 0 && text.starts_with(byteOrderMark))
            return add(Code::byteOrderMark, 0, 3, "byte order mark; save the text without it", SyntaxMend{0, 3, ""});
        if (text.find_first_not_of('\r') == text.npos) return returns_.add(offset);
        if (hasQuote(text)) return quotes_.add(offset);
        const unsigned char first = static_cast<unsigned char>(text.front());
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", first);
        const bool printable =
            std::all_of(text.begin(), text.end(), [](unsigned char c) { return c > ' ' && c != 0x7f; });
        add(Code::outsideLanguage, item.offset, item.length,
            (printable ? "'" + std::string(text) + "'" : std::string(hex)) + " is outside the language");
    }

    const SourceItems& items_;
    std::size_t item_ = 0;
    Count returns_;
    Count quotes_;
    std::vector<SyntaxMessage> messages_;
};

} // namespace

std::vector<SyntaxMessage> messagesOfItems(const SourceItems& items) { return ItemMessages(items).run(); }

} // namespace hdnt::author
