#include "author/guide/Schematic.internal.h"
#include "author/guide/Sheet.internal.h"
#include "author/guide/Svg.internal.h"
#include "author/guide/Wires.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <set>

namespace hdnt::author::guide {

namespace {

using Kind = ExpansionGraph::Kind;

constexpr size_t mostNodes = 300;
constexpr size_t mostEdges = 2000;
constexpr size_t mostNamed = 100; ///< instances and nets in the text
constexpr size_t mostSignals = 3; ///< in the name of a net
constexpr int border = 4;
constexpr int baseline = 4; ///< of a text, below the middle of its line
constexpr int point = 6;    ///< of a pin's tag

std::string at(int x, int y) { return std::to_string(x) + "," + std::to_string(y); }

class Drawing {
public:
    Drawing(const Sheet& sheet, const HDNTBlock& block, const PageLink& link, std::string_view idPrefix)
        : sheet_(sheet), wires_(sheet), block_(block), link_(link), idPrefix_(idPrefix) {}

    std::string draw() {
        for (const Box& box : sheet_.boxes)
            if (!box.isPin() && !linkOf(box).empty()) hasLinks_ = true;
        start();
        for (size_t i = 0; i < sheet_.nets.size(); ++i) drawNet(i);
        for (const Box& box : sheet_.boxes) box.isPin() ? drawPin(box) : drawBox(box);
        return svg_.close().str();
    }

private:
    // Readers would pass over the links in an image.
    void start() {
        int bottom = 0;
        for (const Box& box : sheet_.boxes) bottom = std::max(bottom, box.top + box.lines * lineHeight);
        for (const Wires::Net& net : wires_.nets())
            for (const Wires::Segment& segment : net.segments) bottom = std::max({bottom, segment.y1, segment.y2});
        const std::string width = std::to_string(wires_.width());
        const std::string height = std::to_string(bottom + 2 * border);
        const std::string title = idPrefix_ + "-title";
        const std::string description = idPrefix_ + "-desc";
        svg_.open("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                          {"class", "schematic"},
                          {"viewBox", "0 " + std::to_string(-border) + " " + width + " " + height},
                          {"width", width},
                          {"height", height},
                          {"role", hasLinks_ ? "group" : "img"},
                          {"aria-labelledby", title},
                          {"aria-describedby", description}});
        svg_.open("title", {{"id", title}}).write("Mapping of " + block_.getName()).close();
        svg_.open("desc", {{"id", description}}).write(alternative()).close();
    }

    std::string linkOf(const Box& box) const {
        const bool isInstance = box.node->kind == Kind::instance && box.node->block;
        return isInstance && link_ ? link_(*box.node->block) : "";
    }

    // --- texts

    std::string nameOf(const SheetNet::Terminal& terminal) const {
        const Box& box = sheet_.boxes[terminal.box];
        const std::string& port = sheet_.rowOf(terminal).text;
        return box.isPin() ? port : box.head.front() + " " + port;
    }

    // "s[0], s[1], s[2], ...: a O to b I, c I"
    std::string nameOf(const SheetNet& net) const {
        std::string text;
        size_t number = 0;
        for (const std::string& signal : std::set<std::string>(net.signals.begin(), net.signals.end())) {
            text += (number == 0 ? "" : ", ") + (number == mostSignals ? "..." : signal);
            if (number++ == mostSignals) break;
        }
        for (size_t i = 0; i < net.terminals.size(); ++i)
            text += (i == 0 ? ": " : i == 1 ? " to " : ", ") + nameOf(net.terminals[i]);
        return text;
    }

    std::string alternative() const {
        std::vector<std::string> instances;
        std::vector<std::string> nets;
        for (const Box& box : sheet_.boxes)
            if (!box.isPin()) instances.push_back(box.head[0] + " " + box.head[1]);
        for (const SheetNet& net : sheet_.nets) nets.push_back(nameOf(net));
        return "Instances: " + listed(instances) + ". Nets: " + listed(nets) + ".";
    }

    static std::string listed(const std::vector<std::string>& items) {
        std::string text;
        for (size_t i = 0; i < items.size() && i < mostNamed; ++i) text += (i == 0 ? "" : "; ") + items[i];
        if (items.size() > mostNamed) text += "; and " + std::to_string(items.size() - mostNamed) + " more";
        return items.empty() ? "none" : text;
    }

    // --- shapes

    void drawNet(size_t index) {
        const Wires::Net& net = wires_.nets()[index];
        svg_.open("g", {{"class", "net"}}).title(nameOf(sheet_.nets[index]));
        for (const bool isBus : {false, true}) {
            std::string path;
            for (const Wires::Segment& segment : net.segments) {
                if (segment.isBus != isBus) continue;
                path += (path.empty() ? "M" : " M") + at(segment.x1, segment.y1);
                path +=
                    segment.x1 == segment.x2 ? " V" + std::to_string(segment.y2) : " H" + std::to_string(segment.x2);
            }
            if (!path.empty()) svg_.add("path", {{"d", path}, {"class", isBus ? "wire bus" : "wire"}});
        }
        for (const Wires::Joint& joint : net.joints) svg_.circle(joint.x, joint.y, 2.5, "joint");
        svg_.close();
    }

