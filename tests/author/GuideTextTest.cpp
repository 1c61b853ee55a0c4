#include "author/exchange/hdlNames.internal.h"
#include "author/guide/SourceTexts.internal.h"
#include "author/guide/instantiation.internal.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

// Texts that pages of blocks show: where they stand in the files, and how they are placed.
namespace {

using namespace hdnt::author;

class Folder {
public:
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string write(const std::string& name, const std::string& text) {
        std::filesystem::create_directory(path_);
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path_ / name;
    }

private:
    std::filesystem::path path_ = "guide_text." + std::to_string(getpid());
};

/// "anchor|html" for each line, and what is left out.
std::string shown(const Json& source) {
    std::string text;
    for (const Json& stretch : source) {
        for (const Json& line : stretch["lines"])
            text += line["anchor"].get<std::string>() + "|" + line["html"].get<std::string>() + "\n";
        if (stretch["leftOut"] != 0) text += "+" + stretch["leftOut"].dump() + "\n";
    }
    return text;
}

hdnt::Loaded loaded(const std::string& text, HDNTLibrary* parent = nullptr) {
    hdnt::LoadOptions options;
    options.parent = parent;
    options.check = false;
    options.texts["t.btl"] = text;
    return hdnt::load("t.btl", options);
}

Json factsOf(HDNTBlock& block) {
    hdnt::SourcePlaces places;
    return jsonOf(block, places);
}

std::string block(const std::string& name, const std::string& entities) {
    return "library \"L\" { block \"" + name + "\" {\n" + entities + "} }";
}

/// What is placed of a block: its name, its pins, its properties with their defaults.
std::set<std::string> facts(const Json& block) {
    std::set<std::string> all = {block["name"]};
    for (const Json& bus : block["buses"])
        for (const Json& pin : bus["pins"])
            if (bus["direction"] != "internal" && !bus["isAbstract"])
                all.insert("pin " + pin["name"].get<std::string>());
    for (const Json& each : block["properties"])
        if (!each["isReadOnly"] && !each["isHidden"] && !each["isSimulation"] && !each["isTest"])
            all.insert(each["name"].get<std::string>() + " " + each["default"].dump());
    return all;
}

} // namespace

TEST(GuideText, SourceOfABlock) {
    Folder folder;
    const std::string first = folder.write("a.btl", "library \"L\" {\n"
                                                    "  // Not of it.\n\n"
                                                    "  /* One\r\n\t<two> */\n"
                                                    "  block \"Gate\" { } // its end\n"
                                                    "  // Of the next.\n"
                                                    "  block \"B\" { } block \"GATE\" mapsto { f(1); }\n}\n");
    const std::string second = folder.write("b.btl", "library \"L\" { block \"B\" { } block \"gate\" mapsto {\n} }");
    const guide::SourceTexts texts({first, second, first, "absent.btl"});
    const Json source = texts.of("gAtE");
    EXPECT_EQ(shown(source),
              "line-4|  <span class=\"k-comment\">/* One</span>\n"
              "line-5|<span class=\"k-comment\">\t&lt;two&gt; */</span>\n"
              "line-6|  <span class=\"k-keyword\">block</span> <span class=\"k-type\">&quot;Gate&quot;</span> { } "
              "<span class=\"k-comment\">// its end</span>\n"
              "line-8|<span class=\"k-keyword\">block</span> <span class=\"k-type\">&quot;GATE&quot;</span> "
              "<span class=\"k-keyword\">mapsto</span> { <span class=\"k-function\">f</span>("
              "<span class=\"k-number\">1</span>); }\n"
              "line-2-1|<span class=\"k-keyword\">block</span> <span class=\"k-type\">&quot;gate&quot;</span> "
              "<span class=\"k-keyword\">mapsto</span> {\n"
              "line-2-2|}\n");
    EXPECT_EQ(source[1]["line"], 8);
    EXPECT_EQ(guide::lineAnchor(source, first, 8), "line-8");
    EXPECT_EQ(guide::lineAnchor(source, second, 2), "line-2-2");
    EXPECT_EQ(guide::lineAnchor(source, first, 7), "");
    EXPECT_EQ(guide::lineAnchor(source, "absent.btl", 1), "");
    EXPECT_TRUE(texts.of("absent").empty());
}

