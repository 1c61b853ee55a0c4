#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HSTStringUtils.h"

namespace hdnt::author {

namespace {

using words::cell;

// " range 1 to 5", where at least one end is declared.
std::string rangeOf(const Json& property, const std::string& type) {
    const bool hasLow = hasHdlBound(property, "Minimum");
    const bool hasHigh = hasHdlBound(property, "Maximum");
    if (!hasLow && !hasHigh) return {};
    return " range " + (hasLow ? vhdlValue(property["minimum"]) : type + "'low") + " to " +
           (hasHigh ? vhdlValue(property["maximum"]) : type + "'high");
}

std::string typeOf(const Json& property) {
    if (!property["bitWidth"].is_null())
        return "bit_vector(" + std::to_string(property["bitWidth"].get<int>() - 1) + " downto 0)";
    if (property["type"] == "bool") return "boolean";
    if (property["type"] == "string") return "string";
    const std::string type = property["type"] == "int" ? "integer" : "real";
    return type + rangeOf(property, type);
}

/// One component, and what its names are.
class VhdlComponent {
public:
    VhdlComponent(const Json& block, ExportNotes& notes)
        : block_(block), notes_(notes), shape_(block, isSettable), naming_(shape_) {
        shape_.keepDistinct([&](const std::string& name) { return naming_.of(name); });
        notes.leaveOut(block, shape_.notes);
        notes.leaveOut(block, unsettableNotes(block));
    }

    std::string text() {
        std::vector<HdlLine> generics, ports;
        for (const Json* property : shape_.parameters)
            generics.push_back(
                {nameOf(cell((*property)["name"])) + " : " + typeOf(*property) + " := " + vhdlDefault(*property),
                 asciiOf(parameterFactsOf(*property))});
        for (const HdlPort& port : shape_.ports)
            ports.push_back({nameOf(port.name) + " : " + vhdlModeAndType(port), asciiOf(port.comment(""))});
        return "\n    component " + vhdlName(cell(block_["name"])) + " is\n" + clause("generic", generics) +
               clause("port", ports) + "    end component;\n";
    }

private:
    static std::string clause(const std::string& word, const std::vector<HdlLine>& lines) {
        if (lines.empty()) return {};
        return "        " + word + " (\n" + textOf(lines, "            ", "--", ";") + "        );\n";
    }

    std::string nameOf(const std::string& name) {
        std::string shown = naming_.of(name);
        notes_.rename(cell(block_["name"]) + ": ", name, shown);
        return shown;
    }

    const Json& block_;
    ExportNotes& notes_;
    HdlShape shape_;
    VhdlNaming naming_;
};

void addComponent(const ExportedBlock& exported, std::string& text, ExportNotes& notes) {
    const Json& block = exported.json;
    const std::string name = cell(block["name"]);
    const std::string shown = vhdlName(name);
    if (!notes.take(block, shown.front() == '\\' ? shown : HSTStringUtils::to_lower_copy(shown), "component")) return;
    notes.rename("", name, shown);
    text += VhdlComponent(block, notes).text();
}

std::string head(const ExportNotes& notes) {
    const std::string package = (notes.block.empty() ? notes.library.getName() : notes.block) + "_components";
    return notes.renamedText("-- ") + "library ieee;\nuse ieee.std_logic_1164.all;\n\npackage " + vhdlName(package) +
           " is\n";
}

} // namespace

constinit const ExportTable vhdlTable = {"vhdl", head, addComponent, "\nend package;\n"};

} // namespace hdnt::author
