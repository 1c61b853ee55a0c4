#include "hdnt/frontend/Scanner.h"

#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/platform/Bytes16.internal.h"
#include "hdnt/platform/Text.h"

#include <locale.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace hdnt::frontend {

using platform::blanksEnd;
using platform::Bytes16;
using platform::findAny;
using platform::wordEnd;

namespace {

// What a token may begin with; the kinds that words are made of come first.
enum class Kind : unsigned char { Letter, Digit, Quote, Punctuation, Operator, Newline, Tab, Other };

constexpr std::array<Kind, 256> makeKinds() {
    std::array<Kind, 256> kinds{};
    kinds.fill(Kind::Other);
    for (unsigned c = '0'; c <= '9'; ++c) kinds[c] = Kind::Digit;
    for (unsigned c = 'a'; c <= 'z'; ++c) kinds[c] = kinds[c - 'a' + 'A'] = Kind::Letter;
    kinds['_'] = Kind::Letter;
    kinds['\t'] = Kind::Tab;
    kinds['\n'] = Kind::Newline;
    kinds['"'] = Kind::Quote;
    for (const char c : std::string_view("$%()*+,.:;[]{}")) kinds[static_cast<unsigned char>(c)] = Kind::Punctuation;
    for (const char c : std::string_view("-/<>=!&|")) kinds[static_cast<unsigned char>(c)] = Kind::Operator;
    return kinds;
}

constexpr auto kinds = makeKinds();

Kind kindOf(char c) { return kinds[static_cast<unsigned char>(c)]; }
bool isDigit(char c) { return kindOf(c) == Kind::Digit; }
bool isWordPart(char c) { return kindOf(c) <= Kind::Digit; }
bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

const char* skipDigits(const char* p) {
    while (isDigit(*p)) ++p;
    return p;
}

// What strtol gives in 64 bits, saturated.
long saturatedValue(const char* start, const char* end) {
    long value = 0;
    if (std::from_chars(start, end, value).ec == std::errc::result_out_of_range)
        value = *start == '-' ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
    return value;
}

double doubleValue(const char* start, const char* end) {
    double value = 0.0;
    if (std::from_chars(start, end, value, std::chars_format::fixed).ec == std::errc::result_out_of_range) {
        static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
        value = strtod_l(std::string(start, end).c_str(), nullptr, cLocale);
    }
    return value;
}

} // namespace

void Scanner::pushState(State state) {
    states_.push_back(state_);
    state_ = state;
}

void Scanner::popState() {
    if (states_.empty()) fatal("start-condition stack underflow");
    state_ = states_.back();
    states_.pop_back();
}

void Scanner::locate(const char* begin, const char* end) {
    const int lastLine = HDNTParserlloc.last_line;
    HDNTParserlloc = placeOf(begin, end);
    HDNTParserlloc.last_line = lastLine;
    placed_ = true;
}

void Scanner::newline() {
    locate(cursor_, cursor_ + 1);
    ++cursor_;
    lineRead_ = wholeText_;
    ++line_;
    ++globalLine_;
    setColumn(cursor_, 1);
}

// The newline behind a line's last token; the next line is captured before its first.
void Scanner::endLine() {
    newline();
    pendingCapture_ = true;
    captureLine();
}

// The same where a text is there in full. What is behind it will have the place of the last match, if there is
// anything.
const char* Scanner::passNewline(const char* newline) {
    if (!wholeText_) {
        cursor_ = newline;
        endLine();
        return cursor_;
    }
    const char* const next = newline + 1;
    pendingCapture_ = next == textEnd_;
    if (pendingCapture_) locate(newline, next);
    ++line_;
    ++globalLine_;
    setColumn(next, 1);
    if (!pendingCapture_) storeLine(next);
    return next;
}

// One column further than usual tab stops after a tab in column 8, 16, ...: the columns that reports underline.
const char* Scanner::passTab(const char* tab) {
    locate(tab, tab + 1);
    cursor_ = tab + 1;
    const int column = columnOf(cursor_);
    setColumn(cursor_, column - column % 8 + 9);
    return cursor_;
}

int Scanner::acceptPlaced(const char* start, const char* end, int token) {
    accept(start, end, token);
    locate(start, end);
    return token;
}

// The match grows back to where the comment or statement began.
int Scanner::endPiece(Piece piece) {
    if (!pieces_) return StateChanged;
    matchBegin_ = pieceBegin_;
    return piece;
}

void Scanner::storeLine(const char* start) {
    if (pieces_) return;
    lines_.add(buffers_.back()->text, static_cast<size_t>(start - textBegin_), follows_);
    follows_ = true;
}

