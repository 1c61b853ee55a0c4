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
    bool operator==(const Stretch&) const = default;
};

struct Waiver {
    std::vector<std::string> codes;
    std::string until; ///< empty: for good
    std::string fault; ///< why it has no effect
    Stretch comment;
    std::optional<Stretch> covered;
};

/// Where a code is waived. Stretches are statements, so that each two lie apart or one in the other; many waivers may
/// be of one.
class WaivedStretches {
public:
    void add(const Stretch& stretch) { all_.push_back({stretch}); }

    /// To be called when all are added, before the rest.
    void order() {
        std::ranges::sort(all_, isBefore);
        all_.erase(std::unique(all_.begin(), all_.end(), [](auto& a, auto& b) { return a.at == b.at; }), all_.end());
        for (std::size_t i = 0; i < all_.size(); ++i) {
            std::size_t outer = i - 1; // none before the first
            while (outer != none && all_[outer].at.end <= all_[i].at.begin) outer = all_[outer].outer;
            all_[i].outer = outer;
        }
    }

    /// Whether the byte is in one. All that it is in are used then.
    bool use(std::size_t offset) {
        const auto behind = std::ranges::upper_bound(all_, offset, {}, [](const One& one) { return one.at.begin; });
        auto i = static_cast<std::size_t>(behind - all_.begin()) - 1;
        while (i != none && all_[i].at.end <= offset) i = all_[i].outer;
        if (i == none) return false;
        for (; i != none && !all_[i].isUsed; i = all_[i].outer) all_[i].isUsed = true;
        return true;
    }

    /// The same for a line, where the byte is not known.
    bool use(const Stretch& line) {
        bool is = false;
        for (One& one : all_) {
            if (one.at.begin >= line.end || one.at.end < line.begin) continue;
            is = one.isUsed = true;
        }
        return is;
    }

    bool isUsed(const Stretch& stretch) const { return std::ranges::lower_bound(all_, One{stretch}, isBefore)->isUsed; }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    struct One {
        Stretch at;
        std::size_t outer = none; ///< the least that it lies in
        bool isUsed = false;
    };
    static bool isBefore(const One& a, const One& b) {
        return a.at.begin != b.at.begin ? a.at.begin < b.at.begin : a.at.end > b.at.end;
    }
    std::vector<One> all_;
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
        const auto found = stretches_.find(finding.code);
        if (found == stretches_.end()) return false;
        const Place& place = finding.place;
        return place.offset == Place::unknown ? found->second.use(lineAt(place.line)) : found->second.use(place.offset);
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
                    if (!stretches_.at(code).isUsed(*waiver.covered) && isJudged(code, judged))
                        say(LintCode::waiverUnused, code);
        }
    }

    /// Ends those whose last day is over; the others hold from here on.
    void begin(const year_month_day& today) {
        for (Waiver& waiver : waivers_) {
            if (waiver.fault.empty() && !waiver.until.empty() && *dateOf(waiver.until) < today) waiver.covered.reset();
            if (!waiver.covered) continue;
            for (const std::string& code : waiver.codes) stretches_[code].add(*waiver.covered);
        }
        for (auto& [code, stretches] : stretches_) stretches.order();
    }

private:
    void add(std::size_t item, std::string_view said) {
        Waiver waiver = author::read(said);
        waiver.comment = stretchOf(item, item + 1);
        waiver.covered = coveredBy(item);
        if (waiver.fault.empty() && !waiver.covered) waiver.fault = "no statement stands behind it";
        if (!waiver.fault.empty()) waiver.covered.reset();
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

    /// With its end, empty where there is no such line.
    Stretch lineAt(int line) const {
        const std::size_t behind = tree_.items().text().size() + 1;
        const auto number = static_cast<std::size_t>(std::max(line, 0));
        if (number == 0 || number > lines_.size()) return {behind, behind};
        return {lines_[number - 1], number == lines_.size() ? behind : lines_[number]};
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
    std::map<std::string, WaivedStretches, std::less<>> stretches_; ///< by code
};

} // namespace

void applyWaivers(std::vector<Diagnostic>& findings, const std::vector<std::string>& files,
                  const WaiverOptions& options) {
    std::set<std::string> all(files.begin(), files.end());
    for (const Diagnostic& one : findings) all.insert(one.place.file);
    for (const std::string& name : all) {
        WaivedFile file;
        if (!file.read(name, textOfFile(name, options.texts))) continue;
        file.begin(options.today);
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
