// Drawings of mappings, read back: what is in the SVG is held against the expansion.
#include "author/guide/Schematic.internal.h"
#include "tests/support/Library.h"

#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

using hdnt::author::guide::Schematic;
using hdnt::author::guide::schematicOf;

namespace {

using Tree = boost::property_tree::ptree;

// get<int> looks uninitialized to g++ 12 under sanitizers.
int numberIn(const Tree& element, const std::string& attribute) {
    return std::stoi(element.get<std::string>("<xmlattr>." + attribute));
}

struct Line {
    int x1, y1, x2, y2; ///< the first is the less
    size_t net;

    bool isFlat() const { return y1 == y2; }
    bool has(int x, int y) const { return x1 <= x && x <= x2 && y1 <= y && y <= y2; }
    bool endsAt(int x, int y) const { return (x == x1 && y == y1) || (x == x2 && y == y2); }
};

struct Shape {
    int left, top, right, bottom;
};

/// Where a wire can end: the port of an instance, or a pin of the mapped block, whose instance is "".
struct Place {
    std::string instance;
    std::string port; ///< "D[7:4,2]"
    int x, y;
    int outwards; ///< 1: its wire goes to the right

    bool hasPin(const std::string& pin) const {
        const size_t open = port.find('[');
        if (pin == port || pin == port.substr(0, open)) return true;
        if (open == port.npos || pin.rfind(port.substr(0, open + 1), 0) != 0) return false;
        const int bit = std::stoi(pin.substr(open + 1));
        std::istringstream ranges(port.substr(open + 1));
        for (std::string range; std::getline(ranges, range, ',');) {
            const size_t colon = range.find(':');
            if (std::stoi(range) >= bit && bit >= std::stoi(range.substr(colon == range.npos ? 0 : colon + 1)))
                return true;
        }
        return false;
    }
};

class Drawing {
public:
    explicit Drawing(const std::string& svg) {
        std::istringstream stream(svg);
        Tree tree;
        boost::property_tree::read_xml(stream, tree);
        for (const auto& [tag, group] : tree.get_child("svg")) {
            if (tag != "g") continue;
            const std::string kind = group.get<std::string>("<xmlattr>.class");
            if (kind == "net") readNet(group);
            else if (kind.rfind("pin", 0) == 0) readPin(group, kind == "pin left");
            else readBox(group);
        }
    }

    /// What a reader of the drawing would call wrong, as text.
    std::string faults() const {
        std::string text;
        for (const Line& line : lines)
            for (const Shape& shape : shapes)
                if (line.x1 < shape.right && line.x2 > shape.left && line.y1 < shape.bottom && line.y2 > shape.top)
                    text += textOf(line) + " runs through a box\n";
        for (const Line& a : lines)
            for (const Line& b : lines)
                if (a.net < b.net && touch(a, b)) text += textOf(a) + " touches " + textOf(b) + "\n";
        for (size_t net = 0; net < numNets; ++net)
            if (!isInOnePiece(net)) text += "net " + std::to_string(net) + " is in pieces\n";
        return text + looseEnds();
    }

    /// The nets that end at the rows of a pin; "0" or another text for what is tied there.
    std::set<std::string> at(const std::string& instance, const std::string& pin) const {
        std::set<std::string> found;
        for (const Place& place : places) {
            if (place.instance != instance || !place.hasPin(pin)) continue;
            for (const auto& [position, text] : ties)
                if (position.second == place.y && (position.first - place.x) * place.outwards > 0 &&
                    std::abs(position.first - place.x) < 20)
                    found.insert("=" + text);
            for (const Line& line : lines)
                if (endsAt(line, place)) found.insert(std::to_string(line.net));
        }
        return found;
    }

    std::vector<Line> lines;
    std::vector<Line> joints; ///< of no length
    std::vector<Shape> shapes;
    std::vector<Place> places;
    std::map<std::pair<int, int>, std::string> ties;
    std::vector<std::string> titles;
    size_t numNets = 0;

private:
    static bool endsAt(const Line& line, const Place& place) {
        return line.endsAt(place.x, place.y) || line.endsAt(place.x + 6 * place.outwards, place.y); // behind a bubble
    }

