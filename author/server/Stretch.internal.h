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

/// The number of the first item that begins behind an offset; that of all when none does.
inline std::size_t itemBehind(const frontend::SourceItems& items, std::size_t offset) {
    std::size_t first = 0;
    for (std::size_t count = items.size(); count > 0;) {
        const std::size_t half = count / 2;
        const bool isBefore = items[first + half].offset <= offset;
        if (isBefore) first += half + 1;
        count = isBefore ? count - half - 1 : half;
    }
    return first;
}

} // namespace hdnt::author::server
