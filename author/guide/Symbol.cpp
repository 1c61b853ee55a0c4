#include "author/exchange/fileNames.internal.h"
#include "author/guide/Svg.internal.h"
#include "author/guide/Symbol.internal.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace hdnt::author::guide {

namespace {

// In user units, which are CSS pixels; characters of the names are as wide as a fixed-pitch font has them.
constexpr double character = 7.3;
constexpr double row = 20;
constexpr double gap = 10; ///< between pins of different types
constexpr double stub = 30;
constexpr double margin = 26; ///< for what stands at the end of a stub
constexpr double padding = 16;
constexpr double titleHeight = 30;
constexpr double bubbleRadius = 4;

struct Pin {
    std::string name;
    std::string label; ///< with the range
    std::string direction;
    std::string type;
    std::string required;
    bool isBus;
    bool isTest;
    bool isInvertible;
    double y = 0;

    bool isLeft() const { return direction == "input"; }
};

std::string textOr(const Json& value) { return value.is_string() ? value.get<std::string>() : ""; }

// Pins that a property IS_NAME_INVERTED can invert.
std::set<std::string> invertiblePins(const Json& block) {
    std::set<std::string> names;
    for (const Json& property : block["properties"]) {
        const std::string name = textOr(property["name"]);
        const std::size_t around = std::string("IS_").size() + std::string("_INVERTED").size();
        if (property["isPinInversion"].get<bool>()) names.insert(name.substr(3, name.size() - around));
    }
    return names;
}

std::vector<Pin> pinsOf(const Json& block) {
    const std::set<std::string> invertible = invertiblePins(block);
    std::vector<Pin> pins;
    for (const Json& bus : block["buses"]) {
        const std::string name = textOr(bus["baseName"]);
        const bool isBus = !bus["range"].is_null();
        const std::string range =
            isBus ? "[" + bus["range"][0].dump() + ":" + bus["range"][1].dump() + "]" : std::string();
        pins.push_back({textOr(bus["name"]), name + range, textOr(bus["direction"]), textOr(bus["type"]),
                        textOr(bus["required"]), isBus, bus["isTest"].get<bool>(),
                        invertible.contains(HSTStringUtils::to_upper_copy(name))});
    }
    return pins;
}

// Types in the order in which they come first, clocks behind the rest; internal pins are below all others.
void order(std::vector<Pin*>& pins) {
    std::vector<std::string> types;
    const auto keyOf = [&](const Pin& pin) { return (pin.direction == "internal" ? "~" : "") + pin.type; };
    for (const Pin* pin : pins)
        if (std::ranges::find(types, keyOf(*pin)) == types.end()) types.push_back(keyOf(*pin));
    std::stable_partition(types.begin(), types.end(), [](const std::string& type) { return type[0] != '~'; });
    const auto place = [&](const Pin* pin) { return std::ranges::find(types, keyOf(*pin)) - types.begin(); };
    std::ranges::stable_sort(pins, {}, place);
}

// The height that they take.
double spread(std::vector<Pin*>& pins) {
    order(pins);
    double y = titleHeight + row / 2;
    for (std::size_t i = 0; i < pins.size(); ++i) {
        const bool isNewType =
            i > 0 && (pins[i]->type != pins[i - 1]->type || pins[i]->direction != pins[i - 1]->direction);
        if (isNewType) y += gap;
        pins[i]->y = y;
        y += row;
    }
    return y;
}

double widthOf(const std::vector<Pin*>& pins) {
    std::size_t longest = 0;
    for (const Pin* pin : pins) longest = std::max(longest, platform::characters(platform::printable(pin->label)));
    return static_cast<double>(longest) * character;
}

std::string wordsOf(const Pin& pin) {
    std::string text = pin.label + ", " + pin.direction + ", " + pin.type;
    if (!pin.required.empty()) text += ", " + pin.required;
    if (pin.isInvertible) text += ", can be inverted";
    return text + (pin.isTest ? ", test" : "");
}

// Two lines that meet at a tip; `back` leads from there to the height of their ends.
void drawTip(Svg& svg, double x, double y, double back, double half, std::string_view cssClass) {
    const auto point = [](double px, double py) { return number(px) + "," + number(py); };
    svg.polyline(point(x + back, y - half) + " " + point(x, y) + " " + point(x + back, y + half), cssClass);
}

std::string tieMark(const std::string& required) {
    static const std::map<std::string, std::string> marks = {
        {"tieLow", "0"}, {"tieHigh", "1"}, {"tieSpecial", "*"}, {"untie", "\xc3\x97"}};
    const auto found = marks.find(required);
    return found == marks.end() ? "" : found->second;
}

/// One pin at an edge of the box.
void drawPin(Svg& svg, const Pin& pin, double edge) {
    const double out = pin.isLeft() ? -1 : 1;
    const double end = edge + out * stub;
    const double begin = edge + (pin.isInvertible ? out * 2 * bubbleRadius : 0);
    const bool isFaint = pin.isTest || pin.direction == "internal";
    svg.open("g", {{"class", "pin"}, {"data-pin", pin.name}, {"data-direction", pin.direction}});
    svg.title(wordsOf(pin));
    svg.line(begin, pin.y, end, pin.y, std::string("stub") + (pin.isBus ? " bus" : "") + (isFaint ? " test" : ""));
    if (pin.isInvertible) svg.circle(edge + out * bubbleRadius, pin.y, bubbleRadius, "bubble");
    const bool isClock = pin.type == "clock";
    if (isClock) drawTip(svg, edge - out * 9, pin.y, out * 9, 6, "wedge");
    svg.text(edge - out * (isClock ? 14 : 6), pin.y + 4, pin.isLeft() ? "start" : "end", pin.label, "name");
    if (pin.direction == "bidir") {
        drawTip(svg, end, pin.y, -out * 6, 4, "arrow");
        drawTip(svg, begin, pin.y, out * 6, 4, "arrow");
    }
    const std::string tie = tieMark(pin.required);
    if (!tie.empty()) svg.text(end + out * 8, pin.y + 4, "middle", tie, "tie");
    if (pin.required == "active" || pin.required == "mustConnect") svg.circle(end, pin.y, 3.5, "dot");
    svg.close();
}

std::string drawn(const std::string& name, std::vector<Pin>& pins) {
    std::vector<Pin*> left;
    std::vector<Pin*> right;
    for (Pin& pin : pins) (pin.isLeft() ? left : right).push_back(&pin);
    const double height = std::max(spread(left), spread(right)) + padding / 2;
    const double title = static_cast<double>(platform::characters(platform::printable(name))) * character * 1.1;
    const double box = std::max({widthOf(left) + widthOf(right) + 4 * padding, title + 2 * padding, 90.0});
    const double edge = margin + stub;
    const double width = box + 2 * edge;
    Svg svg;
    svg.start("symbol", width, height + 2, "group", "Symbol of " + name);
    svg.rectangle(edge, 1, box, height, "box");
    svg.text(width / 2, 20, "middle", name, "title");
    for (const auto& [side, at] : {std::pair{&left, edge}, std::pair{&right, edge + box}})
        for (const Pin* pin : *side) {
            svg.open("a", {{"href", "#" + anchorOf("pin", pin->name)}});
            drawPin(svg, *pin, at);
            svg.close();
        }
    svg.close();
    return svg.str();
}

std::string sampleOf(Pin pin, const std::string& text) {
    constexpr double width = 140;
    pin.y = row / 2;
    Svg svg;
    svg.start("symbol", width, row, "img", text);
    const double edge = pin.isLeft() ? margin + stub : width - margin - stub;
    svg.line(edge, 0, edge, row, "box");
    drawPin(svg, pin, edge);
    return svg.close().str();
}

} // namespace

