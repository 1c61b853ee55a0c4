#include "hdnt/compare/EqualElements.internal.h"
#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"

#include <unordered_map>

namespace hdnt::compare {

bool areEqual(const HDNTModelTree& before, size_t elementBefore, const HDNTModelTree& after, size_t elementAfter) {
    const size_t count = before.elements()[elementBefore].numDescendants;
    if (after.elements()[elementAfter].numDescendants != count) return false;
    for (size_t i = 0; i <= count; ++i) {
        const HDNTModelTree::Element& a = before.elements()[elementBefore + i];
        const HDNTModelTree::Element& b = after.elements()[elementAfter + i];
        if (a.kind != b.kind || a.numDescendants != b.numDescendants || a.numFacets != b.numFacets ||
            before.text(a.name) != after.text(b.name))
            return false;
        for (size_t k = 0; k < a.numFacets; ++k) {
            const HDNTModelTree::Facet& facetA = before.facets()[a.firstFacet + k];
            const HDNTModelTree::Facet& facetB = after.facets()[b.firstFacet + k];
            if (facetA.facet != facetB.facet || before.text(facetA.text) != after.text(facetB.text)) return false;
        }
    }
    return true;
}

namespace {

/// Blocks of one name; a name that is there several times means them in their order.
struct Namesakes {
    std::vector<const HDNTBlock*> blocks;
    size_t next = 0;
};

/// Two trees of a block each, in memory that is used again.
class BlockPair {
public:
    bool isEqual(const HDNTBlock& before, const HDNTBlock& after) {
        describe(beforeBuilder_, before);
        describe(afterBuilder_, after);
        return areEqual(before_, 0, after_, 0);
    }

private:
    static void describe(TreeBuilder& builder, const HDNTBlock& block) {
        builder.restart();
        describeBlock(builder, block);
    }

    HDNTModelTree before_ = TreeBuilder::emptyTree();
    HDNTModelTree after_ = TreeBuilder::emptyTree();
    TreeBuilder beforeBuilder_{before_, TreeBuilder::Places::LeftOut};
    TreeBuilder afterBuilder_{after_, TreeBuilder::Places::LeftOut};
};

} // namespace

std::unordered_set<const HDNTBlock*> equalBlocks(const HDNTLibrary& before, const HDNTLibrary& after) {
    std::unordered_map<std::string_view, Namesakes> byName;
    for (const HDNTBlock& block : after.blocks()) byName[block.getName()].blocks.push_back(&block);
    std::unordered_set<const HDNTBlock*> equal;
    BlockPair pair;
    for (const HDNTBlock& block : before.blocks()) {
        const auto found = byName.find(block.getName());
        if (found == byName.end() || found->second.next == found->second.blocks.size()) continue;
        const HDNTBlock& other = *found->second.blocks[found->second.next++];
        if (pair.isEqual(block, other)) equal.insert({&block, &other});
    }
    return equal;
}

} // namespace hdnt::compare
