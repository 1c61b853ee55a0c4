#include "hdnt/platform/Text.h"

#include <charconv>
#include <cmath>

namespace hdnt::platform {

std::string clipped(std::string_view text, std::size_t characters) {
    if (text.size() <= characters || platform::characters(text) <= characters) return std::string(text);
    std::size_t end = 0;
    for (std::size_t left = characters - 3; end < text.size(); ++end)
        if (!continuesCharacter(text[end]) && left-- == 0) break;
    return std::string(text.substr(0, end)) + "...";
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

} // namespace hdnt::platform
