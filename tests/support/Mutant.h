#pragma once

#include "tests/support/Tokens.h"

#include <cstddef>
#include <random>
#include <string>

namespace support {

/// Every construct of the language, in a text that is small enough to be parsed very often.
inline const char* const everything = R"(library "L" {
function int intProperty(string, int, double, bool, 8'h, 4'b);
block "A" { internal = false; test = true; maturityLevel = beta; primgroup = "G:S";
  pin "P[1:0]" input test abstract clock tieLow { property bool "X" true; property int "Y" { default = 3 } }
  pin "O" output; pin "B" bidir data mustConnect; pin "I" internal;
  property int "N" { min = -1, max = 3, default = 2, units = "ps", test = true, description = "d" }
  property int "V" { values { 1, 2 }, default = 1, simulation = true, muxControl = false, constraintsOnly = true }
  property double "D" { min = 0.5, max = 1.0, default = 0.75, precision = 3, description = "d" }
  property string "S" { values { "A", "B" }, default = "A", description = "d" }
  property 8'h "H" { min = 8'h00, max = 8'hFF, default = 8'h1, units = "u" }
  property 4'b "Q" { values { 4'b0, 4'b1 }, default = 4'b0 }
  property bool "T" { default = true, test = false, description = "d" }
} expandsto {
  inst "i" "A"; connect "P[0]" : "i" "P[0]", "O", "i" "~B"; signal "s"; signal "t" : "O";
  assign block property "i" "N" 1 + intProperty("N") * -(2 - 3) / 4 % 5;
  assign pin property "i" "P[0]", "Y" 3; note("x", true, 1.5);
  if (isConnected("P") && 1 < 2 || "A" == "B") { inst "j" "A"; } else if (2 >= 1) inst "k" "A"; else { { signal "u"; } }
}
block "A" mapsto { } block "A" modifiedby { note(); }
})";

/// One to three tokens dropped, doubled, swapped, or replaced by those of another place.
inline std::string mutant(Tokens tokens, std::mt19937& random) {
    for (std::size_t changes = 1 + random() % 3; changes > 0 && tokens.size() > 1; --changes) {
        const std::size_t at = random() % tokens.size();
        const auto place = tokens.begin() + static_cast<std::ptrdiff_t>(at);
        const auto other = tokens[random() % tokens.size()];
        switch (random() % 5) {
        case 0: tokens.erase(place); break;
        case 1: tokens.insert(place, *place); break;
        case 2: std::swap(*place, tokens[(at + 1) % tokens.size()]); break;
        case 3: *place = other; break;
        default: tokens.insert(place, other); break;
        }
    }
    std::string text;
    for (const auto& [number, token] : tokens) text += token + (random() % 8 == 0 ? "\n" : " ");
    return text;
}

} // namespace support
