#pragma once

#include <string_view>

namespace hdnt::frontend {

// The lines of map libraries that their filter takes out before the scanner sees them. A directive stands in column 1.
inline bool beginsArchSection(std::string_view line) { return line.starts_with("#ifArch"); }
inline bool endsArchSection(std::string_view line) { return line.starts_with("#endif"); }
inline bool isArchDirective(std::string_view line) { return beginsArchSection(line) || endsArchSection(line); }

} // namespace hdnt::frontend