    // A tag whose point, or points, show the way of the signal.
    void drawPin(const Box& box) {
        const Row& row = box.rows.front();
        const int left = wires_.leftOf(box);
        const int right = wires_.rightOf(box);
        const int top = box.top + 1;
        const int y = box.yOf(row);
        const int bottom = box.top + lineHeight - 1;
        const int start = left + (row.isBothWays ? point : 0);
        svg_.open("g", {{"class", row.onRight ? "pin left" : "pin right"}}).title(box.node->name);
        std::string corners = at(start, top) + " " + at(right - point, top) + " " + at(right, y) + " " +
                              at(right - point, bottom) + " " + at(start, bottom);
        if (row.isBothWays) corners += " " + at(left, y);
        svg_.add("polygon", {{"points", corners}, {"class", "tag"}});
        svg_.text(left + padding, y + baseline, "start", row.text, "port");
        drawLabels(box, row);
        svg_.close();
    }

    void drawBox(const Box& box) {
        const int left = wires_.leftOf(box);
        const int middle = left + box.width / 2;
        const std::string kind = box.node->kind == Kind::kept ? "box kept" : isMissing(box) ? "box missing" : "box";
        svg_.open("g", {{"class", kind}}).title(titleOf(box));
        const std::string link = linkOf(box);
        if (!link.empty()) svg_.open("a", {{"href", link}});
        const int height = box.lines * lineHeight + padding / 2;
        svg_.rectangle(left, box.top, box.width, height, "body");
        for (size_t i = 0; i < box.head.size(); ++i)
            svg_.text(middle, lineOf(box, i), "middle", box.head[i], i == 0 ? "name" : "type");
        if (!link.empty()) svg_.close();
        const int rule = box.top + static_cast<int>(box.head.size()) * lineHeight;
        if (!box.rows.empty()) svg_.line(left, rule, left + box.width, rule, "rule");
        for (const Row& row : box.rows) drawRow(box, row);
        const size_t first = static_cast<size_t>(box.lines) - box.values.size();
        for (size_t i = 0; i < box.values.size(); ++i)
            svg_.text(left + padding, lineOf(box, first + i), "start", box.values[i], "value");
        svg_.close();
    }

    static bool isMissing(const Box& box) {
        return box.node->kind == Kind::missing || (box.node->kind == Kind::instance && !box.node->block);
    }

    static std::string titleOf(const Box& box) {
        const std::string& type = box.node->type;
        std::string text = box.node->name + " " + (type.empty() ? box.head[1] : type);
        for (const std::string& value : box.node->properties) text += ", " + value;
        return text;
    }

    // Where a text stands that is in a line of the box.
    static int lineOf(const Box& box, size_t line) {
        return box.top + static_cast<int>(line) * lineHeight + lineHeight / 2 + baseline;
    }

    void drawRow(const Box& box, const Row& row) {
        const int edge = row.onRight ? wires_.rightOf(box) : wires_.leftOf(box);
        const int inwards = row.onRight ? -1 : 1;
        const int y = box.yOf(row);
        if (row.isClock)
            svg_.polyline(at(edge, y - 4) + " " + at(edge + inwards * wedgeSize, y) + " " + at(edge, y + 4), "wedge");
        svg_.text(edge + inwards * (padding + (row.isClock ? wedgeSize : 0)), y + baseline,
                  row.onRight ? "end" : "start", row.text, "port");
        drawLabels(box, row);
    }

    // What stands outside of the box.
    void drawLabels(const Box& box, const Row& row) {
        const int outwards = row.onRight ? 1 : -1;
        const int edge = row.onRight ? wires_.rightOf(box) : wires_.leftOf(box);
        const char* const anchor = row.onRight ? "start" : "end";
        const int y = box.yOf(row);
        const int wire = edge + outwards * (row.inverted ? bubbleSize : 0);
        if (row.inverted) svg_.circle(edge + outwards * bubbleSize / 2.0, y, bubbleSize / 2.0, "bubble");
        if (!row.tie.empty()) {
            svg_.add("path", {{"d", "M" + at(wire, y) + " H" + std::to_string(edge + outwards * stubLength)},
                              {"class", row.isBus ? "wire bus" : "wire"}});
            svg_.text(edge + outwards * (stubLength + labelGap), y + labelGap, anchor, row.tie, "tie");
        }
        if (!row.part.empty()) svg_.text(wire + outwards * labelGap, y - labelGap, anchor, row.part, "part");
    }

    const Sheet& sheet_;
    Wires wires_;
    const HDNTBlock& block_;
    const PageLink& link_;
    std::string idPrefix_;
    bool hasLinks_ = false;
    Svg svg_;
};

} // namespace

Schematic schematicOf(const HDNTExpansion& expansion, const PageLink& link, std::string_view idPrefix) {
    if (expansion.levels().size() != 1) return {"", expansion.levels().empty() ? "no mapping" : "more than one level"};
    ExpansionGraph graph(expansion);
    const size_t nodes = graph.nodes.size();
    const size_t edges = graph.edges.size();
    if (nodes > mostNodes || edges > mostEdges)
        return {"",
                "too large for a drawing: " + std::to_string(nodes) + " parts, " + std::to_string(edges) + " wires"};
    Sheet sheet(std::move(graph));
    std::string reason = placeBoxes(sheet);
    if (!reason.empty()) return {"", std::move(reason)};
    return {Drawing(sheet, *expansion.levels().front().block, link, idPrefix).draw(), ""};
}

} // namespace hdnt::author::guide
