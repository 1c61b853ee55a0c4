#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hdnt::platform {

/// The number that a text of a bit vector stands for: digits behind a width and a radix letter of either case, as in
/// 8'hFF and 4'b1010, or digits alone. Leading zeros and the case of digits make no difference.
class HDNT_API BitText {
public:
    /// Digits alone are hexadecimal or binary, as `hex` says. Nothing for a text of another form: without a digit, with
    /// one that its radix has not, or with a radix but no width. A width above any `long` is the greatest.
    static std::optional<BitText> of(std::string_view text, bool hex);
    /// The digits of the greatest number of that many bits, without a prefix; empty for none or fewer.
    static std::string greatest(int width, bool hex);

    /// As the prefix says; 0 without one.
    long width() const { return width_; }
    /// Bits without leading zeros; 0 for the number 0.
    size_t significantBits() const;
    /// Whether the number has more bits than its own prefix says.
    bool exceedsItsPrefix() const { return hasPrefix_ && significantBits() > static_cast<size_t>(width_); }
    /// Whether a bit vector of that many bits holds the number, and the width before it is no greater.
    bool fits(int width) const;
    bool operator<(const BitText& other) const {
        return nibbles_.size() != other.nibbles_.size() ? nibbles_.size() < other.nibbles_.size()
                                                        : nibbles_ < other.nibbles_;
    }

private:
    BitText() = default;
    HDNT_LOCAL bool readDigits(std::string_view digits, bool hex);

    long width_ = 0;
    bool hasPrefix_ = false;
    std::string nibbles_; ///< four bits each, from the first that is not 0 on
};

} // namespace hdnt::platform
