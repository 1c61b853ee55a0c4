// What can be written on with at a place: keywords by the grammar, names by what they stand for.
#include "author/server/completion.internal.h"
#include "author/server/methods.internal.h"
#include "author/syntax/Recovery.internal.h"
#include "author/syntax/expectedAt.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace hdnt::author::server {

namespace {

using frontend::SourceItem;
using frontend::SourceItems;

constexpr std::size_t mostProposals = 500;

std::size_t endOfIdentifier(std::string_view text, std::size_t offset) {
    const auto isPart = [](char c) {
        return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    };
    while (offset < text.size() && isPart(text[offset])) ++offset;
    return offset;
}

// A string that was begun before others in its line ends at the quote of the next one.
Word quotedWord(const SourceItems& items, std::size_t item, std::size_t offset) {
    const Stretch stretch = stretchOf(items[item]);
    const std::string_view behind = items.text().substr(offset, stretch.end - offset);
    const bool isWhole = items[item].kind == T_StringConstant && behind.find_first_of(";,") == behind.npos;
    return {Word::Kind::quoted, {stretch.begin, isWhole ? stretch.end : endOfIdentifier(items.text(), offset)}};
}

// What stands behind the keyword in its line, up to a blank or a ";".
Word fileWord(const SourceItems& items, std::size_t item, std::size_t offset) {
    const std::size_t first = items[item].offset;
    const std::string_view before = items.text().substr(first, offset - first);
    const std::size_t keyword = before.find_first_of(" \t");
    const std::size_t begin = before.find_first_not_of(" \t", std::min(keyword, before.size()));
    const std::size_t name = first + std::min(begin, before.size());
    if (keyword == before.npos || items.text().substr(name, offset - name).find_first_of(" \t\n;") != before.npos)
        return {Word::Kind::none, {offset, offset}};
    return {Word::Kind::file, {name, std::min(items.text().find_first_of(" \t\r\n;", offset), items.text().size())}};
}

} // namespace

Word wordAt(const SourceItems& items, std::size_t offset) {
    const Word empty = {Word::Kind::plain, {offset, offset}};
    const std::size_t behind = offset == 0 ? 0 : itemBehind(items, offset - 1);
    if (behind == 0) return empty;
    const std::size_t item = behind - 1;
    const Stretch stretch = stretchOf(items[item]);
    const Word nothing = {Word::Kind::none, {offset, offset}};
    const std::string_view between = items.text().substr(stretch.end, std::max(offset, stretch.end) - stretch.end);
    if (items[item].kind == SourceItem::LineComment && between.find('\n') == between.npos) return nothing;
    if (stretch.end < offset) return empty;
    const bool isInside = offset < stretch.end;
    switch (items[item].kind) {
    case SourceItem::BlockComment: return isInside || !items.textOf(item).ends_with("*/") ? nothing : empty;
    case SourceItem::FileStatement: return fileWord(items, item, offset);
    case SourceItem::Directive: return nothing;
    case SourceItem::OpenString: return quotedWord(items, item, offset);
    case T_StringConstant: return isInside ? quotedWord(items, item, offset) : empty;
    default: break;
    }
    if (items[item].kind < T_Library) return empty;
    return isWord(items.textOf(item)) ? Word{Word::Kind::plain, stretch} : nothing;
}

void Proposals::add(Proposal proposal) {
    if (proposal.label.empty() || !known_.emplace(proposal.kind, proposal.label).second) return;
    all_.push_back(std::move(proposal));
}

std::vector<Proposal> Proposals::sorted() && {
    std::ranges::stable_sort(all_, {}, [](const Proposal& one) { return std::tie(one.rank, one.label); });
    return std::move(all_);
}

