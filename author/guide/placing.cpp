// Columns and the order in them are Graphviz's: first it ranks the boxes, then it orders them together with a small
// node for each net in each column that the net goes through. All is told and read in units, so that wires that could
// be straight are straight.
#include "author/guide/Graphviz.internal.h"
#include "author/guide/Sheet.internal.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace hdnt::author::guide {

namespace {

constexpr int unit = lineHeight / 2; ///< half a line: every other unit of a box is one that a wire can end at
constexpr double points = 18;        ///< of a unit, whole quarters of inches: Graphviz rounds what is not whole points
constexpr size_t mostCrossings = 3000;

std::string nodeName(size_t node) { return "n" + std::to_string(node); }

std::string sized(int units) { return "height=" + std::to_string(units * 0.25); }

/// What Graphviz joins: a node, at one of its ports.
struct Joint {
    std::string text;
    size_t node;
};

// All on the left with all on the right, by way of one each when they are many.
void join(std::string& text, const std::vector<Joint>& left, const std::vector<Joint>& right, const char* attributes) {
    const auto add = [&](const Joint& from, const Joint& to) {
        if (from.node != to.node) text += from.text + "->" + to.text + attributes + ";\n";
    };
    if (left.empty() || right.empty()) return;
    for (const Joint& to : right) add(left.front(), to);
    for (size_t i = 1; i < left.size(); ++i) add(left[i], right.front());
}

class Placer {
public:
    explicit Placer(Sheet& sheet) : sheet_(sheet) {}

    std::string place() {
        DotLayout ranks = laidOutByDot(rankedText(), sheet_.boxes.size());
        if (!ranks.reason.empty()) return ranks.reason;
        setColumns(ranks.centres);
        const size_t numCrossings = addCrossings();
        if (numCrossings > mostCrossings)
            return "too many lines go through " + std::to_string(sheet_.numColumns) + " columns";
        const DotLayout order = laidOutByDot(orderedText(), sheet_.boxes.size() + numCrossings);
        if (!order.reason.empty()) return order.reason;
        setPlaces(order.centres);
        return "";
    }

private:
    // Pins of the mapped block stand at its edges.
    std::string rankedText() const {
        std::string source;
        std::string sink;
        std::string text = "digraph{rankdir=LR;splines=none;nslimit=1;nslimit1=10;mclimit=0.01;"
                           "node[shape=box,fixedsize=true,width=1,height=1,label=\"\"];\n";
        for (size_t i = 0; i < sheet_.boxes.size(); ++i) {
            text += nodeName(i) + ";\n";
            if (sheet_.boxes[i].isPin()) (sheet_.boxes[i].rows.front().onRight ? source : sink) += nodeName(i) + ";";
        }
        if (!source.empty()) text += "{rank=source;" + source + "}\n";
        if (!sink.empty()) text += "{rank=sink;" + sink + "}\n";
        for (const SheetNet& net : sheet_.nets) {
            std::vector<Joint> left;
            std::vector<Joint> right;
            for (const SheetNet::Terminal& terminal : net.terminals)
                (sheet_.rowOf(terminal).onRight ? left : right).push_back({nodeName(terminal.box), terminal.box});
            join(text, left, right, "");
        }
        return text + "}\n";
    }

    void setColumns(const std::vector<Centre>& centres) {
        std::map<long, size_t> columns;
        for (const Centre& centre : centres) columns.emplace(std::lround(centre.x), 0);
        for (auto& [x, column] : columns) column = sheet_.numColumns++;
        for (size_t i = 0; i < centres.size(); ++i) sheet_.boxes[i].column = columns[std::lround(centres[i].x)];
    }

    // A net goes through the columns between the channels that it has rows in.
    size_t addCrossings() {
        size_t number = 0;
        for (SheetNet& net : sheet_.nets) {
            size_t first = sheet_.numColumns;
            size_t last = 0;
            for (const SheetNet::Terminal& terminal : net.terminals) {
                first = std::min(first, sheet_.channelOf(terminal));
                last = std::max(last, sheet_.channelOf(terminal));
            }
            for (size_t column = first; column < last; ++column) net.crossings.push_back({column, 0});
            number += net.crossings.size();
        }
        return number;
    }

    // In units, without the one that is free below everything.
    static int heightOf(const Box& box) { return 2 * box.lines + (box.isPin() ? 0 : 1); }

