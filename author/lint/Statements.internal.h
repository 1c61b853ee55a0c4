#pragma once

#include "author/syntax/SyntaxTree.h"

#include <cstddef>
#include <map>
#include <string>

namespace hdnt::author {

/// Whether people would call the part a statement, a declaration or a block.
bool isStatement(NtlPart part);

/// The largest statement that begins with the item; null when none does.
const SyntaxNode* statementFrom(const SyntaxTree& tree, std::size_t item);

/// The smallest statement that the item is part of; null when it is in none.
const SyntaxNode* statementAround(const SyntaxTree& tree, std::size_t item);

/// The text of a file, or the one given for it; empty when it is no regular file. Throws HEXDataException when it is
/// one and cannot be read: what is found with half of the texts is not to be taken for all.
std::string textOfFile(const std::string& file, const std::map<std::string, std::string>& texts);

} // namespace hdnt::author
