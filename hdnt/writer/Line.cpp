#include "hdnt/platform/Text.h"
#include "hdnt/writer/Line.internal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>

namespace hdnt::writer {

void Line::grow(size_t count) {
    const size_t capacity = std::max(2 * capacity_, size_ + std::max<size_t>(count + slack, 256));
    std::unique_ptr<char[]> bytes(new char[capacity]);
    if (size_ > 0) std::memcpy(bytes.get(), bytes_.get(), size_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
}

Line& Line::add(int value) {
    constexpr size_t longest = std::numeric_limits<int>::digits10 + 2;
    const size_t start = size_;
    char* const first = room(longest);
    size_ = start + static_cast<size_t>(std::to_chars(first, first + longest, value).ptr - first);
    return *this;
}

// The number times a power of ten as a whole number, rounded, when there can be no doubt about the rounding: the
// product and what is missing of it are known exactly, and it is nowhere near the middle between two whole numbers. -1
// else.
static double rounded(double number, int precision) {
    static constexpr double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    constexpr double greatest = 1e15;
    if (precision < 0 || static_cast<size_t>(precision) >= std::size(powers)) return -1;
    const double product = number * powers[precision];
    if (!(product < greatest)) return -1;
    const double missing = std::fma(number, powers[precision], -product);
    const double whole = std::nearbyint(product);
    return std::abs(product - whole + missing) < 0.499 ? whole : -1;
}

// The digits with a point before the last ones. There is room for them. The end.
static char* pointed(char* text, bool isNegative, std::uint64_t whole, size_t behindPoint) {
    if (isNegative) *text++ = '-';
    char digits[32];
    char* const end = std::to_chars(digits, digits + sizeof digits, whole).ptr;
    const auto count = static_cast<size_t>(end - digits);
    const size_t zeros = behindPoint >= count ? behindPoint + 1 - count : 0;
    text = std::fill_n(text, zeros, '0');
    text = std::copy(digits, end, text);
    if (behindPoint == 0) return text;
    std::memmove(text - behindPoint + 1, text - behindPoint, behindPoint);
    text[-static_cast<std::ptrdiff_t>(behindPoint)] = '.';
    return text + 1;
}

// The longest number has 309 digits before the point, and a negative precision means six behind it.
// Of a range without a bound, which many have.
static const std::string& greatestDigits() {
    static const std::string digits = [] {
        char text[320];
        const auto end =
            std::to_chars(text, text + sizeof text, std::numeric_limits<double>::max(), std::chars_format::fixed);
        return std::string(text, end.ptr);
    }();
    return digits;
}

Line& Line::fixed(double value, int precision) {
    if (std::abs(value) == std::numeric_limits<double>::max() && precision > 0) {
        add(value < 0 ? std::string_view("-") : "").add(std::string_view(greatestDigits()));
        return add('.').fill(static_cast<size_t>(precision), '0');
    }
    const size_t start = size_;
    const size_t longest = 320 + static_cast<size_t>(std::max(precision, 0));
    char* const first = room(longest);
    char* end = nullptr;
    if (const double whole = rounded(std::abs(value), precision); whole >= 0)
        end = pointed(first, std::signbit(value), static_cast<std::uint64_t>(whole), static_cast<size_t>(precision));
    else end = std::to_chars(first, first + longest, value, std::chars_format::fixed, precision).ptr;
    size_ = start + static_cast<size_t>(end - first);
    return *this;
}

Line& Line::shortest(double value) {
    if (std::isinf(value)) return add(value < 0 ? std::string_view("-1") : "1").fill(309, '0').add(".0");
    return add(platform::DoubleText(value, platform::DoubleForm::FixedPoint).view());
}

} // namespace hdnt::writer
