#pragma once

#include <optional>
#include <string_view>

namespace hdnt::model {

/// `base[m:n]`, or `base[n]`, where both are the same; numbers past the range of int stand for its greatest value.
struct RangedName {
    std::string_view base; ///< of the text that was taken apart
    int first;
    int second;
};

/// The whole text taken apart; nothing for any other one.
std::optional<RangedName> rangedName(std::string_view name);
/// Whether there are no more elements than the limit rangeElements.
bool isWithinLimit(int first, int last);

} // namespace hdnt::model