    static std::string textOf(const Line& line) {
        return "net " + std::to_string(line.net) + " at " + std::to_string(line.x1) + "," + std::to_string(line.y1);
    }

    // Crossing in the middle of both is allowed.
    static bool touch(const Line& a, const Line& b) {
        if (a.x1 > b.x2 || b.x1 > a.x2 || a.y1 > b.y2 || b.y1 > a.y2) return false;
        if (a.isFlat() == b.isFlat()) return true;
        const Line& flat = a.isFlat() ? a : b;
        const Line& steep = a.isFlat() ? b : a;
        return steep.x1 == flat.x1 || steep.x1 == flat.x2 || flat.y1 == steep.y1 || flat.y1 == steep.y2;
    }

    // Pieces of a net that meet in a corner, or where a dot says that they do.
    bool areJoined(const Line& a, const Line& b) const {
        for (const auto& [x, y] : {std::pair(a.x1, a.y1), std::pair(a.x2, a.y2)})
            if (b.endsAt(x, y)) return true;
        return std::any_of(joints.begin(), joints.end(), [&](const auto& joint) {
            return a.net == joint.net && a.has(joint.x1, joint.y1) && b.has(joint.x1, joint.y1);
        });
    }

    bool isInOnePiece(size_t net) const {
        std::vector<const Line*> rest;
        for (const Line& line : lines)
            if (line.net == net) rest.push_back(&line);
        std::vector<const Line*> reached(1, rest.back());
        rest.pop_back();
        for (size_t i = 0; i < reached.size(); ++i)
            for (size_t j = rest.size(); j-- > 0;) {
                if (!areJoined(*reached[i], *rest[j])) continue;
                reached.push_back(rest[j]);
                rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(j));
            }
        return rest.empty();
    }

    std::string looseEnds() const {
        std::string text;
        for (const Line& line : lines)
            for (const auto& [x, y] : {std::pair(line.x1, line.y1), std::pair(line.x2, line.y2)}) {
                size_t met = 0;
                for (const Line& other : lines) met += other.net == line.net && other.has(x, y) ? 1 : 0;
                for (const Place& place : places) met += endsAt(Line{x, y, x, y, 0}, place) ? 1 : 0;
                if (met < 2) text += textOf(line) + " has a loose end\n";
            }
        return text;
    }

    void readNet(const Tree& group) {
        for (const auto& [tag, path] : group) {
            if (tag == "circle") {
                const int x = numberIn(path, "cx");
                const int y = numberIn(path, "cy");
                joints.push_back({x, y, x, y, numNets});
            }
            if (tag != "path") continue;
            std::istringstream steps(path.get<std::string>("<xmlattr>.d"));
            int x = 0, y = 0;
            for (char step = 0, comma = 0; steps >> step;) {
                if (step == 'M') {
                    steps >> x >> comma >> y;
                    continue;
                }
                int to = 0;
                steps >> to;
                int& moved = step == 'H' ? x : y;
                const int from = std::exchange(moved, to);
                lines.push_back(step == 'H' ? Line{std::min(from, to), y, std::max(from, to), y, numNets}
                                            : Line{x, std::min(from, to), x, std::max(from, to), numNets});
            }
        }
        ++numNets;
    }

    void readPin(const Tree& group, bool drives) {
        std::istringstream points(group.get<std::string>("polygon.<xmlattr>.points"));
        std::vector<std::pair<int, int>> corners;
        for (int x = 0, y = 0; points >> x && points.ignore() && points >> y;) corners.emplace_back(x, y);
        const auto [first, last] = std::minmax_element(corners.begin(), corners.end());
        shapes.push_back({first->first, corners[0].second, last->first, corners[3].second});
        const std::string name = group.get<std::string>("text");
        places.push_back({"", name, drives ? last->first : first->first, last->second, drives ? 1 : -1});
        readTies(group);
    }

