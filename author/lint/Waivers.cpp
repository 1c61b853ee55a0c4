#include "author/lint/Waivers.h"

#include "author/lint/Findings.internal.h"
#include "author/lint/RuleControl.h"
#include "author/lint/Statements.internal.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <optional>
#include <set>
#include <string_view>

namespace hdnt::author {

namespace {

using frontend::SourceItem;
using std::chrono::year_month_day;

constexpr std::string_view mark = "ntl: allow";
constexpr std::string_view blanks = " \t\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::optional<int> numberOf(std::string_view digits) {
    int number = 0;
    const std::from_chars_result read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? std::optional(number) : std::nullopt;
}

std::optional<year_month_day> dateOf(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    const auto year = numberOf(text.substr(0, 4));
    const auto month = numberOf(text.substr(5, 2));
    const auto day = numberOf(text.substr(8, 2));
    if (!year || !month || !day || *month < 1 || *day < 1) return std::nullopt;
    const year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                              std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(date) : std::nullopt;
}

struct Stretch {
    std::size_t begin = 0; ///< bytes of the text
    std::size_t end = 0;
};

struct Waiver {
    std::vector<std::string> codes;
    std::string until; ///< empty: for good
    std::string fault; ///< why it has no effect
    Stretch comment;
    std::optional<Stretch> covered;
    int firstLine = 0; ///< of what is covered
    int lastLine = 0;
    std::set<std::string> used; ///< codes that something was waived of

    bool covers(const Place& place) const {
        if (!covered) return false;
        if (place.offset == Place::unknown) return place.line >= firstLine && place.line <= lastLine;
        return place.offset >= covered->begin && place.offset < covered->end;
    }
    bool allows(const Diagnostic& finding) const {
        return covers(finding.place) && std::ranges::find(codes, finding.code) != codes.end();
    }
};

std::string faultOfCodes(const std::vector<std::string>& codes) {
    for (const std::string& code : codes) {
        if (code.empty()) return "no code; write \"ntl: allow CODE: reason\"";
        if (code.starts_with("waiver-")) return "'" + code + "' cannot be waived";
        if (std::string refusal = refusalOfControl(code); !refusal.empty()) return refusal;
    }
    return {};
}

// What stands behind the mark.
Waiver read(std::string_view text) {
    Waiver waiver;
    const std::size_t colon = text.find(':');
    std::string_view head = trimmed(text.substr(0, colon));
    for (std::size_t at = head.find("until"); at != head.npos; at = head.find("until", at + 1)) {
        const bool isWord = at == 0 || blanks.find(head[at - 1]) != blanks.npos;
        if (!isWord) continue;
        waiver.until = trimmed(head.substr(at + 5));
        head = trimmed(head.substr(0, at));
        if (!dateOf(waiver.until)) waiver.fault = "'" + waiver.until + "' is no date; write YEAR-MONTH-DAY";
    }
    for (std::size_t start = 0, end = 0; end != head.npos; start = end + 1) {
        end = head.find(',', start);
        waiver.codes.emplace_back(trimmed(head.substr(start, end == head.npos ? end : end - start)));
    }
    if (waiver.fault.empty()) waiver.fault = faultOfCodes(waiver.codes);
    if (waiver.fault.empty() && (colon == text.npos || trimmed(text.substr(colon + 1)).empty()))
        waiver.fault = "no reason; write \"ntl: allow CODE: reason\"";
    return waiver;
}

/// What stands behind the mark of a waiver; none when the comment is another one.
std::optional<std::string_view> waiverIn(std::string_view comment) {
    if (comment.ends_with("*/")) comment.remove_suffix(2);
    comment = trimmed(comment.substr(std::min(comment.find_first_not_of("/*"), comment.size())));
    if (!comment.starts_with(mark)) return std::nullopt;
    comment.remove_prefix(mark.size());
    const bool isWord = comment.empty() || blanks.find(comment.front()) != blanks.npos || comment.front() == ':';
    return isWord ? std::optional(comment) : std::nullopt;
}

bool isJudged(const std::string& code, Judged judged) {
    return judged == Judged::AllRules || (judged == Judged::QuickRules && !isThoroughRule(code));
}

/// One file with its waivers.
class WaivedFile {
public:
    bool read(const std::string& file, std::string text) {
        if (text.find(mark) == text.npos || !tree_.read(std::move(text))) return false;
        file_ = file;
        const auto& items = tree_.items();
        const std::string_view all = items.text();
        for (std::size_t end = 0; (end = all.find('\n', end)) != all.npos;) lines_.push_back(++end);
        for (std::size_t i = 0; i < items.size(); ++i)
            if (const auto said = items[i].isComment() ? waiverIn(items.textOf(i)) : std::nullopt) add(i, *said);
        return !waivers_.empty();
    }

