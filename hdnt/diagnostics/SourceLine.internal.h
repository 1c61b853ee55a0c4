#pragma once

#include <cstddef>
#include <string_view>

namespace hdnt::diagnostics {

/// The scanner counts bytes, and a tab as several unless it is inside a token; people count characters. Finds the one
/// by the other. The line must outlive this.
///
/// Asked for ever greater columns it goes on where it was, since a whole library may be one line.
class SourceLine {
public:
    explicit SourceLine(std::string_view line);

    struct Position {
        std::size_t byte = 0;
        int character = 1;
    };
    /// Where the scanner's column is. One behind the end of the line is at its end.
    Position at(int scannedColumn);

private:
    enum class State : unsigned char { Code, String, BlockComment, LineComment };

    void restart();
    void advance();

    std::string_view line_;
    State start_ = State::Code;
    State state_ = State::Code;
    Position position_;
    int scanned_ = 1;
    std::size_t tokenEnd_ = 0; ///< of the two characters that begin or end a comment
};

} // namespace hdnt::diagnostics
