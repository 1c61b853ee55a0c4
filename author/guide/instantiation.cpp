#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/guide/instantiation.internal.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace hdnt::author::guide {

namespace {

using platform::printable;
using words::cell;

/// A line of a template, and what is said of it.
struct Line {
    std::string code;
    std::string comment;
};

/// The comments stand below each other, but for those of very long lines. `separator` is between the lines.
std::string textOf(const std::vector<Line>& lines, const std::string& indent, const std::string& mark,
                   const std::string& separator) {
    constexpr std::size_t longLine = 60;
    std::size_t width = 0;
    for (const Line& line : lines) {
        const std::size_t size = platform::characters(line.code);
        if (size <= longLine) width = std::max(width, size + separator.size());
    }
    std::string text;
    for (const Line& line : lines) {
        std::string code = line.code + (&line == &lines.back() ? "" : separator);
        const std::size_t size = platform::characters(code);
        if (!line.comment.empty()) code.append(std::max(size, width) + 1 - size, ' ');
        text += indent + code + (line.comment.empty() ? "" : mark + " " + line.comment) + "\n";
    }
    return text;
}

/// Those that are not empty.
std::string listed(std::vector<std::string> parts) {
    std::erase(parts, "");
    return platform::joined(parts, ", ");
}

std::string commentOf(const std::string& text) { return platform::clipped(printable(text), 100); }

/// A name for the instance that no signal has.
std::string instanceName(const Json& block) {
    for (int number = 0;; ++number) {
        std::string name = "u" + std::to_string(number);
        const auto isTaken = [&](const Json& bus) { return HSTStringUtils::iequals(cell(bus["baseName"]), name); };
        if (std::ranges::none_of(block["buses"], isTaken)) return name;
    }
}

// What pins and properties are.
bool isPort(const Json& bus) { return bus["direction"] != "internal" && !bus["isAbstract"].get<bool>(); }

std::string factsOf(const Json& bus) {
    return listed({bus["type"] == "data" ? "" : cell(bus["type"]), cell(bus["required"]),
                   bus["isTest"].get<bool>() ? "for tests" : ""});
}

bool isParameter(const Json& property) {
    const auto is = [&](const char* flag) { return property[flag].get<bool>(); };
    return is("foundByName") && !is("isReadOnly") && !is("isHidden") && !is("isSimulation") && !is("isTest");
}

std::string parameterFactsOf(const Json& property) {
    const Json& width = property["bitWidth"];
    const std::string type = width.is_null() ? cell(property["type"]) : cell(width) + (width == 1 ? " bit" : " bits");
    const std::string range = words::rangeText(property);
    return commentOf(listed({type + (range == "any" ? "" : ": " + range), cell(property["units"])}));
}

/// Pins of one base name.
struct Port {
    std::string name;
    const Json* bus; ///< the first
    std::vector<std::string> buses;
    std::optional<std::pair<int, int>> range; ///< from the lowest bit to the highest, either way

    /// The range with texts around and between; empty when there is none.
    std::string bounds(std::string_view before, std::string_view between, std::string_view behind) const {
        if (!range) return {};
        std::string text(before);
        text.append(std::to_string(range->first)).append(between);
        return text.append(std::to_string(range->second)).append(behind);
    }

    std::string comment(const std::string& direction) const {
        const std::string pins = buses.size() > 1 ? "pins " + platform::joined(buses, " ") : "";
        return commentOf(listed({direction, factsOf(*bus), pins}));
    }
};

// Upwards only where what was there before is upwards, or has one bit.
void widen(std::optional<std::pair<int, int>>& range, const Json& added) {
    if (added.is_null()) return;
    const int from = added[0], to = added[1];
    const auto [first, last] = range.value_or(std::pair(from, to));
    const auto [low, high] = std::minmax({first, last, from, to});
    const bool isUpwards = first == last ? from < to : first < last;
    range = isUpwards ? std::pair(low, high) : std::pair(high, low);
}

/// A block as modules and components have it.
struct Shape {
    explicit Shape(const Json& block) {
        std::map<std::string, std::size_t> places;
        for (const Json& bus : block["buses"]) {
            const std::string name = cell(bus["baseName"]);
            if (!isPort(bus)) {
                const bool isAbstract = bus["isAbstract"].get<bool>();
                notes.push_back(printable(cell(bus["name"])) + (isAbstract ? ": abstract" : ": internal") +
                                ", no port");
                continue;
            }
            const auto [place, isNew] = places.emplace(name, ports.size());
            if (isNew) ports.push_back({name, &bus, {}, {}});
            ports[place->second].buses.push_back(cell(bus["name"]));
            widen(ports[place->second].range, bus["range"]);
        }
        for (const Json& property : block["properties"]) {
            if (!isParameter(property)) continue;
            if (hasHdlDefault(property)) parameters.push_back(&property);
            else notes.push_back(printable(cell(property["name"])) + ": no default; " + parameterFactsOf(property));
        }
    }

    std::string notesText(const std::string& mark) const {
        std::string text;
        for (const std::string& note : notes) text.append(mark).append(" ").append(note).append("\n");
        return text;
    }

