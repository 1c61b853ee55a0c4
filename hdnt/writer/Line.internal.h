#pragma once

#include <cstring>
#include <memory>
#include <string_view>

namespace hdnt::writer {

/// Text that is put together, piece by piece, and then written at once. Internal.
///
/// A library is written in millions of small pieces. So literals are copied by their known length, and a line that was
/// cleared keeps its room. Numbers are those of the C locale, whatever the host has set.
class Line {
public:
    std::string_view view() const { return {bytes_.get(), size_}; }
    void clear() { size_ = 0; }
    void shrink(size_t size) { size_ = size; }

    template <size_t N>
    Line& add(const char (&literal)[N]) {
        std::memcpy(room(N - 1), literal, N - 1);
        return *this;
    }
    Line& add(std::string_view text) {
        copy(room(text.size()), text.data(), text.size());
        return *this;
    }
    Line& add(char c) {
        *room(1) = c;
        return *this;
    }
    Line& add(int value);
    Line& fill(size_t count, char c) {
        char* const to = room(count);
        if (count <= slack) std::memset(to, c, slack); // of a known length no call
        else std::memset(to, c, count);
        return *this;
    }
    /// At least one blank, also for an indent of 0.
    Line& indent(long blanks) { return fill(static_cast<size_t>(blanks < 1 ? 1 : blanks), ' '); }
    Line& quoted(std::string_view text) { return add('"').add(text).add('"'); }
    /// As printf's "%.*f".
    Line& fixed(double value, int precision);
    /// The shortest digits that read back to the same number, with a point and without exponent. An infinite one is
    /// written as a number beyond the greatest, which reads back as it. Not for a NaN.
    Line& shortest(double value);

private:
    // Most pieces are short: two copies of a known length that overlap take a third of the time of a call.
    static void copy(char* to, const char* from, size_t count) {
        if (count > 16) std::memcpy(to, from, count);
        else if (count >= 8) copyEnds<8>(to, from, count);
        else if (count >= 4) copyEnds<4>(to, from, count);
        else if (count >= 2) copyEnds<2>(to, from, count);
        else if (count == 1) *to = *from;
    }
    template <size_t Length>
    static void copyEnds(char* to, const char* from, size_t count) {
        char last[Length];
        std::memcpy(last, from + count - Length, Length);
        std::memcpy(to, from, Length);
        std::memcpy(to + count - Length, last, Length);
    }
    // Behind it may be written up to so many bytes from its beginning on.
    static constexpr size_t slack = 16;
    char* room(size_t count) {
        if (capacity_ - size_ < count + slack) [[unlikely]]
            grow(count);
        char* const start = bytes_.get() + size_;
        size_ += count;
        return start;
    }
    void grow(size_t count);

    std::unique_ptr<char[]> bytes_;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

} // namespace hdnt::writer
