// From statements to lines.
#include "author/format/HDNTFormatter.h"
#include "author/format/Layout.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace hdnt::author {

namespace {

constexpr std::size_t Width = HDNTFormatter::Width;
// Code without characters that take room can be long in bytes and narrow all the same.
constexpr std::size_t LongestAligned = 1000;

bool isRequiredValue(int kind) {
    return kind == T_TieLow || kind == T_TieHigh || kind == T_TieSpecial || kind == T_Untie || kind == T_Active ||
           kind == T_MustConnect;
}

/// What there is to know of a token's kind.
struct Traits {
    std::uint8_t flags = 0; ///< of its pieces
    bool isOperator = false;
    bool isTight = false; ///< no blank before it
};

constexpr auto traitsOfTokens = [] {
    std::array<Traits, T_Abstract + 1> traits{};
    const auto of = [&](int kind) -> Traits& { return traits[static_cast<std::size_t>(kind)]; };
    for (const char c : std::string_view("=:+-*/%<>")) of(c).isOperator = true;
    for (const int kind : {T_GreaterEqual, T_LessEqual, T_EqualTo, T_NotEqual, T_AndAnd, T_OrOr})
        of(kind).isOperator = true;
    for (Traits& one : traits) one.flags = one.isOperator ? Piece::BreaksAfter : 0;
    for (const int kind : {+T_AndAnd, +T_OrOr, +','}) of(kind).flags = Piece::BreaksAfter | Piece::BreaksAtComma;
    for (const char c : std::string_view(",;)")) of(c).isTight = true;
    return traits;
}();

// Of what is no token, there is nothing to know.
const Traits& traitsOf(int kind) { return traitsOfTokens[static_cast<std::size_t>(std::max(kind, 0))]; }

// Looks at eight bytes at a time, and so at some behind the text, which may not be ASCII.
bool isAscii(std::string_view text) {
    std::uint64_t all = 0;
    for (std::size_t at = 0; at < text.size(); at += sizeof all) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + at, sizeof word);
        all |= word;
    }
    return (all & 0x8080808080808080U) == 0;
}

} // namespace

static Piece pieceOf(const SourceItem& item, unsigned flags) {
    return {item.offset, item.length, item.kind,
            static_cast<std::uint8_t>(std::min<std::uint32_t>(item.length, Piece::widest)),
            static_cast<std::uint8_t>(flags)};
}

// A minus that has no left operand. The last string of an assign statement's head is none.
bool Layout::isPrefixMinus() const {
    const int last = statement_.lastToken;
    if (statement_.tokens == 0 || last == '(' || last == ',' || traitsOf(last).isOperator) return true;
    return statement_.firstToken == T_Assign && last == T_StringConstant &&
           (statement_.tokens == 5 || (statement_.beforeLastToken == ',' && statement_.parentheses == 0));
}

// "- 1" is two tokens and "-1" one, so a minus stands close to names and parentheses only.
inline bool Layout::needsBlank(int kind, bool isTight) const {
    const int before = statement_.lastKind;
    if (isTight || before == '(') return false;
    if (before == '-' && statement_.lastIsPrefix) return kind != '(' && kind != T_Identifier;
    return kind != '(' || before != T_Identifier;
}

static void measure(Piece& piece, std::string_view text) {
    if (isAscii(text)) return;
    piece.flags |= Piece::NotAscii;
    piece.width = static_cast<std::uint8_t>(std::min<std::size_t>(platform::characters(text), Piece::widest));
}

inline void Layout::add(const Piece& piece, std::size_t width) {
    if (statement_.isFilled) return filler_.add(piece);
    pieces_.push_back(piece);
    statement_.width += width;
    if (statement_.width > Width && statement_.tokens > 0) fill();
}

