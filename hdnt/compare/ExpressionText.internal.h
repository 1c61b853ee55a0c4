#pragma once

#include <string>
#include <vector>

class HDNTExpr;

namespace hdnt::compare {

/// An expression as text, with the parentheses its structure needs: expressions have the same text only when they are
/// the same operations on the same constants of the same types. Works in a loop, for any depth; null is "none".
std::string expressionText(const HDNTExpr* expr);
/// The expressions with commas in between.
std::string expressionTexts(const std::vector<HDNTExpr*>& exprs);

} // namespace hdnt::compare
