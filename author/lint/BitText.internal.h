#pragma once

#include <string>

namespace hdnt::author {

/// A hexadecimal or binary text, such as 8'hFF, 4'b1010 or 00FF, as the number it stands for.
class BitText {
public:
    /// Without a prefix, `hex` says what the digits are. A character that is no digit counts as 0.
    BitText(const std::string& text, bool hex);

    /// As its prefix says; 0 without one.
    long width() const { return width_; }
    /// Bits without leading zeros; 0 for the number 0.
    size_t significantBits() const { return bits_.size(); }
    bool operator<(const BitText& other) const {
        return bits_.size() != other.bits_.size() ? bits_.size() < other.bits_.size() : bits_ < other.bits_;
    }

private:
    long width_ = 0;
    std::string bits_; ///< binary digits, from the first 1 on
};

} // namespace hdnt::author
