#include "author/exchange/BlockWords.h"
#include "author/exchange/exportForms.internal.h"
#include "author/exchange/hdlNames.internal.h"
#include "author/exchange/hdlShape.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author {

namespace {

using platform::printable;
using words::cell;

std::string quoted(const std::string& name) { return "\"" + libertyName(name) + "\""; }

std::string typeName(const HdlPort& port) { return "\"bus" + port.bounds("_", "_", "") + "\""; }

std::string typeGroup(const HdlPort& port) {
    const auto [from, to] = *port.range;
    return "  type (" + typeName(port) + ") { base_type : array; data_type : bit; bit_width : " +
           std::to_string(std::max(from, to) - std::min(from, to) + 1) + "; bit_from : " + std::to_string(from) +
           "; bit_to : " + std::to_string(to) + "; downto : " + (from < to ? "false" : "true") + "; }\n";
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWordPart(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

/// Whether a text is a function of single pins that are read. What binds stronger makes no difference to that.
class FunctionReader {
public:
    FunctionReader(std::string_view text, const std::vector<HdlPort>& ports) : text_(text), ports_(ports) {}

    bool isFunction() {
        while (skipBlanks(), !text_.empty())
            if (!(wantsOperand_ ? takeOperand() : takeOperator())) return false;
        return !wantsOperand_ && depth_ == 0;
    }

private:
    void skipBlanks() { text_.remove_prefix(std::min(text_.find_first_not_of(' '), text_.size())); }
    bool take(std::string_view characters) {
        const bool isThere = characters.find(text_.front()) != characters.npos;
        if (isThere) text_.remove_prefix(1);
        return isThere;
    }

    bool takeOperand() {
        if (take("!")) return true;
        if (take("(")) return ++depth_ > 0;
        const std::string word(text_.begin(), std::ranges::find_if_not(text_, isWordPart));
        const auto isMeant = [&](const HdlPort& port) {
            return port.name == word && port.direction() != "output" && !port.range && !isDigit(word[0]);
        };
        if (word != "0" && word != "1" && std::ranges::none_of(ports_, isMeant)) return false;
        text_.remove_prefix(word.size());
        wantsOperand_ = false;
        return true;
    }

    // Between operands without one is an "and".
    bool takeOperator() {
        if (take("'")) return true;
        if (take(")")) return --depth_ >= 0;
        take("*&+|^");
        return wantsOperand_ = true;
    }

    std::string_view text_;
    const std::vector<HdlPort>& ports_;
    bool wantsOperand_ = true;
    int depth_ = 0;
};

/// One cell.
class LibertyCell {
public:
    LibertyCell(const Json& block, ExportNotes& notes)
        : block_(block), notes_(notes), shape_(block, [](const Json&) { return false; }) {
        shape_.keepDistinct(libertyName);
        notes.leaveOut(block, shape_.notes);
    }

    std::string text() {
        std::string text = "\n  cell (" + quoted(cell(block_["name"])) + ") {\n";
        for (const HdlPort& port : shape_.ports) text += groupOf(port);
        return text + "  }\n";
    }

private:
    std::string groupOf(const HdlPort& port) {
        notes_.rename(cell(block_["name"]) + ": ", port.name, libertyName(port.name));
        const std::string direction = port.direction() == "bidir" ? "inout" : cell(port.direction());
        std::string text = (port.range ? "bus (" : "pin (") + quoted(port.name) + ") { ";
        if (port.range) {
            const std::string type = typeGroup(port);
            if (std::ranges::find(notes_.declared, type) == notes_.declared.end()) notes_.declared.push_back(type);
            text += "bus_type : " + typeName(port) + "; ";
        }
        text += "direction : " + direction + "; ";
        text += clocksOf(port, direction);
        const std::string function = functionOf(port);
        if (!function.empty()) text += "function : \"" + function + "\"; ";
        return "    " + text + "}\n";
    }

    static std::string clocksOf(const HdlPort& port, const std::string& direction) {
        const std::string clock = "clock : true; ";
        const std::string begin = "pin (\"" + libertyName(port.name) + "[";
        const std::string end = "]\") { direction : " + direction + "; " + clock + "} ";
        std::string bits;
        bool isAll = true;
        for (const Json* bus : port.buses)
            for (const Json& pin : (*bus)["pins"])
                if (pin["type"] != "clock") isAll = false;
                else if (port.range) bits.append(begin).append(cell(pin["bit"])).append(end);
        return isAll ? clock : bits;
    }

    // Words that say what a pin is for are no function.
    std::string functionOf(const HdlPort& port) {
        std::string text = cell(port.common("function"));
        if (text.empty() || port.direction() == "input") return {};
        if (!port.range && FunctionReader(text, shape_.ports).isFunction()) return text;
        if (text.find_first_of("!'()*&+|^") != text.npos)
            notes_.leaveOut(block_, {printable(port.name + ": no function of single pins that are read: " + text)});
        return {};
    }

    const Json& block_;
    ExportNotes& notes_;
    HdlShape shape_;
};

void addCell(const ExportedBlock& exported, std::string& text, ExportNotes& notes) {
    const Json& block = exported.json;
    const std::string name = cell(block["name"]);
    if (!notes.take(block, libertyName(name), "cell")) return;
    notes.rename("", name, libertyName(name));
    text += LibertyCell(block, notes).text();
}

std::string head(const ExportNotes& notes) {
    return notes.renamedText("/* ", " */") + "library (" + quoted(notes.library.getName()) + ") {\n" +
           platform::joined(notes.declared, "");
}

} // namespace

constinit const ExportTable libertyTable = {"liberty", head, addCell, "}\n"};

} // namespace hdnt::author