TEST(GuideText, SourceThatIsTooLong) {
    Folder folder;
    const std::string pin = "pin \"A\" input;\n";
    std::string many;
    for (int i = 0; i < 6000; ++i) many += pin;
    const std::string lines =
        folder.write("lines.btl", "library \"L\" {\nblock \"A\" {\n" + many +
                                      "}\n"
                                      "block \"A\" mapsto {\n} block \"B\" { } block \"B\" mapsto {\n} }");
    std::erase(many, '\n');
    for (int i = 0; i < 4; ++i) many += many;
    const std::string bytes = folder.write("bytes.btl", "library \"L\" { block \"C\" {" + many + "\n} }");
    const guide::SourceTexts texts({lines, bytes});
    const Json first = texts.of("A");
    EXPECT_EQ(first[0]["lines"].size(), 5000);
    EXPECT_EQ(first[0]["leftOut"], 1002);
    EXPECT_EQ(first[1]["lines"].size(), 0);
    EXPECT_EQ(first[1]["leftOut"], 2);
    EXPECT_EQ(guide::lineAnchor(first, lines, 6003), "");
    const Json shared = texts.of("B"); // both parts are in one line
    EXPECT_NE(shared[0]["lines"][0]["anchor"], "");
    EXPECT_EQ(shared[1]["lines"][0]["anchor"], "");
    const Json wide = texts.of("C");
    EXPECT_EQ(wide[0]["lines"].size(), 1);
    EXPECT_EQ(wide[0]["leftOut"], 2);
}