    void readBox(const Tree& group) {
        const Tree& owner = group.count("a") ? group.get_child("a") : group;
        const Tree& body = owner.get_child("rect");
        const int left = numberIn(body, "x");
        const int top = numberIn(body, "y");
        const Shape shape{left, top, left + numberIn(body, "width"), top + numberIn(body, "height")};
        shapes.push_back(shape);
        titles.push_back(group.get<std::string>("title"));
        for (const auto& [tag, text] : group) {
            if (tag != "text" || text.get<std::string>("<xmlattr>.class") != "port") continue;
            const bool isLeft = text.get<std::string>("<xmlattr>.text-anchor") == "start";
            places.push_back({owner.get<std::string>("text"), text.data(), isLeft ? shape.left : shape.right,
                              numberIn(text, "y") - 4, isLeft ? -1 : 1});
        }
        readTies(group);
    }

    void readTies(const Tree& group) {
        for (const auto& [tag, text] : group)
            if (tag == "text" && text.get<std::string>("<xmlattr>.class") == "tie")
                ties[{numberIn(text, "x"), numberIn(text, "y") - 3}] = text.data();
    }
};

std::string pageOf(const HDNTBlock& block) { return block.getName() + ".html?a&b"; }

// The drawing must say what the expansion says: all pins of a signal at one net, or the text of what they are tied to.
void hold(const Drawing& drawing, const HDNTExpansion::Level& level) {
    EXPECT_EQ(drawing.faults(), "") << level.block->getName();
    std::map<std::string, std::vector<const HDNTExpansion::Connection*>> signals;
    for (const auto& connection : level.connections) signals[connection.signal].push_back(&connection);
    std::set<std::string> nets;
    for (const auto& [signal, connections] : signals) {
        const std::string tie = signal[0] == '@' ? signal.substr(1) : connections.size() == 1 ? signal : "";
        std::set<std::string> met;
        for (const auto* connection : connections) {
            const bool isKept = connection->instance.empty() && level.section == HDNTNetlist::Section::modifiedby;
            const std::string& instance = isKept ? level.block->getName() : connection->instance;
            const std::set<std::string> here = drawing.at(instance, connection->pin);
            EXPECT_EQ(here.size(), 1U) << level.block->getName() << " " << connection->instance << " "
                                       << connection->pin;
            met.insert(here.begin(), here.end());
        }
        EXPECT_EQ(met.size(), 1U) << level.block->getName() << " " << signal;
        if (!tie.empty()) EXPECT_EQ(met.count("=" + tie), 1U) << level.block->getName() << " " << signal;
        else nets.insert(met.begin(), met.end());
    }
    EXPECT_EQ(nets.size(), drawing.numNets) << level.block->getName();
}

/// Draws a mapping of a block HOLD to AND_2, STORE and PAD.
class Mapping {
public:
    explicit Mapping(const std::string& netlist, const std::string& section = "mapsto")
        : library_(support::loaded("library \"L\" {\n"
                                   "block \"AND_2\" { pin \"A[1:0]\" input; pin \"O\" output; }\n"
                                   "block \"STORE\" { pin \"D\" input; pin \"C\" input clock; pin \"Q\" output; }\n"
                                   "block \"PAD\" { pin \"P\" bidir; }\n"
                                   "block \"HOLD\" { pin \"D\" input; pin \"C\" input; pin \"W[7:0]\" input;\n"
                                   "pin \"X\" bidir; pin \"Q\" output; pin \"V[7:0]\" output; } " +
                                   section + " {\n" + netlist + "\n} }")),
          expansion_(*library_->getTypeBlockByName("HOLD", false)) {
        expansion_.expand();
    }

    Schematic draw(const hdnt::author::guide::PageLink& link = pageOf) const {
        return schematicOf(expansion_, link, "m");
    }

    Drawing held() const {
        const Schematic schematic = draw();
        EXPECT_EQ(schematic.reason, "");
        Drawing drawing(schematic.svg);
        hold(drawing, expansion_.levels().front());
        return drawing;
    }

private:
    support::Reports reports_;
    std::unique_ptr<HDNTLibrary> library_;
    HDNTExpansion expansion_;
};

