#pragma once

#include <string>

namespace hdnt::scripts {

/// Why there is no such parameter of the process, with the names that there are; empty when there is one.
std::string unknownParameter(const std::string& name);

} // namespace hdnt::scripts
