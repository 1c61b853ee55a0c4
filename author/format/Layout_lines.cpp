// From statements to lines.
#include "author/format/HDNTFormatter.h"
#include "author/format/Layout.internal.h"
#include "hdnt/frontend/Scanner.h"

#include <algorithm>

namespace hdnt::author {

namespace {

constexpr std::size_t Width = HDNTFormatter::Width;
// Twice a level, so that what goes on is not taken for what is below.
constexpr int Continuation = 2 * HDNTFormatter::Indent;
// Code without characters that take room can be long in bytes and narrow all the same.
constexpr std::size_t LongestAligned = 1000;

bool isRequiredValue(int kind) {
    return kind == T_TieLow || kind == T_TieHigh || kind == T_TieSpecial || kind == T_Untie || kind == T_Active ||
           kind == T_MustConnect;
}

} // namespace

// Whether a comment goes behind what stands before it in its line.
bool Layout::follows(std::size_t item) const {
    return item > 0 && items_[item].isComment() && items_[item].newlines == 0 && !items_[item - 1].forcesNewline();
}

void Layout::flush(bool opens) {
    if (pieces_.empty()) return;
    const std::size_t first = lines_.size();
    if (fitsOneLine()) layOutOneLine();
    else if (propertyOpen_ > 0) layOutProperty();
    else fill(0, pieces_.size(), statementIndent_);
    const bool closes = firstToken_ == '}' || firstToken_ == T_Else;
    if (lines_.size() > first) {
        lines_[first].blankBefore = items_[pieces_.front().item].newlines > 1 && !closes && !afterOpening_;
        afterOpening_ = opens;
    }
    pieces_.clear();
    tokens_ = 0;
    firstToken_ = lastToken_ = beforeLastToken_ = 0;
    lastIsPrefix_ = inCondition_ = goesOn_ = false;
    parentheses_ = 0;
    propertyOpen_ = 0;
}

bool Layout::fitsOneLine() const {
    if (!items_[pieces_.back().item].isToken()) return false;
    std::size_t width = static_cast<std::size_t>(statementIndent_);
    for (const Piece& piece : pieces_) {
        width += piece.blankBefore + piece.width;
        if (isForced(piece) || width > Width) return false;
    }
    return true;
}

void Layout::layOutOneLine() {
    FormattedLine& line = lines_.begin(statementIndent_);
    for (const Piece& piece : pieces_) {
        if (piece.blankBefore) lines_.append(" ");
        lines_.append(items_.textOf(piece.item));
    }
    if (line.codeLength < LongestAligned && tokens_ == pieces_.size() && lastToken_ == ';') setStyle(line);
}

void Layout::setStyle(FormattedLine& line) {
    using Style = FormattedLine::Style;
    Style style = Style::Plain;
    std::size_t at = 0;
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        const int kind = kindOf(pieces_[i]);
        at += pieces_[i].blankBefore;
        const auto startCell = [&](std::size_t cell) {
            if (line.cells[cell] == 0) line.cells[cell] = static_cast<std::uint16_t>(at);
        };
        if (i == 2 && firstToken_ == T_Pin) {
            style = Style::Pin;
            startCell(0);
        } else if (i > 2 && firstToken_ == T_Pin && kind != ';') {
            startCell(isRequiredValue(kind) ? 2 : 1);
        } else if (i == 2 && firstToken_ == T_Inst) {
            style = Style::Inst;
            startCell(0);
        } else if (i == 2 && (firstToken_ == T_Connect || firstToken_ == T_Signal)) {
            style = firstToken_ == T_Connect ? Style::Connect : Style::Signal;
            if (kind == ':') startCell(0);
        }
        at += items_[pieces_[i].item].length;
    }
    line.style = style;
}

