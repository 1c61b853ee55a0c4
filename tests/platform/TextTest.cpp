#include "hdnt/platform/Text.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>

TEST(Text, NumbersByTheirFewestDigits) {
    using hdnt::platform::DoubleForm;
    using hdnt::platform::DoubleText;
    const std::string zeros(300, '0');
    const struct {
        double value;
        std::string shortest, withPoint, fixedPoint;
    } cases[] = {{0.5, "0.5", "0.5", "0.5"},
                 {-2, "-2", "-2.0", "-2.0"},
                 {-0.0, "-0", "-0.0", "-0.0"},
                 {0.1 + 0.2, "0.30000000000000004", "0.30000000000000004", "0.30000000000000004"},
                 {1e-301, "1e-301", "1e-301", "0." + zeros + "1"},
                 {HUGE_VAL, "inf", "inf", "inf"},
                 {-HUGE_VAL, "-inf", "-inf", "-inf"}};
    for (const auto& [value, shortest, withPoint, fixedPoint] : cases) {
        EXPECT_EQ(DoubleText(value, DoubleForm::Shortest).str(), shortest);
        EXPECT_EQ(DoubleText(value, DoubleForm::WithPoint).str(), withPoint);
        EXPECT_EQ(DoubleText(value, DoubleForm::FixedPoint).str(), fixedPoint);
    }
    for (const double value : {-DBL_MAX, -DBL_MIN, -4.9406564584124654e-324, -2.2250738585072011e-308}) {
        const std::string text = DoubleText(value, DoubleForm::FixedPoint).str();
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
        EXPECT_NE(text.find('.'), text.npos) << text;
    }
}

TEST(Text, IsCutBetweenCharacters) {
    const struct {
        const char* text;
        size_t characters, most;
        const char* clipped;
    } cases[] = {{"abcd", 4, 4, "abcd"},
                 {"abcde", 5, 4, "a..."},
                 {"", 0, 3, ""},
                 {"\u00e4\u20ac\U0001f600x", 4, 4, "\u00e4\u20ac\U0001f600x"},
                 {"\u00e4\u20ac\U0001f600xy", 5, 4, "\u00e4..."},
                 {"ab\xffxyz", 6, 5, "ab..."},
                 {"abcd", 4, 3, "..."}};
    for (const auto& [text, characters, most, clipped] : cases) {
        EXPECT_EQ(hdnt::platform::characters(text), characters) << text;
        EXPECT_EQ(hdnt::platform::clipped(text, most), clipped);
    }
}
