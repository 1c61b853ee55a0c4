#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace hdnt::author {

/// Bytes that grow at the end and are emptied again. Grows where it stands when the system can do that: a string would
/// have the old and the new bytes for a while.
class Bytes {
public:
    Bytes() = default;
    ~Bytes() { std::free(data_); }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    std::size_t size() const { return size_; }
    std::string_view view() const { return {data_, size_}; }
    void clear() { size_ = 0; }

    /// Sixteen bytes must be there to be read behind `text`.
    void append(const char* text, std::size_t size) {
        makeRoom(size);
        char* to = data_ + size_;
        size_ += size;
        for (const char* const end = text + size; text < end; text += step, to += step) std::memcpy(to, text, step);
    }
    void append(char c) {
        makeRoom(1);
        data_[size_++] = c;
    }
    void append(std::size_t count, char c) {
        makeRoom(count);
        char* to = data_ + size_;
        size_ += count;
        for (char* const end = data_ + size_; to < end; to += step) std::memset(to, c, step);
    }

private:
    static constexpr std::size_t step = 16;

    // What is appended in steps may be written behind its end, and is read there.
    void makeRoom(std::size_t size) {
        if (capacity_ - size_ < size + 2 * step) grow(size + 2 * step);
    }
    [[gnu::noinline]] void grow(std::size_t size) {
        const std::size_t capacity = capacity_ + capacity_ / 2 + size + 1000;
        void* const data = std::realloc(data_, capacity);
        if (!data) throw std::bad_alloc();
        data_ = static_cast<char*>(data);
        capacity_ = capacity;
    }

    char* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace hdnt::author
