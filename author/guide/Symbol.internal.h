#pragma once

#include "author/exchange/BlockJson.h"

#include <string>

namespace hdnt::author::guide {

/// The drawing of a block as it is placed, from what jsonOf(HDNTBlock&, ...) says: inputs on the left, the rest on the
/// right, pins of one type together. Each pin is a <g class="pin" data-pin="NAME" data-direction="input"> with a link
/// to its row in the table of pins, #pin-NAME. Classes: box, stub, bus, test, wedge, bubble, dot, tie, name, title.
std::string symbolOf(const Json& block);

/// What the marks of a symbol mean: drawings of single pins with a text each, as [{svg, text}].
Json symbolLegend();

} // namespace hdnt::author::guide
