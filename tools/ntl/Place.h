#pragma once

#include "hdnt/diagnostics/yyltype.h"

#include <string>

namespace ntl {

/// Where something stands, as users count: lines of the file, characters of the line.
struct Place {
    std::string file; ///< empty when not known
    int line = 0;     ///< 0 when not known
    int column = 0;   ///< 0 when not known
    int lastColumn = 0;
    int textLine = 0; ///< line of the whole text, INCLUDE and INLINE files spliced in
    int order = 0;    ///< line among all that were read for the library; places compare by it

    bool isKnown() const { return line > 0; }
};

/// The scanner counts bytes, and a tab as several; its columns are turned into characters with the help of the line
/// store, so this holds for what was read since a library was last loaded from the beginning.
Place placeOf(const yyltype& location);
/// To be called before the line store is emptied or filled anew.
void forgetLines();
/// The character of a line that the scanner's column stands for.
int columnIn(const std::string& line, int scannedColumn);

/// "file:line:column", as far as it is known.
std::string describe(const Place& place);

} // namespace ntl
