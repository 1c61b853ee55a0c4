#include "hdnt/platform/Text.h"
#include "hdnt/writer/Line.internal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace hdnt::writer {

void Line::grow(size_t count) {
    const size_t capacity = std::max(2 * capacity_, size_ + std::max<size_t>(count, 256));
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

// The longest number has 309 digits before the point, and a negative precision means six behind it.
Line& Line::fixed(double value, int precision) {
    const size_t start = size_;
    const size_t longest = 320 + static_cast<size_t>(std::max(precision, 0));
    char* const first = room(longest);
    const auto end = std::to_chars(first, first + longest, value, std::chars_format::fixed, precision);
    size_ = start + static_cast<size_t>(end.ptr - first);
    return *this;
}

Line& Line::shortest(double value) {
    if (std::isinf(value)) return add(value < 0 ? std::string_view("-1") : "1").fill(309, '0').add(".0");
    return add(platform::DoubleText(value, platform::DoubleForm::FixedPoint).view());
}

} // namespace hdnt::writer
