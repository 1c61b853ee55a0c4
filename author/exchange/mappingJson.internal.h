#pragma once

#include "author/exchange/BlockJson.h"

#include <string>
#include <vector>

class HDNTNetlist;

namespace hdnt::author {

/// Statements nest, and so do the lists and objects for them, which readers follow by calling themselves.
inline constexpr int deepestStatement = 250;

/// The statements of a mapping, in the order of its lists. docs/ntl.md says what each key means; expressions are texts
/// as NTL has them. What cannot be said is appended to `problems`, and the array is of no use then.
Json statementsOf(const HDNTNetlist& netlist, std::vector<std::string>& problems);

} // namespace hdnt::author
