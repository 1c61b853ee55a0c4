#include "hdnt/platform/BitText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <climits>

namespace hdnt::platform {

// 16 for what is no digit.
static unsigned digitValue(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
    return 16;
}

std::optional<BitText> BitText::of(std::string_view text, bool hex) {
    BitText result;
    if (const size_t quote = text.find('\''); quote != text.npos) {
        const char* const end = text.data() + quote;
        const std::from_chars_result width = std::from_chars(text.data(), end, result.width_);
        const char radix = quote + 1 < text.size() ? text[quote + 1] : '\0';
        hex = radix == 'h' || radix == 'H';
        if (width.ec == std::errc::result_out_of_range) result.width_ = LONG_MAX;
        const bool isWidth = width.ec != std::errc::invalid_argument && width.ptr == end && text.front() != '-';
        if (!isWidth || !(hex || radix == 'b' || radix == 'B')) return std::nullopt;
        result.hasPrefix_ = true;
        text.remove_prefix(quote + 2);
    }
    return result.readDigits(text, hex) ? std::optional(result) : std::nullopt;
}

// Binary digits make nibbles from their end.
bool BitText::readDigits(std::string_view digits, bool hex) {
    const unsigned bits = hex ? 4 : 1;
    const unsigned shift = hex ? 0 : 2;
    const size_t missing = hex ? 0 : (4 - digits.size() % 4) % 4;
    std::string nibbles((digits.size() + missing) >> shift, '\0');
    for (size_t i = 0; i < digits.size(); ++i) {
        const unsigned value = digitValue(digits[i]);
        if (value >> bits != 0) return false;
        char& nibble = nibbles[(i + missing) >> shift];
        nibble = static_cast<char>(static_cast<unsigned>(nibble) << bits | value);
    }
    nibbles_ = nibbles.erase(0, nibbles.find_first_not_of('\0'));
    return !digits.empty();
}

size_t BitText::significantBits() const {
    return nibbles_.empty() ? 0 : (nibbles_.size() - 1) * 4 + std::bit_width(static_cast<unsigned char>(nibbles_[0]));
}

std::string BitText::greatest(int width, bool hex) {
    if (!hex) return std::string(static_cast<size_t>(std::max(width, 0)), '1');
    const int rest = width % 4;
    std::string digits = rest > 0 ? std::to_string((1 << rest) - 1) : "";
    digits.append(static_cast<size_t>(std::max(width / 4, 0)), 'F');
    return digits;
}

bool BitText::fits(int width) const {
    return width_ <= width && significantBits() <= static_cast<size_t>(std::max(width, 0));
}

} // namespace hdnt::platform
