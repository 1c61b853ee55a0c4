#pragma once

#include "hdnt/frontend/TokenText.internal.h"

#include <cfloat>
#include <climits>
#include <optional>
#include <utility>
#include <vector>

namespace hdnt::frontend {

/// What the options of one property declaration said, until the property is built. Only the members of the property's
/// own type are used; hex and binary values are texts as written. A text that was not given is null.
struct PropertyOptions {
    std::vector<int> ints;
    std::vector<double> doubles;
    std::vector<TokenText> texts;
    int intMin = INT_MIN;
    int intMax = INT_MAX;
    std::optional<int> intDefault;
    double doubleMin = -DBL_MAX;
    double doubleMax = DBL_MAX;
    std::optional<double> doubleDefault;
    TokenText textMin;
    TokenText textMax;
    TokenText textDefault;
    bool boolDefault = false;
    int precision = 6;
    TokenText description;
    TokenText units;
    bool test = false;
    bool simulation = false;
    bool constraintsOnly = false;
    bool muxControl = false;

    /// Back to nothing said; the lists keep their room.
    void reset() noexcept {
        PropertyOptions fresh;
        fresh.ints.swap(ints);
        fresh.doubles.swap(doubles);
        fresh.texts.swap(texts);
        fresh.ints.clear();
        fresh.doubles.clear();
        fresh.texts.clear();
        *this = std::move(fresh);
    }
};

} // namespace hdnt::frontend
