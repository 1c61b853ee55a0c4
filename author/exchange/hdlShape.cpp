#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author {

using platform::printable;
using words::cell;

std::string textOf(const std::vector<HdlLine>& lines, const std::string& indent, const std::string& mark,
                   const std::string& separator) {
    constexpr std::size_t longLine = 60;
    std::size_t width = 0;
    for (const HdlLine& line : lines) {
        const std::size_t size = platform::characters(line.code);
        if (size <= longLine) width = std::max(width, size + separator.size());
    }
    std::string text;
    for (const HdlLine& line : lines) {
        std::string code = line.code + (&line == &lines.back() ? "" : separator);
        const std::size_t size = platform::characters(code);
        if (!line.comment.empty()) code.append(std::max(size, width) + 1 - size, ' ');
        text += indent + code + (line.comment.empty() ? "" : mark + " " + line.comment) + "\n";
    }
    return text;
}

std::string listed(std::vector<std::string> parts) {
    std::erase(parts, "");
    return platform::joined(parts, ", ");
}

std::string commentOf(const std::string& text) { return platform::clipped(printable(text), 100); }

bool isPort(const Json& bus) { return bus["direction"] != "internal" && !bus["isAbstract"].get<bool>(); }

std::string factsOf(const Json& bus) {
    return listed({bus["type"] == "data" ? "" : cell(bus["type"]), cell(bus["required"]),
                   bus["isTest"].get<bool>() ? "for tests" : ""});
}

bool isSettable(const Json& property) {
    const auto is = [&](const char* flag) { return property[flag].get<bool>(); };
    return is("foundByName") && !is("isReadOnly") && !is("isHidden");
}

bool isParameter(const Json& property) {
    return isSettable(property) && !property["isSimulation"].get<bool>() && !property["isTest"].get<bool>();
}

std::string parameterFactsOf(const Json& property) {
    const Json& width = property["bitWidth"];
    const std::string type = width.is_null() ? cell(property["type"]) : cell(width) + (width == 1 ? " bit" : " bits");
    const std::string range = words::rangeText(property);
    return commentOf(listed({type + (range == "any" ? "" : ": " + range), cell(property["units"])}));
}

std::string HdlPort::bounds(std::string_view before, std::string_view between, std::string_view behind) const {
    if (!range) return {};
    std::string text(before);
    text.append(std::to_string(range->first)).append(between);
    return text.append(std::to_string(range->second)).append(behind);
}

Json HdlPort::common(const char* key) const {
    const Json& value = (*buses.front())[key];
    const auto isSame = [&](const Json* bus) { return (*bus)[key] == value; };
    return std::ranges::all_of(buses, isSame) ? value : Json();
}

std::string HdlPort::pinsText() const {
    if (buses.size() == 1) return {};
    std::string text = "pins";
    for (const Json* bus : buses) text += " " + cell((*bus)["name"]);
    return text;
}

std::string HdlPort::comment(const std::string& direction) const {
    const std::string facts = factsOf(*buses.front());
    const auto isSame = [&](const Json* bus) { return factsOf(*bus) == facts; };
    return commentOf(listed({direction, std::ranges::all_of(buses, isSame) ? facts : "", pinsText()}));
}

std::string verilogPort(const HdlPort& port, const std::string& name) {
    const std::string direction = port.direction() == "bidir" ? "inout" : cell(port.direction());
    return direction + " " + port.bounds("[", ":", "] ") + name;
}

namespace {

// Upwards only where what was there before is upwards, or has one bit.
void widen(std::optional<std::pair<int, int>>& range, const Json& added) {
    if (added.is_null()) return;
    const int from = added[0], to = added[1];
    const auto [first, last] = range.value_or(std::pair(from, to));
    const auto [low, high] = std::minmax({first, last, from, to});
    const bool isUpwards = first == last ? from < to : first < last;
    range = isUpwards ? std::pair(low, high) : std::pair(high, low);
}

// Why a pin is no port, or no part of the one of its base name; empty when it is.
std::string refusalOf(const Json& bus, const HdlPort* port) {
    if (bus["isAbstract"].get<bool>()) return "abstract, no port";
    if (bus["direction"] == "internal") return "internal, no port";
    if (bus["pins"].empty()) return "no bits, no port";
    if (!port) return {};
    if (!port->range || bus["range"].is_null()) return "there is a port " + cell((*port->buses.front())["name"]);
    if (bus["direction"] != port->direction()) return "another direction than " + cell((*port->buses.front())["name"]);
    return {};
}

} // namespace

HdlShape::HdlShape(const Json& block, bool (*hasParameter)(const Json& property)) {
    for (const Json& bus : block["buses"]) addPort(bus);
    for (const Json& property : block["properties"])
        if (hasParameter(property)) addParameter(property);
}

void HdlShape::addPort(const Json& bus) {
    const std::string name = cell(bus["baseName"]);
    auto port = std::ranges::find(ports, name, &HdlPort::name);
    const std::string refusal = refusalOf(bus, port == ports.end() ? nullptr : &*port);
    if (!refusal.empty()) return notes.push_back(printable(cell(bus["name"]) + ": " + refusal));
    if (port == ports.end()) port = ports.insert(port, {name, {}, {}});
    port->buses.push_back(&bus);
    widen(port->range, bus["range"]);
}

void HdlShape::addParameter(const Json& property) {
    if (hasHdlDefault(property)) parameters.push_back(&property);
    else notes.push_back(printable(cell(property["name"])) + ": no default; " + parameterFactsOf(property));
}

void HdlShape::keepDistinct(const std::function<std::string(const std::string&)>& nameOf) {
    std::set<std::string> names;
    const auto isTaken = [&](const std::string& name) {
        const std::string shown = nameOf(name);
        if (names.insert(shown).second) return false;
        notes.push_back(printable(name) + ": " + printable(shown) + " is the name of another port or parameter");
        return true;
    };
    std::erase_if(ports, [&](const HdlPort& port) { return isTaken(port.name); });
    std::erase_if(parameters, [&](const Json* property) { return isTaken(cell((*property)["name"])); });
}

std::vector<std::string> unsettableNotes(const Json& block) {
    std::vector<std::string> notes;
    for (const Json& property : block["properties"]) {
        if (isSettable(property)) continue;
        const char* reason = property["isReadOnly"].get<bool>() ? "read-only, no parameter" : "hidden, no parameter";
        if (!property["foundByName"].get<bool>()) reason = "declared before";
        notes.push_back(printable(cell(property["name"])) + ": " + reason);
    }
    return notes;
}

std::string vhdlModeAndType(const HdlPort& port) {
    static const std::map<std::string, std::string> modes = {{"input", "in"}, {"output", "out"}, {"bidir", "inout"}};
    const bool isUpwards = port.range && port.range->first < port.range->second;
    return modes.at(cell(port.direction())) + " std_logic" +
           port.bounds("_vector(", isUpwards ? " to " : " downto ", ")");
}

VhdlNaming::VhdlNaming(const HdlShape& shape) {
    for (const HdlPort& port : shape.ports) add(port.name);
    for (const Json* property : shape.parameters) add(cell((*property)["name"]));
}

void VhdlNaming::add(const std::string& name) { names_[HSTStringUtils::to_lower_copy(vhdlName(name))].insert(name); }

std::string VhdlNaming::of(const std::string& name) const {
    const std::string shown = vhdlName(name);
    return names_.at(HSTStringUtils::to_lower_copy(shown)).size() > 1 ? vhdlExtendedName(name) : shown;
}

} // namespace hdnt::author
