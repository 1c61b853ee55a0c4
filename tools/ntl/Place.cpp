#include "tools/ntl/Place.h"

#include "hdnt/frontend/Scanner.h"

#include <algorithm>

namespace ntl {

static bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

// Follows the scanner through the line, which counts bytes; between quotes a tab is one column.
static int characterColumn(const std::string& line, int wanted) {
    int scanned = 1;
    int character = 1;
    bool quoted = false;
    for (size_t i = 0; i < line.size() && scanned < wanted; ++i) {
        if (line[i] == '"') quoted = !quoted;
        scanned += 1;
        if (line[i] == '\t' && !quoted) scanned = scanned - scanned % 8 + 9;
        if (i + 1 == line.size() || !isContinuation(line[i + 1])) ++character;
    }
    return character + std::max(wanted - scanned, 0);
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
    place.column = characterColumn(line, location.first_column);
    place.lastColumn = characterColumn(line, location.last_column);
    return place;
}

std::string describe(const Place& place) {
    const std::string file = place.file.empty() ? "(unknown file)" : place.file;
    if (!place.isKnown()) return file;
    return file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

} // namespace ntl
