#pragma once

#include "hdnt/platform/Export.h"

#include <string>

namespace hdnt::platform {

/// The directory of the data that came with the library, found relative to the loaded library (or program, when linked
/// into one); it need not exist. Worked out once. Safe in any thread.
HDNT_API const std::string& shareDirectory();

// Paths of what is found by name, empty when there is none: in the directories of an environment variable, separated by
// colons and read each time, and then in the directory above.

/// HDNT_DATA_PATH
HDNT_API std::string findData(const std::string& name);
/// The file in the first directory of that name, without a look further when it is not there.
HDNT_API std::string findData(const std::string& directory, const std::string& file);
/// HDNT_CONFIG_PATH
HDNT_API std::string findConfiguration(const std::string& name);

} // namespace hdnt::platform
