#pragma once

#include "author/exchange/verilogModules.internal.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// What yosys answers: its JSON has modules with ports and defaults, its dump of the tree the lines, order and types of
// parameters, and the numbers among them.
namespace hdnt::author {

/// "FILE:LINE.COLUMN-LINE.COLUMN", as the tool has it; columns are those behind its preprocessor.
struct YosysPlace {
    std::string file;
    int line = 0;
    int column = 0;
    int endColumn = 0; ///< behind the last
};
YosysPlace yosysPlaceOf(std::string_view text);

/// What the caller knows of the text that was read.
struct YosysTexts {
    std::function<Place(const YosysPlace& place, const std::string& name)> placeOf;
    std::function<std::string_view(const YosysPlace& place)> textAt; ///< empty when not known
};

/// Seven digits, as the dump has them.
std::string realDigits(double value);

/// In the order of the text. Throws HEXDataException when the JSON is none.
std::vector<Module> modulesOf(const std::string& json, const std::string& dump, const YosysTexts& texts);

} // namespace hdnt::author