namespace {

void proposeKeywords(const TokenSet& expected, bool withBools, Proposals& to) {
    if (expected.contains(T_Int)) // a type
        for (const char* const bits : {"1'b", "4'h"}) to.add({bits, Proposal::Kind::keyword, "", false, 1});
    expected.forEach([&](int token) {
        const std::string_view word = frontend::spellingOf(token);
        if (!word.empty()) to.add({std::string(word), Proposal::Kind::keyword, "", false, 1});
        if (token == T_BoolConstant && withBools)
            for (const char* const value : {"true", "false"}) to.add({value, Proposal::Kind::keyword, "", false, 1});
    });
}

/// What is often written as a whole. "${1:x}" is a place to fill in, in the syntax of the protocol.
struct Snippet {
    int token; ///< that it begins with
    const char* label;
    const char* body;
};
constexpr Snippet snippets[] = {
    {T_Block, "block {...}",
     "block \"${1:NAME}\" {\n  primgroup = \"${2:GROUP}\";\n  pin \"${3:I}\" input data;\n  pin \"${4:O}\" output "
     "data;\n}"},
    {T_Block, "block {...} mapsto {...}",
     "block \"${1:NAME}\" {\n  primgroup = \"${2:GROUP}\";\n  pin \"${3:I}\" input data;\n  pin \"${4:O}\" output "
     "data;\n"
     "} mapsto {\n  inst \"${5:cell}\" \"${6:BLOCK}\";\n  signal \"i\" : \"$3\", \"$5\" \"${7:I}\";\n"
     "  signal \"o\" : \"$5\" \"${8:O}\", \"$4\";\n}"},
    {T_Property, "property {...}", "property ${1:int} \"${2:NAME}\" { default = ${3:0} }"},
};

void proposeSnippets(const TokenSet& expected, Proposals& to) {
    for (const Snippet& one : snippets)
        if (expected.contains(one.token)) to.add({one.label, Proposal::Kind::snippet, "", false, 1, one.body});
}

// In other places than where one is declared, something else may stand, too.
bool allowsFunctions(const TokenSet& expected) {
    return expected.contains(T_Identifier) && expected != TokenSet{T_Identifier};
}

/// What a text is tried with in place of a word, by what may stand there: a string, or else another constant.
const char* stopgapFor(const TokenSet& expected) {
    static constexpr std::pair<int, const char*> stopgaps[] = {
        {T_StringConstant, "\"\""}, {T_IntConstant, "0"},    {T_DoubleConstant, "0.0"},
        {T_BoolConstant, "true"},   {T_HexConstant, "4'h0"}, {T_BinaryConstant, "1'b0"},
    };
    for (const auto& [token, text] : stopgaps)
        if (expected.contains(token)) return text;
    return nullptr;
}

void propose(const Libraries& libraries, const Word& word, bool withSnippets, Proposals& to) {
    const bool isQuoted = word.kind == Word::Kind::quoted;
    TokenSet expected = {T_StringConstant};
    if (!isQuoted) expected = expectedAt(libraries.current().tree(), word.stretch.begin);
    PropertyValue value;
    if (const char* const stopgap = stopgapFor(expected)) {
        ConstantRole role(libraries, word.stretch, stopgap);
        value = role.value();
        if (value.property) proposeValues(value, to);
        if (expected.contains(T_StringConstant)) {
            role.proposeNames(to);
            role.proposeGroups(to);
        }
    }
    if (isQuoted) return;
    proposeKeywords(expected, !value.property, to);
    if (withSnippets) proposeSnippets(expected, to);
    if (allowsFunctions(expected)) proposeFunctions(libraries, to);
}

/// Items of the protocol for a word of a text.
class Items {
public:
    Items(Session& session, const Text& text, const Word& word)
        : uri_(text.uri), range_(Locations(session.encoding).rangeIn(text, word.stretch)), word_(word) {
        const std::string_view written = text.items().text().substr(word.stretch.begin, 2);
        inverts_ = word.kind == Word::Kind::quoted && written == "\"~";
    }

