#include "author/expansion/ExpansionGraph.h"
#include "author/expansion/ExpansionText.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author {

namespace {

using Graph = ExpansionGraph;

std::string html(const std::string& text) {
    std::string result;
    for (const char c : platform::printable(text))
        result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
    return result;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : platform::printable(text)) result += (c == '"' || c == '\\' ? "\\" : "") + std::string(1, c);
    return result + '"';
}

std::string nodeName(size_t node) { return "n" + std::to_string(node); }

std::string cellText(const Graph::Node& node, const std::vector<size_t>& side, size_t row) {
    if (row >= side.size()) return "<TD></TD>";
    const Graph::Port& port = node.ports[side[row]];
    return "<TD PORT=\"p" + std::to_string(side[row]) + "\">" + html(nameWithBits(port.base, port.bits)) + "</TD>";
}

std::string titleText(const Graph::Node& node) {
    std::string rest = html(node.type) + (node.block ? "" : "<BR/>(no such block)");
    if (node.kind == Graph::Kind::missing) rest = "(no such instance)";
    if (node.kind == Graph::Kind::kept) rest = "(stays)";
    return "<B>" + html(node.name) + "</B><BR/>" + rest;
}

std::string tableText(const Graph::Node& node) {
    std::vector<size_t> left;
    std::vector<size_t> right;
    for (size_t i = 0; i < node.ports.size(); ++i) (node.ports[i].onRight ? right : left).push_back(i);
    std::string text = "<TABLE BORDER=\"0\" CELLBORDER=\"1\" CELLSPACING=\"0\"><TR><TD COLSPAN=\"2\">" +
                       titleText(node) + "</TD></TR>";
    for (size_t row = 0; row < std::max(left.size(), right.size()); ++row)
        text += "<TR>" + cellText(node, left, row) + cellText(node, right, row) + "</TR>";
    for (const std::string& row : node.properties)
        text += "<TR><TD COLSPAN=\"2\" ALIGN=\"LEFT\">" + html(row) + "</TD></TR>";
    return text + "</TABLE>";
}

std::string attributesOf(const Graph::Node& node) {
    std::set<int> bits;
    for (const Graph::Port& port : node.ports) bits.insert(port.bits.begin(), port.bits.end());
    const std::string label = "label=" + quoted(nameWithBits(node.name, bits));
    switch (node.kind) {
    case Graph::Kind::pin: return "shape=box, style=\"rounded,filled\", fillcolor=\"#e8eef7\", " + label;
    case Graph::Kind::constant:
        return "shape=square, style=filled, fillcolor=\"#f3e3c3\", width=0.25, margin=0.02, " + label;
    case Graph::Kind::junction: return "shape=ellipse, style=dashed, height=0.2, margin=0.03, " + label;
    default: return "label=<" + tableText(node) + ">";
    }
}

class DotText {
public:
    explicit DotText(const HDNTExpansion& expansion)
        : levels_(expansion.levels()), graph_(expansion), nodesOfLevel_(levels_.size()) {
        for (size_t node = 0; node < graph_.nodes.size(); ++node)
            nodesOfLevel_[graph_.nodes[node].level].push_back(node);
    }

    std::string text() const {
        std::string text = "digraph " + quoted(levels_.front().block->getName()) +
                           " {\n  rankdir=LR;\n  labelloc=t;\n  fontname=\"sans-serif\";\n"
                           "  node [shape=plain, fontname=\"sans-serif\", fontsize=11];\n"
                           "  edge [fontname=\"sans-serif\", fontsize=9, arrowsize=0.6];\n";
        text += levelText(0, "  ");
        for (const Graph::Edge& edge : graph_.edges) text += edgeText(edge);
        return text + "}\n";
    }

private:
    const Graph::Node& nodeOf(const Graph::End& end) const { return graph_.nodes[end.node]; }
    const Graph::Port& portOf(const Graph::End& end) const { return nodeOf(end).ports[end.port]; }

    std::string portName(const Graph::End& end) const {
        const Graph::Kind kind = nodeOf(end).kind;
        if (kind == Graph::Kind::pin || kind == Graph::Kind::constant || kind == Graph::Kind::junction)
            return nodeName(end.node);
        return nodeName(end.node) + ":p" + std::to_string(end.port) + (portOf(end).onRight ? ":e" : ":w");
    }

    // The blocks of a level, and in it as clusters those that were expanded.
    std::string levelText(size_t level, const std::string& indent) const {
        const HDNTExpansion::Level& here = levels_[level];
        std::string label = html(here.block->getName()) + " " + std::string(words::sections.wordOf(here.section));
        if (level > 0) label.insert(0, html(here.path.substr(here.path.rfind('/') + 1)) + ": ");
        for (const HDNTExpansion::Call& call : here.calls) label += "<BR/>" + html(callText(call));
        std::string text = indent + "label=<" + label + ">;\n";
        for (const size_t node : nodesOfLevel_[level])
            text.append(indent).append(nodeName(node) + " [" + attributesOf(graph_.nodes[node]) + "];\n");
        for (const HDNTExpansion::Instance& instance : here.instances) {
            if (instance.level == HDNTExpansion::none) continue;
            text.append(indent).append("subgraph cluster_").append(std::to_string(instance.level)).append(" {\n");
            text.append(levelText(instance.level, indent + "  ")).append(indent).append("}\n");
        }
        return text;
    }

    std::string edgeText(const Graph::Edge& edge) const {
        std::string attributes;
        const auto add = [&](const std::string& text) { attributes += (attributes.empty() ? "" : ", ") + text; };
        if (!edge.directed && !edge.from.inverted && !edge.to.inverted) add("dir=none");
        const std::string head = edge.to.inverted ? "odot" : "";
        const std::string shape = edge.directed ? head + "normal" : head;
        if (edge.directed ? edge.to.inverted : edge.from.inverted || edge.to.inverted)
            add("arrowhead=" + (shape.empty() ? "none" : shape));
        if (edge.from.inverted) add("dir=both, arrowtail=odot");
        const std::string& start = portOf(edge.from).base;
        if (edge.fromBits.size() > 1 || edge.toBits.size() > 1) {
            const std::string from = nameWithBits(start, edge.fromBits);
            const std::string to = nameWithBits(portOf(edge.to).base, edge.toBits);
            add("penwidth=3, label=" + quoted(from == to || start.empty() ? to : from + " to " + to));
        } else if (nodeOf(edge.from).kind != Graph::Kind::constant) {
            add("label=" + quoted(edge.signals.front()));
        }
        return "  " + portName(edge.from) + " -> " + portName(edge.to) +
               (attributes.empty() ? "" : " [" + attributes + "]") + ";\n";
    }

    const std::vector<HDNTExpansion::Level>& levels_;
    ExpansionGraph graph_;
    std::vector<std::vector<size_t>> nodesOfLevel_;
};

} // namespace

std::string expansionDot(const HDNTExpansion& expansion) { return DotText(expansion).text(); }

} // namespace hdnt::author
