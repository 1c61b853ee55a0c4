#include "author/format/HDNTFormatter.h"
#include "author/format/LineTable.internal.h"
#include "hdnt/frontend/ArchDirective.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <limits>

namespace hdnt::author {

namespace {

// A cell that is wider than the narrowest of its column by more than this takes no part in the alignment, so that one
// long name does not push all others far to the right. The same for code with comments behind it.
constexpr std::size_t CellSpread = 16;
constexpr std::size_t CommentSpread = 32;
// Finished lines are handed on by then, so that a long run of them is not there twice.
constexpr std::size_t LongestOut = 1 << 16;
constexpr std::size_t ManyLines = 1000;

/// The width that a column gets.
class CommonWidth {
public:
    explicit CommonWidth(std::size_t spread) : spread_(spread) {}
    // First all widths, then all again.
    void see(std::size_t width) { least_ = std::min(least_, width); }
    void fit(std::size_t width) {
        if (width <= least_ + spread_) common_ = std::max(common_, width);
    }
    std::size_t get() const { return common_; }

private:
    std::size_t spread_;
    std::size_t least_ = std::numeric_limits<std::uint32_t>::max();
    std::size_t common_ = 0;
};

// The column behind a text that begins in column 0, with tab stops every eight columns.
std::size_t columnBehind(std::string_view text) {
    std::size_t column = 0;
    for (const char c : text) {
        if (c == '\t') column = column / 8 * 8 + 8;
        else if (!hdnt::platform::continuesCharacter(c)) ++column;
    }
    return column;
}

std::size_t columnOf(std::string_view text, std::size_t offset) {
    const std::size_t lineStart = text.substr(0, offset).rfind('\n') + 1;
    return columnBehind(text.substr(lineStart, offset - lineStart));
}

} // namespace

// Whether something follows the cell, so that its width matters.
bool FormattedLine::isFollowed(std::size_t cell) const {
    return std::any_of(cells.begin() + static_cast<long>(cell), cells.end(),
                       [](std::uint16_t start) { return start > 0; });
}

// What is below a blank line, or a line that is aligned with no other, is aligned with nothing above.
FormattedLine& LineTable::begin(int indent, bool blankBefore) {
    if (!lines_.empty()) {
        const bool joins = last().style != FormattedLine::Style::Plain || last().hasCodeAndComment();
        if (blankBefore || !joins) finishBlock();
    }
    if (lines_.empty()) blankBefore_ = blankBefore;
    FormattedLine& line = lines_.emplace_back();
    line.codeStart = static_cast<std::uint32_t>(code_.size());
    line.indent = static_cast<std::uint8_t>(indent);
    return line;
}

// Whether there is a blank before the first one depends on the line.
void LineTable::append(const std::vector<Piece>& pieces, bool blankBefore) {
    FormattedLine& line = last();
    const std::size_t before = code_.size();
    unsigned flags = 0;
    bool blank = blankBefore;
    for (const Piece& piece : pieces) {
        if (blank || (&piece != pieces.data() && piece.is(Piece::BlankBefore))) code_.append(' ');
        code_.append(text_.data() + piece.offset, piece.length);
        flags |= piece.flags;
        blank = false;
    }
    if (flags & Piece::NotAscii) line.isAscii = false;
    line.codeLength += static_cast<std::uint32_t>(code_.size() - before);
}

void LineTable::addComment(std::size_t offset, std::size_t length) {
    FormattedLine& line = last();
    ++line.commentCount;
    line.endsInBlock = text_.substr(offset, length).find('\n') != text_.npos;
    comments_.push_back({static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(length)});
}

// Runs are lines below each other that belong together.
template <typename InRun, typename Align>
void LineTable::forRuns(InRun&& inRun, Align&& align) {
    for (auto begin = lines_.begin(); begin != lines_.end();) {
        auto end = std::next(begin);
        if (inRun(*begin, *begin)) {
            end = std::find_if_not(end, lines_.end(), [&](const FormattedLine& line) { return inRun(*begin, line); });
            if (end - begin > 1) align(begin, end);
        }
        begin = end;
    }
}

std::size_t LineTable::widthOf(const FormattedLine& line, std::size_t begin, std::size_t end) const {
    if (line.isAscii) return end - begin;
    return platform::characters(codeOf(line).substr(begin, end - begin));
}

LineTable::CellWidths LineTable::cellWidths(const FormattedLine& line) const {
    CellWidths widths{};
    std::size_t cell = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
        if (line.cells[i] == 0) continue;
        // One that stands before those it belongs behind has no end.
        widths[cell] = widthOf(line, start, line.cells[i] > start ? line.cells[i] - std::size_t{1} : line.codeLength);
        start = line.cells[i];
        cell = i + 1;
    }
    widths[cell] = widthOf(line, start, line.codeLength);
    return widths;
}