    std::vector<Port> ports;
    std::vector<const Json*> parameters;
    std::vector<std::string> notes; ///< on what is left out
};

/// Names of VHDL for all generics and ports of a block: those that differ in case alone are extended.
class VhdlNaming {
public:
    explicit VhdlNaming(const Shape& shape) {
        for (const Port& port : shape.ports) ++uses_[HSTStringUtils::to_lower_copy(port.name)];
        for (const Json* property : shape.parameters) ++uses_[HSTStringUtils::to_lower_copy(cell((*property)["name"]))];
    }
    std::string of(const std::string& name) const {
        return uses_.at(HSTStringUtils::to_lower_copy(name)) > 1 ? vhdlExtendedName(name) : vhdlName(name);
    }

private:
    std::map<std::string, int> uses_;
};

/// Statements of a mapping that place the block; what NTL has no text for becomes a comment.
class NtlStatements {
public:
    explicit NtlStatements(const Json& block) : instance_(instanceName(block)) {
        if (!add(cell(block["name"]), "inst \"" + instance_ + "\" \"" + cell(block["name"]) + "\";", "")) return;
        for (const Json& bus : block["buses"])
            if (isPort(bus)) addSignal(bus);
        for (const Json& property : block["properties"])
            if (isParameter(property) && hasHdlDefault(property)) addProperty(property);
    }

    std::vector<Line> lines;

private:
    // No string of NTL holds a quote, or should hold what cannot be shown.
    bool add(const std::string& name, const std::string& code, const std::string& comment,
             const std::string& value = "") {
        const std::string all = name + value;
        const bool isWritable = all.find('"') == std::string::npos && printable(all) == all;
        if (isWritable) lines.push_back({code, comment});
        else lines.push_back({"// " + commentOf(name) + ": NTL has no text for it", ""});
        return isWritable;
    }

    std::string pinOf(const std::string& name) const { return " : \"" + instance_ + "\" \"" + name + "\";"; }

    void addSignal(const Json& bus) {
        const std::string name = cell(bus["name"]);
        if (name.starts_with('~') || name.starts_with('@')) // inverted, or a constant
            return lines.push_back({"// " + commentOf(name) + ": NTL reads another pin", ""});
        const std::string comment = listed({cell(bus["direction"]), factsOf(bus)});
        const std::string signal = "signal \"" + name + "\"";
        const bool isSingle = bus["range"].is_null();
        if (!add(name, signal + (isSingle ? pinOf(name) : ";"), comment) || isSingle) return;
        std::size_t room = 1024;
        for (const Json& pin : bus["pins"]) {
            const std::string bit = cell(pin["name"]);
            if (room-- == 0) return lines.push_back({"// and so on from " + bit, ""});
            lines.push_back({"connect \"" + bit + "\"" + pinOf(bit), ""});
        }
    }

    void addProperty(const Json& property) {
        const Json& value = property["default"];
        const std::string name = cell(property["name"]);
        std::string text = cell(value);
        if (value.is_string()) text = "\"" + text + "\"";
        if (value.is_number_float()) text = platform::DoubleText(value, platform::DoubleForm::FixedPoint).str();
        add(name, "assign block property \"" + instance_ + "\" \"" + name + "\" " + text + ";",
            parameterFactsOf(property), value.is_string() ? cell(value) : "");
    }

    std::string instance_;
};

std::string verilogAssociation(const std::string& name, const std::string& value) {
    return "." + name + "(" + value + ")";
}

} // namespace

std::string verilogInstance(const Json& block) {
    const Shape shape(block);
    std::vector<Line> parameters, ports;
    for (const Json* property : shape.parameters)
        parameters.push_back({verilogAssociation(verilogName(cell((*property)["name"])), verilogDefault(*property)),
                              parameterFactsOf(*property)});
    for (const Port& port : shape.ports) {
        const std::string name = verilogName(port.name);
        const Json& direction = (*port.bus)["direction"];
        ports.push_back(
            {verilogAssociation(name, name),
             port.comment((direction == "bidir" ? "inout" : cell(direction)) + port.bounds(" [", ":", "]"))});
    }
    std::string text = shape.notesText("//") + verilogName(cell(block["name"])) + " ";
    if (!parameters.empty()) text += "#(\n" + textOf(parameters, "    ", "//", ",") + ") ";
    return text + instanceName(block) + " (\n" + textOf(ports, "    ", "//", ",") + ");\n";
}

std::string vhdlInstance(const Json& block) {
    static const std::map<std::string, std::string> modes = {{"input", "in"}, {"output", "out"}, {"bidir", "inout"}};
    const Shape shape(block);
    const VhdlNaming naming(shape);
    std::vector<Line> generics, ports;
    for (const Json* property : shape.parameters)
        generics.push_back(
            {naming.of(cell((*property)["name"])) + " => " + vhdlDefault(*property), parameterFactsOf(*property)});
    for (const Port& port : shape.ports) {
        const bool isUpwards = port.range && port.range->first < port.range->second;
        const std::string type = " std_logic" + port.bounds("_vector(", isUpwards ? " to " : " downto ", ")");
        ports.push_back({naming.of(port.name) + " => " + naming.of(port.name),
                         port.comment(modes.at(cell((*port.bus)["direction"])) + type)});
    }
    std::string text = shape.notesText("--") + instanceName(block) + " : " + vhdlName(cell(block["name"]));
    if (!generics.empty()) text += "\n    generic map (\n" + textOf(generics, "        ", "--", ",") + "    )";
    if (!ports.empty()) text += "\n    port map (\n" + textOf(ports, "        ", "--", ",") + "    )";
    return text + ";\n";
}

std::string ntlInstance(const Json& block) { return textOf(NtlStatements(block).lines, "", "//", ""); }

} // namespace hdnt::author::guide