    std::string orderedText() const {
        std::string text = "digraph{rankdir=LR;splines=none;nodesep=0.25;ranksep=1;nslimit=2;nslimit1=10;mclimit=1;"
                           "node[shape=record,fixedsize=true,width=0.5,height=0.25,fontsize=1,label=\"\"];\n";
        std::vector<std::string> columns(sheet_.numColumns);
        for (size_t i = 0; i < sheet_.boxes.size(); ++i) {
            const Box& box = sheet_.boxes[i];
            text += nodeName(i) + "[" + sized(heightOf(box)) + ",label=\"" + fieldsOf(box) + "\"];\n";
            columns[box.column] += nodeName(i) + ";";
        }
        std::string edges;
        size_t node = sheet_.boxes.size();
        for (const SheetNet& net : sheet_.nets) {
            addChannels(edges, net, node);
            for (const SheetNet::Crossing& crossing : net.crossings) {
                text += nodeName(node) + ";\n";
                columns[crossing.column] += nodeName(node++) + ";";
            }
        }
        return text + columnsText(columns) + edges + "}\n";
    }

    // A field for each unit; those where wires end have names.
    static std::string fieldsOf(const Box& box) {
        std::vector<std::string> fields(static_cast<size_t>(heightOf(box)));
        for (const Row& row : box.rows) fields[2 * row.line] = "<f" + std::to_string(row.line) + ">";
        std::string text = fields.front();
        for (size_t i = 1; i < fields.size(); ++i) text += "|" + fields[i];
        return text;
    }

    // Every column has a node: its first ones hold them apart.
    static std::string columnsText(const std::vector<std::string>& columns) {
        std::string text;
        for (size_t i = 0; i < columns.size(); ++i) {
            text += "{rank=same;" + columns[i] + "}\n";
            const auto firstOf = [](const std::string& column) { return column.substr(0, column.find(';')); };
            if (i > 0) text += firstOf(columns[i - 1]) + "->" + firstOf(columns[i]) + "[weight=0,style=invis];\n";
        }
        return text;
    }

    void addChannels(std::string& text, const SheetNet& net, size_t firstCrossing) const {
        std::map<size_t, std::pair<std::vector<Joint>, std::vector<Joint>>> channels;
        for (const SheetNet::Crossing& crossing : net.crossings) {
            const Joint joint{nodeName(firstCrossing), firstCrossing};
            channels[crossing.column].second.push_back(joint);
            channels[crossing.column + 1].first.push_back(joint);
            ++firstCrossing;
        }
        for (const SheetNet::Terminal& terminal : net.terminals) {
            const Row& row = sheet_.rowOf(terminal);
            const Joint joint{nodeName(terminal.box) + ":f" + std::to_string(row.line), terminal.box};
            auto& channel = channels[sheet_.channelOf(terminal)];
            (row.onRight ? channel.first : channel.second).push_back(joint);
        }
        for (const auto& [number, channel] : channels) join(text, channel.first, channel.second, "[weight=2]");
    }

    // Rounding keeps what is apart by whole units apart. Should Graphviz have put two into one place, they are moved.
    void setPlaces(const std::vector<Centre>& centres) {
        struct Item {
            int top;
            int height;
            int* y;
            int offset;
        };
        std::vector<std::vector<Item>> columns(sheet_.numColumns);
        const auto add = [&](size_t column, size_t node, int height, int& y, int offset) {
            const double top = centres[node].y / points - height / 2.0;
            columns[column].push_back({static_cast<int>(std::lround(top)), height, &y, offset});
        };
        for (size_t i = 0; i < sheet_.boxes.size(); ++i)
            add(sheet_.boxes[i].column, i, heightOf(sheet_.boxes[i]), sheet_.boxes[i].top, 0);
        size_t node = sheet_.boxes.size();
        for (SheetNet& net : sheet_.nets)
            for (SheetNet::Crossing& crossing : net.crossings)
                add(crossing.column, node++, 1, crossing.y, lineHeight / 2);
        int top = columns.empty() || columns.front().empty() ? 0 : columns.front().front().top;
        for (const std::vector<Item>& column : columns)
            for (const Item& item : column) top = std::min(top, item.top);
        for (std::vector<Item>& column : columns) {
            std::stable_sort(column.begin(), column.end(), [](const Item& a, const Item& b) { return a.top < b.top; });
            int free = top;
            for (const Item& item : column) {
                const int place = std::max(item.top, free);
                *item.y = (place - top) * unit + item.offset;
                free = place + item.height + 1;
            }
        }
    }

    Sheet& sheet_;
};

} // namespace

std::string placeBoxes(Sheet& sheet) { return sheet.boxes.empty() ? "nothing to draw" : Placer(sheet).place(); }

} // namespace hdnt::author::guide
