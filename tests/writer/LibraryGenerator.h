#pragma once

#include <cstdint>
#include <string>

namespace generator {

/// A library of random shape as NTL text that loads without a report: every construct that the grammar takes, and every
/// form of it, in some of them. The same seed gives the same text.
std::string libraryText(uint64_t seed);

} // namespace generator
