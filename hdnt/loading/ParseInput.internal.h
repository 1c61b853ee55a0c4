#pragma once

#include <string>
#include <vector>

class HDNTLibrary;

namespace hdnt::loading {

/// The paths of what is in a folder, in name order. Throws HEXDataException when it cannot be read.
std::vector<std::string> entriesOf(const std::string& folder);
/// An entry that is shorter than ".btl".
bool isShort(const std::string& entry);

/// Parses the .btl files among the entries of a folder, also after one that failed; false when one did. Throws
/// std::out_of_range at an entry that is short.
bool parseFolder(HDNTLibrary& library, const std::vector<std::string>& entries);
/// Parses a file, or a folder.
bool parseInput(HDNTLibrary& library, const std::string& path);

} // namespace hdnt::loading
