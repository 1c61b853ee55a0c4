#pragma once

#include <cstdint>
#include <span>

namespace bench {

/// A small generator of numbers (splitmix64) that gives the same sequence with every compiler and standard library.
/// Draw once in an expression whose order of evaluation is the compiler's choice.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    /// From 0 to `limit` - 1; `limit` is above 0.
    int below(int limit) { return static_cast<int>(((next() >> 32) * static_cast<std::uint64_t>(limit)) >> 32); }
    /// Both bounds belong to the range.
    int between(int first, int last) { return first + below(last - first + 1); }
    bool chance(int percent) { return below(100) < percent; }

    template <typename Range>
    const auto& pick(const Range& from) {
        return from[static_cast<size_t>(below(static_cast<int>(std::size(from))))];
    }

private:
    std::uint64_t state_;
};

} // namespace bench
