#pragma once

#include "author/project/Project.h"
#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

namespace hdnt::author {

/// Where the common library is: its data and, when the parameter "arch.enableTestFeatures" is on, the extension over
/// it. Throws HEXDataException when it is missing.
HDNT_API std::vector<std::string> commonLibraryPaths();
/// What stands for a library below another one, the root first: of "common" the paths of that library, of a path the
/// path, and nothing of an empty text. Throws HEXDataException.
HDNT_API std::vector<std::string> parentPaths(const std::string& parent);
/// The same for all parents of a project.
HDNT_API std::vector<std::string> parentPaths(const Project& project);

} // namespace hdnt::author
