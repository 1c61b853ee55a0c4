#include "tests/writer/LibraryGenerator.h"

#include "hdnt/registry/HDNTCellviewLib.h"

#include <algorithm>
#include <functional>
#include <random>
#include <set>
#include <vector>

namespace generator {

namespace {

using Texts = std::vector<std::string>;

const Texts types = {"int", "double", "bool", "string"};

class Generator {
public:
    explicit Generator(uint64_t seed) : random_(seed) {}

    std::string library() {
        declareFunctions();
        std::string text = "library " + quoted(anyText()) + "\n{\n" + functions_;
        for (int blocks = below(9); blocks > 0; --blocks) text += block();
        return text + "}" + space();
    }

private:
    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }
    bool chance(int percent) { return below(100) < percent; }
    template <typename T>
    const T& oneOf(const std::vector<T>& items) {
        return items[static_cast<size_t>(below(static_cast<int>(items.size())))];
    }
    std::string maybe(const std::string& text, int percent = 50) { return chance(percent) ? text : std::string(); }
    static std::string quoted(const std::string& text) { return '"' + text + '"'; }
    std::string space() { return oneOf<std::string>({" ", "\n", "\t", " /* \"a\" */ ", " // { b }\n", "\n\n"}); }

    // What a quoted text may hold where nobody looks at it: all but quotes and line breaks.
    std::string anyText() {
        static const Texts pieces = {
            "",   "a",  " ", "%s%n%d", "\\", "{ }", "//", "/* ",    "\t",       "\xc3\xbc",
            "\r", "()", "'", "8'hFF",  ";",  "~",   "@1", "INLINE", "\x80\xff", std::string(1, '\0')};
        std::string text;
        for (int parts = below(5); parts > 0; --parts) text += oneOf(pieces);
        return text;
    }
    std::string name() {
        return oneOf<std::string>({"A", "B", "CLK", "_X", "N_1", "lower", "D9"}) + std::to_string(below(40));
    }
    // Names of one scope, each once in any case.
    std::string freshName(std::set<std::string>& taken) {
        std::string fresh = name();
        while (!taken.insert(fresh).second) fresh = name() + "_" + std::to_string(below(1000));
        return fresh;
    }
    std::string range() {
        if (chance(50)) return "";
        const std::string first = std::to_string(below(9));
        return '[' + first + maybe(":" + std::to_string(below(9))) + ']';
    }

    std::string intText() { return oneOf<std::string>({"0", "-1", "7", "2147483647", "-2147483648", "0012", "99"}); }
    std::string doubleText() {
        return oneOf<std::string>({"0.0", "-0.0", "1.", "0.1", "-2.5", "3.14159265358979312",
                                   "100000000000000000000000.0", "0.00000000000000000000000000000000012345",
                                   "1" + std::string(320, '0') + ".0"});
    }
    std::string boolText() { return oneOf<std::string>({"true", "false"}); }
    std::string hexText() { return oneOf<std::string>({"8'hFF", "4'h", "12'h0a", "1'h1", "016'hBEEF"}); }
    std::string binaryText() { return oneOf<std::string>({"4'b1010", "1'b", "2'b00", "08'b1"}); }

    // Properties.

    struct Facets {
        std::string type;
        std::function<std::string()> value;
        bool hasRange;
        bool hasUnits;
        bool descriptionAnywhere;
    };