    bool waives(const Diagnostic& finding) {
        bool is = false;
        for (Waiver& waiver : waivers_) {
            if (!waiver.allows(finding)) continue;
            waiver.used.insert(finding.code);
            is = true;
        }
        return is;
    }

    void judge(std::vector<Diagnostic>& findings, Judged judged) const {
        for (const Waiver& waiver : waivers_) {
            const auto say = [&](LintCode code, std::string argument) {
                findings.push_back(finding(code, placeOf(waiver.comment), std::vector{std::move(argument)}));
            };
            if (!waiver.fault.empty()) say(LintCode::waiverForm, waiver.fault);
            else if (!waiver.covered) say(LintCode::waiverExpired, waiver.until);
            else
                for (const std::string& code : waiver.codes)
                    if (!waiver.used.contains(code) && isJudged(code, judged)) say(LintCode::waiverUnused, code);
        }
    }

    /// Ends those whose last day is over.
    void end(const year_month_day& today) {
        for (Waiver& waiver : waivers_)
            if (waiver.fault.empty() && !waiver.until.empty() && *dateOf(waiver.until) < today) waiver.covered.reset();
    }

private:
    void add(std::size_t item, std::string_view said) {
        Waiver waiver = author::read(said);
        waiver.comment = stretchOf(item, item + 1);
        waiver.covered = coveredBy(item);
        if (waiver.fault.empty() && !waiver.covered) waiver.fault = "no statement stands behind it";
        if (!waiver.fault.empty()) waiver.covered.reset();
        if (waiver.covered) {
            waiver.firstLine = lineOf(waiver.covered->begin);
            waiver.lastLine = lineOf(waiver.covered->end);
        }
        waivers_.push_back(std::move(waiver));
    }

    // Asked in the order of the comments, of which those before one statement are walked once.
    std::optional<Stretch> coveredBy(std::size_t comment) {
        const auto& items = tree_.items();
        if (!items[comment].startsLine) return coveredBy(statementAround(tree_, comment - 1));
        next_ = std::max(next_, comment + 1);
        while (next_ < items.size() && (items[next_].isComment() || items[next_].kind == SourceItem::Directive))
            ++next_;
        const std::size_t next = next_;
        if (next == items.size()) return std::nullopt;
        if (items[next].kind == SourceItem::FileStatement) return stretchOf(next, next + 1);
        if (items.textOf(next) == "library") return stretchOf(next, items.size());
        return coveredBy(statementFrom(tree_, next));
    }

    std::optional<Stretch> coveredBy(const SyntaxNode* node) const {
        return node ? std::optional(stretchOf(node->begin, node->end)) : std::nullopt;
    }

    Stretch stretchOf(std::size_t begin, std::size_t end) const {
        const auto& last = tree_.items()[end - 1];
        return {tree_.items()[begin].offset, last.offset + last.length};
    }

    int lineOf(std::size_t offset) const {
        return static_cast<int>(std::upper_bound(lines_.begin(), lines_.end(), offset) - lines_.begin());
    }

    Place placeOf(const Stretch& stretch) const {
        const std::string_view text = tree_.items().text();
        const std::size_t end = std::min(stretch.end, text.find('\n', stretch.begin));
        Place place;
        place.file = file_;
        place.line = place.textLine = place.order = lineOf(stretch.begin);
        const std::size_t lineStart = lines_[static_cast<std::size_t>(place.line) - 1];
        const auto columnOf = [&](std::size_t offset) {
            return static_cast<int>(platform::characters(text.substr(lineStart, offset - lineStart))) + 1;
        };
        place.column = columnOf(stretch.begin);
        place.endColumn = columnOf(std::min(end, text.size()));
        place.offset = stretch.begin;
        place.endOffset = end;
        place.text = text.substr(lineStart, text.find('\n', lineStart) - lineStart);
        return place;
    }

    std::string file_;
    SyntaxTree tree_;
    std::vector<std::size_t> lines_{0}; ///< where each begins
    std::size_t next_ = 0;
    std::vector<Waiver> waivers_;
};

} // namespace

void applyWaivers(std::vector<Diagnostic>& findings, const std::vector<std::string>& files,
                  const WaiverOptions& options) {
    std::set<std::string> all(files.begin(), files.end());
    for (const Diagnostic& one : findings) all.insert(one.place.file);
    for (const std::string& name : all) {
        WaivedFile file;
        if (!file.read(name, textOfFile(name, options.texts))) continue;
        file.end(options.today);
        std::erase_if(findings, [&](const Diagnostic& one) { return one.place.file == name && file.waives(one); });
        file.judge(findings, options.judged);
    }
}

std::chrono::year_month_day today() {
    const std::time_t now = std::time(nullptr);
    std::tm day{};
    localtime_r(&now, &day);
    return {std::chrono::year(day.tm_year + 1900), std::chrono::month(static_cast<unsigned>(day.tm_mon + 1)),
            std::chrono::day(static_cast<unsigned>(day.tm_mday))};
}

} // namespace hdnt::author
