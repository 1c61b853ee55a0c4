#pragma once

#include "hdnt/platform/Export.h"

#include <string>

namespace hdnt::platform {

/// The directory of the data that came with the library, found relative to the loaded library (or program, when linked
/// into one); it need not exist. Worked out once. Safe in any thread.
HDNT_API const std::string& shareDirectory();

} // namespace hdnt::platform
