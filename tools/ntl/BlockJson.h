#pragma once

#include "tools/ntl/Json.h"

class HDNTBlock;

namespace ntl {

/// All that a block, its buses, pins and properties answer; docs/ntl.md says what each key means. For the architecture
/// in force, if any. May load a map library, so standard output has to be redirected.
Json jsonOf(const HDNTBlock& block);

} // namespace ntl
