#pragma once

#include <string>

namespace hdnt::registry {

struct CellviewEntry {
    int value;
    const char* name;
};

/// The table that the build makes of the cellview file, ended by a null name.
extern const CellviewEntry cellviewTable[];

/// Adds the rows of a file to HDNTCellviewLib::s_typeToName, all or none. Throws HEXDataException with file, line and
/// reason. The caller holds the mutex of the registry.
void addCells(const std::string& path);

} // namespace hdnt::registry
