#pragma once

#include "hdnt/diagnostics/yyltype.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

/// What the actions of tests/oracle/ntl_oracle.l work on when it is measured: no more than a scanner has to do for its
/// parser. Values, locations and lines are made as the library makes them; nothing is recorded.
namespace oracle {

class OracleState {
public:
    enum class Splice { Skipped, NotFound, NotOpened, Opened };

    static OracleState& instance() { return state_; }
    /// The text is borrowed until the last token.
    void start(const std::string& text) {
        *this = {};
        text_ = &text;
    }
    int read(char* buffer, int size) {
        const size_t count = std::min(text_->size() - position_, static_cast<size_t>(size));
        std::memcpy(buffer, text_->data() + position_, count);
        position_ += count;
        return static_cast<int>(count);
    }

    void beforeAction(const char*, int length) {
        place.fileLine = fileLine_;
        place.first_line = fileLine_;
        place.first_column = column_;
        place.last_column = column_ + length - 1;
        column_ += length;
    }
    void newline() {
        ++fileLine_;
        column_ = 1;
    }
    void tab() { column_ = column_ - column_ % 8 + 9; }
    void captureLine(const char* text, int length) {
        lineStarts_.push_back(lines_.size());
        lines_.append(text, static_cast<size_t>(length));
        column_ = 1;
    }
    void captureEmptyLine() {
        newline();
        lineStarts_.push_back(lines_.size());
    }

    int identifier(const char* text, int length) {
        const size_t count = std::min(static_cast<size_t>(length), sizeof value.identifier - 1);
        std::memcpy(value.identifier, text, count);
        value.identifier[count] = 0;
        return 273;
    }
    int integer(const char* text) {
        value.intValue = static_cast<int>(std::strtol(text, nullptr, 10));
        return 277;
    }
    int real(const char* text) {
        value.doubleValue = std::strtod(text, nullptr);
        return 278;
    }
    int boolean(bool b) {
        value.boolValue = b;
        return 279;
    }
    int text(int token, const char* begin, int length) {
        value.text = new std::string(begin, static_cast<size_t>(length));
        return token;
    }
    void finishToken(int, const char*, int) {}

    // What a generated text has none of.
    void lookForFile(const std::string&, bool) { std::abort(); }
    Splice splice() const { return Splice::Skipped; }
    bool returnFromFile() { return false; }
    void traceEndOfInput() {}
    void unrecognised(char) { std::abort(); }
    void unterminatedString(const char*) { std::abort(); }
    void unterminatedComment() { std::abort(); }
    void echo(char) { std::abort(); }

    union {
        int intValue;
        double doubleValue;
        bool boolValue;
        char identifier[32];
        std::string* text; ///< whoever takes the token deletes it
    } value{};
    yyltype place{};
    bool ended = false;

private:
    static OracleState state_;

    const std::string* text_ = nullptr;
    size_t position_ = 0;
    std::string lines_;
    std::vector<size_t> lineStarts_;
    int fileLine_ = 1;
    int column_ = 1;
};

inline OracleState OracleState::state_;

// The generated scanner.
int ntloracleNext();
void ntloracleStart();
void ntloracleStop();

} // namespace oracle
