#pragma once

#include "tools/ntl/Json.h"

class HDNTBlock;
class HDNTNode;

namespace ntl {

/// All that a block, its buses, pins and properties answer; docs/ntl.md says what each key means. For the architecture
/// in force, if any. Its mapping is the one that is attached; what asks for more of it may load map libraries, so
/// standard output has to be redirected.
Json jsonOf(HDNTBlock& block);
/// Where something was declared: file and line, or null.
Json locationOf(const HDNTNode& node);

/// The data sheet of a block, from the JSON that jsonOf(block) gives.
std::string dataSheet(const Json& block);

} // namespace ntl
