// Columns and the order in them are Graphviz's: first it ranks the boxes, then it orders them together with a small
// node for each net in each column that the net goes through. All is told and read in units, so that wires that could
// be straight are straight.
#include "author/guide/Graphviz.internal.h"
#include "author/guide/Sheet.internal.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>

namespace hdnt::author::guide {

namespace {

constexpr int unit = lineHeight / 2; ///< half a line: every other unit of a box is one that a wire can end at
constexpr int points = 18;           ///< of a unit, whole quarters of inches: Graphviz rounds what is not whole points
constexpr size_t mostCrossings = 2000;

std::string nodeName(size_t node) { return "n" + std::to_string(node); }

// All on the left with all on the right, by way of the first ones when they are many.
template <typename Item, typename Join>
void joinAll(const std::vector<Item>& left, const std::vector<Item>& right, Join&& join) {
    if (left.empty() || right.empty()) return;
    for (const Item& to : right) join(left.front(), to);
    for (size_t i = 1; i < left.size(); ++i) join(left[i], right.front());
}

/// Which boxes stand to the left of which. What leads back is left out, for a drawing that goes to the right, and since
/// Graphviz leaks what it turns round: best the outputs of clocked boxes.
class Flow {
public:
    explicit Flow(const Sheet& sheet) : followers_(sheet.boxes.size()) {
        std::vector<std::pair<size_t, size_t>> pairs;
        for (const SheetNet& net : sheet.nets) {
            std::vector<size_t> left;
            std::vector<size_t> right;
            for (const SheetNet::Terminal& terminal : net.terminals)
                (sheet.rowOf(terminal).onRight ? left : right).push_back(terminal.box);
            joinAll(left, right, [&](size_t from, size_t to) { pairs.emplace_back(from, to); });
        }
        std::stable_partition(pairs.begin(), pairs.end(),
                              [&](const auto& pair) { return !isClocked(sheet.boxes[pair.first]); });
        for (const auto& [from, to] : pairs)
            if (!leads(to, from)) followers_[from].insert(to);
    }

    const std::set<size_t>& followersOf(size_t box) const { return followers_[box]; }

private:
    static bool isClocked(const Box& box) {
        return std::any_of(box.rows.begin(), box.rows.end(), [](const Row& row) { return row.isClock; });
    }

    bool leads(size_t from, size_t to) const {
        std::vector<bool> isReached(followers_.size());
        std::vector<size_t> next = {from};
        while (!next.empty()) {
            const size_t box = next.back();
            next.pop_back();
            if (box == to) return true;
            if (isReached[box]) continue;
            isReached[box] = true;
            next.insert(next.end(), followers_[box].begin(), followers_[box].end());
        }
        return false;
    }

    std::vector<std::set<size_t>> followers_;
};

class Placer {
public:
    explicit Placer(Sheet& sheet) : sheet_(sheet) {}

    std::string place() {
        chooseEdges();
        const DotRanks ranks = rankedByDot(rankedText(), sheet_.boxes.size());
        if (!ranks.reason.empty()) return ranks.reason;
        setColumns(ranks.ranks);
        const size_t numCrossings = addCrossings();
        if (numCrossings > mostCrossings)
            return "too many lines go through " + std::to_string(sheet_.numColumns) + " columns";
        const DotLayout layout = laidOutByDot(orderedText(), sheet_.boxes.size() + numCrossings);
        if (!layout.reason.empty()) return layout.reason;
        setPlaces(layout.centres);
        return "";
    }

private:
    // The pins of the mapped block stand at its edges: for the ranks, the first of a side is all of them.
    void chooseEdges() {
        for (size_t i = sheet_.boxes.size(); i-- > 0;)
            if (sheet_.boxes[i].isPin()) (isInput(i) ? leftEdge_ : rightEdge_) = i;
    }

    bool isInput(size_t pin) const { return sheet_.boxes[pin].rows.front().onRight; }

    size_t rankedFor(size_t box) const {
        return !sheet_.boxes[box].isPin() ? box : isInput(box) ? *leftEdge_ : *rightEdge_;
    }

    // In its first phase Graphviz goes no further than to the ranks. It has constraints for edges, but leaks them.
    std::string rankedText() const {
        const Flow flow(sheet_);
        std::set<size_t> led;
        std::string text = "digraph{phase=1;nslimit1=10;node[label=\"\"];\n";
        const auto add = [&](size_t from, size_t to, const char* attributes) {
            text += nodeName(rankedFor(from)) + "->" + nodeName(rankedFor(to)) + attributes + ";\n";
        };
        for (size_t i = 0; i < sheet_.boxes.size(); ++i) {
            text += nodeName(rankedFor(i)) + ";\n";
            for (const size_t follower : flow.followersOf(i)) {
                add(i, follower, "");
                led.insert(follower);
            }
        }
        const char* const order = "[weight=0]";
        for (size_t i = 0; i < sheet_.boxes.size(); ++i) {
            if (sheet_.boxes[i].isPin()) continue;
            if (leftEdge_ && led.count(i) == 0) add(*leftEdge_, i, order);
            if (rightEdge_ && flow.followersOf(i).empty()) add(i, *rightEdge_, order);
        }
        if (leftEdge_ && rightEdge_) add(*leftEdge_, *rightEdge_, order);
        return text + "}\n";
    }

