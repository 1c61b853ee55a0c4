#pragma once

#include "hdnt/platform/Export.h"

#include <string>

/// Radix conversion of bit vectors written as plain digits, without prefix, highest digit first, to a width in bits.
/// The result has upper-case digits, exactly as many as the width needs (hex: a quarter of it, rounded up): zeros are
/// put in front, or the highest digits are dropped. Digits are dropped whole: the top hex digit may hold bits above the
/// width. A width of 0 or less fits the value, without leading zeros but with one digit at least. Empty gives empty;
/// text with any character that is no digit of its radix comes back as it is. `out` may be the input. Stateless.
class HDNT_API HUTConvert {
public:
    static void hexToHex(const std::string& digits, std::string& out, int width);
    static void binaryToHex(const std::string& digits, std::string& out, int width);
    static void hexToBinary(const std::string& digits, std::string& out, int width);
    static void binaryToBinary(const std::string& digits, std::string& out, int width);
};
