#pragma once

#include "author/format/Bytes.internal.h"
#include "author/format/Piece.internal.h"

#include <array>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// One line of the new text: code, comments behind it, or both.
struct FormattedLine {
    enum class Style : std::uint8_t { Plain, Pin, Inst, Connect, Signal };
    static constexpr std::size_t MaxCells = 4;

    std::uint32_t codeStart = 0; ///< in the table's code
    std::uint32_t codeLength = 0;
    std::uint32_t commentCount = 0;
    std::uint8_t indent = 0;
    Style style : 3 = Style::Plain;
    bool isAscii : 1 = true;      ///< as far as the code is known
    bool endsInBlock : 1 = false; ///< the last comment is one of several lines
    /// Blanks before the comments, beyond those that are always there, and before the second to fourth cell.
    std::uint8_t commentPadding = 0;
    std::array<std::uint8_t, MaxCells - 1> padding{};
    /// Where the second to fourth cell of a line with a style begin in its code; 0: there is no such cell.
    std::array<std::uint16_t, MaxCells - 1> cells{};

    bool hasCodeAndComment() const { return codeLength > 0 && commentCount > 0; }
    bool isFollowed(std::size_t cell) const;
};

/// Takes lines that are finished.
class LineSink {
public:
    LineSink() = default;
    virtual ~LineSink() = default;
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;
    virtual void take(std::string_view lines) = 0;
};

/// The last lines of a text while it is laid out: those that may still be aligned with what comes.
class LineTable {
public:
    /// Of the text, sixteen bytes behind its end must be there to be read.
    LineTable(std::string_view text, LineSink& sink) : text_(text), sink_(sink) {}

    FormattedLine& last() { return lines_.back(); }

    /// Begins a line; what is appended to it follows.
    FormattedLine& begin(int indent, bool blankBefore);
    /// Bytes of the text, as code of the last line.
    void append(std::size_t offset, std::size_t length, bool isAscii) {
        code_.append(text_.data() + offset, length);
        last().codeLength += static_cast<std::uint32_t>(length);
        if (!isAscii) last().isAscii = false;
    }
    void append(const std::vector<Piece>& pieces, bool blankBefore);
    void appendBlank() {
        code_.append(' ');
        ++last().codeLength;
    }
    /// Behind what the last line has.
    void addComment(std::size_t offset, std::size_t length);
    /// No more lines come.
    void finish();

private:
    struct Comment {
        std::uint32_t offset;
        std::uint32_t length;
    };
    using Lines = std::deque<FormattedLine>;
    using CellWidths = std::array<std::size_t, FormattedLine::MaxCells>;

    std::string_view codeOf(const FormattedLine& line) const {
        return code_.view().substr(line.codeStart, line.codeLength);
    }
    void finishBlock();
    void renderFirst();
    void handOn();
    template <typename InRun, typename Align>
    void forRuns(InRun&& inRun, Align&& align);
    std::size_t widthOf(const FormattedLine& line, std::size_t begin, std::size_t end) const;
    CellWidths cellWidths(const FormattedLine& line) const;
    void alignCells(Lines::iterator begin, Lines::iterator end);
    void alignComments(Lines::iterator begin, Lines::iterator end);
    std::size_t widthOfCode(const FormattedLine& line) const;
    void render(const FormattedLine& line, std::size_t firstComment);
    void renderComment(const Comment& comment, std::size_t lineStart);
    void renderShifted(std::string_view text, std::size_t oldColumn, std::size_t newColumn);

    std::string_view text_;
    LineSink& sink_;
    Lines lines_;
    Bytes code_;
    std::deque<Comment> comments_;
    Bytes out_;
    bool blankBefore_ = false; ///< the first of the lines
};

} // namespace hdnt::author
