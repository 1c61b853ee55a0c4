#pragma once

#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

class HDNTBlock;

namespace hdnt::author {

/// The netlists of an expansion, all levels in one, as something that can be drawn: nodes with ports, and edges from
/// port to port. Bits that run side by side between the same two ports are one edge. Same expansion, same graph, in the
/// same order. It points into the model.
struct HDNT_API ExpansionGraph {
    struct Port {
        std::string base;   ///< of the pin or signal, without bits; empty for a constant
        bool onRight;       ///< it drives, as far as is known
        std::set<int> bits; ///< those that are connected; -1: one that has no number
    };

    enum class Kind : unsigned char {
        instance, ///< one that was not expanded in turn
        missing,  ///< named by a connection, but not there
        kept,     ///< the mapped block itself, which stays (modifiedby)
        pin,      ///< a pin or bus of a mapped block; seen from inside, inputs drive
        constant, ///< one for each node it reaches, so that it can stand close by
        junction  ///< a signal without a clear direction, or with one end
    };
    struct Node {
        Kind kind;
        size_t level;          ///< into HDNTExpansion::levels()
        std::string name;      ///< of instance, block, pin or signal, without bits; "0" and "1" of a constant
        std::string type = {}; ///< of an instance
        const HDNTBlock* block = nullptr;         ///< the instance's type, the kept block or the one that has the pin
        std::vector<std::string> properties = {}; ///< "NAME = value" or "PIN NAME = value", long values cut
        std::vector<Port> ports = {};
    };

    struct End {
        size_t node;
        size_t port; ///< of the node
        bool inverted;
    };
    struct Edge {
        End from;
        End to;
        bool directed;                    ///< from drives to
        std::vector<std::string> signals; ///< each once, in the order of the connections
        std::set<int> fromBits;           ///< of the ports, as Port::bits
        std::set<int> toBits;
    };

    explicit ExpansionGraph(const HDNTExpansion& expansion);

    std::vector<Node> nodes;
    std::vector<Edge> edges;
};

/// "D[7:4,2]"; the name alone without bits.
HDNT_API std::string nameWithBits(const std::string& base, const std::set<int>& bits);

} // namespace hdnt::author
