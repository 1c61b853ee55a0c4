#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

// Texts as people count them: in characters of UTF-8. A byte that is no UTF-8 counts as one character.
namespace hdnt::platform {

/// Whether the byte goes on a character that began before it.
inline bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; }

/// Characters of a text; a tab is one.
inline std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !continuesCharacter(c); }));
}

} // namespace hdnt::platform
