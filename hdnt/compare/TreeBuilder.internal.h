#pragma once

#include "hdnt/compare/HDNTModelTree.h"
#include "hdnt/model/Value.h"

#include <map>
#include <unordered_set>

class HDNTNetlist;
class HDNTNode;

namespace hdnt::compare {

/// Lays out a tree: elements are opened and closed as brackets are; the facets of one come before what is below it.
class TreeBuilder {
public:
    enum class Places : unsigned char { Kept, LeftOut };

    explicit TreeBuilder(HDNTModelTree& tree, Places places = Places::Kept) : tree_(tree), places_(places) {}

    static HDNTModelTree emptyTree() { return {}; }
    /// Empties the tree for another one in its memory. No element may be open.
    void restart();

    /// The name is already a part of a path. Where the element stands is the node's location.
    void open(HDNTElementKind kind, std::string_view name, const HDNTNode& node);
    void facet(HDNTElementFacet facet, std::string_view text);
    /// Only when it is on.
    void flag(HDNTElementFacet facet, bool on);
    void close();

private:
    HDNTModelTree::Text keep(std::string_view text);
    void place(HDNTModelTree::Element& element, const HDNTNode& node);

    HDNTModelTree& tree_;
    Places places_;
    std::vector<size_t> open_;
    std::map<const char*, HDNTModelTree::Text> files_; ///< by the scanner's interned name
};

/// The name as a part of a path.
std::string pathPart(std::string_view name);
/// In quotes; quotes and backslashes in it stand behind a backslash.
std::string quoted(std::string_view text);
void addQuoted(std::string& out, std::string_view text);
/// A value so that different ones have different texts: texts are quoted, doubles have the fewest digits that read back
/// to the same number, always with a point or an exponent.
std::string valueText(const Value& value);

/// Adds the block with all that is in it.
void describeBlock(TreeBuilder& builder, const HDNTBlock& block);
/// Adds the library; of those blocks only the names.
void describeLibrary(TreeBuilder& builder, const HDNTLibrary& library,
                     const std::unordered_set<const HDNTBlock*>& namesOnly = {});
/// Adds the mapping to the open block.
void describeMapping(TreeBuilder& builder, const HDNTNetlist& netlist);

} // namespace hdnt::compare
