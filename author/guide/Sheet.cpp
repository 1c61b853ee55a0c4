#include "author/guide/Sheet.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace hdnt::author::guide {

namespace {

using Graph = ExpansionGraph;

constexpr size_t longestName = 28; ///< in characters
constexpr size_t mostValues = 6;

std::string shortened(const std::string& text) { return platform::clipped(platform::printable(text), longestName); }

// The declaration of a port and its place among the others; null and past the end when there is none.
std::pair<const HDNTBus*, size_t> declared(const HDNTBlock* block, const std::string& base) {
    size_t place = 0;
    if (block)
        for (const HDNTBus& bus : block->buses()) {
            if (bus.getBaseName() == base) return {&bus, place};
            ++place;
        }
    return {nullptr, place};
}

/// Sorts the edges of the graph into rows and nets.
class SheetMaker {
public:
    explicit SheetMaker(Sheet& sheet) : sheet_(sheet), graph_(sheet.graph), boxOfNode_(graph_.nodes.size()) {}

    void make() {
        for (size_t node = 0; node < graph_.nodes.size(); ++node)
            if (hasHead(graph_.nodes[node])) boxOfNode_[node] = addBox(node);
        for (const Graph::Edge& edge : graph_.edges)
            if (kindOf(edge.to) != Graph::Kind::junction)
                bitsOfDriver_[driverOf(edge)].insert(edge.fromBits.begin(), edge.fromBits.end());
        for (const Graph::Edge& edge : graph_.edges) addEdge(edge);
        addSignals();
        for (const SheetNet& net : sheet_.nets) markParts(net);
        for (Box& box : sheet_.boxes) arrange(box);
    }

private:
    using Terminal = SheetNet::Terminal;
    using Driver = std::tuple<size_t, size_t, bool>; ///< node, port, inverted

    static Driver driverOf(const Graph::Edge& edge) { return {edge.from.node, edge.from.port, edge.from.inverted}; }

    static bool hasHead(const Graph::Node& node) {
        return node.kind == Graph::Kind::instance || node.kind == Graph::Kind::missing ||
               node.kind == Graph::Kind::kept;
    }

    size_t addBox(size_t index) {
        const Graph::Node& node = graph_.nodes[index];
        Box box{&node, {}, {}, {}, 0, 0};
        if (hasHead(node)) box.head = headOf(node);
        for (const std::string& value : node.properties) {
            if (box.values.size() == mostValues) {
                box.values.back() = "...";
                break;
            }
            box.values.push_back(shortened(value));
        }
        sheet_.boxes.push_back(std::move(box));
        return sheet_.boxes.size() - 1;
    }

    static std::vector<std::string> headOf(const Graph::Node& node) {
        std::vector<std::string> head = {shortened(node.name)};
        if (node.kind == Graph::Kind::missing) head.emplace_back("(no such instance)");
        else if (node.kind == Graph::Kind::kept) head.emplace_back("(stays)");
        else head.push_back(shortened(node.type));
        if (node.kind == Graph::Kind::instance && !node.block) head.emplace_back("(no such block)");
        return head;
    }

    // Each row of a pin is a box of its own, which can stand where its wire ends.
    Terminal addRow(const Graph::End& end, const std::set<int>& bits) {
        const Graph::Node& node = graph_.nodes[end.node];
        const Graph::Port& port = node.ports[end.port];
        const size_t box = hasHead(node) ? boxOfNode_[end.node] : addBox(end.node);
        const auto [bus, place] = declared(node.block, port.base);
        std::vector<Row>& rows = sheet_.boxes[box].rows;
        rows.push_back({.text = shortened(nameWithBits(port.base, bits)),
                        .onRight = port.onRight,
                        .inverted = end.inverted,
                        .isClock = hasHead(node) && bus && bus->getType() == HDNT_PIN_CLOCK,
                        .isBus = bits.size() > 1,
                        .isBothWays = bus && bus->getDirection() == HDNT_PIN_BIDIR,
                        .order = {place, bits.empty() ? 0 : -*bits.rbegin()}});
        return {box, rows.size() - 1};
    }

    Graph::Kind kindOf(const Graph::End& end) const { return graph_.nodes[end.node].kind; }
    Row& rowOf(const Terminal& terminal) { return sheet_.boxes[terminal.box].rows[terminal.row]; }

    void addEdge(const Graph::Edge& edge) {
        if (kindOf(edge.from) == Graph::Kind::constant) {
            rowOf(addRow(edge.to, edge.toBits)).tie = graph_.nodes[edge.from.node].name;
        } else if (kindOf(edge.from) == Graph::Kind::junction) {
            signals_[edge.from.node].push_back({&edge.to, &edge.toBits, &edge.fromBits});
        } else if (kindOf(edge.to) == Graph::Kind::junction) {
            signals_[edge.to.node].push_back({&edge.from, &edge.fromBits, &edge.toBits});
        } else {
            addDriven(edge);
        }
    }

