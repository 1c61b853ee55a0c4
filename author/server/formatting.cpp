#include "author/format/HDNTFormatter.h"
#include "author/server/Stretch.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <string_view>

namespace hdnt::author::server {

namespace {

/// What differs between two texts, in whole lines: bytes of both, from the same beginning on.
struct Difference {
    std::size_t begin;
    std::size_t oldEnd;
    std::size_t newEnd;
};

Difference differenceOf(std::string_view before, std::string_view after) {
    const auto [oldAt, newAt] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto common = static_cast<std::size_t>(oldAt - before.begin());
    const std::size_t begin = before.substr(0, common).rfind('\n') + 1;
    const std::size_t most = std::min(before.size(), after.size()) - begin;
    std::size_t same = 0;
    while (same < most && before[before.size() - same - 1] == after[after.size() - same - 1]) ++same;
    // Whole lines of both texts.
    const auto startsLine = [&](std::string_view text) {
        return same == text.size() || text[text.size() - same - 1] == '\n';
    };
    if (!startsLine(before) || !startsLine(after)) {
        const std::size_t newline = before.find('\n', before.size() - same);
        same = newline == before.npos ? 0 : before.size() - newline - 1;
    }
    return {begin, before.size() - same, after.size() - same};
}

/// What the text is when it is laid out; throws RequestError with the reason when it cannot be.
std::string formatted(const std::string& text) {
    std::string after;
    HDNTFormatProblem problem;
    if (!HDNTFormatter::format(text, after, problem))
        throw RequestError(ErrorCode::requestFailed, "not formatted: line " + std::to_string(problem.line) +
                                                         ", column " + std::to_string(problem.column) + ": " +
                                                         problem.reason);
    return after;
}

Json editsOf(const Session& session, const Document& document, const Stretch& stretch, std::string_view replacement) {
    const std::string_view before = document.text().substr(stretch.begin, stretch.end - stretch.begin);
    if (before == replacement) return Json::array();
    const Difference difference = differenceOf(before, replacement);
    PositionFinder positions(document, session.encoding);
    Json edit = {{"range", rangeOf(positions, stretch.begin + difference.begin, stretch.begin + difference.oldEnd)},
                 {"newText", replacement.substr(difference.begin, difference.newEnd - difference.begin)}};
    return Json::array({std::move(edit)});
}

// The items with the blanks before them, and those at the end of the text.
Stretch around(const frontend::SourceItems& items, std::size_t first, std::size_t last) {
    const std::size_t begin = first == 0 ? 0 : stretchOf(items[first - 1]).end;
    return {begin, last == items.size() ? items.text().size() : last == first ? begin : stretchOf(items[last - 1]).end};
}

// A layout changes what is between items, and no items: those of the stretch are found again by their numbers.
Json formatStretch(const Session& session, const Document& document, const Stretch& stretch) {
    const frontend::SourceItems& items = document.tree().items();
    const std::string after = formatted(std::string(document.text()));
    frontend::SourceItems laidOut;
    frontend::SourceProblem problem;
    if (!laidOut.read(after, problem) || laidOut.size() != items.size()) return Json::array();
    std::size_t first = itemBehind(items, stretch.begin);
    if (first > 0 && stretchOf(items[first - 1]).end > stretch.begin) --first;
    const std::size_t last = std::max(first, stretch.end == 0 ? 0 : itemBehind(items, stretch.end - 1));
    const Stretch there = around(laidOut, first, last);
    return editsOf(session, document, around(items, first, last),
                   std::string_view(after).substr(there.begin, there.end - there.begin));
}

/// The outermost part that ends with the token before an offset; empty when none does.
Stretch endedBefore(const Document& document, std::size_t offset) {
    const SyntaxTree& tree = document.tree();
    const std::size_t behind = itemBehind(tree.items(), offset == 0 ? 0 : offset - 1);
    for (const SyntaxNode& node : tree.nodes())
        if (node.end == behind && node.begin < node.end && node.part != NtlPart::file) return stretchOf(tree, node);
    return {};
}

} // namespace

Json formatDocument(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    return editsOf(session, document, {0, document.text().size()}, formatted(std::string(document.text())));
}

Json formatRange(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const auto offsetAt = [&](const char* end) {
        return document.offsetAt(positionOf(params.at("range").at(end)), session.encoding);
    };
    const std::size_t begin = offsetAt("start");
    return formatStretch(session, document, {begin, std::max(begin, offsetAt("end"))});
}

// While a text is typed it is seldom one that can be laid out, and nobody asked.
Json formatOnType(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const std::size_t offset = document.offsetAt(positionOf(params.at("position")), session.encoding);
    const Stretch stretch = endedBefore(document, offset);
    if (stretch == Stretch{} || !document.tree().messages().empty()) return nullptr;
    return formatStretch(session, document, stretch);
}

} // namespace hdnt::author::server
