#include "author/format/HDNTFormatter.h"
#include "author/format/LineFiller.internal.h"

namespace hdnt::author {

using frontend::SourceItem;

static constexpr std::size_t Width = HDNTFormatter::Width;
// Twice a level, so that what goes on is not taken for what is below.
static constexpr int Continuation = 2 * HDNTFormatter::Indent;

void LineFiller::begin(int indent, bool blankBefore) {
    statementIndent_ = indent;
    blankBefore_ = blankBefore;
    anyLine_ = inProperty_ = holdsBrace_ = false;
    beginRange(indent);
}

bool LineFiller::finish() {
    endRange();
    if (holdsBrace_) {
        beginRange(statementIndent_);
        addToRange(brace_);
        endRange();
    }
    return anyLine_;
}

void LineFiller::openProperty() {
    inProperty_ = optionEnds_ = true;
    braces_ = 0;
}

void LineFiller::add(const Piece& piece) {
    if (!inProperty_) return addToRange(piece);
    if (holdsBrace_) addToBody(brace_);
    holdsBrace_ = piece.kind == '}';
    if (holdsBrace_) brace_ = piece;
    else addToBody(piece);
}

// The head, one line for each option.
void LineFiller::addToBody(const Piece& piece) {
    if (optionEnds_ && !piece.isTrailing()) {
        endRange();
        beginRange(statementIndent_ + HDNTFormatter::Indent);
        optionEnds_ = false;
    }
    addToRange(piece);
    if (optionEnds_) return;
    braces_ += piece.kind == '{' ? 1 : piece.kind == '}' ? -1 : 0;
    optionEnds_ = piece.kind == ',' && braces_ == 0;
}

void LineFiller::beginRange(int indent) {
    indent_ = indent;
    lineOpen_ = anyCode_ = false;
}

void LineFiller::endRange() {
    endChunk();
    for (const Piece& comment : comments_) putComment(comment);
    comments_.clear();
}

void LineFiller::addToRange(const Piece& piece) {
    if (piece.is(Piece::Forced)) {
        endChunk();
        putComment(piece);
    } else if (piece.isToken()) {
        addToken(piece);
    } else {
        comments_.push_back(piece);
    }
}

void LineFiller::addToken(const Piece& piece) {
    for (const Piece& comment : comments_) addToChunk(comment);
    comments_.clear();
    addToChunk(piece);
    if (piece.is(Piece::BreaksAtComma)) endChunk();
}

void LineFiller::addToChunk(const Piece& piece) {
    if (isSplit_) return addToPart(piece);
    chunk_.add(piece);
    if (static_cast<std::size_t>(ownIndent()) + chunk_.width <= Width) return;
    isSplit_ = true;
    for (const Piece& one : chunk_.pieces) addToPart(one);
    chunk_.clear();
}

void LineFiller::addToPart(const Piece& piece) {
    if (isWide_) append(piece);
    else part_.add(piece);
    const bool ends = piece.is(Piece::BreaksAfter);
    if (!isWide_ && (ends || part_.width > Width)) {
        put(part_);
        isWide_ = true;
    }
    if (ends) isWide_ = false;
}

void LineFiller::endChunk() {
    if (!chunk_.pieces.empty()) put(chunk_);
    if (!part_.pieces.empty()) put(part_);
    isSplit_ = isWide_ = false;
}

// In the line that is open if it fits there.
void LineFiller::put(Chunk& chunk) {
    const Piece& first = chunk.pieces.front();
    const bool isBrace = chunk.pieces.size() == 1 && first.kind == '{';
    bool blank = lineOpen_ && first.is(Piece::BlankBefore);
    if (!lineOpen_ || (lineWidth_ + blank + chunk.width > Width && !isBrace)) {
        const int own = isBrace ? indent_ : ownIndent();
        beginLine(own);
        lineWidth_ = static_cast<std::size_t>(own);
        blank = false;
    }
    lines_.append(chunk.pieces, blank);
    lineWidth_ += blank;
    lineWidth_ += chunk.width;
    lineOpen_ = anyCode_ = true;
    chunk.clear();
}

void LineFiller::append(const Piece& piece) {
    if (piece.is(Piece::BlankBefore)) lines_.appendBlank();
    lines_.append(piece.offset, piece.length, !piece.is(Piece::NotAscii));
}

// A comment behind the code, or what has a line of its own.
void LineFiller::putComment(const Piece& piece) {
    if (!piece.is(Piece::Follows)) beginLine(piece.kind == SourceItem::Directive ? 0 : ownIndent());
    if (piece.isComment()) lines_.addComment(piece.offset, piece.length);
    else lines_.append(piece.offset, piece.length, false);
    lineOpen_ = false;
}

void LineFiller::beginLine(int indent) {
    lines_.begin(indent, blankBefore_);
    blankBefore_ = false;
    anyLine_ = true;
}

int LineFiller::ownIndent() const { return indent_ + (anyCode_ ? Continuation : 0); }

} // namespace hdnt::author
