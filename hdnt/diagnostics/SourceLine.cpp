#include "hdnt/diagnostics/SourceLine.internal.h"
#include "hdnt/platform/Text.h"

namespace hdnt::diagnostics {

// A comment that ends without having begun shows that the line begins inside one.
SourceLine::SourceLine(std::string_view line) : line_(line) {
    if (line_.find("*/") == line_.npos) return;
    while (position_.byte < line_.size()) {
        if (state_ == State::Code && tokenEnd_ <= position_.byte && line_.substr(position_.byte, 2) == "*/") {
            start_ = State::BlockComment;
            break;
        }
        advance();
    }
    restart();
}

void SourceLine::restart() {
    state_ = start_;
    position_ = Position();
    scanned_ = 1;
    tokenEnd_ = 0;
}

// One byte on. The state is that of the byte that comes next.
void SourceLine::advance() {
    const std::size_t byte = position_.byte++;
    const char c = line_[byte];
    ++scanned_;
    if (c == '\t' && (state_ == State::Code || state_ == State::BlockComment)) scanned_ += 9 - scanned_ % 8;
    if (position_.byte == line_.size() || !platform::continuesCharacter(line_[position_.byte])) ++position_.character;
    if (byte < tokenEnd_) return;
    const std::string_view two = line_.substr(byte, 2);
    const auto begin = [&](State state) {
        state_ = state;
        tokenEnd_ = byte + 2;
    };
    if (state_ == State::String) {
        if (c == '"') state_ = State::Code;
    } else if (state_ == State::BlockComment) {
        if (two == "*/") begin(State::Code);
    } else if (state_ == State::Code) {
        if (c == '"') state_ = State::String;
        else if (two == "/*") begin(State::BlockComment);
        else if (two == "//") begin(State::LineComment);
    }
}

SourceLine::Position SourceLine::at(int scannedColumn) {
    if (scannedColumn < scanned_) restart();
    while (position_.byte < line_.size() && scanned_ < scannedColumn) advance();
    return position_;
}

} // namespace hdnt::diagnostics
