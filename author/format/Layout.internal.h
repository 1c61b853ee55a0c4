#pragma once

#include "author/format/LineTable.internal.h"
#include "hdnt/frontend/SourceItems.h"

#include <cstdint>
#include <vector>

namespace hdnt::author {

/// Divides a text into statements by its brackets and keywords, without a parse, and each statement into lines. What
/// is decided depends on the items, where comments stand in their lines, and where blank lines are: all that the new
/// text has again, so that laying it out once more gives the same.
class Layout {
public:
    Layout(const SourceItems& items, LineTable& lines) : items_(items), lines_(lines) {}
    void run();

private:
    /// What is open: braces around statements; those of a property body and within one; and statements that hang on an
    /// if or else, with a level of their own unless they are in braces.
    enum class Frame : std::uint8_t { Braces, Property, Inline, Then, ThenBraced, Else, ElseBraced };
    enum class Break : std::uint8_t { None, Operator, Comma };
    struct Piece {
        std::uint32_t item;
        bool blankBefore;
        Break after;
        std::uint32_t width;
    };

    // Statements
    void take(std::size_t& i);
    void takeIf(std::size_t i);
    void takeElse(std::size_t i);
    void takeClosingParenthesis(std::size_t i);
    void openBrace(std::size_t& i);
    void closeBrace(std::size_t i);
    void closeStatement(std::size_t i);
    void append(std::size_t i);
    bool complete(std::size_t i);
    void endBraces(std::size_t i);
    bool isInline() const { return !frames_.empty() && isInline(frames_.back()); }
    static bool isInline(Frame frame) { return frame == Frame::Property || frame == Frame::Inline; }
    static bool hasLevel(Frame frame) { return frame == Frame::Braces || frame == Frame::Then || frame == Frame::Else; }
    void push(Frame frame);
    void pop();
    int indent() const;
    int nextToken(std::size_t i) const;
    int joinedToken(std::size_t i) const;
    bool isPrefix(std::size_t i) const;
    bool needsBlank(std::size_t i) const;
    Break breakAfter(std::size_t i) const;
    void standAlone(std::size_t i);

    // Lines
    void flush(bool opens);
    bool fitsOneLine() const;
    void layOutOneLine();
    void layOutProperty();
    void fill(std::size_t begin, std::size_t end, int indent);
    void place(std::size_t begin, std::size_t end, int indent);
    void setStyle(FormattedLine& line);
    bool isForced(const Piece& piece) const {
        return !items_[piece.item].isToken() && (items_[piece.item].endsLine || items_[piece.item].isVerbatim());
    }
    bool isTrailing(const Piece& piece) const { return isForced(piece) && follows(piece.item); }
    bool follows(std::size_t item) const;
    size_t behindTrailing(size_t at, size_t end) const;
    int kindOf(const Piece& piece) const { return items_[piece.item].kind; }

    const SourceItems& items_;
    LineTable& lines_;
    std::vector<Frame> frames_;
    int level_ = 0;
    bool afterOpening_ = true; ///< the next line gets no blank line before it

    // The statement that is being collected
    std::vector<Piece> pieces_;
    std::size_t tokens_ = 0;
    int firstToken_ = 0;
    int lastToken_ = 0;
    int beforeLastToken_ = 0;
    bool lastIsPrefix_ = false;
    int statementIndent_ = 0;
    long parentheses_ = 0;
    bool inCondition_ = false;
    bool goesOn_ = false;          ///< behind a closing brace
    std::size_t propertyOpen_ = 0; ///< index of the piece; 0: none

    // The line that is being filled
    bool lineOpen_ = false;
    bool anyCode_ = false;
    std::size_t lineWidth_ = 0;
};

} // namespace hdnt::author
