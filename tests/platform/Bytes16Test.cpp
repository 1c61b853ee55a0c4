#include "hdnt/platform/Bytes16.internal.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <string_view>

using namespace hdnt::platform;

namespace {

constexpr std::string_view wordBytes = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

/// Memory up to whose last byte may be read, and not further.
class Edge {
public:
    Edge()
        : memory_(
              static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        mprotect(memory_ + page, page, PROT_NONE);
    }
    ~Edge() { munmap(memory_, 2 * page); }
    Edge(const Edge&) = delete;
    Edge& operator=(const Edge&) = delete;

    /// A copy of the text with no more behind its end than the room it is to have.
    const char* put(const std::string& text) {
        char* const begin = memory_ + page - bytes16Room - text.size();
        std::memcpy(begin, text.data(), text.size());
        std::memset(begin + text.size(), 0, bytes16Room);
        return begin;
    }

private:
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    char* memory_;
};

template <typename Bytes>
struct Bytes16Test : testing::Test {};
using Ways = testing::Types<PlainBytes16, Bytes16>;
TYPED_TEST_SUITE(Bytes16Test, Ways);

} // namespace

// Each byte at each place, of which the words around it are not part.
TYPED_TEST(Bytes16Test, EachByteIsWhatItIs) {
    Edge edge;
    for (int value = 0; value < 256; ++value) {
        const char c = static_cast<char>(value);
        const bool inWord = wordBytes.find(c) != wordBytes.npos;
        for (std::size_t before = 0; before < 40; ++before) {
            const auto with = [&](char around) { return std::string(before, around) + c + std::string(20, around); };
            const std::string word = with('x');
            const char* text = edge.put(word);
            EXPECT_EQ(wordEnd<TypeParam>(text) - text, inWord ? word.size() : before) << value << " at " << before;
            const std::string blanks = with(' ');
            text = edge.put(blanks);
            EXPECT_EQ(blanksEnd<TypeParam>(text) - text, c == ' ' ? blanks.size() : before)
                << value << " at " << before;
        }
    }
}

// Also behind the end, where it does not count.
TYPED_TEST(Bytes16Test, FindsTheFirstBeforeTheEnd) {
    Edge edge;
    const auto find = findAny<TypeParam, '"', '\n'>;
    for (std::size_t size = 0; size < 40; ++size) {
        const char* const none = edge.put(std::string(size, '\xa2')); // a quote with the sign
        EXPECT_EQ(find(none, none + size), none + size);
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size, '\0');
            text[at] = at % 2 ? '"' : '\n';
            text.back() = '"';
            const char* const begin = edge.put(text);
            EXPECT_EQ(find(begin, begin + size) - begin, std::min(at, size - 1));
            EXPECT_EQ(find(begin, begin + at) - begin, at);
        }
    }
}

TEST(Room, IsMadeWithoutDoublingTheText) {
    for (const std::size_t size : {0U, 1U, 15U, 16U, 5000U}) {
        std::string text(size, 'x');
        text.shrink_to_fit();
        makeRoom(text);
        EXPECT_TRUE(hasRoom(text));
        EXPECT_EQ(text, std::string(size, 'x'));
        EXPECT_LE(text.capacity(), std::max<std::size_t>(size + bytes16Room, 31));
        EXPECT_EQ(std::string_view(text.data() + size, bytes16Room), std::string(bytes16Room, '\0'));
        const char* const data = text.data();
        makeRoom(text);
        EXPECT_EQ(text.data(), data);
    }
}