std::string instances(const std::string& type, int number) {
    std::string text;
    for (int i = 0; i < number; ++i) text += "inst \"" + type + std::to_string(i) + "\" \"" + type + "\";\n";
    return text;
}

/// Each input gets something that drives, or a constant, or nothing; pads are joined in groups.
std::string randomNetlist(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    const int number = 1 + below(12);
    const int pads = below(4);
    std::vector<std::string> drivers = {"\"D\"", "\"C\"", "\"W[0]\"", "\"W[1]\"", "\"W[2]\""};
    std::vector<std::string> takers = {"\"Q\"", "\"V[7]\"", "\"V[6]\"", "\"V[5]\""};
    for (int i = 0; i < number; ++i) {
        const std::string suffix = std::to_string(i) + "\" \"";
        for (const char* const pin : {"A[0]", "A[1]"}) takers.push_back("\"AND_2" + suffix + pin + '"');
        for (const char* const pin : {"D", "C", "~D"}) takers.push_back("\"STORE" + suffix + pin + '"');
        drivers.insert(drivers.end(), {"\"AND_2" + suffix + "O\"", "\"STORE" + suffix + "Q\""});
    }
    std::map<std::string, std::string> signals;
    for (size_t i = 0; i < takers.size(); ++i) {
        if (takers[i].find('~') != std::string::npos || below(5) == 0) continue;
        const size_t driver = static_cast<size_t>(below(static_cast<int>(drivers.size()) + 1));
        std::string& connected = signals[driver < drivers.size() ? "s" + std::to_string(driver) : "@1"];
        connected += (connected.empty() && driver < drivers.size() ? drivers[driver] + ", "
                      : connected.empty()                          ? ""
                                                                   : ", ") +
                     takers[i];
    }
    for (int i = 0; i < pads; ++i) {
        std::string& connected = signals["p" + std::to_string(below(2))];
        connected += (connected.empty() ? "" : ", ") + ("\"PAD" + std::to_string(i)) + "\" \"P\"";
    }
    std::string text = instances("AND_2", number) + instances("STORE", number) + instances("PAD", pads);
    for (const auto& [signal, connected] : signals)
        text += "signal \"" + signal + "\"; connect \"" + signal + "\" : " + connected + ";\n";
    return text;
}

} // namespace

TEST(SchematicTest, ShippedMappings) {
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    HDNTLibraryMgr::m_archEnumInfo = 1;
    size_t number = 0;
    const HDNTLibrary& library = *HDNTLibraryMgr::getCommonLibrary();
    for (size_t i = 0; i < library.getNumTypeBlocks(true); ++i)
        for (const char* const architecture : {"copper", "harbor", "meadow"}) {
            HDNTBlock& block = *library.getTypeBlock(i);
            HDNTExpansion expansion(block, architecture);
            expansion.expand();
            if (expansion.levels().empty()) continue;
            const Schematic schematic = schematicOf(expansion, pageOf, "m");
            EXPECT_EQ(schematic.reason, "") << block.getName();
            if (schematic.reason.empty()) hold(Drawing(schematic.svg), expansion.levels().front());
            EXPECT_EQ(schematicOf(expansion, pageOf, "m").svg, schematic.svg) << block.getName();
            ++number;
        }
    EXPECT_GT(number, 150U);
}