void LineTable::alignCells(Lines::iterator begin, Lines::iterator end) {
    constexpr std::size_t count = FormattedLine::MaxCells;
    std::array<CommonWidth, count - 1> columns{CommonWidth(CellSpread), CommonWidth(CellSpread),
                                               CommonWidth(CellSpread)};
    const auto forCells = [&](auto&& take) {
        for (auto line = begin; line != end; ++line) {
            const CellWidths widths = cellWidths(*line);
            for (std::size_t cell = 0; cell + 1 < count; ++cell)
                if (widths[cell] > 0 && line->isFollowed(cell)) take(columns[cell], widths[cell]);
        }
    };
    forCells([](CommonWidth& column, std::size_t width) { column.see(width); });
    forCells([](CommonWidth& column, std::size_t width) { column.fit(width); });
    CellWidths starts{};
    for (std::size_t cell = 0; cell + 1 < count; ++cell)
        starts[cell + 1] = starts[cell] + (columns[cell].get() > 0 ? columns[cell].get() + 1 : 0);
    for (auto line = begin; line != end; ++line) {
        const CellWidths widths = cellWidths(*line);
        std::size_t column = widths[0];
        for (std::size_t cell = 1; cell < count; ++cell) {
            if (line->cells[cell - 1] == 0) continue;
            const std::size_t blanks = std::max(starts[cell], column + 1) - column;
            line->padding[cell - 1] = static_cast<std::uint8_t>(blanks - 1);
            column += blanks + widths[cell];
        }
        const bool isMixedUp = line->cells[2] > 0 && line->cells[2] < line->cells[1];
        if (line->indent + column > static_cast<std::size_t>(HDNTFormatter::Width) ||
            (isMixedUp && line->padding[1] > 0 && line->padding[2] > 0))
            line->padding = {};
    }
}

std::size_t LineTable::widthOfCode(const FormattedLine& line) const {
    std::size_t width = line.indent + widthOf(line, 0, line.codeLength);
    for (const std::uint8_t blanks : line.padding) width += blanks;
    return width;
}

void LineTable::alignComments(Lines::iterator begin, Lines::iterator end) {
    CommonWidth common(CommentSpread);
    for (auto line = begin; line != end; ++line) common.see(widthOfCode(*line));
    for (auto line = begin; line != end; ++line) common.fit(widthOfCode(*line));
    for (auto line = begin; line != end; ++line) {
        const std::size_t width = widthOfCode(*line);
        line->commentPadding = static_cast<std::uint8_t>(width < common.get() ? common.get() - width : 0);
    }
}

// The further lines of a block comment move with its first one.
void LineTable::renderComment(const Comment& comment, std::size_t lineStart) {
    const std::string_view text = text_.substr(comment.offset, comment.length);
    if (text.find('\n') != text.npos) {
        const std::size_t newColumn = columnOf(out_.view().substr(lineStart), out_.size() - lineStart);
        const std::size_t oldColumn = columnOf(text_, comment.offset);
        if (newColumn != oldColumn) return renderShifted(text, oldColumn, newColumn);
    }
    out_.append(text.data(), text.size());
}

void LineTable::renderShifted(std::string_view text, std::size_t oldColumn, std::size_t newColumn) {
    std::size_t end = text.find('\n');
    out_.append(text.data(), end);
    while (end != text.npos) {
        text.remove_prefix(end + 1);
        end = text.find('\n');
        std::string_view line = text.substr(0, end);
        const std::size_t blanks = std::min(line.find_first_not_of(" \t"), line.size());
        const std::size_t column = columnBehind(line.substr(0, blanks)) + newColumn;
        out_.append('\n');
        if (blanks == line.size()) continue;
        line.remove_prefix(blanks);
        // No line of a comment may become a directive.
        const std::size_t least = frontend::isArchDirective(line) ? 1 : 0;
        out_.append(std::max(column, oldColumn + least) - oldColumn, ' ');
        out_.append(line.data(), line.size());
    }
}

void LineTable::render(const FormattedLine& line, std::size_t firstComment) {
    const std::size_t lineStart = out_.size();
    out_.append(line.indent, ' ');
    const std::string_view code = codeOf(line);
    std::size_t done = 0;
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
        if (line.padding[i] == 0) continue;
        out_.append(code.data() + done, line.cells[i] - done);
        out_.append(line.padding[i], ' ');
        done = line.cells[i];
    }
    if (code.size() >= LongestOut && line.commentCount == 0) {
        handOn();
        sink_.take(code.substr(done));
        done = code.size();
    }
    out_.append(code.data() + done, code.size() - done);
    for (std::size_t i = 0; i < line.commentCount; ++i) {
        if (i > 0) out_.append(' ');
        else if (line.codeLength > 0) out_.append(std::size_t{2} + line.commentPadding, ' ');
        renderComment(comments_[firstComment + i], lineStart);
    }
    out_.append('\n');
    if (out_.size() >= LongestOut) handOn();
}

void LineTable::handOn() {
    sink_.take(out_.view());
    out_.clear();
}

void LineTable::finishBlock() {
    using Style = FormattedLine::Style;
    if (lines_.size() > 1) {
        forRuns(
            [](const FormattedLine& first, const FormattedLine& line) {
                return line.style != Style::Plain && line.style == first.style && line.indent == first.indent;
            },
            [this](auto begin, auto end) { alignCells(begin, end); });
        forRuns(
            [](const FormattedLine& first, const FormattedLine& line) {
                return line.hasCodeAndComment() && line.indent == first.indent && !line.endsInBlock;
            },
            [this](auto begin, auto end) { alignComments(begin, end); });
    }
    if (blankBefore_) out_.append('\n');
    while (lines_.size() > ManyLines) renderFirst(); // what they take goes as the new text comes
    std::size_t comment = 0;
    for (const FormattedLine& line : lines_) {
        render(line, comment);
        comment += line.commentCount;
    }
    lines_.clear();
    code_.clear();
    comments_.clear();
}

void LineTable::renderFirst() {
    const FormattedLine& line = lines_.front();
    render(line, 0);
    comments_.erase(comments_.begin(), comments_.begin() + line.commentCount);
    lines_.pop_front();
}

void LineTable::finish() {
    finishBlock();
    handOn();
}

} // namespace hdnt::author
