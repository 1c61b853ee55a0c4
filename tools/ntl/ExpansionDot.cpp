// The resolved netlist as a drawing. The nets of all levels are turned into edges between ports first; then edges that
// run side by side, bit by bit, become one.
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/Text.h"
#include "tools/ntl/Expansion.h"
#include "tools/ntl/Output.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <unordered_map>

namespace ntl {

namespace {

using Expansion = HDNTExpansion;

constexpr size_t longestValue = 40; ///< in characters

enum class Role { Drives, Takes, Both };

// A name as base and bit, -1 when it has none.
std::pair<std::string, int> splitBit(const std::string& name) {
    const size_t open = name.rfind('[');
    if (open == name.npos || open == 0 || name.back() != ']') return {name, -1};
    const std::string digits = name.substr(open + 1, name.size() - open - 2);
    if (digits.empty() || digits.size() > 8 || digits.find_first_not_of("0123456789") != digits.npos) return {name, -1};
    return {name.substr(0, open), std::stoi(digits)};
}

// "D[7:4,2]"; the name alone without bits.
std::string withBits(const std::string& base, std::set<int> bits) {
    bits.erase(-1);
    std::string text;
    for (auto bit = bits.rbegin(); bit != bits.rend();) {
        const int high = *bit;
        int low = high;
        for (++bit; bit != bits.rend() && *bit == low - 1; ++bit) low = *bit;
        text += (text.empty() ? "" : ",") + std::to_string(high) + (low == high ? "" : ":" + std::to_string(low));
    }
    return text.empty() ? base : base + "[" + text + "]";
}

std::string html(const std::string& text) {
    std::string result;
    for (const char c : printable(text))
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
    return result;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : printable(text)) result += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
    return result + '"';
}

/// What a net reaches: a pin of a node, by its base name and bit, or a whole bus.
struct End {
    size_t node;
    std::string port;
    int bit; ///< -1: none, or all of them
    bool inverted;
    Role role;
    std::vector<int> allBits = {}; ///< of a whole bus

    void addBitsTo(std::set<int>& bits) const {
        if (allBits.empty()) bits.insert(bit);
        bits.insert(allBits.begin(), allBits.end());
    }
};

struct Port {
    std::string base;
    bool onRight;
    std::set<int> bits;
};

struct Node {
    enum class Kind { Block, Pin, Constant, Junction };
    Kind kind;
    size_t level;
    std::string title; ///< in HTML for a block; else the name of pin or signal, without bits
    std::vector<std::string> rows;
    std::vector<Port> ports;
};

/// Wires from one port to another.
struct Edge {
    End from;
    End to;
    bool directed;
    std::string signal;
    std::set<int> fromBits;
    std::set<int> toBits;
};

class Drawing {
public:
    explicit Drawing(const ExpandedBlock& expanded)
        : levels_(expanded.expansion.levels()), nodesOfLevel_(levels_.size()), blockNodes_(levels_.size()),
          instances_(levels_.size()) {
        for (size_t level = 0; level < levels_.size(); ++level) addBlocks(level);
        for (size_t level = 0; level < levels_.size(); ++level) addNets(level);
    }

    std::string text() const {
        std::string text = "digraph " + quoted(levels_.front().block->getName()) +
                           " {\n  rankdir=LR;\n  labelloc=t;\n  fontname=\"sans-serif\";\n"
                           "  node [shape=plain, fontname=\"sans-serif\", fontsize=11];\n"
                           "  edge [fontname=\"sans-serif\", fontsize=9, arrowsize=0.6];\n";
        text += levelText(0, "  ");
        for (const Edge& edge : edges_) text += edgeText(edge);
        return text + "}\n";
    }

private:
    // --- collecting

    size_t addNode(Node node) {
        nodesOfLevel_[node.level].push_back(nodes_.size());
        nodes_.push_back(std::move(node));
        return nodes_.size() - 1;
    }

    bool isKept(size_t level) const { return levels_[level].section == HDNTNetlist::Section::modifiedby; }

