#pragma once

#include "author/format/LineTable.internal.h"
#include "author/format/Piece.internal.h"

#include <cstddef>
#include <vector>

namespace hdnt::author {

/// Lays out a statement that does not fit one line, piece by piece, so that it need not be there as a whole. Lines get
/// as full as they may, and are broken behind commas, or behind other operators where that is not enough. A property
/// has its head, each option and the closing brace in lines of their own.
class LineFiller {
public:
    explicit LineFiller(LineTable& lines) : lines_(lines) {}

    /// Begins a statement, with a blank line before its first one if that is wanted.
    void begin(int indent, bool blankBefore);
    void add(const Piece& piece);
    /// The last piece was the opening brace of a property.
    void openProperty();
    /// Ends the statement. False when all of it went behind what was there before.
    bool finish();

private:
    /// What stays in one line if it fits one: pieces up to a comma, or up to another operator.
    struct Chunk {
        std::vector<Piece> pieces;
        std::size_t width = 0;

        void add(const Piece& piece) {
            width += pieces.empty() ? piece.width : piece.widthBehind();
            pieces.push_back(piece);
        }
        void clear() {
            pieces.clear();
            width = 0;
        }
    };

    // A range has an indent, and begins with a line. Comments at its end stand behind it, wherever they stood before.
    void beginRange(int indent);
    void endRange();
    void addToBody(const Piece& piece);
    void addToRange(const Piece& piece);
    void addToken(const Piece& piece);
    void addToChunk(const Piece& piece);
    void addToPart(const Piece& piece);
    void endChunk();
    void put(Chunk& chunk);
    void putComment(const Piece& piece);
    void beginLine(int indent);
    void append(const Piece& piece);
    int ownIndent() const;

    LineTable& lines_;
    int statementIndent_ = 0;
    bool blankBefore_ = false;
    bool anyLine_ = false;

    // Inside a property
    bool inProperty_ = false;
    bool optionEnds_ = false; ///< but for comments behind it
    bool holdsBrace_ = false; ///< a closing brace that may be the property's
    Piece brace_;
    long braces_ = 0;

    // The range
    int indent_ = 0;
    bool lineOpen_ = false;
    bool anyCode_ = false;
    std::size_t lineWidth_ = 0;
    std::vector<Piece> comments_; ///< that are behind it, unless a token follows
    Chunk chunk_;                 ///< up to a comma, while it fits a line
    bool isSplit_ = false;        ///< it does not: it goes on in parts
    Chunk part_;                  ///< up to another operator, while it fits a line
    bool isWide_ = false;         ///< it does not: it goes on in the line that is open
};

} // namespace hdnt::author
