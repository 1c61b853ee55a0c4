#pragma once

#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace hdnt::frontend {

/// What was said of the values of an int or double property.
template <typename Number>
struct NumberOptions {
    std::vector<Number> values;
    Number min = std::numeric_limits<Number>::lowest();
    Number max = std::numeric_limits<Number>::max();
    std::optional<Number> byDefault;

    void reset() noexcept {
        values.clear();
        min = std::numeric_limits<Number>::lowest();
        max = std::numeric_limits<Number>::max();
        byDefault.reset();
    }
};

/// The options that may stand in one declaration more than once.
enum class Option : unsigned char {
    max,
    byDefault,
    precision,
    description,
    units,
    simulation,
    test,
    constraintsOnly,
    muxControl,
};

/// What the options of one property declaration said, until the property is built. Only the members of the property's
/// own type are used; hex and binary values are texts as written. A text that was not given has no data.
struct PropertyOptions {
    NumberOptions<int> ints;
    NumberOptions<double> doubles;
    std::vector<std::string_view> texts;
    std::string_view textMin;
    std::string_view textMax;
    std::string_view textDefault;
    bool boolDefault = false;
    static constexpr int defaultPrecision = 6;
    int precision = defaultPrecision;
    std::string_view description;
    std::string_view units;
    bool test = false;
    bool simulation = false;
    bool constraintsOnly = false;
    bool muxControl = false;
    unsigned said = 0;     ///< options given so far, a bit each
    unsigned repeated = 0; ///< those given again

    static constexpr unsigned bitOf(Option option) { return 1U << static_cast<unsigned>(option); }
    bool hasSaid(Option option) const { return (said & bitOf(option)) != 0; }

    /// Back to nothing said; the lists keep their room.
    void reset() noexcept {
        ints.reset();
        doubles.reset();
        texts.clear();
        // One by one: each a copy of the next, they would wait for what was just written.
        textMin = {};
        textMax = {};
        textDefault = {};
        description = {};
        units = {};
        boolDefault = test = simulation = constraintsOnly = muxControl = false;
        precision = defaultPrecision;
        said = repeated = 0;
    }
};

} // namespace hdnt::frontend