TEST(GuideText, NamesOfOtherLanguages) {
    const struct {
        std::string name, verilog, vhdl;
    } cases[] = {
        {"DATA_1", "DATA_1", "DATA_1"},
        {"a__b", "a__b", "\\a__b\\"},
        {"_a", "_a", "\\_a\\"},
        {"a_", "a_", "\\a_\\"},
        {"a$", "a$", "\\a$\\"},
        {"1st", "\\1st ", "\\1st\\"},
        {"a b", "\\a\\x20b ", "\\a b\\"},
        {"a\\b", "\\a\\b ", "\\a\\\\b\\"},
        {"`if", "\\\\x60if ", "\\`if\\"},
        {"\xc3\xa4\n", "\\\\xc3\\xa4\\x0a ", "\\\\\\xc3\\\\xa4\\\\x0a\\"},
        {"module", "\\module ", "module"},
        {"Module", "Module", "Module"},
        {"always", "\\always ", "always"},
        {"xor", "\\xor ", "\\xor\\"},
        {"logic", "\\logic ", "logic"},
        {"Signal", "Signal", "\\Signal\\"},
        {"ABS", "ABS", "\\ABS\\"},
        {"", "unnamed", "unnamed"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(verilogName(each.name), each.verilog);
        EXPECT_EQ(vhdlName(each.name), each.vhdl);
    }
}

TEST(GuideText, Instances) {
    const auto library = loaded(block("reg", R"(
        pin "u0" input clock mustConnect; pin "D[0:3]" bidir test; pin "K[3]" output; pin "K[7:5]" output;
        pin "do" input; pin "Do" input; pin "V" input abstract; pin "N" internal;
        property string "s" { values { "\ é", "B" }, default = "\ é" }
        property int "d" { default = -2147483648, units = "km" }
        property int "none" { min = 3, max = 9 }
        property double "big" { default = 100000000000000000000000.0 }
        property 6'h "six" { default = 6'h2A }
        property 8'b "eight" { default = 8'b10100101 }
        property bool "on" { default = true }
        property int "late" { simulation = true, default = 1 }
    )"));
    ASSERT_TRUE(library) << library.diagnostics[0].message;
    const Json json = factsOf(*library.library->getTypeBlock(0));
    EXPECT_EQ(guide::verilogInstance(json), R"(// V: abstract, no port
// N: internal, no port
// none: no default; int: 3 to 9
\reg  #(
    .s("\\ \303\251"),   // string: \ é, B
    .d(-2147483648),     // int, km
    .big(1.0e+23),       // double
    .six(6'h2A),         // 6 bits: 00 to 3F
    .eight(8'b10100101), // 8 bits
    .on(1'b1)            // bool
) u1 (
    .u0(u0),     // input, clock, mustConnect
    .D(D),       // inout [0:3], for tests
    .K(K),       // output [7:3], pins K[3:3] K[7:5]
    .\do (\do ), // input
    .Do(Do)      // input
);
)");
    EXPECT_EQ(guide::vhdlInstance(json), R"(-- V: abstract, no port
-- N: internal, no port
-- none: no default; int: 3 to 9
u1 : reg
    generic map (
        s => "\ " & character'val(195) & "" & character'val(169) & "", -- string: \ é, B
        \d\ => -2147483648, -- int, km
        big => 1.0e+23,     -- double
        six => B"101010",   -- 6 bits: 00 to 3F
        eight => X"A5",     -- 8 bits
        \on\ => TRUE        -- bool
    )
    port map (
        u0 => u0,     -- in std_logic, clock, mustConnect
        \D\ => \D\,   -- inout std_logic_vector(0 to 3), for tests
        K => K,       -- out std_logic_vector(7 downto 3), pins K[3:3] K[7:5]
        \do\ => \do\, -- in std_logic
        \Do\ => \Do\  -- in std_logic
    );
)");
}

TEST(GuideText, StatementsThatCannotBeWritten) {
    const auto library =
        loaded(block("GATE", R"(pin "A" input; pin "B" input; property string "S" { default = "x" })"));
    ASSERT_TRUE(library);
    Json json = factsOf(*library.library->getTypeBlock(0));
    json["buses"][0]["name"] = "~A";
    json["buses"][1]["name"] = "B\n";
    json["properties"][0]["default"] = "say \"x\"";
    EXPECT_EQ(guide::ntlInstance(json), R"(inst "u0" "GATE";
// ~A: NTL reads another pin
// B\n: NTL has no text for it
// S: NTL has no text for it
)");
    json["name"] = "\xff";
    EXPECT_EQ(guide::ntlInstance(json), "// \\xff: NTL has no text for it\n");
}

// Each stands in a mapping of its own, which then places the block with its defaults.
TEST(GuideText, StatementsOfAllBlocksAreTaken) {
    const hdnt::Loaded cells = hdnt::load(std::string(HDNT_DATA) + "/tessels");
    ASSERT_TRUE(cells);
    std::string text = "library \"W\" {\n";
    const std::size_t count = cells.library->getNumTypeBlocks(false);
    for (std::size_t i = 0; i < count; ++i)
        text += "block \"W" + std::to_string(i) + "\" { } mapsto {\n" +
                guide::ntlInstance(factsOf(*cells.library->getTypeBlock(i))) + "}\n";
    const hdnt::Loaded placed = loaded(text + "}\n", cells.library.get());
    ASSERT_TRUE(placed);
    for (std::size_t i = 0; i < count; ++i) {
        HDNTExpansion expansion(*placed.library->getTypeBlock(i));
        EXPECT_TRUE(expansion.expand());
        const HDNTExpansion::Level& level = expansion.levels().at(0);
        std::set<std::string> found = {level.instances.at(0).type};
        for (const auto& connection : level.connections) found.insert("pin " + connection.pin);
        for (const auto& value : level.instances[0].properties)
            found.insert(value.name + " " + jsonOf(value.value).dump());
        EXPECT_EQ(found, facts(factsOf(*cells.library->getTypeBlock(i))));
    }
}
