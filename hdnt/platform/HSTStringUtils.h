#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <string_view>

/// Case folding of ASCII letters only, whatever the locale; every other byte stays. Stateless, safe in any thread.
class HDNT_API HSTStringUtils {
public:
    static constexpr char to_upper(char c) noexcept {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    static constexpr char to_lower(char c) noexcept {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    /// In place.
    static void to_upper(std::string& text) noexcept;
    static void to_lower(std::string& text) noexcept;
    static std::string to_upper_copy(std::string_view text);
    static std::string to_lower_copy(std::string_view text);
    /// True when text begins with prefix, ignoring case; always for an empty prefix.
    static bool istarts_with(std::string_view text, std::string_view prefix) noexcept;
    static bool iequals(std::string_view a, std::string_view b) noexcept;
};

class HDNT_API HSTStrUtils {
public:
    /// Three-way comparison ignoring case: 0 when equal, else the sign of the order of the lower-cased bytes, taken as
    /// unsigned; a prefix comes first.
    static int compareCI(std::string_view a, std::string_view b) noexcept;
};