    // A node for each instance that is not drawn as a cluster, and for a block that stays.
    void addBlocks(size_t level) {
        for (const Expansion::Instance& instance : levels_[level].instances) {
            instances_[level].emplace(instance.name, blockNodes_[level].size());
            if (instance.level != Expansion::none) {
                blockNodes_[level].push_back(Expansion::none);
                continue;
            }
            const std::string type = html(instance.type) + (instance.block ? "" : "<BR/>(no such block)");
            const size_t node = addBlock(level, html(instance.name), type);
            for (const Expansion::PropertyValue& property : instance.properties)
                nodes_[node].rows.push_back((property.pin.empty() ? "" : property.pin + " ") + property.name + " = " +
                                            hdnt::platform::clipped(hdnt::textOf(property.value), longestValue));
            blockNodes_[level].push_back(node);
        }
        if (isKept(level)) keptNodes_[level] = addBlock(level, html(levels_[level].block->getName()), "(stays)");
    }

    size_t addBlock(size_t level, const std::string& name, const std::string& rest) {
        return addNode({Node::Kind::Block, level, "<B>" + name + "</B><BR/>" + rest, {}, {}});
    }

    // A pin of a block as seen from where the block is placed.
    static End pinEnd(const HDNTBlock* block, const Expansion::Connection& connection) {
        End end{0, "", -1, connection.inverted, Role::Both};
        std::tie(end.port, end.bit) = splitBit(connection.pin);
        std::vector<HDNTPin*> pins;
        if (block) pins.push_back(block->getPinByName(connection.pin));
        if (block && !pins.front()) block->getBusPins(connection.pin, pins);
        const HDNTPin* const pin = pins.empty() ? nullptr : pins.front() ? pins.front() : pins.back();
        if (!pin) return end;
        end.port = pin->getBaseName();
        for (size_t i = 1; i < pins.size(); ++i) end.allBits.push_back(pins[i]->getBitIndex());
        if (pin->getDirection() == HDNT_PIN_INPUT) end.role = Role::Takes;
        if (pin->getDirection() == HDNT_PIN_OUTPUT) end.role = Role::Drives;
        return end;
    }

    // The node of a pin of a mapped block. From inside, an input drives.
    size_t pinNode(size_t level, const std::string& port) {
        if (isKept(level)) return keptNodes_[level];
        const auto [found, isNew] = pinNodes_.try_emplace({level, port}, nodes_.size());
        if (isNew) addNode({Node::Kind::Pin, level, port, {}, {}});
        return found->second;
    }

    End endOf(size_t level, const Expansion::Connection& connection) {
        const Expansion::Level& here = levels_[level];
        if (connection.instance.empty()) {
            End end = pinEnd(here.block, connection);
            end.node = pinNode(level, end.port);
            if (!isKept(level) && end.role != Role::Both)
                end.role = end.role == Role::Drives ? Role::Takes : Role::Drives;
            return end;
        }
        const auto found = instances_[level].find(connection.instance);
        if (found != instances_[level].end()) {
            const Expansion::Instance& instance = here.instances[found->second];
            End end = pinEnd(instance.block, connection);
            const bool isPlain = instance.level == Expansion::none;
            end.node = isPlain ? blockNodes_[level][found->second] : pinNode(instance.level, end.port);
            return end;
        }
        End end = pinEnd(nullptr, connection);
        const auto [missing, isNew] = missing_.try_emplace({level, connection.instance}, nodes_.size());
        if (isNew) addBlock(level, html(connection.instance), "(no such instance)");
        end.node = missing->second;
        return end;
    }

    void addNets(size_t level) {
        std::vector<std::string> order;
        std::unordered_map<std::string, std::vector<End>> nets;
        for (const Expansion::Connection& connection : levels_[level].connections) {
            const auto [net, isNew] = nets.try_emplace(connection.signal);
            if (isNew) order.push_back(connection.signal);
            net->second.push_back(endOf(level, connection));
        }
        for (const std::string& signal : order) addNet(level, signal, nets[signal]);
    }

    void addNet(size_t level, const std::string& signal, const std::vector<End>& ends) {
        const auto driver =
            std::find_if(ends.begin(), ends.end(), [](const End& end) { return end.role == Role::Drives; });
        const auto isOther = [](const End& end) { return end.role != Role::Takes; };
        if (signal == "@0" || signal == "@1") {
            for (const End& end : ends) addEdge(constantFor(level, signal, end), end, signal);
        } else if (ends.size() == 2) {
            const bool backward = ends[0].role != Role::Drives && ends[1].role != Role::Takes &&
                                  (ends[1].role == Role::Drives || ends[0].role == Role::Takes);
            addEdge(ends[backward ? 1 : 0], ends[backward ? 0 : 1], signal);
        } else if (driver != ends.end() && std::count_if(ends.begin(), ends.end(), isOther) == 1 && ends.size() > 1) {
            for (const End& end : ends)
                if (&end != &*driver) addEdge(*driver, end, signal);
        } else {
            addJunction(level, signal, ends);
        }
    }

