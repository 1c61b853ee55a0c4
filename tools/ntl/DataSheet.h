#pragma once

#include "tools/ntl/Json.h"

#include <string>

namespace ntl {

/// The data sheet of a block, from the JSON that jsonOf(block) gives.
std::string dataSheet(const Json& block);

} // namespace ntl