    void setColumns(const std::vector<int>& ranks) {
        std::map<int, size_t> columns;
        for (size_t i = 0; i < ranks.size(); ++i) columns.emplace(ranks[rankedFor(i)], 0);
        for (auto& [rank, column] : columns) column = sheet_.numColumns++;
        for (size_t i = 0; i < ranks.size(); ++i) sheet_.boxes[i].column = columns[ranks[rankedFor(i)]];
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
                           "node[shape=plain,width=0.5,height=0.25,label=\"\"];\n";
        std::vector<std::string> columns(sheet_.numColumns);
        for (size_t i = 0; i < sheet_.boxes.size(); ++i) {
            const Box& box = sheet_.boxes[i];
            text += nodeName(i) + "[label=" + tableOf(box) + "];\n";
            columns[box.column] += nodeName(i) + ";";
        }
        std::string edges;
        size_t node = sheet_.boxes.size();
        for (const SheetNet& net : sheet_.nets) {
            addChannels(edges, net, node);
            for (const SheetNet::Crossing& crossing : net.crossings) {
                text += nodeName(node) + "[shape=box,fixedsize=true];\n";
                columns[crossing.column] += nodeName(node++) + ";";
            }
        }
        return text + columnsText(columns) + edges + "}\n";
    }

    // A cell for each row, of the unit that its wire ends at, and others between them.
    static std::string tableOf(const Box& box) {
        std::set<size_t> lines;
        for (const Row& row : box.rows) lines.insert(row.line);
        std::string text = "<<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"0\">";
        const auto add = [&](const std::string& port, size_t units) {
            if (units > 0)
                text += "<TR><TD" + port + " FIXEDSIZE=\"TRUE\" WIDTH=\"36\" HEIGHT=\"" +
                        std::to_string(units * points) + "\"></TD></TR>";
        };
        size_t used = 0;
        for (const size_t line : lines) {
            add("", 2 * line - used);
            add(" PORT=\"f" + std::to_string(line) + "\"", 1);
            used = 2 * line + 1;
        }
        add("", static_cast<size_t>(heightOf(box)) - used);
        return text + "</TABLE>>";
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
        std::map<size_t, std::pair<std::vector<std::string>, std::vector<std::string>>> channels;
        for (const SheetNet::Crossing& crossing : net.crossings) {
            const std::string node = nodeName(firstCrossing++);
            channels[crossing.column].second.push_back(node);
            channels[crossing.column + 1].first.push_back(node);
        }
        for (const SheetNet::Terminal& terminal : net.terminals) {
            const Row& row = sheet_.rowOf(terminal);
            auto& channel = channels[sheet_.channelOf(terminal)];
            (row.onRight ? channel.first : channel.second)
                .push_back(nodeName(terminal.box) + ":f" + std::to_string(row.line));
        }
        for (const auto& [number, channel] : channels)
            joinAll(channel.first, channel.second, [&](const std::string& from, const std::string& to) {
                text.append(from).append("->").append(to).append(";\n");
            });
    }

    /// What stands in a column.
    struct Item {
        int top; ///< in units
        int height;
        int* y;
        int offset; ///< of that from its top
    };

    void setPlaces(const std::vector<Centre>& centres) {
        std::vector<std::vector<Item>> columns(sheet_.numColumns);
        const auto add = [&](size_t column, size_t node, int height, int& y, int offset) {
            const double top = centres[node].y / points - height / 2.0;
            columns[column].push_back({static_cast<int>(std::floor(top + 0.5)), height, &y, offset});
        };
        for (size_t i = 0; i < sheet_.boxes.size(); ++i)
            add(sheet_.boxes[i].column, i, heightOf(sheet_.boxes[i]), sheet_.boxes[i].top, 0);
        size_t node = sheet_.boxes.size();
        for (SheetNet& net : sheet_.nets)
            for (SheetNet::Crossing& crossing : net.crossings)
                add(crossing.column, node++, 1, crossing.y, lineHeight / 2);
        int top = columns.front().front().top;
        for (std::vector<Item>& column : columns) {
            std::stable_sort(column.begin(), column.end(), [](const Item& a, const Item& b) { return a.top < b.top; });
            top = std::min(top, column.front().top);
        }
        for (const std::vector<Item>& column : columns) setHeights(column, top);
    }

    // Rounding keeps what is apart by whole units apart. Should Graphviz have put two into one place, they are moved.
    static void setHeights(const std::vector<Item>& column, int top) {
        int free = top;
        for (const Item& item : column) {
            const int place = std::max(item.top, free);
            *item.y = (place - top) * unit + item.offset;
            free = place + item.height + 1;
        }
    }

    Sheet& sheet_;
    std::optional<size_t> leftEdge_;
    std::optional<size_t> rightEdge_;
};

} // namespace

std::string placeBoxes(Sheet& sheet) { return sheet.boxes.empty() ? "nothing to draw" : Placer(sheet).place(); }

} // namespace hdnt::author::guide
