#pragma once

#include "author/expansion/ExpansionText.h"
#include "tools/ntl/Json.h"

#include <string>

namespace ntl {

using hdnt::author::BriefPlaces, hdnt::author::ExpandedBlock;
using hdnt::author::callText, hdnt::author::expansionDot, hdnt::author::expansionText, hdnt::author::ntlValue;

/// docs/ntl.md says what each key means.
Json expansionJson(const ExpandedBlock& expanded);

} // namespace ntl
