#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Hashes of short texts for tables in memory; never stored, since they differ from process to process.
namespace hdnt::platform {

/// Eight bytes with the ASCII letters among them in upper case.
constexpr std::uint64_t upperCased(std::uint64_t bytes) {
    constexpr std::uint64_t each = 0x0101010101010101;
    const std::uint64_t low = bytes & each * 0x7f;
    const std::uint64_t fromA = low + each * (0x80 - 'a');
    const std::uint64_t pastZ = low + each * (0x7f - 'z');
    const std::uint64_t lowerCase = fromA & ~pastZ & ~bytes & each * 0x80;
    return bytes ^ lowerCase >> 2;
}

/// Whether one of eight bytes is that one.
constexpr bool hasByte(std::uint64_t bytes, char byte) {
    constexpr std::uint64_t each = 0x0101010101010101;
    const std::uint64_t other = bytes ^ each * static_cast<unsigned char>(byte);
    return ((other - each) & ~other & each * 0x80) != 0;
}

/// Where the process was loaded: so that texts which collide cannot be written beforehand.
inline std::uint64_t hashSeed() {
    static const char here = 0;
    return reinterpret_cast<std::uintptr_t>(&here) * 0x9e3779b97f4a7c15;
}

/// Both halves of the product in one: each bit of a factor has a say in all of them.
inline std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
    __extension__ using Product = unsigned __int128;
    const Product product = Product{a} * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

template <typename Number>
std::uint64_t numberAt(const char* p) {
    Number number = 0;
    std::memcpy(&number, p, sizeof number);
    return number;
}
inline std::uint64_t eightAt(const char* p) { return numberAt<std::uint64_t>(p); }
inline std::uint64_t fourAt(const char* p) { return numberAt<std::uint32_t>(p); }
inline std::uint64_t byteAt(const char* p) { return numberAt<std::uint8_t>(p); }

/// The first and the last eight bytes of a text, or its halves with what is between in both: with its size all that a
/// text of sixteen bytes or less is.
struct TextEnds {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    static constexpr std::size_t most = 16;

    explicit TextEnds(std::string_view text) {
        const char* const p = text.data();
        const std::size_t size = text.size();
        if (size >= 8) {
            first = eightAt(p);
            last = eightAt(p + size - 8);
        } else if (size >= 4) {
            first = fourAt(p);
            last = fourAt(p + size - 4);
        } else if (size > 0) {
            first = byteAt(p) | byteAt(p + size / 2) << 8;
            last = byteAt(p + size - 1);
        }
    }
    bool operator==(const TextEnds&) const = default;
};

/// Zero for no text. `fold` is applied to every eight bytes first.
template <typename Fold>
std::uint64_t hashOf(std::string_view text, const TextEnds& ends, Fold&& fold) {
    if (text.empty()) return 0;
    const std::uint64_t seed = hashSeed();
    std::uint64_t hash = seed ^ fold(ends.first);
    for (std::size_t at = 8; at + 8 < text.size(); at += 8) hash = mixed(hash, seed) ^ fold(eightAt(text.data() + at));
    const std::uint64_t other = seed + text.size() * 0xbf58476d1ce4e5b9;
    return mixed(hash, other ^ fold(ends.last));
}

// Objects and not functions, whose calls through a parameter the compiler keeps.
inline constexpr auto asItIs = [](std::uint64_t bytes) { return bytes; };
inline constexpr auto inUpperCase = [](std::uint64_t bytes) { return upperCased(bytes); };

inline std::uint64_t textHash(std::string_view text, const TextEnds& ends) { return hashOf(text, ends, asItIs); }
inline std::uint64_t textHash(std::string_view text) { return textHash(text, TextEnds(text)); }

/// Whether two texts are the same when `fold` is applied to every eight bytes. Inline: a call to compare a name costs
/// as much as the comparison.
template <typename Fold>
bool equalFolded(std::string_view a, std::string_view b, Fold&& fold) {
    if (a.size() != b.size() || a.empty()) return a.size() == b.size();
    const char* const p = a.data();
    const char* const q = b.data();
    const std::size_t size = a.size();
    const auto same = [&](std::uint64_t x, std::uint64_t y) { return fold(x) == fold(y); };
    if (size >= 8) {
        for (std::size_t at = 0; at < size - 8; at += 8)
            if (!same(eightAt(p + at), eightAt(q + at))) return false;
        return same(eightAt(p + size - 8), eightAt(q + size - 8));
    }
    if (size >= 4) return same(fourAt(p), fourAt(q)) && same(fourAt(p + size - 4), fourAt(q + size - 4));
    return same(byteAt(p), byteAt(q)) && same(byteAt(p + size / 2), byteAt(q + size / 2)) &&
           same(byteAt(p + size - 1), byteAt(q + size - 1));
}

/// Whether two texts are the same but for the case of ASCII letters.
inline bool equalCaseless(std::string_view a, std::string_view b) { return equalFolded(a, b, inUpperCase); }
inline bool equalTexts(std::string_view a, std::string_view b) { return equalFolded(a, b, asItIs); }

/// The same hash for texts that differ in the case of ASCII letters alone.
inline std::uint64_t caselessHash(std::string_view text) { return hashOf(text, TextEnds(text), inUpperCase); }

} // namespace hdnt::platform
