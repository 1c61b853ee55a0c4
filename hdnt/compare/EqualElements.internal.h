#pragma once

#include "hdnt/compare/HDNTModelTree.h"

#include <unordered_set>

namespace hdnt::compare {

/// Whether two elements say the same, with all below them, except for where they stand.
bool areEqual(const HDNTModelTree& before, size_t elementBefore, const HDNTModelTree& after, size_t elementAfter);

/// The blocks of both libraries that are equal to the one that a comparison finds for them in the other: most blocks of
/// most libraries, so that these need no tree. Never more than one block of each is described at a time.
std::unordered_set<const HDNTBlock*> equalBlocks(const HDNTLibrary& before, const HDNTLibrary& after);

} // namespace hdnt::compare
