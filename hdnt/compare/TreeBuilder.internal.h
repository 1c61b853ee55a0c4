#pragma once

#include "hdnt/compare/HDNTModelTree.h"
#include "hdnt/model/Value.h"

#include <map>

class HDNTNetlist;
class HDNTNode;

namespace hdnt::compare {

/// Lays out a tree: elements are opened and closed as brackets are; the facets of one come before what is below it.
class TreeBuilder {
public:
    explicit TreeBuilder(HDNTModelTree& tree) : tree_(tree) {}

    /// The name is already a part of a path. Where the element stands is the node's location.
    void open(HDNTElementKind kind, std::string_view name, const HDNTNode& node);
    void facet(HDNTElementFacet facet, std::string_view text);
    /// Only when it is on.
    void flag(HDNTElementFacet facet, bool on);
    void close();

private:
    HDNTModelTree::Text keep(std::string_view text);

    HDNTModelTree& tree_;
    std::vector<size_t> open_;
    std::map<const char*, HDNTModelTree::Text> files_; ///< by the scanner's interned name
};

/// The name as a part of a path.
std::string pathPart(std::string_view name);
/// In quotes; quotes and backslashes in it stand behind a backslash.
std::string quoted(std::string_view text);
/// A value so that different ones have different texts: texts are quoted, doubles have the fewest digits that read back
/// to the same number, always with a point or an exponent.
std::string valueText(const Value& value);

/// Adds the mapping to the open block.
void describeMapping(TreeBuilder& builder, const HDNTNetlist& netlist);

} // namespace hdnt::compare
