#pragma once

#include "author/syntax/SyntaxTree.h"

#include <cstddef>

namespace hdnt::author {

/// Whether people would call the part a statement, a declaration or a block.
bool isStatement(NtlPart part);

/// The largest statement that begins with the item; null when none does.
const SyntaxNode* statementFrom(const SyntaxTree& tree, std::size_t item);

/// The smallest statement that the item is part of; null when it is in none.
const SyntaxNode* statementAround(const SyntaxTree& tree, std::size_t item);

} // namespace hdnt::author