    Json of(const Proposal& proposal, std::size_t number) const {
        const bool isPin = proposal.kind == Proposal::Kind::pin;
        std::string text = (isPin && inverts_ ? "~" : "") + proposal.label;
        if (proposal.isQuoted) text = '"' + text + '"';
        std::string place = std::to_string(number);
        place.insert(0, std::to_string(mostProposals).size() - place.size(), '0');
        Json item = {{"label", proposal.label}, {"kind", static_cast<int>(proposal.kind)}, {"sortText", place}};
        if (!proposal.detail.empty()) item["detail"] = proposal.detail;
        if (proposal.isQuoted) item["filterText"] = word_.kind == Word::Kind::quoted ? text : proposal.label;
        if (proposal.kind == Proposal::Kind::block) item["data"] = {{"uri", uri_}, {"block", proposal.label}};
        const bool isSnippet = proposal.kind == Proposal::Kind::snippet;
        if (isSnippet) item["insertTextFormat"] = 2;
        item["textEdit"] = {{"range", range_}, {"newText", isSnippet ? proposal.body : text}};
        return item;
    }

private:
    std::string uri_;
    Json range_;
    Word word_;
    bool inverts_ = false;
};

// Whether the letters come in the name, in their order.
bool fits(std::string_view letters, std::string_view name) {
    const std::string wanted = HSTStringUtils::to_upper_copy(letters);
    const std::string there = HSTStringUtils::to_upper_copy(name);
    std::size_t at = 0;
    for (std::size_t i = 0; i < there.size() && at < wanted.size(); ++i) at += there[i] == wanted[at] ? 1 : 0;
    return at == wanted.size();
}

// What is typed of a word up to an offset.
std::string_view typedOf(const Text& text, const Word& word, std::size_t offset) {
    std::string_view typed = text.items().text().substr(word.stretch.begin, offset - word.stretch.begin);
    typed.remove_prefix(std::min(typed.find_first_not_of("\"~"), typed.size()));
    return typed;
}

// It was asked for by the quote; one that ends a string asks for nothing.
bool hasTypedQuote(const Json& params) {
    constexpr int byCharacter = 2;
    return params.value("/context/triggerKind"_json_pointer, 0) == byCharacter;
}

} // namespace

Json completion(Session& session, const Json& params) {
    const Libraries libraries(session, session.uriOf(params));
    const Text& text = libraries.current();
    const std::size_t offset = text.document->offsetAt(positionOf(params.at("position")), session.encoding);
    const Word word = wordAt(text.items(), offset);
    Proposals proposals;
    const bool isWanted = word.kind == Word::Kind::quoted || (word.kind == Word::Kind::plain && !hasTypedQuote(params));
    const std::string_view typed = typedOf(text, word, offset);
    const bool withSnippets = session.canClient("/textDocument/completion/completionItem/snippetSupport");
    if (word.kind == Word::Kind::file) proposeFiles(libraries, typed, proposals);
    else if (isWanted && !text.tree().nodes().empty()) propose(libraries, word, withSnippets, proposals);
    std::vector<Proposal> sorted = std::move(proposals).sorted();
    const bool isTooMuch = sorted.size() > mostProposals;
    if (isTooMuch) std::erase_if(sorted, [&](const Proposal& one) { return !fits(typed, one.label); });
    if (sorted.size() > mostProposals) sorted.resize(mostProposals);
    Json list = Json::array();
    const Items items(session, text, word);
    for (const Proposal& one : sorted) list.push_back(items.of(one, list.size()));
    return {{"isIncomplete", isTooMuch}, {"items", std::move(list)}};
}

Json resolveCompletion(Session& session, const Json& params) {
    Json item = params;
    const Json data = params.value("data", Json::object());
    const std::string uri = data.value("uri", "");
    if (!session.documents.contains(uri)) return item;
    const Libraries libraries(session, uri);
    const Place block = findBlock(libraries, data.value("block", ""), libraries.current().level);
    if (block) item["documentation"] = {{"kind", "markdown"}, {"value", sheetOf(libraries, block)}};
    return item;
}

} // namespace hdnt::author::server
