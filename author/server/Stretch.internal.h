#pragma once

#include "author/syntax/SyntaxTree.h"

#include <cstddef>
#include <cstdint>

namespace hdnt::author::server {

/// Bytes of a text.
struct Stretch {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool operator==(const Stretch&) const = default;
    bool contains(std::size_t offset) const { return begin <= offset && offset <= end; }
};

inline Stretch stretchOf(const frontend::SourceItem& item) {
    return {item.offset, std::size_t{item.offset} + item.length};
}

/// Of a node with items.
inline Stretch stretchOf(const SyntaxTree& tree, const SyntaxNode& node) {
    return {tree.items()[node.begin].offset, stretchOf(tree.items()[node.end - 1]).end};
}

} // namespace hdnt::author::server
