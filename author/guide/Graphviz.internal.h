#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hdnt::author::guide {

/// A node's centre in points, y downwards.
struct Centre {
    double x;
    double y;
};

struct DotLayout {
    std::vector<Centre> centres; ///< of the nodes n0, n1, ...
    std::string reason;          ///< why there is no layout; empty when there is one
};

/// Lays out a graph in Graphviz's language, without texts: fonts are not looked at. Graphviz's libraries are loaded by
/// the first call, and stay, so that programs that draw nothing do not have them. What Graphviz complains of is
/// dropped. Any thread; one at a time.
DotLayout laidOutByDot(const std::string& graph, size_t numNodes);

} // namespace hdnt::author::guide
