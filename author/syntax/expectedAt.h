#pragma once

#include "author/syntax/SyntaxTree.h"
#include "hdnt/frontend/TokenSet.h"
#include "hdnt/platform/Export.h"

#include <cstddef>

namespace hdnt::author {

/// The tokens that may stand at an offset of a text, by what is before it; 0 among them: the text may end there. What
/// is behind it, and faults before it, do not count. Of a text that begins there: what any text may begin with. Empty
/// for a text that was refused.
///
/// Uses the scanner, which is process-wide: call on the loading thread, not during a parse.
HDNT_API frontend::TokenSet expectedAt(const SyntaxTree& tree, std::size_t offset);

} // namespace hdnt::author