    std::string listOf(const std::function<std::string()>& value) {
        std::string list = "values { " + value();
        for (int more = below(4); more > 0; --more) list += ", " + value();
        return list + " }";
    }
    std::string flag() {
        return oneOf<std::string>({"test", "simulation", "muxControl", "constraintsOnly"}) + " = " + boolText();
    }
    std::string description() { return "description = " + quoted(anyText()); }
    std::string option(const Facets& facets) {
        switch (below(6)) {
        case 0:
            if (facets.hasRange) return "max = " + facets.value();
            break;
        case 1:
            if (facets.hasUnits) return "units = " + quoted(anyText());
            break;
        case 2:
            if (facets.type == "double") return "precision = " + std::to_string(below(20));
            break;
        case 3:
            if (facets.descriptionAnywhere) return description();
            break;
        case 4: return "default = " + facets.value();
        default: break;
        }
        return flag();
    }
    // The default of a listed one is one of the list, and the first of it when nothing is said.
    std::string body(const Facets& facets) {
        std::string text;
        const bool listed = chance(40);
        const std::string first = facets.value();
        int options = below(5);
        if (listed) text = "values { " + first + maybe(", " + facets.value()) + " }";
        else if (facets.hasRange && chance(50)) text = "min = " + facets.value();
        else text = chance(20) ? "simulation = " + boolText() : "default = " + facets.value();
        while (options-- > 0) {
            const std::string next = option(facets);
            text += ", " + (listed && next.starts_with("default") ? "default = " + first : next);
        }
        return text + (facets.descriptionAnywhere ? "" : maybe(", " + description(), 30));
    }
    std::string boolBody() {
        std::string text = "default = " + boolText();
        for (int options = below(4); options > 0; --options) text += ", " + (chance(70) ? flag() : description());
        return text;
    }
    std::string property(std::set<std::string>& taken) {
        const std::string width = std::to_string(below(70));
        const std::vector<Facets> all = {
            {"int", [this] { return intText(); }, true, true, false},
            {"double", [this] { return doubleText(); }, true, true, false},
            {"string", [this] { return quoted(anyText()); }, false, false, true},
            {width + "'h" + maybe("0F"), [this] { return hexText(); }, true, true, true},
            {width + "'b" + maybe("01"), [this] { return binaryText(); }, true, true, true},
        };
        const std::string named = quoted(freshName(taken));
        switch (below(7)) {
        case 0: return "property bool " + named + ' ' + boolText() + ";";
        case 1: return "property bool " + named + " { " + boolBody() + " }";
        default: {
            const Facets& facets = oneOf(all);
            return "property " + facets.type + space() + named + " {" + space() + body(facets) + space() + "}";
        }
        }
    }

    // Blocks.

    static const Texts& cells() {
        static const Texts names = [] {
            Texts all;
            for (const auto& [type, name] : HDNTCellviewLib::getGlobal()->getTypeToNameMap())
                if (type != HDNTCellviewLib::UNKNOWN) all.push_back(name);
            std::sort(all.begin(), all.end());
            return all;
        }();
        return names;
    }
    std::string pin(std::set<std::string>& taken, const std::string& direction) {
        std::string text =
            "pin " + quoted(freshName(taken) + range()) + ' ' + direction + maybe(" test", 20) + maybe(" abstract", 20);
        if (chance(50))
            text += " " + oneOf<std::string>({"data", "clock", "clear", "enable", "mixed", "preset", "reset", "set",
                                              "setreset", "writeEnable"});
        if (direction != "output" && chance(30))
            text += " " + oneOf<std::string>({"tieLow", "tieHigh", "tieSpecial", "untie", "active", "mustConnect"});
        if (chance(70)) return text + ";";
        text += " {";
        std::set<std::string> properties;
        for (int count = below(3); count > 0; --count) text += space() + property(properties);
        return text + " }";
    }
    std::string attribute() {
        switch (below(4)) {
        case 0: return "internal = " + boolText() + ";";
        case 1: return "test = " + boolText() + ";";
        case 2: return "maturityLevel = " + oneOf<std::string>({"early", "beta", "production", "deprecated"}) + ";";
        default:
            return "primgroup = " +
                   quoted(oneOf<std::string>({"G", "G:S", "G:S, L:M", "G, G", "G:S, :M", "", ":S", "G,", "G : S,  L",
                                              "G:S:T, A, B:C:D", "G:, L:", "\t,\tL"})) +
                   ";";
        }
    }
    std::string block() {
        // Separate mappings hold for registered cells alone.
        const bool registered = chance(60);
        const std::string blockName = registered ? oneOf(cells()) : "CELL_" + std::to_string(below(1000000));
        if (!blocks_.insert(blockName).second) return "";
        std::string text = "block " + quoted(blockName) + space() + "{\n";
        std::set<std::string> pins;
        std::set<std::string> properties;
        for (int attributes = below(4); attributes > 0; --attributes) text += attribute() + "\n";
        for (int count = below(6); count > 0; --count)
            text += pin(pins, oneOf<std::string>({"input", "output", "bidir"})) + space() +
                    maybe(property(properties)) + "\n";
        for (int count = chance(30) ? below(3) : 0; count > 0; --count) text += pin(pins, "internal") + "\n";
        for (int count = below(5); count > 0; --count) text += property(properties) + "\n";
        text += maybe(attribute(), 20) + "}\n";
        const std::string section = oneOf<std::string>({"mapsto", "expandsto", "modifiedby", "retargetsto"});
        if (chance(40)) text += section + netlist();
        if (registered && chance(30)) text += "block " + quoted(blockName) + ' ' + section + netlist();
        return text;
    }

    // Mappings.

