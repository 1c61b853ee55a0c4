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

std::size_t commonWidth(const std::vector<std::size_t>& widths, std::size_t spread) {
    if (widths.empty()) return 0;
    const std::size_t limit = *std::min_element(widths.begin(), widths.end()) + spread;
    std::size_t common = 0;
    for (const std::size_t width : widths)
        if (width <= limit) common = std::max(common, width);
    return common;
}

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

using CellWidths = std::array<std::size_t, FormattedLine::MaxCells>;

CellWidths cellWidths(const FormattedLine& line, std::string_view code) {
    CellWidths widths{};
    std::size_t cell = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
        if (line.cells[i] == 0) continue;
        widths[cell] = platform::characters(code.substr(start, line.cells[i] - 1 - start));
        start = line.cells[i];
        cell = i + 1;
    }
    widths[cell] = platform::characters(code.substr(start));
    return widths;
}

// Whether something follows the cell, so that its width matters.
bool isFollowed(const FormattedLine& line, std::size_t cell) {
    return std::any_of(line.cells.begin() + static_cast<long>(cell), line.cells.end(),
                       [](std::uint16_t start) { return start > 0; });
}

} // namespace

FormattedLine& LineTable::begin(int indent) {
    FormattedLine& line = lines_.emplace_back();
    line.codeStart = code_.size();
    line.indent = static_cast<std::uint16_t>(indent);
    return line;
}

void LineTable::append(std::string_view code) {
    code_ += code;
    last().codeLength += static_cast<std::uint32_t>(code.size());
}

void LineTable::addComment(std::size_t item) {
    FormattedLine& line = last();
    if (line.commentCount++ == 0) line.firstComment = static_cast<std::uint32_t>(item);
}

// Runs are lines below each other, without a blank line in between, that belong together.
template <typename InRun, typename Align>
void LineTable::forRuns(InRun&& inRun, Align&& align) {
    for (std::size_t begin = 0; begin < lines_.size();) {
        std::size_t end = begin + 1;
        if (inRun(lines_[begin], lines_[begin])) {
            while (end < lines_.size() && !lines_[end].blankBefore && inRun(lines_[begin], lines_[end])) ++end;
            if (end > begin + 1) align(begin, end);
        }
        begin = end;
    }
}

void LineTable::alignCells(std::size_t begin, std::size_t end) {
    std::array<std::vector<std::size_t>, FormattedLine::MaxCells> columns;
    std::vector<CellWidths> all;
    for (std::size_t i = begin; i < end; ++i) {
        all.push_back(cellWidths(lines_[i], codeOf(lines_[i])));
        for (std::size_t cell = 0; cell + 1 < columns.size(); ++cell)
            if (all.back()[cell] > 0 && isFollowed(lines_[i], cell)) columns[cell].push_back(all.back()[cell]);
    }
    CellWidths starts{};
    for (std::size_t cell = 0; cell + 1 < columns.size(); ++cell) {
        const std::size_t width = commonWidth(columns[cell], CellSpread);
        starts[cell + 1] = starts[cell] + (width > 0 ? width + 1 : 0);
    }
    for (std::size_t i = begin; i < end; ++i) {
        FormattedLine& line = lines_[i];
        std::size_t column = all[i - begin][0];
        for (std::size_t cell = 1; cell < starts.size(); ++cell) {
            if (line.cells[cell - 1] == 0) continue;
            const std::size_t blanks = std::max(starts[cell], column + 1) - column;
            line.padding[cell - 1] = static_cast<std::uint8_t>(blanks - 1);
            column += blanks + all[i - begin][cell];
        }
        if (line.indent + column > static_cast<std::size_t>(HDNTFormatter::Width)) line.padding = {};
    }
}

std::size_t LineTable::widthOfCode(const FormattedLine& line) const {
    std::size_t width = line.indent + platform::characters(codeOf(line));
    for (const std::uint8_t blanks : line.padding) width += blanks;
    return width;
}

void LineTable::alignComments(std::size_t begin, std::size_t end) {
    std::vector<std::size_t> widths;
    for (std::size_t i = begin; i < end; ++i) widths.push_back(widthOfCode(lines_[i]));
    const std::size_t common = commonWidth(widths, CommentSpread);
    for (std::size_t i = begin; i < end; ++i) {
        const std::size_t width = widths[i - begin];
        lines_[i].commentPadding = static_cast<std::uint8_t>(width < common ? common - width : 0);
    }
}

// The further lines of a block comment move with its first one.
void LineTable::renderComment(const SourceItem& item) {
    std::string_view text = items_.textOf(item);
    const std::size_t newColumn = item.multiLine ? columnOf(out_, out_.size()) : 0;
    const std::size_t oldColumn = item.multiLine ? columnOf(items_.text(), item.offset) : 0;
    if (newColumn == oldColumn) {
        out_ += text;
        return;
    }
    std::size_t end = text.find('\n');
    out_ += text.substr(0, end);
    while (end != text.npos) {
        text.remove_prefix(end + 1);
        end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        const std::size_t blanks = std::min(line.find_first_not_of(" \t"), line.size());
        const std::size_t column = columnBehind(line.substr(0, blanks)) + newColumn;
        out_ += '\n';
        if (blanks == line.size()) continue;
        // No line of a comment may become a directive.
        const std::size_t least = frontend::isArchDirective(line.substr(blanks)) ? 1 : 0;
        out_.append(std::max(column, oldColumn + least) - oldColumn, ' ').append(line.substr(blanks));
    }
}

void LineTable::render(const FormattedLine& line) {
    if (line.blankBefore) out_ += '\n';
    out_.append(line.indent, ' ');
    const std::string_view code = codeOf(line);
    std::size_t done = 0;
    for (std::size_t i = 0; i < line.cells.size(); ++i) {
        if (line.padding[i] == 0) continue;
        out_.append(code.substr(done, line.cells[i] - done)).append(line.padding[i], ' ');
        done = line.cells[i];
    }
    out_ += code.substr(done);
    for (std::uint32_t i = 0; i < line.commentCount; ++i) {
        if (i > 0) out_ += ' ';
        else if (line.codeLength > 0) out_.append(2 + line.commentPadding, ' ');
        renderComment(items_[line.firstComment + i]);
    }
    out_ += '\n';
}

std::string LineTable::finish() {
    using Style = FormattedLine::Style;
    forRuns(
        [](const FormattedLine& first, const FormattedLine& line) {
            return line.style != Style::Plain && line.style == first.style && line.indent == first.indent;
        },
        [this](std::size_t begin, std::size_t end) { alignCells(begin, end); });
    forRuns(
        [this](const FormattedLine& first, const FormattedLine& line) {
            return line.commentCount > 0 && line.codeLength > 0 && line.indent == first.indent &&
                   !items_[line.firstComment + line.commentCount - 1].multiLine;
        },
        [this](std::size_t begin, std::size_t end) { alignComments(begin, end); });
    out_.reserve(code_.size() + code_.size() / 2);
    for (const FormattedLine& line : lines_) render(line);
    return std::move(out_);
}

} // namespace hdnt::author
