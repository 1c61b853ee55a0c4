#pragma once

#include "author/expansion/ExpansionGraph.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::guide {

// A schematic between the graph of a mapping and its drawing. Lengths are in pixels, y downwards.

inline constexpr int lineHeight = 16; ///< of the lines of a box: names, ports and values
inline constexpr int padding = 7;     ///< between a box and the texts in it
inline constexpr int wedgeSize = 6;   ///< of a clock

/// One connection of a box. A port has several when parts of it lead elsewhere.
struct Row {
    std::string text; ///< the port's name with the bits of this connection
    bool onRight;
    bool inverted = false;
    bool isClock = false;
    bool isBus = false;
    bool isBothWays = false;
    std::pair<size_t, int> order = {}; ///< among the rows of its side
    size_t line = 0;                   ///< of the box
    std::string tie = {};              ///< instead of a net: "0", "1", or the name of a signal that leads nowhere
    std::string part = {};             ///< "[3:0]", of the net, when this is not all of it
    std::set<int> bits = {};           ///< those of the net
};

struct Box {
    const ExpansionGraph::Node* node;
    std::vector<std::string> head;   ///< lines of text above the rows; a pin of the mapped block has none, and one row
    std::vector<std::string> values; ///< and below
    std::vector<Row> rows;
    int lines; ///< head, rows of the longer side, values
    int width;
    size_t column = 0;
    int top = 0;

    bool isPin() const { return node->kind == ExpansionGraph::Kind::pin; }
    int yOf(const Row& row) const { return top + static_cast<int>(row.line) * lineHeight + lineHeight / 2; }
};

/// Rows that are connected, of one port and whatever it reaches; of a signal when no port drives it.
struct SheetNet {
    struct Terminal {
        size_t box;
        size_t row;
    };
    std::vector<std::string> signals; ///< whose bits it has
    std::vector<Terminal> terminals;
    /// Where it goes through a column, between two channels.
    struct Crossing {
        size_t column;
        int y;
    };
    std::vector<Crossing> crossings;
};

/// Boxes in columns, numbered from the left; between them channels for wires, channel c to the left of column c.
struct Sheet {
    explicit Sheet(ExpansionGraph from);
    Sheet(const Sheet&) = delete; // boxes point into the graph

    ExpansionGraph graph;
    std::vector<Box> boxes;
    std::vector<SheetNet> nets;
    size_t numColumns = 0;

    const Row& rowOf(const SheetNet::Terminal& terminal) const { return boxes[terminal.box].rows[terminal.row]; }
    size_t channelOf(const SheetNet::Terminal& terminal) const {
        return boxes[terminal.box].column + (rowOf(terminal).onRight ? 1 : 0);
    }
};

/// Gives boxes and crossings their places. Why not, when it does not; else empty.
std::string placeBoxes(Sheet& sheet);

/// Width of a text in a font of fixed width, whichever it is.
int textWidth(std::string_view text, int fontSize);
inline constexpr int nameSize = 11, portSize = 10, smallSize = 9; ///< of fonts

} // namespace hdnt::author::guide