    void declareFunctions() {
        for (const std::string& type : types) {
            functions_ += "function " + type + " " + type + "Of(string);\n";
            functions_ += "function " + type + " " + type + "Pair(" + type + ", " + type + ");\n";
        }
        functions_ +=
            "function string bitsOf(4'b0, 16'h);\nfunction 8'h wide();\nfunction 4'b narrow(int, double, bool);\n";
        functions_ += "function bool a234567890123456789012345678901();\n";
    }
    std::string signalName() { return oneOf(signals_); }
    std::string pinReference() {
        return maybe(quoted(anyText()) + " ") + quoted(maybe("~", 20) + name() + maybe("[3]", 20));
    }
    std::string pinReferences() {
        std::string text = pinReference();
        for (int more = below(4); more > 0; --more) text += "," + space() + pinReference();
        return text;
    }
    std::string constant(const std::string& type) {
        if (type == "int") return intText();
        if (type == "double") return doubleText();
        return type == "bool" ? boolText() : quoted(anyText());
    }
    std::string call(const std::string& type, int depth) {
        if (type == "string" && chance(20)) return chance(50) ? "wide()" : "bitsOf(\"1\", wide())";
        if (type == "bool" && chance(20)) return "a234567890123456789012345678901()";
        if (chance(50)) return type + "Of(" + expression("string", depth - 1) + ")";
        return type + "Pair(" + expression(type, depth - 1) + "," + space() + expression(type, depth - 1) + ")";
    }
    std::string operation(const std::string& type, int depth) {
        const auto binary = [&](const std::string& operands, const Texts& operators) {
            const std::string left = expression(operands, depth - 1);
            return left + " " + oneOf(operators) + " " + expression(operands, depth - 1);
        };
        if (type == "int" || type == "double") {
            if (chance(20)) return "-" + space() + "(" + expression(type, depth - 1) + ")";
            return binary(type, type == "int" ? Texts{"+", "-", "*", "/", "%"} : Texts{"+", "-", "*", "/"});
        }
        if (type == "string") return call(type, depth);
        if (chance(50)) return binary(type, {"&&", "||", "==", "!="});
        const std::string operands = oneOf(types);
        if (operands == "string") return binary(operands, {"==", "!="});
        return binary(operands, {"==", "!=", "<", ">", "<=", ">=", "&&", "||"});
    }
    // Operands of a type that does not bind as the tree says are put in parentheses; so are some others.
    std::string expression(const std::string& type, int depth) {
        if (depth <= 0) return constant(type);
        switch (below(4)) {
        case 0: return constant(type);
        case 1: return call(type, depth);
        default: return "(" + operation(type, depth) + ")";
        }
    }
    std::string outermost(const std::string& type) {
        const std::string text = expression(type, below(5));
        return chance(50) && text.front() == '(' ? text.substr(1, text.size() - 2) : text;
    }
    std::string statement(int depth) {
        switch (below(depth > 0 ? 9 : 7)) {
        case 0: return "inst " + quoted(anyText()) + " " + quoted(anyText()) + ";";
        case 1: return "connect " + quoted(signalName()) + " :" + space() + pinReferences() + ";";
        case 2: return "signal " + quoted("local" + std::to_string(below(9)) + range()) + ";";
        case 3: return "signal " + quoted("bound" + std::to_string(below(9))) + " : " + pinReferences() + ";";
        case 4:
            return "assign block property " + quoted(anyText()) + " " + quoted(anyText()) + " " +
                   outermost(oneOf(types)) + ";";
        case 5:
            return "assign pin property " + pinReference() + ", " + quoted(anyText()) + " " + outermost(oneOf(types)) +
                   ";";
        case 6: return call(oneOf(types), 3) + ";";
        case 7: return statementBlock(depth);
        default: return ifStatement(depth);
        }
    }
    std::string statementBlock(int depth) {
        std::string text = "{";
        for (int count = below(4); count > 0; --count) text += space() + statement(depth - 1);
        return text + " }";
    }
    // A branch that ends in an "if" of its own takes an "else" that follows.
    std::string ifStatement(int depth) {
        return "if (" + outermost("bool") + ")" + space() + statement(depth - 1) + space() +
               maybe("else " + statement(depth - 1));
    }
    std::string netlist() {
        signals_ = {"@0", "@1", "plain", "ranged[2]", "tied"};
        std::string text =
            " {\nsignal \"@0\"; signal \"@1\"; signal \"plain\"; signal \"ranged[3:0]\";\nsignal \"tied\" : \"O\";\n";
        for (int count = below(12); count > 0; --count) {
            const std::string next = statement(3);
            if (!next.starts_with('{')) text += next + space() + "\n"; // no home for it at this level
        }
        return text + "}\n";
    }

    std::mt19937_64 random_;
    std::set<std::string> blocks_;
    std::string functions_;
    Texts signals_;
};

} // namespace

std::string libraryText(uint64_t seed) { return Generator(seed).library(); }

} // namespace generator