    void addDriven(const Graph::Edge& edge) {
        const auto [found, isNew] = netOfDriver_.try_emplace(driverOf(edge), sheet_.nets.size());
        if (isNew) {
            const std::set<int>& bits = bitsOfDriver_[driverOf(edge)];
            sheet_.nets.push_back({{}, {addRow(edge.from, bits)}, {}});
            rowOf(sheet_.nets.back().terminals.front()).bits = bits;
        }
        SheetNet& net = sheet_.nets[found->second];
        net.terminals.push_back(addRow(edge.to, edge.toBits));
        rowOf(net.terminals.back()).bits = edge.fromBits;
        net.signals.insert(net.signals.end(), edge.signals.begin(), edge.signals.end());
    }

    /// One end of a signal that no port drives alone.
    struct SignalEnd {
        const Graph::End* end;
        const std::set<int>* portBits;
        const std::set<int>* signalBits;
    };

    // Bits of one name are one net only as far as some end has them together.
    void addSignals() {
        for (auto& [node, ends] : signals_) {
            while (!ends.empty()) {
                std::set<int> bits = *ends.front().signalBits;
                const auto isInside = [&](const SignalEnd& end) {
                    return std::any_of(end.signalBits->begin(), end.signalBits->end(),
                                       [&](int bit) { return bits.count(bit) > 0; });
                };
                auto rest = ends.begin();
                for (auto before = ends.end(); rest != before;) {
                    before = rest;
                    rest = std::stable_partition(ends.begin(), ends.end(), isInside);
                    for (auto end = ends.begin(); end != rest; ++end)
                        bits.insert(end->signalBits->begin(), end->signalBits->end());
                }
                addSignal({ends.begin(), rest}, nameWithBits(graph_.nodes[node].name, bits));
                ends.erase(ends.begin(), rest);
            }
        }
    }

    void addSignal(const std::vector<SignalEnd>& ends, const std::string& name) {
        SheetNet net{{name}, {}, {}};
        for (const SignalEnd& end : ends) {
            net.terminals.push_back(addRow(*end.end, *end.portBits));
            rowOf(net.terminals.back()).bits = *end.signalBits;
        }
        if (ends.size() == 1) rowOf(net.terminals.front()).tie = shortened(name);
        else sheet_.nets.push_back(std::move(net));
    }

    void markParts(const SheetNet& net) {
        std::set<int> all;
        for (const Terminal& terminal : net.terminals)
            all.insert(rowOf(terminal).bits.begin(), rowOf(terminal).bits.end());
        for (const Terminal& terminal : net.terminals)
            if (rowOf(terminal).bits != all) rowOf(terminal).part = nameWithBits("", rowOf(terminal).bits);
    }

    // Rows get their lines: as the ports are declared, high bits first, each side for itself.
    void arrange(Box& box) {
        std::vector<Row*> rows;
        for (Row& row : box.rows) rows.push_back(&row);
        std::stable_sort(rows.begin(), rows.end(), [](const Row* a, const Row* b) { return a->order < b->order; });
        size_t left = box.head.size();
        size_t right = left;
        int leftWidth = 0;
        int rightWidth = 0;
        for (Row* const row : rows) {
            row->line = row->onRight ? right++ : left++;
            int& width = row->onRight ? rightWidth : leftWidth;
            width = std::max(width, textWidth(row->text, portSize) + (row->isClock ? wedgeSize : 0));
        }
        box.lines = static_cast<int>(std::max(left, right) + box.values.size());
        box.width = leftWidth + rightWidth + (leftWidth && rightWidth ? 2 * padding : 0);
        for (const std::string& text : box.head) box.width = std::max(box.width, textWidth(text, nameSize));
        for (const std::string& text : box.values) box.width = std::max(box.width, textWidth(text, smallSize));
        box.width += 2 * padding;
    }

    Sheet& sheet_;
    const Graph& graph_;
    std::vector<size_t> boxOfNode_;
    std::map<Driver, std::set<int>> bitsOfDriver_;
    std::map<Driver, size_t> netOfDriver_;
    std::map<size_t, std::vector<SignalEnd>> signals_; ///< by the node of the junction
};

} // namespace

int textWidth(std::string_view text, int fontSize) {
    return static_cast<int>(std::ceil(static_cast<double>(platform::characters(text)) * fontSize * 0.6));
}

Sheet::Sheet(ExpansionGraph from) : graph(std::move(from)) { SheetMaker(*this).make(); }

} // namespace hdnt::author::guide