    // A net without a clear direction, or with one end, is a node of its own.
    void addJunction(size_t level, const std::string& signal, const std::vector<End>& ends) {
        const auto [base, bit] = splitBit(signal);
        const auto [found, isNew] = junctions_.try_emplace({level, base}, nodes_.size());
        if (isNew) addNode({Node::Kind::Junction, level, base, {}, {}});
        for (const End& end : ends) {
            const End middle{found->second, base, bit, false, end.role};
            if (end.role == Role::Drives) addEdge(end, {middle.node, base, bit, false, Role::Takes}, signal);
            else
                addEdge({middle.node, base, bit, false, end.role == Role::Takes ? Role::Drives : Role::Both}, end,
                        signal);
        }
    }

    // One for each node it reaches, so that it stands close by.
    End constantFor(size_t level, const std::string& signal, const End& end) {
        const auto [found, isNew] = constants_.try_emplace({level, signal, end.node}, nodes_.size());
        if (isNew) addNode({Node::Kind::Constant, level, signal.substr(1), {}, {}});
        return {found->second, "", -1, false, Role::Drives};
    }

    void touch(const End& end, bool onRight) {
        std::vector<Port>& ports = nodes_[end.node].ports;
        auto port = std::find_if(ports.begin(), ports.end(), [&](const Port& each) { return each.base == end.port; });
        if (port == ports.end()) port = ports.insert(port, {end.port, onRight, {}});
        end.addBitsTo(port->bits);
    }

    void addEdge(const End& from, const End& to, const std::string& signal) {
        touch(from, from.role != Role::Takes);
        touch(to, to.role == Role::Drives);
        const bool directed =
            from.role == Role::Drives ? to.role != Role::Drives : to.role == Role::Takes && from.role == Role::Both;
        const int shift = from.bit < 0 || to.bit < 0 ? 0 : from.bit - to.bit;
        const auto [found, isNew] = edgeByEnds_.try_emplace(
            {from.node, from.port, from.inverted, to.node, to.port, to.inverted, shift}, edges_.size());
        if (isNew) edges_.push_back({from, to, directed, signal, {}, {}});
        Edge& edge = edges_[found->second];
        from.addBitsTo(edge.fromBits);
        to.addBitsTo(edge.toBits);
    }

    // --- writing

    static std::string nodeName(size_t node) { return "n" + std::to_string(node); }

    std::string portName(const End& end) const {
        const Node& node = nodes_[end.node];
        if (node.kind != Node::Kind::Block) return nodeName(end.node);
        for (size_t i = 0; i < node.ports.size(); ++i)
            if (node.ports[i].base == end.port)
                return nodeName(end.node) + ":p" + std::to_string(i) + (node.ports[i].onRight ? ":e" : ":w");
        return nodeName(end.node);
    }

    static std::string cellText(const Node& node, const std::vector<size_t>& side, size_t row) {
        if (row >= side.size()) return "<TD></TD>";
        const Port& port = node.ports[side[row]];
        return "<TD PORT=\"p" + std::to_string(side[row]) + "\">" + html(withBits(port.base, port.bits)) + "</TD>";
    }

    static std::string tableText(const Node& node) {
        std::vector<size_t> left;
        std::vector<size_t> right;
        for (size_t i = 0; i < node.ports.size(); ++i) (node.ports[i].onRight ? right : left).push_back(i);
        std::string text =
            "<TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"0\"><TR><TD COLSPAN=\"2\">" + node.title + "</TD></TR>";
        for (size_t row = 0; row < std::max(left.size(), right.size()); ++row)
            text += "<TR>" + cellText(node, left, row) + cellText(node, right, row) + "</TR>";
        for (const std::string& row : node.rows)
            text += "<TR><TD COLSPAN=\"2\" ALIGN=\"LEFT\">" + html(row) + "</TD></TR>";
        return text + "</TABLE>";
    }

