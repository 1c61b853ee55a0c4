#include "hdnt/frontend/Scanner.h"

#include "hdnt/frontend/Keywords.internal.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/frontend/TokenText.internal.h"
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

namespace {

// What a token may begin with; the kinds that words are made of come first.
enum class Kind : unsigned char { Letter, Digit, Quote, Punctuation, Operator, Newline, Tab, Nul, Other };

constexpr std::array<Kind, 256> makeKinds() {
    std::array<Kind, 256> kinds{};
    kinds.fill(Kind::Other);
    for (unsigned c = '0'; c <= '9'; ++c) kinds[c] = Kind::Digit;
    for (unsigned c = 'a'; c <= 'z'; ++c) kinds[c] = kinds[c - 'a' + 'A'] = Kind::Letter;
    kinds['_'] = Kind::Letter;
    kinds['\t'] = Kind::Tab;
    kinds['\n'] = Kind::Newline;
    kinds['\0'] = Kind::Nul;
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

// The place of what begins at the offset.
void Scanner::locate(ptrdiff_t offset, ptrdiff_t length) {
    yyltype& location = HDNTParserlloc;
    const int column = static_cast<int>(offset - columnZero_);
    location = {fileName_,   line_, globalLine_, column, location.last_line, column + static_cast<int>(length) - 1,
                storeOffset_};
}

void Scanner::newline() {
    locate(cursor_ - textBegin_, 1);
    ++cursor_;
    lineEnd_ = nullptr;
    ++line_;
    ++globalLine_;
    setColumn(1);
}

// The newline behind a line's last token; the next line is captured before its first.
void Scanner::endLine() {
    newline();
    pendingCapture_ = true;
    captureLine();
}

// One column further than usual tab stops after a tab in column 8, 16, ...: the columns that reports underline.
void Scanner::tab() {
    locate(cursor_ - textBegin_, 1);
    ++cursor_;
    setColumn(column() - column() % 8 + 9);
}

int Scanner::accept(const char* start, const char* end, int token) {
    matchLength_ = static_cast<size_t>(end - start);
    matchStart_ = static_cast<size_t>(start - textBegin_);
    locate(start - textBegin_, end - start);
    cursor_ = end;
    return token;
}

// The match grows back to where the comment or statement began.
int Scanner::endPiece(Piece piece) {
    if (!pieces_) return StateChanged;
    matchLength_ += matchStart_ - pieceStart_;
    matchStart_ = pieceStart_;
    return piece;
}

// Stores the coming line, and the empty ones before it.
void Scanner::captureLine() {
    for (;;) {
        if (!lineEnd_) findLineEnd();
        if (atEnd()) return;
        if (!pieces_) {
            lines_.add(buffers_.back()->text, static_cast<size_t>(cursor_ - textBegin_),
                       static_cast<size_t>(lineEnd_ - textBegin_));
        }
        if (cursor_ != lineEnd_) break;
        newline();
    }
    pendingCapture_ = false;
    setColumn(1);
}

int Scanner::skipComment() {
    if (!lineEnd_) findLineEnd();
    while (cursor_ != lineEnd_) {
        if (*cursor_ == '*' && cursor_[1] == '/') {
            accept(cursor_, cursor_ + 2, 0);
            state_ = State::Normal;
            return endPiece(BlockComment);
        }
        if (*cursor_ == '\t') {
            tab();
        } else {
            if (cursor_ + 1 == textEnd_) locate(cursor_ - textBegin_, 1);
            ++cursor_;
        }
    }
    if (atEnd()) {
        if (prints()) std::puts("Unterminated comment");
        HDNTError::notify({HDNTNotice::Kind::UnterminatedComment, commentStart_, {}, {}});
        return 0;
    }
    endLine();
    return StateChanged;
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
        HDNTParserlval.text = TokenTexts::make(start, end);
        return accept(start, end, hex ? T_HexConstant : T_BinaryConstant);
    }
    if (*end == '.') {
        end = skipDigits(end + 1);
        HDNTParserlval.doubleValue = doubleValue(start, end);
        accept(start, end, 0);
        if (std::isinf(HDNTParserlval.doubleValue)) overflown(start, end, negative ? "-inf" : "inf");
        return T_DoubleConstant;
    }
    accept(start, end, 0);
    if (end - start > longestExact) return scanLongInteger(start, end);
    HDNTParserlval.intValue = static_cast<int>(static_cast<unsigned>(negative ? 0 - value : value));
    return T_IntConstant;
}

// The low 32 bits of what 64 bits hold of it.
int Scanner::scanLongInteger(const char* start, const char* end) {
    const long value = saturatedValue(start, end);
    const int kept = static_cast<int>(static_cast<unsigned long>(value) & 0xffffffffUL);
    HDNTParserlval.intValue = kept;
    if (kept != value) overflown(start, end, std::to_string(kept));
    return T_IntConstant;
}

// The number that was accepted last is read as another one.
void Scanner::overflown(const char* start, const char* end, const std::string& readAs) const {
    constexpr size_t longestShown = 40;
    const std::string number = platform::clipped({start, static_cast<size_t>(end - start)}, longestShown);
    if (!pieces_) notify(HDNTNotice::Kind::NumberOverflow, number, "it is read as " + readAs);
}

int Scanner::scanString(const char* start) {
    const size_t rest = static_cast<size_t>(lineEnd_ - start - 1);
    if (const void* quote = std::memchr(start + 1, '"', rest)) {
        const char* const end = static_cast<const char*>(quote);
        HDNTParserlval.text = TokenTexts::make(start + 1, end);
        return accept(start, end + 1, T_StringConstant);
    }
    accept(start, lineEnd_, 0);
    const std::string text(start, lineEnd_);
    if (prints()) {
        std::puts(text.c_str());
        std::puts("Unterminated string constant");
    }
    notify(HDNTNotice::Kind::UnterminatedString, text);
    return StateChanged;
}

int Scanner::scanWord(const char* start) {
    const char* end = start;
    WordKey key = 0;
    do key = keyWith(key, *end);
    while (isWordPart(*++end));
    const int token = keywordToken(key, {start, static_cast<size_t>(end - start)});
    if (token == 0) return acceptIdentifier(start, end);
    accept(start, end, token);
    if (token < 0) return beginFileStatement(token);
    if (token == T_BoolConstant) HDNTParserlval.boolValue = *start == 't';
    return token;
}

int Scanner::acceptIdentifier(const char* start, const char* end) {
    const std::string_view word(start, static_cast<size_t>(end - start));
    accept(start, end, T_Identifier);
    constexpr size_t room = sizeof HDNTParserlval.identifier;
    if (word.size() >= room) HDNTError::LongIdentifier(&HDNTParserlloc, std::string(word).c_str());
    const size_t length = std::min(word.size(), room - 1);
    std::memcpy(HDNTParserlval.identifier, start, length);
    HDNTParserlval.identifier[length] = '\0';
    return T_Identifier;
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
    if (first == '/' && second == '/') return accept(start, lineEnd_, pieces_ ? LineComment : StateChanged);
    if (first == '/' && second == '*') {
        state_ = State::Comment;
        accept(start, start + 2, StateChanged);
        commentStart_ = HDNTParserlloc;
        pieceStart_ = matchStart_;
        return StateChanged;
    }
    if (const int token = pairToken(first, second)) return accept(start, start + 2, token);
    if (first != '!' && first != '|') return accept(start, start + 1, first);
    accept(start, start + 1, 0);
    HDNTError::UnrecogChar(&HDNTParserlloc, first);
    return StateChanged;
}

// One token, or StateChanged when the caller has to look at the state again. Every text has a zero behind its end.
int Scanner::scanText() {
    if (!lineEnd_) findLineEnd();
    for (;;) {
        const char* start = cursor_;
        while (*start == ' ') ++start;
        switch (kindOf(*start)) {
        case Kind::Letter: return scanWord(start);
        case Kind::Digit: return scanNumber(start, false);
        case Kind::Quote: return scanString(start);
        case Kind::Punctuation: return accept(start, start + 1, *start);
        case Kind::Operator: return scanOperator(start);
        case Kind::Newline:
            cursor_ = start;
            endLine();
            break;
        case Kind::Tab:
            cursor_ = start;
            tab();
            break;
        case Kind::Nul:
            if (start == textEnd_) {
                if (start != cursor_) accept(cursor_, start, 0); // blanks have a place only where nothing follows them
                return endOfInput() ? StateChanged : 0;
            }
            [[fallthrough]];
        case Kind::Other:
            accept(start, start + 1, 0);
            HDNTError::UnrecogChar(&HDNTParserlloc, *start);
            break;
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

int Scanner::next() {
    if (!cursor_) load();
    for (;;) {
        const bool inText = state_ == State::Normal || state_ == State::Initial;
        const int token = inText ? scanText() : scanBesideText();
        if (token != StateChanged) return token;
    }
}

} // namespace hdnt::frontend
