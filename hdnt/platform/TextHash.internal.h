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

/// Where the process was loaded: so that texts which collide cannot be written beforehand.
inline std::uint64_t hashSeed() {
    static const char here = 0;
    return reinterpret_cast<std::uintptr_t>(&here) * 0x9e3779b97f4a7c15;
}

inline std::uint64_t mixed(std::uint64_t hash, std::uint64_t bytes) {
    hash = (hash ^ bytes) * 0x9e3779b97f4a7c15;
    return hash ^ hash >> 32;
}

/// `fold` is applied to every eight bytes first. The last bytes of a text may be taken twice.
template <typename Fold>
std::uint64_t hashOf(std::string_view text, Fold&& fold) {
    if (text.empty()) return 0;
    const char* p = text.data();
    const char* const end = p + text.size();
    std::uint64_t hash = hashSeed() ^ text.size();
    std::uint64_t bytes = 0;
    for (; end - p > 8; p += 8) {
        std::memcpy(&bytes, p, sizeof bytes);
        hash = mixed(hash, fold(bytes));
    }
    if (text.size() >= 8) {
        std::memcpy(&bytes, end - 8, sizeof bytes);
    } else if (text.size() >= 4) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, p, sizeof first);
        std::memcpy(&last, end - 4, sizeof last);
        bytes = first | static_cast<std::uint64_t>(last) << 32;
    } else {
        for (; p != end; ++p) bytes = bytes << 8 | static_cast<unsigned char>(*p);
    }
    hash = mixed(hash, fold(bytes));
    return mixed(hash, hash >> 29);
}

inline std::uint64_t textHash(std::string_view text) {
    return hashOf(text, [](std::uint64_t bytes) { return bytes; });
}

/// Whether two texts are the same but for the case of ASCII letters.
inline bool equalCaseless(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    const auto same = [&](std::size_t at, std::size_t count) {
        std::uint64_t x = 0;
        std::uint64_t y = 0;
        std::memcpy(&x, a.data() + at, count);
        std::memcpy(&y, b.data() + at, count);
        return upperCased(x) == upperCased(y);
    };
    constexpr std::size_t step = sizeof(std::uint64_t);
    std::size_t at = 0;
    for (; a.size() - at >= step; at += step)
        if (!same(at, step)) return false;
    if (at == a.size()) return true;
    return a.size() >= step ? same(a.size() - step, step) : same(0, a.size());
}

/// The same hash for texts that differ in the case of ASCII letters alone.
inline std::uint64_t caselessHash(std::string_view text) { return hashOf(text, upperCased); }

} // namespace hdnt::platform
