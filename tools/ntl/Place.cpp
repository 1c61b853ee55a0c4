#include "tools/ntl/Place.h"

#include "hdnt/frontend/Scanner.h"

#include <algorithm>

namespace ntl {

// Follows the scanner through the line; between quotes a tab is one column.
static int byteColumn(const std::string& line, int wanted) {
    int column = 1;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        if (column >= wanted) return static_cast<int>(i) + 1;
        if (line[i] == '"') quoted = !quoted;
        column += 1;
        if (line[i] == '\t' && !quoted) column = column - column % 8 + 9;
    }
    return static_cast<int>(line.size()) + 1 + std::max(wanted - column, 0);
}

Place placeOf(const yyltype& location) {
    Place place;
    if (location.fileName) place.file = location.fileName;
    place.line = location.fileLine;
    place.textLine = location.first_line;
    place.order = location.first_line + location.storeOffset;
    place.column = location.first_column;
    place.lastColumn = location.last_column;
    if (place.order <= 0) return place;
    const std::string line = NtlGetLineNumbered(static_cast<unsigned long>(place.order));
    if (line.find('\t') == line.npos) return place;
    place.column = byteColumn(line, location.first_column);
    place.lastColumn = byteColumn(line, location.last_column);
    return place;
}

std::string describe(const Place& place) {
    const std::string file = place.file.empty() ? "(unknown file)" : place.file;
    if (!place.isKnown()) return file;
    return file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

} // namespace ntl
