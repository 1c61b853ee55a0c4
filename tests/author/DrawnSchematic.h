// The schematic of a mapping, read back from its SVG.
#pragma once

#include <boost/property_tree/xml_parser.hpp>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace support {

using Tree = boost::property_tree::ptree;

// get<int> looks uninitialized to g++ 12 under sanitizers.
inline int numberIn(const Tree& element, const std::string& attribute) {
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

    /// The nets that end at the rows of a pin; "=0" or another text for what is tied there.
    std::set<std::string> at(const std::string& instance, const std::string& pin) const {
        std::set<std::string> found;
        for (const Place& place : places) {
            if (place.instance != instance || !place.hasPin(pin)) continue;
            for (const std::string& text : labelsAt(place, ties)) found.insert("=" + text);
            for (const Line& line : lines)
                if (endsAt(line, place)) found.insert(std::to_string(line.net));
        }
        return found;
    }

    /// What rows take of their nets, where that is not everything, by the names of instance and port.
    std::map<std::string, std::string> partsOfRows() const {
        std::map<std::string, std::string> found;
        for (const Place& place : places)
            for (const std::string& text : labelsAt(place, parts)) found[place.instance + " " + place.port] += text;
        return found;
    }

    std::vector<Line> lines;
    std::vector<Line> joints; ///< of no length
    std::vector<Shape> shapes;
    std::vector<Place> places;
    std::map<std::pair<int, int>, std::string> ties;
    std::map<std::pair<int, int>, std::string> parts; ///< of nets, which rows take
    std::vector<std::string> titles;
    size_t numNets = 0;

private:
    static std::vector<std::string> labelsAt(const Place& place,
                                             const std::map<std::pair<int, int>, std::string>& texts) {
        std::vector<std::string> found;
        for (const auto& [position, text] : texts) {
            const int distance = (position.first - place.x) * place.outwards;
            if (position.second == place.y && distance > 0 && distance < 20) found.push_back(text);
        }
        return found;
    }

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
        readLabels(group);
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
        readLabels(group);
    }

    void readLabels(const Tree& group) {
        for (const auto& [tag, text] : group) {
            if (tag != "text") continue;
            const std::string kind = text.get<std::string>("<xmlattr>.class");
            if (kind == "tie") ties[{numberIn(text, "x"), numberIn(text, "y") - 3}] = text.data();
            if (kind == "part") parts[{numberIn(text, "x"), numberIn(text, "y") + 3}] = text.data();
        }
    }
};

} // namespace support
