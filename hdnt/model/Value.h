#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <variant>

namespace hdnt {

/// The value of a property, an argument or a constant. Bit vectors are texts as written, prefix included.
using Value = std::variant<bool, int, double, std::string>;

/// As NTL writes it, but texts without quotes; doubles by their shortest digits, with a point and no exponent.
HDNT_API std::string textOf(const Value& value);

} // namespace hdnt
