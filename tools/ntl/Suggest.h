#pragma once

#include <string>
#include <vector>

namespace ntl {

/// Up to three of the names that are near to the wanted one or begin with it, case aside; the nearest first, equally
/// near ones by name.
std::vector<std::string> nearestNames(const std::string& wanted, const std::vector<std::string>& names);

} // namespace ntl
