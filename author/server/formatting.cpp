#include "author/format/HDNTFormatter.h"
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

} // namespace

Json formatDocument(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const std::string before(document.text());
    std::string after;
    HDNTFormatProblem problem;
    if (!HDNTFormatter::format(before, after, problem))
        throw RequestError(ErrorCode::requestFailed, "not formatted: line " + std::to_string(problem.line) +
                                                         ", column " + std::to_string(problem.column) + ": " +
                                                         problem.reason);
    if (after == before) return Json::array();
    const Difference difference = differenceOf(before, after);
    PositionFinder positions(document, session.encoding);
    Json edit = {{"range", rangeOf(positions, difference.begin, difference.oldEnd)},
                 {"newText", after.substr(difference.begin, difference.newEnd - difference.begin)}};
    return Json::array({std::move(edit)});
}

} // namespace hdnt::author::server
