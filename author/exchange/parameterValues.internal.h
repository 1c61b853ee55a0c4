#pragma once

#include "author/exchange/BlockJson.h"
#include "author/exchange/verilogModules.internal.h"

#include <optional>
#include <string>

// Parameters of modules beside properties, as jsonOf(HDNTBlock&) has them.
namespace hdnt::author {

/// What kind of values it holds, in words.
std::string kindOf(const Json& property);
std::string kindOf(const ModuleParameter& parameter);
bool canHold(const ModuleParameter& parameter, const Json& property);

/// 0 for texts and doubles.
int bitsOf(const Json& property);
/// 0 too for one that takes the width that it is given.
int bitsOf(const ModuleParameter& parameter);

/// The number of 32 bits that are all known.
std::optional<int> wordIn(const ModuleParameter& parameter);
/// By value, whatever the radix and the width.
bool hasDefaultOf(const Json& property, const ModuleParameter& parameter);
/// As Verilog writes it; a whole number where the property is one.
std::string defaultText(const ModuleParameter& parameter, const Json& property);

} // namespace hdnt::author