std::string symbolOf(const Json& block) {
    std::vector<Pin> pins = pinsOf(block);
    return drawn(textOr(block["name"]), pins);
}

Json symbolLegend() {
    const std::pair<Pin, const char*> samples[] = {
        {{"A", "A", "input", "data", "", false, false, false}, "An input. Outputs are on the right."},
        {{"A", "A[7:0]", "input", "data", "", true, false, false},
         "A bus, with the numbers of its first and last bit."},
        {{"CLK", "CLK", "input", "clock", "", false, false, false}, "A clock."},
        {{"CLK", "CLK", "input", "clock", "", false, false, true}, "A pin that a property can invert."},
        {{"A", "A", "input", "data", "active", false, false, false}, "A pin that has to be connected, or driven."},
        {{"A", "A", "input", "data", "tieLow", false, false, false},
         "What a pin is tied to that nothing drives: 0 or 1."},
        {{"A", "A", "input", "data", "tieSpecial", false, false, false}, "A pin with a tie of its own kind."},
        {{"A", "A", "input", "data", "untie", false, false, false}, "A pin that has to stay open."},
        {{"IO", "IO", "bidir", "data", "", false, false, false}, "A pin for both directions."},
        {{"N", "N", "internal", "data", "", false, false, false}, "A pin inside of the block, or one for tests."}};
    Json legend = Json::array();
    for (const auto& [sample, text] : samples) legend.push_back({{"svg", sampleOf(sample, text)}, {"text", text}});
    return legend;
}

} // namespace hdnt::author::guide