// Stores the coming line, and the empty ones before it.
void Scanner::captureLine() {
    for (;;) {
        if (!lineRead_) readLine();
        if (atEnd()) return;
        storeLine(cursor_);
        if (*cursor_ != '\n') break;
        newline();
    }
    pendingCapture_ = false;
    setColumn(cursor_, 1);
}

int Scanner::skipComment() {
    if (!lineRead_) readLine();
    while (!atEnd()) {
        cursor_ = findAny<Bytes16, '*', '\t', '\n'>(cursor_, textEnd_);
        if (*cursor_ == '\n') {
            endLine();
            return StateChanged;
        }
        if (*cursor_ == '*' && cursor_[1] == '/') {
            acceptPlaced(cursor_, cursor_ + 2, 0);
            state_ = State::Normal;
            return endPiece(BlockComment);
        }
        if (*cursor_ == '\t') {
            passTab(cursor_);
            continue;
        }
        if (!atEnd()) ++cursor_;
        if (atEnd()) locate(cursor_ - 1, cursor_);
    }
    if (prints()) std::puts("Unterminated comment");
    HDNTError::notify({HDNTNotice::Kind::UnterminatedComment, commentStart_, {}, {}});
    return 0;
}

int Scanner::scanNumber(const char* start, bool negative) {
    constexpr ptrdiff_t longestExact = 9; // more characters may be more than 32 bits hold
    const char* end = negative ? start + 1 : start;
    unsigned long value = 0;
    for (; isDigit(*end); ++end) value = value * 10 + static_cast<unsigned long>(*end - '0');
    if (!negative && *end == '\'' && (end[1] == 'h' || end[1] == 'b')) {
        const bool hex = end[1] == 'h';
        end += 2;
        while (hex ? isHexDigit(*end) : *end == '0' || *end == '1') ++end;
        return accept(start, end, hex ? T_HexConstant : T_BinaryConstant);
    }
    accept(start, end, T_IntConstant);
    if (*end == '.') return scanFraction(negative);
    if (end - start > longestExact) return scanLongInteger();
    number_.asInt = static_cast<int>(static_cast<unsigned>(negative ? 0 - value : value));
    return T_IntConstant;
}

// Behind the digits that were accepted is a point.
int Scanner::scanFraction(bool negative) {
    const char* const end = skipDigits(matchEnd_ + 1);
    accept(matchBegin_, end, T_DoubleConstant);
    number_.asDouble = doubleValue(matchBegin_, end);
    if (std::isinf(number_.asDouble)) overflown(negative ? "-inf" : "inf");
    return T_DoubleConstant;
}

// The low 32 bits of what 64 bits hold of it.
int Scanner::scanLongInteger() {
    const long value = saturatedValue(matchBegin_, matchEnd_);
    number_.asInt = static_cast<int>(static_cast<unsigned long>(value) & 0xffffffffUL);
    if (number_.asInt != value) overflown(std::to_string(number_.asInt));
    return T_IntConstant;
}

// The number that was accepted last is read as another one.
void Scanner::overflown(const std::string& readAs) {
    constexpr size_t longestShown = 40;
    if (pieces_) return;
    syncPlace();
    notify(HDNTNotice::Kind::NumberOverflow, platform::clipped(tokenText(), longestShown), "it is read as " + readAs);
}

int Scanner::scanString(const char* start) {
    const char* const end = findAny<Bytes16, '"', '\n'>(start + 1, textEnd_);
    if (end != textEnd_ && *end == '"') return accept(start, end + 1, T_StringConstant);
    acceptPlaced(start, end, 0);
    const std::string text(start, end);
    if (prints()) {
        std::puts(text.c_str());
        std::puts("Unterminated string constant");
    }
    notify(HDNTNotice::Kind::UnterminatedString, text);
    return StateChanged;
}

int Scanner::scanWord(const char* start) {
    const char* const end = wordEnd(start);
    const std::string_view word(start, static_cast<size_t>(end - start));
    const int token = keywordToken(word);
    if (token < 0) return beginFileStatement(acceptPlaced(start, end, token));
    accept(start, end, token == 0 ? +T_Identifier : token);
    if (word.size() >= sizeof HDNTParserlval.identifier) {
        syncPlace();
        HDNTError::LongIdentifier(&HDNTParserlloc, std::string(word).c_str());
    }
    return token == 0 ? +T_Identifier : token;
}

// The token of an operator of two characters; 0 when these are none.
static int pairToken(char first, char second) {
    if (second == '=') {
        if (first == '=') return T_EqualTo;
        if (first == '!') return T_NotEqual;
        return first == '>' ? T_GreaterEqual : first == '<' ? T_LessEqual : 0;
    }
    if (second != first) return 0;
    return first == '&' ? T_AndAnd : first == '|' ? T_OrOr : 0;
}

