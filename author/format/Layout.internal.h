#pragma once

#include "author/format/ItemRecord.internal.h"
#include "author/format/LineFiller.internal.h"
#include "author/format/LineTable.internal.h"
#include "author/format/Piece.internal.h"
#include "hdnt/frontend/SourceReader.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// Divides a text into statements by its brackets and keywords, without a parse, and each statement into lines. What
/// is decided depends on the items, where comments stand in their lines, and where blank lines are, and all of that is
/// recorded: a text that has the same of it again gives the same lines.
class Layout {
public:
    Layout(frontend::SourceReader& reader, ItemRecord& record, LineSink& sink)
        : reader_(reader), record_(record), text_(reader.text()), lines_(text_, sink), filler_(lines_) {}

    /// Gives the new text to the sink, until something is refused, which is in the reader's problem then.
    void run();

private:
    /// What is open: braces around statements; those of a property body and within one; and statements that hang on an
    /// if or else, with a level of their own unless they are in braces.
    enum class Frame : std::uint8_t { Braces, Property, Inline, Then, ThenBraced, Else, ElseBraced };

    /// What is collected of one.
    struct Statement {
        bool isFilled = false; ///< it fits no line, and its pieces are the filler's
        bool startsBelowBlank = false;
        bool lastIsPrefix = false;
        bool inCondition = false;
        bool goesOn = false;       ///< behind a closing brace
        bool closesAtOnce = false; ///< the brace that was opened last
        int indent = 0;
        int lastKind = 0; ///< of pieces, below of tokens; 0: there is none
        int firstToken = 0;
        int lastToken = 0;
        int beforeLastToken = 0;
        long parentheses = 0;
        std::size_t tokens = 0;
        std::size_t width = 0;        ///< if it is one line
        std::size_t propertyOpen = 0; ///< index of the piece; 0: none
        std::size_t record = 0;       ///< number of the first item
    };

    // Items
    bool readMore();
    const SourceItem* behind(std::ptrdiff_t count);
    int nextToken();
    int joinedToken();
    bool follows() const;

    // Statements
    void take();
    void takeToken();
    void takeIf();
    void takeElse();
    void takeClosingParenthesis();
    void openBrace();
    void closeBrace();
    void closeStatement();
    bool complete();
    void endBraces();
    bool isInline() const { return !frames_.empty() && isInline(frames_.back()); }
    static bool isInline(Frame frame) { return frame == Frame::Property || frame == Frame::Inline; }
    static bool hasLevel(Frame frame) { return frame == Frame::Braces || frame == Frame::Then || frame == Frame::Else; }
    void push(Frame frame);
    void pop();
    int indent() const;
    void standAlone();

    // Layout_pieces.cpp: the pieces of a statement
    void appendToken();
    void appendOther();
    void add(const Piece& piece, std::size_t width);
    void begin();
    bool isPrefixMinus() const;
    bool needsBlank(int kind, bool isTight) const;
    void fill();
    void flush(bool opens);
    bool beginsBelowBlank();
    void layOutOneLine();
    void setStyle(FormattedLine& line) const;

    frontend::SourceReader& reader_;
    ItemRecord& record_;
    std::string_view text_;
    LineTable lines_;
    LineFiller filler_;

    std::vector<SourceItem> items_;    ///< some, from the one before the one that is taken on
    const SourceItem* item_ = nullptr; ///< the one that is taken
    const SourceItem* itemsEnd_ = nullptr;

    std::vector<Frame> frames_;
    int level_ = 0;
    bool afterOpening_ = true; ///< the next line gets no blank line before it

    Statement statement_;
    std::vector<Piece> pieces_; ///< of the statement, while it may fit one line
};

} // namespace hdnt::author
