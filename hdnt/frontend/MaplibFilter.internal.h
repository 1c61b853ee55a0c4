#pragma once

#include "hdnt/diagnostics/FilteredText.internal.h"

#include <string>

namespace hdnt::frontend {

/// A map library as it is parsed, and which of its file's lines that are.
struct MapLibrary {
    std::string text;
    diagnostics::FilteredText origin;
    bool hasArchitectures = false; ///< an "#ifArch" line was reached
};

/// As slurpAndFilterFile; false with a reason when the file cannot be read.
bool readMapLibrary(const std::string& path, const std::string& arch, MapLibrary& out, std::string& reason);

} // namespace hdnt::frontend
