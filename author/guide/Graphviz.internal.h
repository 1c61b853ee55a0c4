#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hdnt::author::guide {

struct DotAnswer {
    std::vector<std::string> values; ///< of the nodes n0, n1, ...
    std::string reason;              ///< why there are none; empty when there are
};

/// Has Graphviz's dot lay out a graph in its language, and says what an attribute of the nodes has become. There must
/// be no texts in it: fonts are not looked at. Graphviz's libraries are loaded by the first call, and stay, so that
/// programs that draw nothing do not have them. What Graphviz complains of is dropped. Any thread; one at a time.
DotAnswer askDot(const std::string& graph, size_t numNodes, const char* attribute);

} // namespace hdnt::author::guide
