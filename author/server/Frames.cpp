#include "author/server/Frames.internal.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace hdnt::author::server {

namespace {

constexpr std::string_view lengthName = "content-length";
constexpr std::string_view blanks = " \t";
constexpr std::size_t longestLine = 4096;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isOfName(char c) { return (lower(c) >= 'a' && lower(c) <= 'z') || (c >= '0' && c <= '9') || c == '-'; }

// The last one: what is before it in the line may be the rest of a message whose length was too small.
std::size_t findLength(std::string_view line) {
    const auto found = std::find_end(line.begin(), line.end(), lengthName.begin(), lengthName.end(),
                                     [](char a, char b) { return lower(a) == b; });
    return found == line.end() ? line.npos : static_cast<std::size_t>(found - line.begin());
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == text.npos ? text.substr(text.size())
                              : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// Of what stands behind the name.
std::optional<std::size_t> lengthIn(std::string_view text) {
    text = trimmed(text);
    if (!text.starts_with(':')) return std::nullopt;
    text = trimmed(text.substr(1));
    std::size_t length = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), length);
    if (text.empty() || read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    return length;
}

} // namespace

void FrameReader::feed(std::string_view bytes) {
    const std::size_t skipped = std::min(skipped_, bytes.size());
    if (left().empty()) {
        buffer_.clear();
        begin_ = 0;
        skipped_ -= skipped;
        bytes.remove_prefix(skipped);
    } else if (begin_ > buffer_.size() / 2) {
        buffer_.erase(0, std::exchange(begin_, 0));
    }
    buffer_ += bytes;
}

std::optional<FrameReader::Frame> FrameReader::next() {
    for (;;) {
        if (!skip()) return std::nullopt;
        if (inBody_) return body();
        const std::size_t end = left().find('\n', searched_);
        if (end == std::string_view::npos) {
            searched_ = left().size();
            return searched_ > longestLine ? overlongLine() : std::nullopt;
        }
        std::string_view line = left().substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        MaybeFrame said = line.empty() ? endOfHeaders() : header(line);
        consume(end + 1);
        if (said) return said;
    }
}

void FrameReader::consume(std::size_t count) {
    begin_ += count;
    searched_ = 0;
}

// True when all that was to be passed over was.
bool FrameReader::skip() {
    const std::size_t count = std::min(skipped_, left().size());
    if (count > 0) consume(count);
    skipped_ -= count;
    return skipped_ == 0;
}

std::optional<FrameReader::Frame> FrameReader::body() {
    if (left().size() < *length_) return std::nullopt;
    Frame frame{Frame::Kind::body, std::string(left().substr(0, *length_))};
    consume(*length_);
    length_.reset();
    inBody_ = lost_ = false;
    if (left().empty()) { // a long one may have been the only one
        std::string().swap(buffer_);
        begin_ = 0;
    }
    return frame;
}

std::optional<FrameReader::Frame> FrameReader::header(std::string_view line) {
    const std::size_t name = findLength(line);
    hasHeaders_ = true;
    if (name == line.npos || (name > 0 && isOfName(line[name - 1]))) {
        const std::size_t colon = line.find(':');
        const bool isHeader = colon != line.npos &&
                              std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(colon), isOfName);
        return isHeader ? MaybeFrame() : broken("a line that is no header");
    }
    const std::optional<std::size_t> length = lengthIn(line.substr(name + lengthName.size()));
    if (length) length_ = length;
    if (!length) return broken("Content-Length is no number of bytes");
    return trimmed(line.substr(0, name)).empty() ? MaybeFrame() : broken("something stands before Content-Length");
}

std::optional<FrameReader::Frame> FrameReader::endOfHeaders() {
    if (!std::exchange(hasHeaders_, false)) return std::nullopt;
    if (!length_) return broken("headers without Content-Length");
    inBody_ = *length_ <= longest;
    if (inBody_) return std::nullopt;
    skipped_ = *length_;
    length_.reset();
    return Frame{Frame::Kind::tooLong,
                 "a message of " + std::to_string(skipped_) + " bytes; the longest has " + std::to_string(longest)};
}

// No header: its end may be the beginning of one.
std::optional<FrameReader::Frame> FrameReader::overlongLine() {
    constexpr std::size_t kept = 64;
    consume(left().size() - kept);
    return broken("a line that is no header");
}

std::optional<FrameReader::Frame> FrameReader::broken(std::string what) {
    if (std::exchange(lost_, true)) return std::nullopt;
    return Frame{Frame::Kind::brokenHeader, std::move(what)};
}

std::string framed(std::string_view body) {
    std::string message = "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    return message += body;
}

} // namespace hdnt::author::server