TEST(SchematicTest, WhatANetlistMayHold) {
    const std::string loop =
        "connect \"f\" : \"STORE0\" \"Q\", \"STORE1\" \"D\"; connect \"g\" : \"STORE1\" \"Q\", \"STORE0\" \"D\";";
    std::string split;
    for (const char bit : std::string("76543210"))
        split += std::string("connect \"w[") + bit + "]\" : \"W[" + bit + "]\", \"STORE" + bit + "\" \"D\";\n";
    const struct {
        const char* what;
        std::string netlist;
        size_t boxes, nets;
    } cases[] = {
        {"alone", instances("STORE", 1), 1, 0},
        {"through", "signal \"w\"; connect \"w\" : \"D\", \"Q\";", 0, 1},
        {"back", instances("STORE", 2) + "signal \"f\"; signal \"g\";" + loop, 2, 2},
        {"to itself", instances("AND_2", 1) + "signal \"f\"; connect \"f\" : \"AND_20\" \"O\", \"AND_20\" \"A[0]\";", 1,
         1},
        {"split", instances("STORE", 8) + "signal \"w[7:0]\";\n" + split, 8, 1},
        {"turned round",
         instances("AND_2", 1) + "signal \"w[1:0]\"; connect \"w[0]\" : \"W[0]\", \"AND_20\" \"A[1]\";"
                                 "connect \"w[1]\" : \"W[1]\", \"AND_20\" \"A[0]\";",
         1, 1},
        {"inverted",
         instances("STORE", 1) + "signal \"w\"; signal \"v\"; connect \"w\" : \"D\", \"STORE0\" \"~D\";"
                                 "connect \"v\" : \"STORE0\" \"~Q\", \"Q\";",
         1, 2},
        {"without direction",
         instances("PAD", 3) + "signal \"w\"; connect \"w\" : \"PAD0\" \"P\", \"PAD1\" \"P\", \"PAD2\" \"P\";", 3, 1},
        {"bits without direction",
         instances("PAD", 6) + "signal \"w[1:0]\"; connect \"w[0]\" : \"PAD0\" \"P\", \"PAD1\" \"P\", \"PAD2\" \"P\";"
                               "connect \"w[1]\" : \"PAD3\" \"P\", \"PAD4\" \"P\", \"PAD5\" \"P\";",
         6, 2},
        {"to nowhere", instances("STORE", 1) + "signal \"w\"; connect \"w\" : \"STORE0\" \"Q\";", 1, 0},
        {"tied", instances("STORE", 1) + "signal \"@1\"; connect \"@1\" : \"STORE0\" \"D\", \"Q\";", 1, 0},
    };
    for (const auto& [what, netlist, boxes, nets] : cases) {
        SCOPED_TRACE(what);
        const Drawing drawing = Mapping(netlist).held();
        EXPECT_EQ(drawing.titles.size(), boxes);
        EXPECT_EQ(drawing.numNets, nets);
    }
    EXPECT_EQ(Mapping("signal \"w\"; connect \"w\" : \"X\", \"D\";", "modifiedby").held().titles.size(), 1U);
}

TEST(SchematicTest, RandomNetlists) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        Mapping(randomNetlist(seed)).held();
        if (HasFailure()) break;
    }
}

TEST(SchematicTest, NamesAndLinks) {
    const Mapping mapping("inst \"a<b>&'\xff\" \"STORE\"; inst \"none\" \"ELSEWHERE\";"
                          "signal \"w\"; connect \"w\" : \"D\", \"a<b>&'\xff\" \"D\", \"none\" \"D\", \"gone\" \"I\";");
    const Schematic linked = mapping.draw();
    const Drawing drawing(linked.svg);
    EXPECT_EQ(drawing.faults(), "");
    EXPECT_EQ(drawing.titles, (support::Texts{"a<b>&'\\xff STORE", "none ELSEWHERE", "gone (no such instance)"}));
    EXPECT_NE(linked.svg.find("<a href=\"STORE.html?a&amp;b\">"), std::string::npos);
    EXPECT_EQ(linked.svg.find("ELSEWHERE.html"), std::string::npos);
    // Links inside an image are none for screen readers.
    EXPECT_NE(linked.svg.find("role=\"group\""), std::string::npos);
    for (const hdnt::author::guide::PageLink& link :
         {hdnt::author::guide::PageLink(), {[](const HDNTBlock&) { return ""; }}})
        EXPECT_NE(mapping.draw(link).svg.find("role=\"img\""), std::string::npos);
}

TEST(SchematicTest, WhatIsNotDrawn) {
    EXPECT_EQ(Mapping("").draw().reason, "nothing to draw");
    EXPECT_EQ(Mapping(instances("STORE", 300)).draw().reason, "");
    EXPECT_EQ(Mapping(instances("STORE", 301)).draw().reason, "too large for a drawing: 301 parts, 0 wires");
}
