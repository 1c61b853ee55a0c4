#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

namespace hdnt::author {

/// Up to three of the names that are near to the wanted one or begin with it, case aside; the nearest first, equally
/// near ones by name.
HDNT_API std::vector<std::string> nearestNames(const std::string& wanted, const std::vector<std::string>& names);

} // namespace hdnt::author
