#include "hdnt/writer/Text.h"

#include <algorithm>
#include <cmath>

namespace hdnt::writer {

// The longest number has 309 digits before the point.
void appendFixed(std::string& line, double value, int precision) {
    const size_t start = line.size();
    line.resize(start + 312 + static_cast<size_t>(std::max(precision, 0)));
    char* const first = line.data() + start;
    const auto end = std::to_chars(first, line.data() + line.size(), value, std::chars_format::fixed, precision);
    line.resize(static_cast<size_t>(end.ptr - line.data()));
}

// The shortest form of the least number has 326 characters.
void appendShortest(std::string& line, double value) {
    if (std::isinf(value)) {
        line.append(value < 0 ? "-1" : "1").append(309, '0').append(".0");
        return;
    }
    char buffer[400];
    const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    const std::string_view digits(buffer, static_cast<size_t>(end.ptr - buffer));
    line += digits;
    if (digits.find('.') == digits.npos) line += ".0";
}

} // namespace hdnt::writer
