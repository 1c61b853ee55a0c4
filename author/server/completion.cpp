// What can be written on with at a place: keywords by the grammar, names by what they stand for.
#include "author/server/completion.internal.h"
#include "author/server/methods.internal.h"
#include "author/syntax/Recovery.internal.h"
#include "author/syntax/expectedAt.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <tuple>

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
    case SourceItem::FileStatement:
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
    expected.forEach([&](int token) {
        const std::string_view word = frontend::spellingOf(token);
        if (!word.empty()) to.add({std::string(word), Proposal::Kind::keyword, "", false, 1});
        if (token == T_BoolConstant && withBools)
            for (const char* const value : {"true", "false"}) to.add({value, Proposal::Kind::keyword, "", false, 1});
    });
}

// In other places than where one is declared, something else may stand, too.
bool allowsFunctions(const TokenSet& expected) {
    return expected.contains(T_Identifier) && expected != TokenSet{T_Identifier};
}

void propose(const Libraries& libraries, const Word& word, Proposals& to) {
    const bool isQuoted = word.kind == Word::Kind::quoted;
    TokenSet expected = {T_StringConstant};
    if (!isQuoted) expected = expectedAt(libraries.current().tree(), word.stretch.begin);
    Place property;
    if (expected.contains(T_StringConstant)) {
        StringRole role(libraries, word.stretch);
        role.proposeNames(to);
        property = role.assigned();
        if (property) proposeValues(property, to);
    }
    if (isQuoted) return;
    proposeKeywords(expected, !property, to);
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
        item["textEdit"] = {{"range", range_}, {"newText", std::move(text)}};
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
    if (isWanted && !text.tree().nodes().empty()) propose(libraries, word, proposals);
    std::vector<Proposal> sorted = std::move(proposals).sorted();
    const bool isTooMuch = sorted.size() > mostProposals;
    const std::string_view typed = typedOf(text, word, offset);
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