int Scanner::scanOperator(const char* start) {
    const char first = start[0];
    const char second = start[1];
    if (first == '-' && isDigit(second)) return scanNumber(start, true);
    if (first == '/' && second == '/') return acceptPlaced(start, lineEnd(start), pieces_ ? LineComment : StateChanged);
    if (first == '/' && second == '*') {
        state_ = State::Comment;
        acceptPlaced(start, start + 2, StateChanged);
        commentStart_ = HDNTParserlloc;
        pieceBegin_ = start;
        return StateChanged;
    }
    if (const int token = pairToken(first, second)) return accept(start, start + 2, token);
    return first == '!' || first == '|' ? unrecognized(start) : accept(start, start + 1, first);
}

int Scanner::unrecognized(const char* start) {
    acceptPlaced(start, start + 1, 0);
    HDNTError::UnrecogChar(&HDNTParserlloc, *start);
    return StateChanged;
}

// Blanks have a place only where nothing follows them.
int Scanner::endOfText(const char* gap, const char* end) {
    cursor_ = end;
    if (gap != end) acceptPlaced(gap, end, 0);
    else syncPlace();
    return endOfInput() ? StateChanged : 0;
}

static const char* behindBlanks(const char* start) {
    if (*start == ' ' && *++start == ' ') start = blanksEnd(start);
    return start;
}

// Most tokens; `otherwise`, when nothing has happened, what needs another look.
template <typename Otherwise>
int Scanner::scanHere(const char* start, Otherwise otherwise) {
    switch (kindOf(*start)) {
    case Kind::Letter: {
        const size_t length = Bytes16(start).letters().firstUnset();
        if (length == 16 || isWordPart(start[length])) return otherwise();
        const int token = keywordTokenAt(start, length);
        return token <= 0 ? otherwise() : accept(start, start + length, token);
    }
    case Kind::Quote: {
        const char* const end = shortStringEnd(start);
        return end ? accept(start, end, T_StringConstant) : otherwise();
    }
    case Kind::Punctuation: return accept(start, start + 1, *start);
    case Kind::Digit: return scanNumber(start, false);
    default: return *start == '=' && start[1] != '=' ? accept(start, start + 1, '=') : otherwise();
    }
}

// One token, or StateChanged when the caller has to look at the state again. Every text has a zero behind its end.
int Scanner::scanText() {
    if (!lineRead_) readLine();
    const char* gap = cursor_;
    for (;;) {
        const char* const start = behindBlanks(gap);
        if (const int token = scanHere(start, [] { return +StateChanged; }); token != StateChanged) return token;
        switch (kindOf(*start)) {
        case Kind::Newline: gap = passNewline(start); break;
        case Kind::Tab: gap = passTab(start); break;
        case Kind::Letter: return scanWord(start);
        case Kind::Quote: return scanString(start);
        case Kind::Operator: return scanOperator(start);
        default: return start == textEnd_ ? endOfText(gap, start) : unrecognized(start);
        }
    }
}

int Scanner::scanBesideText() {
    if (state_ == State::Comment) return skipComment();
    if (state_ != State::LineCapture) return fileStatement();
    captureLine();
    popState();
    return StateChanged;
}

int Scanner::scanOn() {
    for (;;) {
        if (!cursor_) load();
        const bool inText = state_ == State::Normal || state_ == State::Initial;
        const int token = inText ? scanText() : scanBesideText();
        if (token != StateChanged) return token;
    }
}

// The first token of a line.
int Scanner::scanNextLine(const char* newline) {
    cursor_ = passNewline(newline);
    return scanHere(behindBlanks(cursor_), [this] { return scanOn(); });
}

int Scanner::scan() {
    if (!cursor_ || state_ != State::Normal || !lineRead_) return scanOn();
    const char* const start = behindBlanks(cursor_);
    if (*start == '\n') return scanNextLine(start);
    return scanHere(start, [this] { return scanOn(); });
}

void Scanner::giveValue(int token) {
    switch (token) {
    case T_IntConstant: HDNTParserlval.intValue = number_.asInt; break;
    case T_DoubleConstant: HDNTParserlval.doubleValue = number_.asDouble; break;
    case T_BoolConstant: HDNTParserlval.boolValue = *matchBegin_ == 't'; break;
    case T_StringConstant: HDNTParserlval.text = new std::string(stringText()); break;
    case T_Identifier: {
        const std::string_view read = tokenText().substr(0, sizeof HDNTParserlval.identifier - 1);
        *std::copy(read.begin(), read.end(), HDNTParserlval.identifier) = '\0';
        break;
    }
    default: HDNTParserlval.text = new std::string(tokenText());
    }
}

int Scanner::next() {
    const int token = scan();
    syncPlace();
    if (token >= T_Identifier && token <= T_BoolConstant) giveValue(token);
    return token;
}

} // namespace hdnt::frontend
