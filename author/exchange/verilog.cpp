#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "author/exchange/hdlValues.internal.h"
#include "hdnt/platform/Text.h"

namespace hdnt::author {

namespace {

using words::cell;

// Empty without a value. Some readers look for the end of attributes inside of texts, too.
std::string attribute(const std::string& name, const std::string& value) {
    if (value.empty()) return {};
    std::string text = verilogString(value);
    for (std::size_t end = 0; (end = text.find("*)", end)) != text.npos;) text.replace(end, 2, "*\\051");
    return name + " = " + text;
}

std::string attributesOf(const HdlPort& port) {
    const std::string type = cell(port.common("type"));
    const std::string text = listed(
        {attribute("pin_type", type == "data" ? "" : type), attribute("required", cell(port.common("required")))});
    return text.empty() ? "" : "(* " + text + " *) ";
}

/// One black box. Ports and parameters share one space of names, where ports come first.
class VerilogModule {
public:
    VerilogModule(const Json& block, ExportNotes& notes) : block_(block), shape_(block, isSettable) {
        shape_.keepDistinct(verilogName);
        notes.leaveOut(block, shape_.notes);
        notes.leaveOut(block, unsettableNotes(block));
        for (const HdlPort& port : shape_.ports) addPort(port);
        for (const Json* property : shape_.parameters) addParameter(*property);
    }

    std::string text() const {
        const std::vector<std::string> facts = {"blackbox", attribute("group", cell(block_["group"])),
                                                attribute("subgroup", cell(block_["subgroup"]))};
        std::string text = "\n(* " + listed(facts) + " *)\nmodule " + verilogName(cell(block_["name"]));
        if (!parameters_.empty()) text += " #(\n" + textOf(parameters_, "    ", "//", ",") + ")";
        if (!ports_.empty()) text += " (\n" + textOf(ports_, "    ", "//", ",") + ")";
        text += ";\n";
        if (!checks_.empty()) text += "`ifdef CHECK_PARAMETERS\n    initial begin\n" + checks_ + "    end\n`endif\n";
        return text + "endmodule\n";
    }

private:
    void addPort(const HdlPort& port) {
        ports_.push_back({attributesOf(port) + verilogPort(port, verilogName(port.name)), commentOf(port.pinsText())});
    }

    void addParameter(const Json& property) {
        const std::string plain = cell(property["name"]);
        const std::string name = verilogName(plain);
        parameters_.push_back({verilogParameter(property, name), parameterFactsOf(property)});
        const std::string condition = verilogCondition(property, name);
        if (condition.empty()) return;
        checks_ += "        if (!(" + condition + ")) begin\n            $display(\"%m: %0s\", " +
                   verilogString(plain + " is not " + words::rangeText(property)) +
                   ");\n            $finish;\n        end\n";
    }

    const Json& block_;
    HdlShape shape_;
    std::vector<HdlLine> ports_;
    std::vector<HdlLine> parameters_;
    std::string checks_;
};

std::string head(const ExportNotes&) {
    std::string text =
        "// Black boxes. With CHECK_PARAMETERS defined, simulations end where a parameter has a value that "
        "it\n// cannot have. Ranges go the way that their library has them.\n";
    for (const char* style : {"LITENDIAN", "WIDTH", "UNSIGNED", "CMPCONST"})
        text += std::string("/* verilator lint_off ") + style + " */\n";
    return text;
}

void addModule(const ExportedBlock& block, std::string& text, ExportNotes& notes) {
    if (notes.take(block.json, verilogName(cell(block.json["name"])), "module"))
        text += VerilogModule(block.json, notes).text();
}

} // namespace

constinit const ExportTable verilogTable = {"verilog", head, addModule};

} // namespace hdnt::author
