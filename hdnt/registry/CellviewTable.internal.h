#pragma once

namespace hdnt::registry {

struct CellviewEntry {
    int value;
    const char* name;
};

/// The table that the build makes of the cellview file, ended by a null name.
extern const CellviewEntry cellviewTable[];

} // namespace hdnt::registry
