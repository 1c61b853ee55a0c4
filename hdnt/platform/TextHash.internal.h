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

template <typename Number>
std::uint64_t numberAt(const char* p) {
    Number number = 0;
    std::memcpy(&number, p, sizeof number);
    return number;
}
inline std::uint64_t eightAt(const char* p) { return numberAt<std::uint64_t>(p); }
inline std::uint64_t fourAt(const char* p) { return numberAt<std::uint32_t>(p); }
inline std::uint64_t byteAt(const char* p) { return numberAt<std::uint8_t>(p); }

/// One to eight bytes of a text as a number, the first one lowest.
inline std::uint64_t shortText(std::string_view text) {
    const char* const p = text.data();
    const std::size_t last = text.size() - 1;
    if (text.size() == 8) return eightAt(p);
    if (text.size() >= 4) return fourAt(p) | fourAt(p + last - 3) << 8 * (last - 3);
    const std::size_t middle = text.size() / 2;
    return byteAt(p) | byteAt(p + middle) << 8 * middle | byteAt(p + last) << 8 * last;
}

/// `fold` is applied to every eight bytes first; `shortOne` gives those of a text that has no more. The last bytes of a
/// longer text may be taken twice.
template <typename Fold, typename Short>
std::uint64_t hashOf(std::string_view text, Fold&& fold, Short&& shortOne) {
    if (text.empty()) return 0;
    std::uint64_t hash = hashSeed() ^ text.size();
    std::uint64_t bytes = 0;
    if (text.size() <= 8) {
        bytes = shortOne(text);
    } else {
        const char* p = text.data();
        const char* const last = p + text.size() - 8;
        for (; p < last; p += 8) hash = mixed(hash, fold(eightAt(p)));
        bytes = eightAt(last);
    }
    hash = mixed(hash, fold(bytes));
    return mixed(hash, hash >> 29);
}

// Objects and not functions, whose calls through a parameter the compiler keeps.
inline constexpr auto asItIs = [](std::uint64_t bytes) { return bytes; };
inline constexpr auto inUpperCase = [](std::uint64_t bytes) { return upperCased(bytes); };
inline constexpr auto withinText = [](std::string_view text) { return shortText(text); };

inline std::uint64_t textHash(std::string_view text) { return hashOf(text, asItIs, withinText); }

/// The same for a text that can be read on for eight bytes from its beginning, however short it is.
inline std::uint64_t textHashReadingOn(std::string_view text) {
    return hashOf(text, asItIs, [](std::string_view shortOne) {
        if constexpr (std::endian::native != std::endian::little) return shortText(shortOne);
        return eightAt(shortOne.data()) & ~std::uint64_t{0} >> 8 * (8 - shortOne.size());
    });
}

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
inline std::uint64_t caselessHash(std::string_view text) { return hashOf(text, inUpperCase, withinText); }

} // namespace hdnt::platform
