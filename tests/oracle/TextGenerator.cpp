#include "tests/oracle/TextGenerator.h"

#include <array>
#include <iterator>

namespace oracle {

static const char* const Keywords[] = {"library",
                                       "block",
                                       "property",
                                       "pin",
                                       "int",
                                       "string",
                                       "bool",
                                       "end",
                                       "input",
                                       "output",
                                       "bidir",
                                       "NULL",
                                       "double",
                                       "pinlist",
                                       "default",
                                       "min",
                                       "max",
                                       "precision",
                                       "mapsto",
                                       "inst",
                                       "connect",
                                       "assign",
                                       "signal",
                                       "function",
                                       "if",
                                       "else",
                                       "modifiedby",
                                       "description",
                                       "data",
                                       "clock",
                                       "enable",
                                       "reset",
                                       "setreset",
                                       "simulation",
                                       "tieLow",
                                       "tieHigh",
                                       "tieSpecial",
                                       "untie",
                                       "units",
                                       "values",
                                       "internal",
                                       "test",
                                       "primgroup",
                                       "constraintsOnly",
                                       "maturityLevel",
                                       "early",
                                       "beta",
                                       "production",
                                       "deprecated",
                                       "expandsto",
                                       "set",
                                       "clear",
                                       "preset",
                                       "writeEnable",
                                       "retargetsto",
                                       "mixed",
                                       "muxControl",
                                       "mustConnect",
                                       "active",
                                       "abstract",
                                       "true",
                                       "false",
                                       "INCLUDE",
                                       "INLINE"};

static const char* const Operators[] = {">=", "<=", "==", "!=", "&&", "||", "$",  "%", "&", "(", ")",  "*",  "+",
                                        ",",  "-",  ".",  "/",  ":",  ";",  "<",  "=", ">", "[", "]",  "{",  "}",
                                        "!",  "|",  "#",  "'",  "?",  "@",  "\\", "^", "`", "~", "\"", "--", "-/"};

template <typename Table>
static const char* pick(const Table& table, size_t random) {
    return table[random % std::size(table)];
}

std::uint64_t TextGenerator::next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

std::string TextGenerator::word() {
    static const std::array<size_t, 8> lengths = {1, 2, 30, 31, 32, 33, 63, 200};
    static const char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";
    const size_t kind = below(10);
    if (kind < 6) return pick(Keywords, next() % (std::size(Keywords) - 2));
    if (kind < 9) {
        std::string near = pick(Keywords, next());
        const size_t at = below(near.size());
        switch (below(5)) {
        case 0: return near + letters[below(63)];
        case 1: return near.substr(0, at);
        case 2: near[at] = letters[below(63)]; return near;
        case 3: near[at] = static_cast<char>(near[at] ^ 0x20); return near;
        default: return letters[below(63)] + near;
        }
    }
    std::string text(1, letters[below(53)]);
    const size_t length = chance(50) ? lengths[below(lengths.size())] : 1 + below(12);
    while (text.size() < length) text += letters[below(63)];
    return text;
}

std::string TextGenerator::number() {
    static const char* const large[] = {"2147483647",
                                        "2147483648",
                                        "-2147483648",
                                        "-2147483649",
                                        "4294967295",
                                        "4294967296",
                                        "9223372036854775807",
                                        "9223372036854775808",
                                        "-9223372036854775808",
                                        "-9223372036854775809",
                                        "99999999999999999999999",
                                        "0",
                                        "-0",
                                        "007",
                                        "-",
                                        "--1",
                                        "1e5",
                                        "1.5e-3",
                                        ".5",
                                        "5.",
                                        "-5.",
                                        "1..2",
                                        "1.7976931348623157",
                                        "0.1",
                                        "1.2.3",
                                        "1,5"};
    static const char* const bits[] = {"'h", "'b", "'H", "'B", "'", "'h", "'b", "'h0"};
    static const char digits[] = "0123456789abcdefABCDEFgGhb_";
    if (chance(30)) return pick(large, next());
    std::string text = chance(25) ? "-" : "";
    for (size_t count = 1 + below(chance(10) ? 330 : 5); count > 0; --count) text += static_cast<char>('0' + below(10));
    if (chance(30)) {
        text += pick(bits, next());
        for (size_t count = below(6); count > 0; --count)
            text += digits[chance(50) ? below(2) : below(sizeof digits - 1)];
    }
    if (chance(20)) {
        text += '.';
        for (size_t count = below(8); count > 0; --count) text += static_cast<char>('0' + below(10));
    }
    return text;
}

std::string TextGenerator::quoted() {
    static const char* const inner[] = {"D",  "a\\",        "x y", "\t", "//",       "/*",
                                        "*/", "INCLUDE x;", "'",   "\r", "\xc3\xa9", "%s%n"};
    std::string text = "\"";
    for (size_t parts = below(4); parts > 0; --parts) text += pick(inner, next());
    if (chance(3)) text += '\0';
    return chance(85) ? text + '"' : text;
}

std::string TextGenerator::comment() {
    static const char* const texts[] = {
        "/* a */", "/**/",           "/*/",       "/* /* */", "*/",       "/*",         "/***/", "// c", "//",
        "///* x",  "/*\n*\n\t*\n*/", "/* \"x */", "// \"x",   "/*\n\n*/", "/*a*b**c*/", "//\t\r"};
    return pick(texts, next());
}

std::string TextGenerator::blank() {
    static const char* const texts[] = {"\t",     "\t\t",   " \t", "\t ",  "        ", "       \t", "\n",   "\n\n",
                                        "\n\n\n", "\n\t\n", " \n", "\r\n", "\r",       "\n \n",     "\n\t", "  "};
    return pick(texts, next());
}

std::string TextGenerator::noise() {
    static const char alphabet[] = "\"/*-'hb01aAfFgG_.;\n\t !=<>&|\r";
    std::string text;
    for (size_t length = 1 + below(30); length > 0; --length) text += alphabet[below(sizeof alphabet)];
    return text;
}

std::string TextGenerator::hostile() {
    switch (below(7)) {
    case 6: return noise();
    case 0: return std::string(1, '\0');
    case 1: return std::string(1, static_cast<char>(128 + below(128)));
    case 2: return "\xef\xbb\xbf";
    case 3: return std::string(1, static_cast<char>(1 + below(31)));
    case 4: return pick(Operators, next());
    default: return std::string(1 + below(40), "\"/*-'\t !x0\n"[below(11)]);
    }
}

std::string TextGenerator::stem() const {
    return std::string("g").append(std::to_string(seed_)).append("_").append(std::to_string(index_)).append("_");
}

std::string TextGenerator::fileName() {
    const std::string base = stem();
    const size_t kind = below(20);
    if (kind == 0) return "";
    if (kind == 1) return std::string("/nowhere/").append(base);
    if (kind == 2) return base + "none";
    if (kind == 3) return std::string("\"").append(base).append("0\"");
    if (kind == 4 && !made_.folders.empty()) return made_.folders[0];
    const size_t count = 4;
    return base + std::to_string(firstFile_ + (firstFile_ < count ? below(count - firstFile_) : count));
}

std::string TextGenerator::statement() {
    static const char* const before[] = {" ",  " ", " ",  " ",     "\t",     "\t\t",         " \t ",
                                         "  ", "",  "\n", " \n\t", " x y\n", "\t \tq\t\tr\n"};
    static const char* const after[] = {";\n",    ";\n", ";\n", ";\n",   "; pin\n", " ;\n",
                                        "\t;;\n", ";",   "\n",  " x;\n", ";\r\n"};
    std::string text = std::string(chance(50) ? "INCLUDE" : "INLINE") + pick(before, next()) + fileName();
    if (chance(2)) text += '\0';
    return text + pick(after, next());
}

std::string TextGenerator::piece() {
    const size_t kind = below(100);
    if (kind < 36) return word();
    if (kind < 50) return number();
    if (kind < 62) return quoted();
    if (kind < 68) return comment();
    if (kind < 80) return blank();
    if (kind < 92) return pick(Operators, next());
    if (kind < 94) return statement();
    if (includes_) return statement();
    return hostile();
}

std::string TextGenerator::body(size_t pieces) {
    std::string text;
    for (; pieces > 0; --pieces) {
        text += piece();
        if (chance(60)) text += ' ';
        if (chance(12)) text += '\n';
    }
    return text;
}

std::string TextGenerator::fileContent() {
    switch (below(10)) {
    case 0: return "";
    case 1: return "\n";
    case 2: return "\n\n\n";
    case 3: return body(1 + below(4)) + "/* open\n";
    case 4: return "pin";
    case 5: return "block\n\"x";
    case 6: return body(1 + below(3)) + "\n" + statement();
    case 7: return chance(50) ? "INCLUDE " : "x\nINLINE";
    default: return body(1 + below(8)) + (chance(50) ? "\n" : "");
    }
}

void TextGenerator::addFiles() {
    const std::string base = stem();
    if (chance(20)) made_.folders.push_back(base + "dir");
    for (size_t number = 0; number < 4; ++number) {
        firstFile_ = number + 1;
        if (chance(80)) made_.files.emplace_back(base + std::to_string(number), fileContent());
    }
    firstFile_ = 0;
    if (chance(2)) addChain();
}

/// A file that names itself, so that the limit of open files is met.
void TextGenerator::addChain() {
    const std::string name = stem() + "self";
    const std::string nested = std::string("INLINE ").append(name).append(";");
    made_.files.emplace_back(name, body(1) + "\n" + nested + (chance(50) ? "\n" : " x\ny"));
    made_.text += nested + "\n";
}

GeneratedText TextGenerator::make(std::uint64_t index) {
    index_ = index;
    state_ = seed_;
    state_ = next() ^ (index * 0xd1342543de82ef95u);
    state_ = next();
    made_ = {};
    made_.named = chance(50);
    includes_ = chance(15);
    firstFile_ = 4;
    if (includes_) addFiles();

    const size_t size = below(2000);
    size_t pieces = 1 + below(40);
    if (size < 20) pieces = 400;
    if (size < 4) pieces = 2500;
    if (size == 0) pieces = 9000;
    if (chance(5)) made_.text += "\xef\xbb\xbf";
    made_.text += body(pieces);
    if (chance(3)) made_.text.insert(below(made_.text.size() + 1), 1, '\0');
    if (chance(25) && !made_.text.empty()) made_.text.resize(below(made_.text.size()));
    if (made_.text.size() > 65536) made_.text.resize(65536);
    return std::move(made_);
}

} // namespace oracle
