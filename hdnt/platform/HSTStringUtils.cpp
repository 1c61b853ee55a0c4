#include "hdnt/platform/HSTStringUtils.h"

#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>

void HSTStringUtils::to_upper(std::string& text) noexcept {
    for (char& c : text) c = to_upper(c);
}

void HSTStringUtils::to_lower(std::string& text) noexcept {
    for (char& c : text) c = to_lower(c);
}

std::string HSTStringUtils::to_upper_copy(std::string_view text) {
    std::string result(text);
    to_upper(result);
    return result;
}

std::string HSTStringUtils::to_lower_copy(std::string_view text) {
    std::string result(text);
    to_lower(result);
    return result;
}

bool HSTStringUtils::istarts_with(std::string_view text, std::string_view prefix) noexcept {
    return text.size() >= prefix.size() && iequals(text.substr(0, prefix.size()), prefix);
}

bool HSTStringUtils::iequals(std::string_view a, std::string_view b) noexcept {
    return hdnt::platform::equalCaseless(a, b);
}

int HSTStrUtils::compareCI(std::string_view a, std::string_view b) noexcept {
    const auto fold = [](char c) { return static_cast<unsigned char>(HSTStringUtils::to_lower(c)); };
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
        if (fold(a[i]) != fold(b[i])) return fold(a[i]) < fold(b[i]) ? -1 : 1;
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}
