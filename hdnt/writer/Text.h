#pragma once

#include <charconv>
#include <string>
#include <string_view>

// Pieces of NTL text, appended to a line. Internal. Numbers are those of the C locale, whatever the host has set.
namespace hdnt::writer {

/// At least one blank, also for an indent of 0.
inline void appendIndent(std::string& line, long indent) {
    line.append(static_cast<size_t>(indent < 1 ? 1 : indent), ' ');
}

inline void appendQuoted(std::string& line, std::string_view text) { line.append("\"").append(text).append("\""); }

inline void appendInt(std::string& line, int value) {
    char digits[16];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// As printf's "%.*f".
void appendFixed(std::string& line, double value, int precision);

/// The shortest digits that read back to the same number, with a point and without exponent. An infinite one is written
/// as a number beyond the greatest, which reads back as it. Not for a NaN.
void appendShortest(std::string& line, double value);

} // namespace hdnt::writer
