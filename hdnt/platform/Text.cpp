#include "hdnt/platform/Text.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace hdnt::platform {

std::string clipped(std::string_view text, std::size_t characters) {
    if (text.size() <= characters || platform::characters(text) <= characters) return std::string(text);
    std::size_t end = 0;
    for (std::size_t left = characters - 3; end < text.size(); ++end)
        if (!continuesCharacter(text[end]) && left-- == 0) break;
    return std::string(text.substr(0, end)) + "...";
}

// Length of the UTF-8 character at the start of the text; 0 when there is none, or it is a control character.
static std::size_t printableLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (!continuesCharacter(text[i])) return 0;
    const unsigned char second = byte(1);
    const bool overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool outside = (first == 0xed && second > 0x9f) || (first == 0xf4 && second > 0x8f);
    const bool control = first == 0xc2 && second < 0xa0;
    return overlong || outside || control ? 0 : length;
}

static bool isPlain(char c) { return c >= ' ' && c <= '~'; }

void addPrintable(std::string& result, std::string_view text) {
    while (!text.empty()) {
        const auto plain = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
        const std::size_t length = plain > 0 ? plain : printableLength(text);
        if (length > 0) {
            result += text.substr(0, length);
        } else if (text[0] == '\n' || text[0] == '\t') {
            result += text[0] == '\n' ? "\\n" : "\\t";
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x",
                          static_cast<unsigned>(static_cast<unsigned char>(text[0])));
            result += escaped;
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

DoubleText::DoubleText(double value, DoubleForm form) {
    const bool fixed = form == DoubleForm::FixedPoint;
    char* const start = text_.data();
    char* const last = start + text_.size();
    const std::to_chars_result end =
        fixed ? std::to_chars(start, last, value, std::chars_format::fixed) : std::to_chars(start, last, value);
    size_ = static_cast<std::size_t>(end.ptr - start);
    if (form == DoubleForm::Shortest || !std::isfinite(value)) return;
    if (view().find_first_of(".e") != std::string_view::npos) return;
    text_[size_++] = '.';
    text_[size_++] = '0';
}

std::string joined(const std::vector<std::string>& items, std::string_view separator) {
    std::string result;
    for (const std::string& item : items) result.append(&item == &items.front() ? "" : separator).append(item);
    return result;
}

} // namespace hdnt::platform