void Layout::appendToken() {
    const int kind = item_->kind;
    const Traits& traits = traitsOfTokens[static_cast<std::size_t>(kind)];
    Piece piece = pieceOf(*item_, traits.flags);
    if (statement_.lastKind == 0) begin();
    else if (needsBlank(kind, traits.isTight)) piece.flags |= Piece::BlankBefore;
    if (kind == T_StringConstant) measure(piece, {text_.data() + piece.offset, piece.length});
    statement_.lastIsPrefix = kind == '-' && isPrefixMinus();
    if (statement_.lastIsPrefix) piece.flags &= static_cast<std::uint8_t>(~Piece::BreaksAfter);
    statement_.lastKind = kind;
    statement_.beforeLastToken = statement_.lastToken;
    statement_.lastToken = kind;
    if (statement_.tokens++ == 0) statement_.firstToken = kind;
    record_.add(*item_, 0);
    add(piece, piece.widthBehind());
}

void Layout::appendOther() {
    const bool follows = this->follows();
    const bool isForced = item_->endsLine || item_->isVerbatim();
    Piece piece = pieceOf(*item_, (follows ? +Piece::Follows : 0U) | (isForced ? +Piece::Forced : 0U));
    if (statement_.lastKind == 0) begin();
    else if (needsBlank(piece.kind, false)) piece.flags |= Piece::BlankBefore;
    measure(piece, {text_.data() + piece.offset, piece.length});
    statement_.lastKind = piece.kind;
    record_.add(*item_, ItemRecord::flagsOf(*item_, follows));
    add(piece, isForced ? Width + 1 : piece.widthBehind());
}

void Layout::begin() {
    statement_.indent = indent();
    statement_.startsBelowBlank = item_->newlines > 1;
    statement_.width = static_cast<std::size_t>(statement_.indent);
    statement_.record = record_.next();
}

void Layout::fill() {
    filler_.begin(statement_.indent, beginsBelowBlank());
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        filler_.add(pieces_[i]);
        if (i > 0 && i == statement_.propertyOpen) filler_.openProperty();
    }
    pieces_.clear();
    statement_.isFilled = true;
}

void Layout::flush(bool opens) {
    if (statement_.lastKind == 0) return;
    bool anyLine = true;
    if (!statement_.isFilled && statement_.lastKind > 0) {
        layOutOneLine();
    } else {
        if (!statement_.isFilled) fill();
        anyLine = filler_.finish();
    }
    if (anyLine) afterOpening_ = opens;
    pieces_.clear();
    statement_ = {};
}

bool Layout::beginsBelowBlank() {
    const bool closes = statement_.firstToken == '}' || statement_.firstToken == T_Else;
    const bool belowBlank = statement_.startsBelowBlank && !closes && !afterOpening_;
    if (belowBlank) record_.setBelowBlank(statement_.record);
    return belowBlank;
}

void Layout::layOutOneLine() {
    FormattedLine& line = lines_.begin(statement_.indent, beginsBelowBlank());
    lines_.append(pieces_, false);
    if (line.codeLength < LongestAligned && statement_.tokens == pieces_.size() && statement_.lastToken == ';')
        setStyle(line);
}

void Layout::setStyle(FormattedLine& line) const {
    using Style = FormattedLine::Style;
    const int first = statement_.firstToken;
    const Style style = first == T_Pin       ? Style::Pin
                        : first == T_Inst    ? Style::Inst
                        : first == T_Connect ? Style::Connect
                        : first == T_Signal  ? Style::Signal
                                             : Style::Plain;
    if (style == Style::Plain || pieces_.size() < 3) return;
    line.style = style;
    std::size_t at = 0;
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
        const Piece& piece = pieces_[i];
        at += piece.is(Piece::BlankBefore);
        const auto startCell = [&](std::size_t cell) {
            if (line.cells[cell] == 0) line.cells[cell] = static_cast<std::uint16_t>(at);
        };
        if (i == 2 && (style == Style::Pin || style == Style::Inst || piece.kind == ':')) startCell(0);
        else if (i > 2 && style == Style::Pin && piece.kind != ';') startCell(isRequiredValue(piece.kind) ? 2 : 1);
        at += piece.length;
    }
}

} // namespace hdnt::author
