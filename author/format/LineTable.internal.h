#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace hdnt::author {

using frontend::SourceItem;
using frontend::SourceItems;

/// One line of the new text: code, comments behind it, or both.
struct FormattedLine {
    enum class Style : std::uint8_t { Plain, Pin, Inst, Connect, Signal };
    static constexpr std::size_t MaxCells = 4;

    std::size_t codeStart = 0; ///< in the table's text
    std::uint32_t codeLength = 0;
    std::uint32_t firstComment = 0; ///< items one after the other
    std::uint32_t commentCount = 0;
    std::uint16_t indent = 0;
    Style style = Style::Plain;
    bool blankBefore = false;
    /// Where the second to fourth cell of a line with a style begin in its code; 0: there is no such cell.
    std::array<std::uint16_t, MaxCells - 1> cells{};
    /// Blanks before those cells beyond the first one, and before the comments.
    std::array<std::uint8_t, MaxCells - 1> padding{};
    std::uint8_t commentPadding = 0;
};

/// The lines of a text while it is laid out, and how they become one text.
class LineTable {
public:
    explicit LineTable(const SourceItems& items) : items_(items) { code_.reserve(items.text().size()); }

    bool empty() const { return lines_.empty(); }
    FormattedLine& last() { return lines_.back(); }
    std::size_t size() const { return lines_.size(); }
    FormattedLine& operator[](std::size_t i) { return lines_[i]; }

    /// Begins a line; what is appended to it follows.
    FormattedLine& begin(int indent);
    void append(std::string_view code);
    /// Behind what the last line has.
    void addComment(std::size_t item);

    /// Aligns what stands below each other, and joins the lines.
    std::string finish();

private:
    std::string_view codeOf(const FormattedLine& line) const {
        return std::string_view(code_).substr(line.codeStart, line.codeLength);
    }
    template <typename InRun, typename Align>
    void forRuns(InRun&& inRun, Align&& align);
    void alignCells(std::size_t begin, std::size_t end);
    void alignComments(std::size_t begin, std::size_t end);
    std::size_t widthOfCode(const FormattedLine& line) const;
    void render(const FormattedLine& line);
    void renderComment(const SourceItem& item);

    const SourceItems& items_;
    std::string code_;
    std::vector<FormattedLine> lines_;
    std::string out_;
};

} // namespace hdnt::author
