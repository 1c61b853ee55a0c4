#include "author/lint/BitText.internal.h"

#include <charconv>
#include <climits>

namespace hdnt::author {

static unsigned digitValue(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
    return 0;
}

BitText::BitText(const std::string& text, bool hex) {
    size_t start = 0;
    if (const size_t quote = text.find('\''); quote != text.npos && quote + 1 < text.size()) {
        const std::from_chars_result result = std::from_chars(text.data(), text.data() + quote, width_);
        if (result.ec == std::errc::result_out_of_range) width_ = LONG_MAX;
        hex = text[quote + 1] == 'h' || text[quote + 1] == 'H';
        start = quote + 2;
    }
    for (size_t i = start; i < text.size(); ++i) {
        const unsigned value = digitValue(text[i]);
        for (int bit = hex ? 3 : 0; bit >= 0; --bit) {
            const bool one = (value >> static_cast<unsigned>(bit) & 1U) != 0;
            if (one || !bits_.empty()) bits_ += one ? '1' : '0';
        }
    }
}

} // namespace hdnt::author
