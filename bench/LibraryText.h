#pragma once

#include <string>

namespace bench {

/// A library of `blocks` blocks with pins, buses and properties in the proportions of a real one, about 40 lines a
/// block; with every newline a blank when `oneLine` is set. The same arguments give the same text.
inline std::string libraryText(int blocks, bool oneLine = false) {
    std::string text = "library \"generated\" {\n";
    for (int b = 0; b < blocks; ++b) {
        const std::string number = std::to_string(b);
        text += "block \"CELL_" + number + "\" {\n  primgroup = \"GROUP_" + std::to_string(b % 40) +
                ":SUB, OLD\";\n  maturityLevel = production;\n";
        for (int i = 0; i < 8; ++i)
            text += "  pin \"IN_" + std::to_string(i) + "\" input " + (i % 3 ? "data" : "clock") + " tieLow;\n";
        for (int i = 0; i < 4; ++i) text += "  pin \"BUS_" + std::to_string(i) + "[31:0]\" output data;\n";
        for (int i = 0; i < 6; ++i)
            text += "  property int \"COUNT_" + std::to_string(i) +
                    "\" { min = 0, max = 1023, default = " + std::to_string(b % 1000) + " }\n";
        for (int i = 0; i < 4; ++i)
            text += "  property string \"MODE_" + std::to_string(i) +
                    "\" {\n    values { \"SLOW\", \"MEDIUM\", \"FAST\" },\n    default = \"FAST\"\n  }\n";
        text += "  property 64'h \"INIT\" { default = 64'h" + number + " }\n";
        text += "  property double \"DELAY\" { min = 0.0, max = 10.0, default = 1.25, units = \"ns\" }\n}\n";
    }
    text += "}\n";
    if (oneLine)
        for (char& c : text)
            if (c == '\n') c = ' ';
    return text;
}

} // namespace bench
