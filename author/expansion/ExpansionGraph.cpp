// The nets of all levels are turned into edges between ports first; then edges that run side by side, bit by bit,
// become one.
#include "author/expansion/ExpansionGraph.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>

namespace hdnt::author {

namespace {

using Expansion = HDNTExpansion;
using Graph = ExpansionGraph;

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

/// What a net reaches: a pin of a node, by its base name and bit, or a whole bus.
struct NetEnd {
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

class GraphMaker {
public:
    GraphMaker(Graph& graph, const Expansion& expansion)
        : graph_(graph), levels_(expansion.levels()), blockNodes_(levels_.size()), instances_(levels_.size()) {
        for (size_t level = 0; level < levels_.size(); ++level) addBlocks(level);
        for (size_t level = 0; level < levels_.size(); ++level) addNets(level);
    }

private:
    size_t addNode(Graph::Node node) {
        graph_.nodes.push_back(std::move(node));
        return graph_.nodes.size() - 1;
    }

    bool isKept(size_t level) const { return levels_[level].section == HDNTNetlist::Section::modifiedby; }

    // A node for each instance that was not expanded in turn, and for a block that stays.
    void addBlocks(size_t level) {
        const Expansion::Level& here = levels_[level];
        for (const Expansion::Instance& instance : here.instances) {
            instances_[level].emplace(instance.name, blockNodes_[level].size());
            if (instance.level != Expansion::none) {
                blockNodes_[level].push_back(Expansion::none);
                continue;
            }
            const size_t node = addNode({Graph::Kind::instance, level, instance.name, instance.type, instance.block});
            for (const Expansion::PropertyValue& property : instance.properties)
                graph_.nodes[node].properties.push_back((property.pin.empty() ? "" : property.pin + " ") +
                                                        property.name + " = " +
                                                        platform::clipped(textOf(property.value), longestValue));
            blockNodes_[level].push_back(node);
        }
        if (isKept(level))
            keptNodes_[level] = addNode({Graph::Kind::kept, level, here.block->getName(), "", here.block});
    }

    // A pin of a block as seen from where the block is placed.
    static NetEnd pinEnd(const HDNTBlock* block, const Expansion::Connection& connection) {
        NetEnd end{0, "", -1, connection.inverted, Role::Both};
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
        const auto [found, isNew] = pinNodes_.try_emplace({level, port}, graph_.nodes.size());
        if (isNew) addNode({Graph::Kind::pin, level, port, "", levels_[level].block});
        return found->second;
    }

    NetEnd endOf(size_t level, const Expansion::Connection& connection) {
        const Expansion::Level& here = levels_[level];
        if (connection.instance.empty()) {
            NetEnd end = pinEnd(here.block, connection);
            end.node = pinNode(level, end.port);
            if (!isKept(level) && end.role != Role::Both)
                end.role = end.role == Role::Drives ? Role::Takes : Role::Drives;
            return end;
        }
        const auto found = instances_[level].find(connection.instance);
        if (found != instances_[level].end()) {
            const Expansion::Instance& instance = here.instances[found->second];
            NetEnd end = pinEnd(instance.block, connection);
            const bool isPlain = instance.level == Expansion::none;
            end.node = isPlain ? blockNodes_[level][found->second] : pinNode(instance.level, end.port);
            return end;
        }
        NetEnd end = pinEnd(nullptr, connection);
        const auto [missing, isNew] = missing_.try_emplace({level, connection.instance}, graph_.nodes.size());
        if (isNew) addNode({Graph::Kind::missing, level, connection.instance});
        end.node = missing->second;
        return end;
    }

    void addNets(size_t level) {
        std::vector<std::string> order;
        std::unordered_map<std::string, std::vector<NetEnd>> nets;
        for (const Expansion::Connection& connection : levels_[level].connections) {
            const auto [net, isNew] = nets.try_emplace(connection.signal);
            if (isNew) order.push_back(connection.signal);
            net->second.push_back(endOf(level, connection));
        }
        for (const std::string& signal : order) addNet(level, signal, nets[signal]);
    }