// The head, one line for each option, and the closing brace.
void Layout::layOutProperty() {
    const std::size_t end = pieces_.size();
    const std::size_t close = kindOf(pieces_[end - 1]) == '}' ? end - 1 : end;
    std::size_t begin = behindTrailing(propertyOpen_ + 1, close);
    fill(0, begin, statementIndent_);
    long braces = 0;
    for (std::size_t at = begin; at < close; ++at) {
        const int kind = kindOf(pieces_[at]);
        braces += kind == '{' ? 1 : kind == '}' ? -1 : 0;
        if (kind != ',' || braces != 0) continue;
        at = behindTrailing(at + 1, close) - 1;
        fill(begin, at + 1, statementIndent_ + HDNTFormatter::Indent);
        begin = at + 1;
    }
    fill(begin, close, statementIndent_ + HDNTFormatter::Indent);
    fill(close, end, statementIndent_);
}

std::size_t Layout::behindTrailing(std::size_t at, std::size_t end) const {
    while (at < end && isTrailing(pieces_[at])) ++at;
    return at;
}

// Lines as full as they get, broken behind commas, or behind other operators where that is not enough.
void Layout::fill(std::size_t begin, std::size_t end, int indent) {
    lineOpen_ = anyCode_ = false;
    std::size_t codeEnd = end; // comments at the end of a line stand behind it, wherever they stood before
    while (codeEnd > begin && !items_[pieces_[codeEnd - 1].item].isToken()) --codeEnd;
    for (std::size_t at = begin; at < end;) {
        const Piece& piece = pieces_[at];
        if (isForced(piece) || at >= codeEnd) {
            const SourceItem& item = items_[piece.item];
            const int own = item.kind == SourceItem::Directive ? 0 : indent + (anyCode_ ? Continuation : 0);
            if (!follows(piece.item)) lines_.begin(own);
            if (item.isComment()) lines_.addComment(piece.item);
            else lines_.append(items_.textOf(item));
            lineOpen_ = false;
            ++at;
            continue;
        }
        std::size_t stop = at;
        do ++stop;
        while (stop < codeEnd && pieces_[stop - 1].after != Break::Comma && !isForced(pieces_[stop]));
        place(at, stop, indent);
        at = stop;
    }
}

// Pieces that belong together, in the line that is open if they fit there.
void Layout::place(std::size_t begin, std::size_t end, int indent) {
    const auto widthOfPieces = [&](std::size_t from, std::size_t to) {
        std::size_t width = 0;
        for (std::size_t i = from; i < to; ++i) width += (i > from && pieces_[i].blankBefore) + pieces_[i].width;
        return width;
    };
    const auto put = [&](std::size_t from, std::size_t to, std::size_t width) {
        const bool isBrace = to == from + 1 && kindOf(pieces_[from]) == '{';
        const std::size_t blank = lineOpen_ && pieces_[from].blankBefore;
        if (!lineOpen_ || (lineWidth_ + blank + width > Width && !isBrace)) {
            const int own = indent + (anyCode_ && !isBrace ? Continuation : 0);
            lines_.begin(own);
            lineWidth_ = static_cast<std::size_t>(own);
        } else if (blank) {
            lines_.append(" ");
            ++lineWidth_;
        }
        for (std::size_t i = from; i < to; ++i) {
            if (i > from && pieces_[i].blankBefore) lines_.append(" ");
            lines_.append(items_.textOf(pieces_[i].item));
        }
        lineWidth_ += width;
        lineOpen_ = anyCode_ = true;
    };
    const std::size_t width = widthOfPieces(begin, end);
    const int fresh = indent + (anyCode_ ? Continuation : 0);
    if (static_cast<std::size_t>(fresh) + width <= Width) return put(begin, end, width);
    for (std::size_t at = begin; at < end;) {
        std::size_t stop = at;
        do ++stop;
        while (stop < end && pieces_[stop - 1].after == Break::None);
        put(at, stop, widthOfPieces(at, stop));
        at = stop;
    }
}

} // namespace hdnt::author
