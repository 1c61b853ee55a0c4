#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

// Which files INCLUDE and INLINE bring in. Process-wide, of the loading thread.

/// Path of a file named in INCLUDE or INLINE: an absolute name as it stands, another one in the search directories in
/// order; empty when there is no such file.
HDNT_API std::string NtlFindFile(const std::string& name);
/// Appends a search directory. The library itself adds none, so without this call only absolute names are found.
HDNT_API void NtlAddSearchDirectory(const std::string& directory);
/// Path of every file that the last scan opened, in order of opening, the top-level file first when it has a name.
HDNT_API const std::vector<std::string>& NtlOpenedFiles();
