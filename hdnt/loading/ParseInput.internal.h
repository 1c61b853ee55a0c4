#pragma once

#include <string>
#include <vector>

class HDNTLibrary;

namespace hdnt::loading {

/// Parses a file, or all .btl files of a folder in name order, also after one that failed; false when one did. Throws
/// std::out_of_range at an entry of a folder whose path is shorter than ".btl".
bool parseInput(HDNTLibrary& library, const std::string& path);

/// The entries of a folder that parseInput throws at. Throws HEXDataException when the folder cannot be read.
std::vector<std::string> shortEntries(const std::string& folder);

} // namespace hdnt::loading
