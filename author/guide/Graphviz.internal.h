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

struct DotRanks {
    std::vector<int> ranks; ///< of the nodes n0, n1, ...
    std::string reason;     ///< as in a layout
};

// Of graphs in Graphviz's language, without texts: fonts are not looked at. Graphviz's libraries are loaded by the
// first call, and stay, so that programs that draw nothing do not have them. What Graphviz complains of is dropped. It
// leaks a little for each cycle, each field of a record, and ranks that are constrained to be first or last. Any
// thread; one at a time.

DotLayout laidOutByDot(const std::string& graph, size_t numNodes);
/// The ranks alone, in a fraction of the time, of a graph that says phase=1.
DotRanks rankedByDot(const std::string& graph, size_t numNodes);

} // namespace hdnt::author::guide
