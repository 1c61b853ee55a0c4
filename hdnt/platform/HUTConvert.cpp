#include "hdnt/platform/HUTConvert.h"

#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view HexDigits = "0123456789ABCDEF";

bool isHex(std::string_view digits) {
    return std::all_of(digits.begin(), digits.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    });
}

bool isBinary(std::string_view digits) { return digits.find_first_not_of("01") == std::string_view::npos; }

std::string toBits(std::string_view hexDigits) {
    std::string bits;
    bits.reserve(4 * hexDigits.size());
    for (const char c : hexDigits) {
        const std::size_t value = HexDigits.find(HSTStringUtils::to_upper(c));
        for (const unsigned bit : {8U, 4U, 2U, 1U}) bits += (value & bit) != 0 ? '1' : '0';
    }
    return bits;
}

std::string toNibbles(std::string_view bits) {
    std::string digits;
    digits.reserve(bits.size() / 4 + 1);
    unsigned value = 0;
    for (std::size_t left = bits.size(); left > 0; --left) {
        value = 2 * value + (bits[bits.size() - left] == '1' ? 1 : 0);
        if (left % 4 == 1) digits += HexDigits[std::exchange(value, 0)];
    }
    return digits;
}

std::string fit(std::string_view digits, int width, int bitsPerDigit) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size() - 1));
    const std::size_t count = width > 0 ? static_cast<std::size_t>((width - 1) / bitsPerDigit) + 1 : digits.size();
    if (digits.size() > count) digits.remove_prefix(digits.size() - count);
    std::string result(count, '0');
    std::transform(digits.begin(), digits.end(), result.end() - static_cast<std::ptrdiff_t>(digits.size()),
                   [](char c) { return HSTStringUtils::to_upper(c); });
    return result;
}

} // namespace

void HUTConvert::hexToHex(const std::string& digits, std::string& out, int width) {
    out = digits.empty() || !isHex(digits) ? digits : fit(digits, width, 4);
}

void HUTConvert::binaryToHex(const std::string& digits, std::string& out, int width) {
    out = digits.empty() || !isBinary(digits) ? digits : fit(toNibbles(digits), width, 4);
}

void HUTConvert::hexToBinary(const std::string& digits, std::string& out, int width) {
    out = digits.empty() || !isHex(digits) ? digits : fit(toBits(digits), width, 1);
}

void HUTConvert::binaryToBinary(const std::string& digits, std::string& out, int width) {
    out = digits.empty() || !isBinary(digits) ? digits : fit(digits, width, 1);
}
