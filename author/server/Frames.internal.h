#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hdnt::author::server {

/// Takes messages out of bytes as they come: headers, an empty line, and as many bytes as "Content-Length" says. Behind
/// broken headers, or a length that was too small, it goes on at the next "Content-Length".
class FrameReader {
public:
    /// A document of 64 MiB, with room for what JSON escapes in it. What is longer is passed over, and not stored.
    static constexpr std::size_t longest = std::size_t{128} << 20;

    struct Frame {
        enum class Kind { body, brokenHeader, tooLong } kind = Kind::body;
        std::string text; ///< the body, or what is wrong
    };

    void feed(std::string_view bytes);
    /// None: more bytes are needed.
    std::optional<Frame> next();

private:
    using MaybeFrame = std::optional<Frame>;
    std::string_view left() const { return std::string_view(buffer_).substr(begin_); }
    void consume(std::size_t count);
    bool skip();
    MaybeFrame body();
    MaybeFrame header(std::string_view line);
    MaybeFrame endOfHeaders();
    MaybeFrame overlongLine();
    MaybeFrame broken(std::string what);

    std::string buffer_;
    std::size_t begin_ = 0;    ///< of what is not consumed yet
    std::size_t searched_ = 0; ///< behind `begin_`: there is no newline in these
    std::size_t skipped_ = 0;  ///< still to be passed over
    std::optional<std::size_t> length_;
    bool hasHeaders_ = false;
    bool inBody_ = false;
    bool lost_ = false; ///< said so; until a message is found again
};

/// A message as it is sent.
std::string framed(std::string_view body);

} // namespace hdnt::author::server