    void addNet(size_t level, const std::string& signal, const std::vector<NetEnd>& ends) {
        const auto driver =
            std::find_if(ends.begin(), ends.end(), [](const NetEnd& end) { return end.role == Role::Drives; });
        const auto isOther = [](const NetEnd& end) { return end.role != Role::Takes; };
        if (signal == "@0" || signal == "@1") {
            for (const NetEnd& end : ends) addEdge(constantFor(level, signal, end), end, signal);
        } else if (ends.size() == 2) {
            const bool backward = ends[0].role != Role::Drives && ends[1].role != Role::Takes &&
                                  (ends[1].role == Role::Drives || ends[0].role == Role::Takes);
            addEdge(ends[backward ? 1 : 0], ends[backward ? 0 : 1], signal);
        } else if (driver != ends.end() && std::count_if(ends.begin(), ends.end(), isOther) == 1 && ends.size() > 1) {
            for (const NetEnd& end : ends)
                if (&end != &*driver) addEdge(*driver, end, signal);
        } else {
            addJunction(level, signal, ends);
        }
    }

    void addJunction(size_t level, const std::string& signal, const std::vector<NetEnd>& ends) {
        const auto [base, bit] = splitBit(signal);
        const auto [found, isNew] = junctions_.try_emplace({level, base}, graph_.nodes.size());
        if (isNew) addNode({Graph::Kind::junction, level, base});
        for (const NetEnd& end : ends) {
            const NetEnd middle{found->second, base, bit, false, end.role};
            if (end.role == Role::Drives) addEdge(end, {middle.node, base, bit, false, Role::Takes}, signal);
            else
                addEdge({middle.node, base, bit, false, end.role == Role::Takes ? Role::Drives : Role::Both}, end,
                        signal);
        }
    }

    NetEnd constantFor(size_t level, const std::string& signal, const NetEnd& end) {
        const auto [found, isNew] = constants_.try_emplace({level, signal, end.node}, graph_.nodes.size());
        if (isNew) addNode({Graph::Kind::constant, level, signal.substr(1)});
        return {found->second, "", -1, false, Role::Drives};
    }

    Graph::End touch(const NetEnd& end, bool onRight) {
        std::vector<Graph::Port>& ports = graph_.nodes[end.node].ports;
        auto port =
            std::find_if(ports.begin(), ports.end(), [&](const Graph::Port& each) { return each.base == end.port; });
        if (port == ports.end()) port = ports.insert(port, {end.port, onRight, {}});
        end.addBitsTo(port->bits);
        return {end.node, static_cast<size_t>(port - ports.begin()), end.inverted};
    }

    void addEdge(const NetEnd& from, const NetEnd& to, const std::string& signal) {
        const Graph::End start = touch(from, from.role != Role::Takes);
        const Graph::End stop = touch(to, to.role == Role::Drives);
        const bool directed =
            from.role == Role::Drives ? to.role != Role::Drives : to.role == Role::Takes && from.role == Role::Both;
        const int shift = from.bit < 0 || to.bit < 0 ? 0 : from.bit - to.bit;
        const auto [found, isNew] = edgeByEnds_.try_emplace(
            {start.node, start.port, start.inverted, stop.node, stop.port, stop.inverted, shift}, graph_.edges.size());
        if (isNew) graph_.edges.push_back({start, stop, directed, {}, {}, {}});
        Graph::Edge& edge = graph_.edges[found->second];
        if (edge.signals.empty() || edge.signals.back() != signal) edge.signals.push_back(signal);
        from.addBitsTo(edge.fromBits);
        to.addBitsTo(edge.toBits);
    }

    Graph& graph_;
    const std::vector<Expansion::Level>& levels_;
    std::vector<std::vector<size_t>> blockNodes_;                    ///< of each level's instances
    std::vector<std::unordered_map<std::string, size_t>> instances_; ///< of each level, by name
    std::map<size_t, size_t> keptNodes_;
    std::map<std::pair<size_t, std::string>, size_t> missing_;
    std::map<std::pair<size_t, std::string>, size_t> pinNodes_;
    std::map<std::pair<size_t, std::string>, size_t> junctions_;
    std::map<std::tuple<size_t, std::string, size_t>, size_t> constants_;
    std::map<std::tuple<size_t, size_t, bool, size_t, size_t, bool, int>, size_t> edgeByEnds_;
};

} // namespace

ExpansionGraph::ExpansionGraph(const HDNTExpansion& expansion) { GraphMaker(*this, expansion); }

std::string nameWithBits(const std::string& base, const std::set<int>& bits) {
    std::string text;
    for (auto bit = bits.rbegin(); bit != bits.rend() && *bit >= 0;) {
        const int high = *bit;
        int low = high;
        for (++bit; bit != bits.rend() && *bit >= 0 && *bit == low - 1; ++bit) low = *bit;
        text += (text.empty() ? "" : ",") + std::to_string(high) + (low == high ? "" : ":" + std::to_string(low));
    }
    return text.empty() ? base : base + "[" + text + "]";
}

} // namespace hdnt::author
