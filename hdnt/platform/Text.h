#pragma once

#include "hdnt/platform/Export.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::platform {

// Texts as people count them: in characters of UTF-8. A byte that is no UTF-8 counts as one character.

/// Whether the byte goes on a character that began before it.
inline bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; }

/// Characters of a text; a tab is one, and wide and combining ones are not told apart.
inline std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !continuesCharacter(c); }));
}

/// The text when it has no more characters than that, which are three or more; else its beginning and "...", which
/// together have as many. A character of several bytes is never cut.
HDNT_API std::string clipped(std::string_view text, std::size_t characters);

/// Adds the text with control characters, and bytes that are no UTF-8, as \n, \t or \xNN.
HDNT_API void addPrintable(std::string& result, std::string_view text);
inline std::string printable(std::string_view text) {
    std::string result;
    addPrintable(result, text);
    return result;
}

/// The items with a separator in between.
HDNT_API std::string joined(const std::vector<std::string>& items, std::string_view separator);

/// How the shortest digits of a number are laid out.
enum class DoubleForm {
    Shortest,   ///< "1", "0.5", "1e+300": whatever takes the fewest characters
    WithPoint,  ///< the same, but a whole number without exponent ends in ".0"
    FixedPoint, ///< with a point and without exponent, however long
};

/// The fewest digits that read back to the same number, in the C locale. Infinite numbers are "inf" and "-inf".
class HDNT_API DoubleText {
public:
    DoubleText(double value, DoubleForm form);

    std::string_view view() const { return {text_.data(), size_}; }
    std::string str() const { return std::string(view()); }

private:
    std::array<char, 400> text_; ///< the least numbers take some 350
    std::size_t size_;
};

} // namespace hdnt::platform
