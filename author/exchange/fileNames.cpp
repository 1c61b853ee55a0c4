#include "author/exchange/fileNames.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace hdnt::author {

namespace {

constexpr std::size_t longestName = 80;

bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
}

// Devices of an old system, with any ending.
bool isReserved(const std::string& upper) {
    static const std::set<std::string> names = {"CON", "PRN", "AUX", "NUL"};
    const bool isPort = upper.size() == 4 && (upper.starts_with("COM") || upper.starts_with("LPT"));
    return isPort || names.contains(upper);
}

std::string hex(std::uint64_t number, int digits) {
    std::array<char, 20> text{};
    std::snprintf(text.data(), text.size(), "%0*llx", digits, static_cast<unsigned long long>(number));
    return text.data();
}

std::string fileNameOf(std::string_view name) {
    std::string result(name.substr(0, longestName));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return !isPlain(c); }, '_');
    const bool isSame = result == name && !result.empty() && !isReserved(HSTStringUtils::to_upper_copy(result));
    return isSame ? result : result + "-" + shortSumOf(name);
}

} // namespace

std::uint64_t sumOf(std::string_view bytes) {
    std::uint64_t sum = 0xcbf29ce484222325U;
    for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    return sum;
}

std::string shortSumOf(std::string_view name) {
    const std::uint64_t sum = sumOf(name);
    return hex((sum ^ (sum >> 32U)) & 0xffffffffU, 8);
}

std::string anchorOf(std::string_view kind, std::string_view name) {
    std::string result = std::string(kind) + "-";
    for (const char c : name) result += isPlain(c) ? std::string(1, c) : "." + hex(static_cast<unsigned char>(c), 2);
    return result;
}

bool FileNames::isTaken(const std::string& wanted) {
    return !taken_.insert(HSTStringUtils::to_upper_copy(wanted)).second;
}

std::string FileNames::add(std::string_view name) {
    std::string plain = fileNameOf(name);
    if (!isTaken(plain)) return plain;
    const std::string summed = plain + "-" + shortSumOf(name);
    std::string numbered = summed;
    for (int i = 2; isTaken(numbered); ++i) numbered = summed + "-" + std::to_string(i);
    return numbered;
}

} // namespace hdnt::author
