#include "author/exchange/BlockWords.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "author/guide/instantiation.internal.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/Text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hdnt::author::guide {

namespace {

using platform::printable;
using words::cell;

/// A name for the instance that no signal has.
std::string instanceName(const Json& block) {
    for (int number = 0;; ++number) {
        std::string name = "u" + std::to_string(number);
        const auto isTaken = [&](const Json& bus) { return HSTStringUtils::iequals(cell(bus["baseName"]), name); };
        if (std::ranges::none_of(block["buses"], isTaken)) return name;
    }
}

std::string notesText(const HdlShape& shape, const std::string& mark) {
    std::string text;
    for (const std::string& note : shape.notes) text.append(mark).append(" ").append(note).append("\n");
    return text;
}

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

    std::vector<HdlLine> lines;

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
    const HdlShape shape(block);
    std::vector<HdlLine> parameters, ports;
    for (const Json* property : shape.parameters)
        parameters.push_back({verilogAssociation(verilogName(cell((*property)["name"])), verilogDefault(*property)),
                              parameterFactsOf(*property)});
    for (const HdlPort& port : shape.ports) {
        const std::string name = verilogName(port.name);
        const Json& direction = port.direction();
        ports.push_back(
            {verilogAssociation(name, name),
             port.comment((direction == "bidir" ? "inout" : cell(direction)) + port.bounds(" [", ":", "]"))});
    }
    std::string text = notesText(shape, "//") + verilogName(cell(block["name"])) + " ";
    if (!parameters.empty()) text += "#(\n" + textOf(parameters, "    ", "//", ",") + ") ";
    return text + instanceName(block) + " (\n" + textOf(ports, "    ", "//", ",") + ");\n";
}

std::string vhdlInstance(const Json& block) {
    const HdlShape shape(block);
    const VhdlNaming naming(shape);
    std::vector<HdlLine> generics, ports;
    for (const Json* property : shape.parameters)
        generics.push_back(
            {naming.of(cell((*property)["name"])) + " => " + vhdlDefault(*property), parameterFactsOf(*property)});
    for (const HdlPort& port : shape.ports)
        ports.push_back({naming.of(port.name) + " => " + naming.of(port.name), port.comment(vhdlModeAndType(port))});
    std::string text = notesText(shape, "--") + instanceName(block) + " : " + vhdlName(cell(block["name"]));
    if (!generics.empty()) text += "\n    generic map (\n" + textOf(generics, "        ", "--", ",") + "    )";
    if (!ports.empty()) text += "\n    port map (\n" + textOf(ports, "        ", "--", ",") + "    )";
    return text + ";\n";
}

std::string ntlInstance(const Json& block) { return textOf(NtlStatements(block).lines, "", "//", ""); }

} // namespace hdnt::author::guide
