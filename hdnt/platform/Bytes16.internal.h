#pragma once

// Texts looked at sixteen bytes at a time, with what the processor has for that.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#if !defined(HDNT_PLAIN_BYTES) && defined(__SSE2__)
#define HDNT_SSE2
#include <emmintrin.h>
#elif !defined(HDNT_PLAIN_BYTES) && defined(__ARM_NEON) && defined(__aarch64__)
#define HDNT_NEON
#include <arm_neon.h>
#endif

namespace hdnt::platform {

/// Zeros, or other bytes that may be read, that a text has behind its end when it is looked at by what is below.
inline constexpr std::size_t bytes16Room = 16;

/// Sixteen bytes, in C++ alone: for other processors, and what the other ways are held against. Each question gives
/// marks, of which first() is the place of the first that is set and firstUnset() of the first that is not; 16 when
/// there is none.
class PlainBytes16 {
public:
    class Marks {
    public:
        explicit Marks(std::uint32_t bits) : bits_(bits) {}
        friend Marks operator|(Marks a, Marks b) { return Marks(a.bits_ | b.bits_); }
        unsigned first() const { return static_cast<unsigned>(std::countr_zero(bits_ | 0x10000)); }
        unsigned firstUnset() const { return static_cast<unsigned>(std::countr_zero(~bits_)); }

    private:
        std::uint32_t bits_; // one of each byte
    };

    explicit PlainBytes16(const char* bytes) : bytes_(bytes) {}
    Marks equal(char c) const {
        return marks([=](char byte) { return byte == c; });
    }
    /// Of ASCII, in both cases.
    Marks letters() const {
        return marks([](char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); });
    }
    Marks digits() const {
        return marks([](char byte) { return byte >= '0' && byte <= '9'; });
    }

private:
    template <typename Question>
    Marks marks(Question question) const {
        std::uint32_t bits = 0;
        for (unsigned i = 0; i < 16; ++i) bits |= static_cast<std::uint32_t>(question(bytes_[i])) << i;
        return Marks(bits);
    }

    const char* bytes_;
};

#if defined(HDNT_SSE2)

/// The same with SSE2, which every x86-64 processor has.
class Bytes16 {
public:
    class Marks {
    public:
        explicit Marks(__m128i bytes) : bytes_(bytes) {}
        friend Marks operator|(Marks a, Marks b) { return Marks(_mm_or_si128(a.bytes_, b.bytes_)); }
        unsigned first() const { return static_cast<unsigned>(std::countr_zero(bits() | 0x10000)); }
        unsigned firstUnset() const { return static_cast<unsigned>(std::countr_zero((bits() ^ 0xffff) | 0x10000)); }

    private:
        std::uint32_t bits() const { return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes_)); }
        __m128i bytes_;
    };

    explicit Bytes16(const char* bytes) : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))) {}
    Marks equal(char c) const { return Marks(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(c))); }
    Marks letters() const { return within(_mm_or_si128(bytes_, _mm_set1_epi8(0x20)), 'a', 26); }
    Marks digits() const { return within(bytes_, '0', 10); }

private:
    // Bytes are compared with their signs: the first of the range is moved to the least of all.
    static Marks within(__m128i bytes, int first, int count) {
        const __m128i moved = _mm_add_epi8(bytes, _mm_set1_epi8(static_cast<char>(-128 - first)));
        return Marks(_mm_cmplt_epi8(moved, _mm_set1_epi8(static_cast<char>(-128 + count))));
    }

    __m128i bytes_;
};

#elif defined(HDNT_NEON)

/// The same with NEON, which every 64-bit ARM processor has.
class Bytes16 {
public:
    class Marks {
    public:
        explicit Marks(uint8x16_t bytes) : bytes_(bytes) {}
        friend Marks operator|(Marks a, Marks b) { return Marks(vorrq_u8(a.bytes_, b.bytes_)); }
        unsigned first() const { return static_cast<unsigned>(std::countr_zero(bits())) / 4; }
        unsigned firstUnset() const { return static_cast<unsigned>(std::countr_zero(~bits())) / 4; }

    private:
        // Four bits of each byte; none is set: the count of zeros is that of 16 bytes.
        std::uint64_t bits() const {
            const uint8x8_t halves = vshrn_n_u16(vreinterpretq_u16_u8(bytes_), 4);
            return vget_lane_u64(vreinterpret_u64_u8(halves), 0);
        }
        uint8x16_t bytes_;
    };

    explicit Bytes16(const char* bytes) : bytes_(vld1q_u8(reinterpret_cast<const std::uint8_t*>(bytes))) {}
    Marks equal(char c) const { return Marks(vceqq_u8(bytes_, vdupq_n_u8(static_cast<std::uint8_t>(c)))); }
    Marks letters() const { return within(vorrq_u8(bytes_, vdupq_n_u8(0x20)), 'a', 26); }
    Marks digits() const { return within(bytes_, '0', 10); }

private:
    static Marks within(uint8x16_t bytes, std::uint8_t first, std::uint8_t count) {
        return Marks(vcltq_u8(vsubq_u8(bytes, vdupq_n_u8(first)), vdupq_n_u8(count)));
    }

    uint8x16_t bytes_;
};

#else

using Bytes16 = PlainBytes16;

#endif

/// The end of the letters, digits and underscores at `text`. Something else has to come behind them, as the zero behind
/// a text does, and then room for bytes16Room bytes; the same below.
template <typename Bytes = Bytes16>
const char* wordEnd(const char* text) {
    for (;; text += 16) {
        const Bytes bytes(text);
        const unsigned end = (bytes.letters() | bytes.digits() | bytes.equal('_')).firstUnset();
        if (end < 16) return text + end;
    }
}

/// The end of the blanks at `text`.
template <typename Bytes = Bytes16>
const char* blanksEnd(const char* text) {
    for (;; text += 16) {
        const unsigned end = Bytes(text).equal(' ').firstUnset();
        if (end < 16) return text + end;
    }
}

/// The first of some characters from `text` on; the end when none is before it.
template <typename Bytes, char... wanted>
const char* findAny(const char* text, const char* end) {
    for (; text < end; text += 16) {
        const Bytes bytes(text);
        const unsigned found = (bytes.equal(wanted) | ...).first();
        if (found < 16) return text + found < end ? text + found : end;
    }
    return end;
}

/// Whether a text can be looked at by these functions; if not, what makes it one.
inline bool hasRoom(const std::string& text) { return text.capacity() - text.size() >= bytes16Room; }

inline void makeRoom(std::string& text) {
    const std::size_t size = text.size();
    if (!hasRoom(text)) {
        std::string roomy; // to reserve more would double what is there
        roomy.reserve(size + bytes16Room);
        text.swap(roomy.assign(text));
    }
    text.resize(size + bytes16Room);
    text.resize(size);
}

} // namespace hdnt::platform