    std::string nodeText(size_t index) const {
        const Node& node = nodes_[index];
        const std::string start = nodeName(index) + " [";
        if (node.kind == Node::Kind::Block) return start + "label=<" + tableText(node) + ">];\n";
        std::set<int> bits;
        for (const Port& port : node.ports) bits.insert(port.bits.begin(), port.bits.end());
        const std::string label = "label=" + quoted(withBits(node.title, bits));
        if (node.kind == Node::Kind::Pin)
            return start + "shape=box, style=\"rounded,filled\", fillcolor=\"#e8eef7\", " + label + "];\n";
        if (node.kind == Node::Kind::Constant)
            return start + "shape=square, style=filled, fillcolor=\"#f3e3c3\", width=0.25, margin=0.02, " + label +
                   "];\n";
        return start + "shape=ellipse, style=dashed, height=0.2, margin=0.03, " + label + "];\n";
    }

    // The blocks of a level, and in it as clusters those that were expanded.
    std::string levelText(size_t level, const std::string& indent) const {
        const Expansion::Level& here = levels_[level];
        std::string label = html(here.block->getName()) + " " + std::string(hdnt::words::sections.wordOf(here.section));
        if (level > 0) label.insert(0, html(here.path.substr(here.path.rfind('/') + 1)) + ": ");
        for (const Expansion::Call& call : here.calls) label += "<BR/>" + html(callText(call));
        std::string text = indent + "label=<" + label + ">;\n";
        for (const size_t node : nodesOfLevel_[level]) text.append(indent).append(nodeText(node));
        for (const Expansion::Instance& instance : here.instances) {
            if (instance.level == Expansion::none) continue;
            text.append(indent).append("subgraph cluster_").append(std::to_string(instance.level)).append(" {\n");
            text.append(levelText(instance.level, indent + "  ")).append(indent).append("}\n");
        }
        return text;
    }

    std::string edgeText(const Edge& edge) const {
        std::vector<std::string> attributes;
        if (!edge.directed && !edge.from.inverted && !edge.to.inverted) attributes.emplace_back("dir=none");
        const std::string head = edge.to.inverted ? "odot" : "";
        const std::string shape = edge.directed ? head + "normal" : head;
        if (edge.directed ? edge.to.inverted : edge.from.inverted || edge.to.inverted)
            attributes.push_back("arrowhead=" + (shape.empty() ? "none" : shape));
        if (edge.from.inverted) attributes.insert(attributes.end(), {"dir=both", "arrowtail=odot"});
        if (edge.fromBits.size() > 1 || edge.toBits.size() > 1) {
            const std::string from = withBits(edge.from.port, edge.fromBits);
            const std::string to = withBits(edge.to.port, edge.toBits);
            const std::string label = from == to || edge.from.port.empty() ? to : from + " to " + to;
            attributes.insert(attributes.end(), {"penwidth=3", "label=" + quoted(label)});
        } else if (nodes_[edge.from.node].kind != Node::Kind::Constant) {
            attributes.push_back("label=" + quoted(edge.signal));
        }
        return "  " + portName(edge.from) + " -> " + portName(edge.to) +
               (attributes.empty() ? "" : " [" + joined(attributes, ", ") + "]") + ";\n";
    }

    const std::vector<Expansion::Level>& levels_;
    std::vector<std::vector<size_t>> nodesOfLevel_;
    std::vector<std::vector<size_t>> blockNodes_;                    ///< of each level's instances
    std::vector<std::unordered_map<std::string, size_t>> instances_; ///< of each level, by name
    std::map<size_t, size_t> keptNodes_;
    std::map<std::pair<size_t, std::string>, size_t> missing_; ///< instances that are named but not there
    std::map<std::pair<size_t, std::string>, size_t> pinNodes_;
    std::map<std::pair<size_t, std::string>, size_t> junctions_;
    std::map<std::tuple<size_t, std::string, size_t>, size_t> constants_;
    std::map<std::tuple<size_t, std::string, bool, size_t, std::string, bool, int>, size_t> edgeByEnds_;
    std::vector<Node> nodes_;
    std::vector<Edge> edges_;
};

} // namespace

std::string expansionDot(const ExpandedBlock& expanded) { return Drawing(expanded).text(); }

} // namespace ntl
