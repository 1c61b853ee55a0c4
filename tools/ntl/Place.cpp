#include "tools/ntl/Place.h"

#include "hdnt/frontend/Scanner.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace ntl {

namespace {

// A place in a line, followed as the scanner does: it counts bytes, and a tab as several unless it is between quotes.
struct Position {
    size_t byte = 0;
    int scanned = 1;
    int character = 1;
    bool quoted = false;
};

Position advanced(Position position, const std::string& line, int wanted) {
    while (position.byte < line.size() && position.scanned < wanted) {
        const char c = line[position.byte++];
        if (c == '"') position.quoted = !position.quoted;
        position.scanned += 1;
        if (c == '\t' && !position.quoted) position.scanned += 9 - position.scanned % 8;
        if (position.byte == line.size() || !hdnt::platform::continuesCharacter(line[position.byte]))
            ++position.character;
    }
    return position;
}

// Where the last place was found. Places mostly come in the order of the text, and a whole library may be one line.
struct LastPlace {
    int order = 0;
    std::string line;
    Position position;
};

LastPlace& lastPlace() {
    static LastPlace last;
    return last;
}

int characterColumn(const Position& position, int wanted) {
    return position.character + std::max(wanted - position.scanned, 0);
}

} // namespace

void forgetLines() { lastPlace() = LastPlace(); }

Place placeOf(const yyltype& location) {
    Place place;
    if (location.fileName) place.file = location.fileName;
    place.line = location.fileLine;
    place.textLine = location.first_line;
    place.order = location.first_line + location.storeOffset;
    place.column = location.first_column;
    place.lastColumn = location.last_column;
    if (place.order <= 0) return place;
    LastPlace& last = lastPlace();
    if (last.order != place.order)
        last = {place.order, NtlGetLineNumbered(static_cast<unsigned long>(place.order)), Position()};
    if (location.first_column < last.position.scanned) last.position = Position();
    last.position = advanced(last.position, last.line, location.first_column);
    place.column = characterColumn(last.position, location.first_column);
    const Position end = advanced(last.position, last.line, location.last_column);
    place.lastColumn = characterColumn(end, location.last_column);
    return place;
}

int columnIn(const std::string& line, int scannedColumn) {
    return characterColumn(advanced(Position(), line, scannedColumn), scannedColumn);
}

std::string describe(const Place& place) {
    std::string file = place.file.empty() ? "(unknown file)" : place.file;
    if (!place.isKnown()) return file;
    file += ":" + std::to_string(place.line);
    return place.column > 0 ? file + ":" + std::to_string(place.column) : file;
}

} // namespace ntl
