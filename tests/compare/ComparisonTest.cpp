#include "tests/support/Library.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>

using support::parsed;
using support::Reports;

namespace {

// One of everything.
const std::string base = R"NTL(library "L" {
function int steps ( int, double );
function bool isSlow ( );
function int intProperty ( string );
function bool boolProperty ( string );
block "ADD" {
    test = false;
    internal = false;
    maturityLevel = beta;
    primgroup = "MATH:ADD, OLD:SUM";
    pin "D[7:0]" input data tieLow { property bool "HOT" false; }
    pin "CLK" input clock;
    pin "MUST" input data mustConnect;
    pin "Q" output;
    property int "WIDTH" { min = 1, max = 32, default = 8, units = "bits", description = "Bits." }
    property double "DUTY" { values { 0.25, 0.5 }, default = 0.5, precision = 2 }
    property bool "FAST" { default = true }
    property string "MODE" { values { "A", "B, C" }, default = "A" }
    property 10'h "INIT" { min = 10'h001, default = 10'h00F }
    property 2'b "SEL" { default = 2'b01 }
} mapsto {
    isSlow();
    inst "U0" "GATE_BUFFER";
    inst "U1" "GATE_BUFFER";
    signal "N[3:0]";
    signal "S" : "U0" "Q", "CLK";
    connect "N[0]" : "U0" "D", "U1" "~D";
    connect "N[1]" : "U1" "Q";
    assign pin property "U0" "Q", "LOAD" 1.5;
    assign block property "U0" "STEP" intProperty("WIDTH") - 2 - 3;
    assign block property "U1" "STEP" 1;
    if (boolProperty("FAST")) { inst "A" "HOLD"; inst "B" "HOLD"; } else { }
    if (isSlow()) steps(1, 2.0);
    steps(4, 2.0);
}
block "HOLD" { pin "I" input; pin "O" output; property int "A" { default = 0 } property int "B" { default = 0 } }
block "MUX" { }
}
)NTL";

std::string edited(const std::string& from, const std::string& to) {
    std::string text = base;
    const size_t at = text.find(from);
    if (at == text.npos) return {};
    return text.replace(at, from.size(), to);
}

// A line "effect change element/facet path: old -> new" for each.
std::string linesOf(const std::vector<HDNTDifference>& differences) {
    std::string lines;
    for (const HDNTDifference& item : differences)
        lines += std::string(lines.empty() ? "" : "\n") +
                 (std::string(HDNTComparison::nameOf(item.effect)) + ' ' + HDNTComparison::nameOf(item.change) + ' ' +
                  HDNTComparison::nameOf(item.element) + '/' + HDNTComparison::nameOf(item.facet) + ' ' + item.path +
                  ": " + item.oldValue + " -> " + item.newValue);
    return lines;
}

std::unique_ptr<HDNTLibrary> finished(const std::string& text) {
    auto library = parsed(text);
    if (library) library->finalize();
    return library;
}

std::string compared(const std::string& before, const std::string& after) {
    const auto a = finished(before);
    const auto b = finished(after);
    if (!a || !b) return "does not parse";
    const std::string lines = linesOf(HDNTComparison::compare(*a, *b));
    EXPECT_EQ(linesOf(HDNTComparison::compare(HDNTModelTree(*a), HDNTModelTree(*b))), lines);
    return lines;
}

} // namespace

TEST(Comparison, OneEditIsOneDifference) {
    const struct {
        const char* from;
        const char* to;
        const char* expected;
    } cases[] = {
        {"{ values { 0.25, 0.5 }, default = 0.5,", "{ values { 0.25, 0.5, 1.0 }, default = 0.5,",
         "compatible changed property/values ADD/DUTY: 0.25, 0.5 -> 0.25, 0.5, 1.0"},
        {"{ 0.25, 0.5 }", "{ 0.5, 0.25 }", "text only changed property/values ADD/DUTY: 0.25, 0.5 -> 0.5, 0.25"},
        {"{ 0.25, 0.5 }", "{ 0.5 }", "breaking changed property/values ADD/DUTY: 0.25, 0.5 -> 0.5"},
        {"\"A\", \"B, C\"", "\"A\", \"B\", \"C\"",
         "breaking changed property/values ADD/MODE: \"A\", \"B, C\" -> \"A\", \"B\", \"C\""},
        {"precision = 2", "precision = 1", "breaking changed property/precision ADD/DUTY: 2 -> 1"},
        {"precision = 2", "precision = 6", "compatible changed property/precision ADD/DUTY: 2 -> 6"},
        {"min = 1,", "min = 2,", "breaking changed property/minimum ADD/WIDTH: 1 -> 2"},
        {"min = 1,", "min = -9,", "compatible changed property/minimum ADD/WIDTH: 1 -> -9"},
        {"max = 32,", "", "compatible changed property/maximum ADD/WIDTH: 32 -> none"},
        {"min = 10'h001", "min = 10'h000", "compatible changed property/minimum ADD/INIT: 10'h001 -> 10'h000"},
        {"min = 10'h001", "min = 10'h0a0", "breaking changed property/minimum ADD/INIT: 10'h001 -> 10'h0a0"},
        {"min = 10'h001", "min = 10'h002", "breaking changed property/minimum ADD/INIT: 10'h001 -> 10'h002"},
        {"default = 10'h00F", "default = 10'hF", "breaking changed property/default ADD/INIT: 10'h00F -> 10'hF"},
        {"default = 10'h00F", "max = 10'h3FF, default = 10'h00F",
         "breaking changed property/maximum ADD/INIT: none -> 10'h3FF"},
        {"property 2'b \"SEL\"", "property 3'b \"SEL\"", "breaking changed property/width ADD/SEL: 2 -> 3"},
        {"\"FAST\" { default = true }", "\"FAST\" { default = false }",
         "breaking changed property/default ADD/FAST: true -> false"},
        {"units = \"bits\"", "units = \"b\"", "text only changed property/units ADD/WIDTH: \"bits\" -> \"b\""},
        {", description = \"Bits.\"", "", "text only changed property/description ADD/WIDTH: \"Bits.\" -> none"},
        {"default = 2'b01", "default = 2'b01, test = true", "breaking changed property/test ADD/SEL: false -> true"},
        {"default = 2'b01", "default = 2'b01, simulation = true",
         "breaking changed property/simulation ADD/SEL: false -> true"},
        {"default = 2'b01", "default = 2'b01, constraintsOnly = true",
         "breaking changed property/constraints only ADD/SEL: false -> true"},
        {"default = true }", "default = true, muxControl = true }",
         "breaking changed property/mux control ADD/FAST: false -> true"},
        {"property bool \"HOT\" false", "property bool \"HOT\" true",
         "breaking changed property/default ADD/D/HOT: false -> true"},
        {"{ property bool \"HOT\" false; }", ";",
         "breaking removed property/whole ADD/D/HOT: type bool, default false -> "},
        {"property bool \"FAST\" { default = true }", "",
         "breaking removed property/whole ADD/FAST: type bool, default true -> "},
        {"\"CLK\" input clock", "\"CLK\" input enable", "breaking changed pin/type ADD/CLK: clock -> enable"},
        {"pin \"Q\" output;", "pin \"Q\" internal;", "breaking changed pin/direction ADD/Q: output -> internal"},
        {"D[7:0]", "D[0:7]", "breaking changed pin/range ADD/D: [7:0] -> [0:7]"},
        {"data tieLow", "data", "compatible changed pin/required value ADD/D: tieLow -> none"},
        {"data tieLow", "data tieHigh", "breaking changed pin/required value ADD/D: tieLow -> tieHigh"},
        {"input clock;", "input clock mustConnect;",
         "breaking changed pin/required value ADD/CLK: none -> mustConnect"},
        {"\"CLK\" input", "\"CLK\" input test", "breaking changed pin/test ADD/CLK: false -> true"},
        {"\"CLK\" input", "\"CLK\" input abstract", "breaking changed pin/abstract ADD/CLK: false -> true"},
        {"pin \"Q\" output;", "pin \"Q\" output; pin \"R\" output;",
         "compatible added pin/whole ADD/R:  -> direction output, type data"},
        {"pin \"Q\" output;", "pin \"Q\" output; pin \"R\" input;",
         "breaking added pin/whole ADD/R:  -> direction input, type data"},
        {"pin \"Q\" output;", "pin \"Q\" output; pin \"R\" input tieLow;",
         "compatible added pin/whole ADD/R:  -> direction input, type data, required value tieLow"},
        {"pin \"Q\" output;", "pin \"R\" output; pin \"Q\" output;",
         "breaking added pin/whole ADD/R:  -> direction output, type data"},
        {"pin \"I\" input; pin \"O\" output;", "pin \"O\" output; pin \"I\" input;",
         "breaking changed pin/order HOLD: I, O -> O, I"},
        {"property int \"A\" { default = 0 } property int \"B\" { default = 0 }",
         "property int \"B\" { default = 0 } property int \"A\" { default = 0 }",
         "text only changed property/order HOLD: A, B -> B, A"},
        {"property int \"A\"", "property int \"A\" { default = 0 } property int \"A\"",
         "compatible added property/whole HOLD/A#2:  -> type int, default 0"},
        {"test = false", "test = true", "breaking changed block/test ADD: false -> true"},
        {"internal = false", "internal = true", "breaking changed block/internal ADD: false -> true"},
        {"beta", "deprecated", "compatible changed block/maturity ADD: beta -> deprecated"},
        {"beta", "early", "breaking changed block/maturity ADD: beta -> early"},
        {"MATH:", "LOGIC:", "compatible changed block/group ADD: \"MATH\" -> \"LOGIC\""},
        {"MATH:ADD", "MATH", "compatible changed block/subgroup ADD: \"ADD\" -> none"},
        {"OLD:SUM", "MATH:SUM", "compatible changed block/legacy group ADD: \"OLD\" -> as group"},
        {"OLD:SUM", "OLD", "compatible changed block/legacy subgroup ADD: \"SUM\" -> none"},
        {"block \"MUX\" { }", "", "breaking removed block/whole MUX:  -> "},
        {"block \"MUX\" { }", "block \"MUX\" { } block \"GATE\" { internal = true; }",
         "compatible added block/whole GATE:  -> internal true"},
        {"block \"MUX\" { }", "block \"MUX\" { pin \"Q\" output; }",
         "compatible added pin/whole MUX/Q:  -> direction output, type data"},
        {"pin \"Q\" output;", "pin \"Q\" output; pin \"X\" internal;",
         "compatible added pin/whole ADD/X:  -> direction internal, type data"},
        {"block \"MUX\" { }", "block \"mux\" { }",
         "breaking removed block/whole MUX:  -> \n"
         "compatible added block/whole mux:  -> "},
        {"library \"L\"", "library \"M\"", "text only changed library/name : L -> M"},
        {"function int steps ( int, double )", "function int steps ( int )",
         "breaking changed function/formals steps: int, double -> int"},
        {"function int steps", "function bool steps", "breaking changed function/type steps: int -> bool"},
        {"function bool isSlow ( );", "function bool isSlow ( ); function int g ( );",
         "compatible added function/whole g:  -> type int, formals "},
        {"function int steps ( int, double );\nfunction bool isSlow ( );",
         "function bool isSlow ( );\nfunction int steps ( int, double );",
         "text only changed function/order : steps, isSlow -> isSlow, steps"},
        {"block \"ADD\" {", "block \"GATE\" { pin \"A\" input; }\nblock \"ADD\" {",
         "compatible added block/whole GATE:  -> "},
        {"signal \"N[3:0]\";\n    signal \"S\" : \"U0\" \"Q\", \"CLK\";",
         "signal \"S\" : \"U0\" \"Q\", \"CLK\";\n    signal \"N[3:0]\";",
         "text only changed signal/order ADD/mapping: N, S -> S, N"},
        {"connect \"N[0]\" : \"U0\" \"D\", \"U1\" \"~D\";\n    connect \"N[1]\" : \"U1\" \"Q\";",
         "connect \"N[1]\" : \"U1\" \"Q\";\n    connect \"N[0]\" : \"U0\" \"D\", \"U1\" \"~D\";",
         "text only changed connect/order ADD/mapping: N[0], N[1] -> N[1], N[0]"},
        {"connect \"N[1]\" : \"U1\" \"Q\";", "connect \"N[1]\" : \"U1\" \"Q\"; connect \"N[0]\" : \"CLK\";",
         "breaking added connect/whole ADD/mapping/N[0]#2:  -> pins \"CLK\""},
        {"mapsto", "expandsto", "breaking changed mapping/section ADD/mapping: mapsto -> expandsto"},
        {"block \"MUX\" { }", "block \"MUX\" { } mapsto { }",
         "compatible added mapping/whole MUX/mapping:  -> section mapsto"},
        {"    isSlow();\n", "", "breaking removed pre call/whole ADD/mapping/isSlow: arguments  -> "},
        {"inst \"U0\" \"GATE_BUFFER\"", "inst \"U0\" \"HOLD\"",
         "breaking changed instance/type ADD/mapping/U0: \"GATE_BUFFER\" -> \"HOLD\""},
        {"inst \"U0\" \"GATE_BUFFER\";\n    inst \"U1\" \"GATE_BUFFER\";",
         "inst \"U1\" \"GATE_BUFFER\";\n    inst \"U0\" \"GATE_BUFFER\";",
         "breaking changed instance/order ADD/mapping: U0, U1 -> U1, U0"},
        {"N[3:0]", "N[0:3]", "breaking changed signal/range ADD/mapping/N: [3:0] -> [0:3]"},
        {"\"U0\" \"Q\", \"CLK\"", "\"U0\" \"Q\"",
         "breaking changed signal/pins ADD/mapping/S: \"U0\" \"Q\", \"CLK\" -> \"U0\" \"Q\""},
        {"\"~D\"", "\"D\"",
         "breaking changed connect/pins ADD/mapping/N[0]: \"U0\" \"D\", \"U1\" \"~D\" -> \"U0\" \"D\", \"U1\" \"D\""},
        {"\"LOAD\" 1.5", "\"LOAD\" 1.25", "breaking changed pin assign/value ADD/mapping/U0/Q/LOAD: 1.5 -> 1.25"},
        {"intProperty(\"WIDTH\") - 2 - 3", "intProperty(\"WIDTH\") - (2 - 3)",
         "breaking changed block assign/value ADD/mapping/U0/STEP: intProperty(\"WIDTH\") - 2 - 3 -> "
         "intProperty(\"WIDTH\") - (2 - 3)"},
        {"\"STEP\" 1;", "\"STEP\" 1.0;", "breaking changed block assign/value ADD/mapping/U1/STEP: 1 -> 1.0"},
        {"\"STEP\" 1;", "\"STEP\" \"1\";", "breaking changed block assign/value ADD/mapping/U1/STEP: 1 -> \"1\""},
        {"\"STEP\" 1;", "\"STEP\" true;", "breaking changed block assign/value ADD/mapping/U1/STEP: 1 -> true"},
        {"\"STEP\" 1;", "\"STEP\" -(1 + 1) * 2;",
         "breaking changed block assign/value ADD/mapping/U1/STEP: 1 -> -(1 + 1) * 2"},
        {"if (isSlow())", "if (isSlow() == true)",
         "breaking changed if/condition ADD/mapping/if#2: isSlow() -> isSlow() == true"},
        {"    if (isSlow())", "    if (true) { } if (isSlow())",
         "breaking added if/whole ADD/mapping/if#2:  -> condition true"},
        {" else { }", "", "breaking removed branch/whole ADD/mapping/if/else:  -> "},
        {"else { }", "else inst \"C\" \"HOLD\";",
         "breaking removed statements/whole ADD/mapping/if/else/{}:  -> \n"
         "breaking added instance/whole ADD/mapping/if/else/C:  -> type \"HOLD\""},
        {"inst \"A\" \"HOLD\"; inst \"B\" \"HOLD\";", "inst \"B\" \"HOLD\"; inst \"A\" \"HOLD\";",
         "breaking changed statements/order ADD/mapping/if/then/{}: A, B -> B, A"},
        {"steps(1, 2.0)", "steps(1, 3.0)",
         "breaking changed call/arguments ADD/mapping/if#2/then/steps: 1, 2.0 -> 1, 3.0"},
        {"steps(4, 2.0)", "steps(5, 2.0)", "breaking changed call/arguments ADD/mapping/steps: 4, 2.0 -> 5, 2.0"},
    };
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    for (const auto& [from, to, expected] : cases) {
        const std::string after = edited(from, to);
        ASSERT_FALSE(after.empty()) << from;
        EXPECT_EQ(compared(base, after), expected);
        const std::string back = compared(after, base); // as many, the other way round
        EXPECT_EQ(std::count(back.begin(), back.end(), '\n'),
                  std::string(expected).find('\n') == std::string::npos ? 0 : 1);
        EXPECT_NE(back, "");
    }
}

TEST(Comparison, WhatIsNoContentIsNoDifference) {
    EXPECT_EQ(compared(base, base), "");
    std::string spread;
    bool inText = false;
    for (const char c : base) {
        if (c == '"') inText = !inText;
        spread += inText || c != ' ' ? std::string(1, c) : "\n /* here */ ";
    }
    EXPECT_EQ(compared(base, spread), "");
    // A group that is declared as legacy group too, a bound that is the greatest number, a range that was completed.
    EXPECT_EQ(compared(edited("OLD:SUM", ":SUM"), edited("OLD:SUM", "MATH:SUM")), "");
    EXPECT_EQ(compared(edited("max = 32,", "max = 2147483647,"), edited("max = 32,", "")), "");
    const std::string completed = edited("min = 10'h001, ", "");
    EXPECT_EQ(
        linesOf(HDNTComparison::compare(*finished(completed)->getTypeBlock(0), *parsed(completed)->getTypeBlock(0))),
        "");
}

TEST(Comparison, PlacesAndBytes) {
    const auto before = finished(base);
    const auto after = finished("\n\n" + edited("min = 1,", "min = 0,"));
    const auto differences =
        HDNTComparison::compare(HDNTModelTree::fromBytes(HDNTModelTree(*before).toBytes()), HDNTModelTree(*after));
    ASSERT_EQ(differences.size(), 1U);
    EXPECT_EQ(differences[0].block, "ADD");
    EXPECT_EQ(differences[0].newPlace.line, differences[0].oldPlace.line + 2);
    EXPECT_EQ(differences[0].oldPlace.column, 5);
    const std::string bytes = HDNTModelTree(*before).toBytes();
    EXPECT_EQ(HDNTModelTree(*before).toBytes(), bytes);
    for (const std::string& bad : {std::string(), bytes.substr(1), bytes.substr(0, bytes.size() - 1), bytes + "x",
                                   bytes.substr(0, 24), std::string(bytes.size(), '\xff')})
        EXPECT_THROW(HDNTModelTree::fromBytes(bad), HEXDataException);
}

// Counts that no memory could hold, places outside of what is there, and trees that are none.
TEST(Comparison, DamagedBytesAreRefused) {
    const auto library = finished(base);
    const HDNTModelTree whole(*library);
    const std::string bytes = whole.toBytes();
    const auto isRefused = [&](size_t at, std::uint64_t value) {
        std::string damaged = bytes;
        std::memcpy(damaged.data() + at, &value, sizeof value);
        try {
            HDNTComparison::compare(HDNTModelTree::fromBytes(damaged), whole);
            return false;
        } catch (const HEXDataException&) {
            return true;
        }
    };
    for (const std::uint64_t count : {1ULL << 40, 1ULL << 60, 1ULL << 62, 1ULL << 63})
        for (const size_t word : {0U, 1U, 2U}) EXPECT_TRUE(isRefused(8 * word, count)) << word << ' ' << count;
    size_t refused = 0;
    for (size_t at = 0; at + 8 <= bytes.size(); at += 8) refused += isRefused(at, ~0ULL);
    constexpr size_t wordsOfElement = 10;
    EXPECT_EQ(refused, 3 + wordsOfElement * whole.elements().size() + 3 * whole.facets().size()); // all but texts
    // Reaching to the end, an element of the library takes those behind it in; any other would stand out of its owner.
    refused = 0;
    for (size_t i = 0; i < whole.elements().size(); ++i)
        refused += isRefused(8 * (3 + i * wordsOfElement + 5), whole.elements().size() - i - 1);
    EXPECT_EQ(whole.elements().size() - refused, 1U + 4U + 3U); // the library, its functions, its blocks
}

// Redefined elements are not lost; blocks with more buses than pins are walked.
TEST(Comparison, DamagedModels) {
    Reports quiet;
    const std::string damaged = "library \"L\" { block \"A\" { pin \"D[\" input; pin \"E[\" input; pin \"E[\" output; }"
                                "block \"a\" { pin \"X\" input; } block \"A\" { } }";
    EXPECT_EQ(compared(damaged, damaged), "");
    std::string other = damaged;
    EXPECT_EQ(compared(damaged, other.replace(other.find("output"), 6, "bidir")),
              "breaking changed pin/direction A/E[#2: output -> bidir");
    other = damaged;
    EXPECT_EQ(compared(damaged, other.replace(other.find("\"A\" { }"), 7, "\"A\" { test = false; internal = true; }")),
              "breaking changed block/internal A#2: false -> true");
    const std::string twice = "library \"L\" { block \"A\" { pin \"D\" input; } block \"A\" { } }";
    const std::string swapped = "library \"L\" { block \"A\" { } block \"A\" { pin \"D\" input; } }";
    EXPECT_EQ(compared(twice, swapped), "breaking removed pin/whole A/D: direction input, type data -> \n"
                                        "breaking added pin/whole A#2/D:  -> direction input, type data");
}

// Trees that no text has.
TEST(Comparison, WhatOnlyProgramsMake) {
    class HostsPin : public HDNTPinInst {
    public:
        void check() override {}
        void accept(HDNTVisitor&) override {}
    };
    const auto made = [](HDNTExpr::FOPERATOR op, double number) {
        auto library = finished("library \"L\" { block \"A\" { } }");
        std::vector<HDNTNetlistEntity*> entities{
            new HDNTIfStmt(new HDNTBoolConstant(true), new HDNTDoubleConstant(number), nullptr),
            new HDNTAssignBlockProperty("U", "P", new HDNTCompoundExpr(nullptr, op, new HDNTIntConstant(1))),
            new HDNTAssignBlockProperty("U", "Q",
                                        new HDNTCompoundExpr(new HDNTIntConstant(2), op, new HDNTIntConstant(1))),
            new HDNTConnect("@0", std::vector<HDNTPinInst*>{new HostsPin}),
        };
        const auto unknown = static_cast<HDNTExpr::FOPERATOR>(15); // ends finalizing
        entities.push_back(new HDNTAssignBlockProperty("V", "Q", new HDNTCompoundExpr(nullptr, unknown, nullptr)));
        EXPECT_THROW(library->getTypeBlock(0)->setNetlist(new HDNTNetlist(&entities)), HEXAlgException);
        return library;
    };
    const auto one = made(HDNTExpr::NEGATE, std::nan("1"));
    const auto other = made(HDNTExpr::NOT, std::nan("2"));
    EXPECT_EQ(linesOf(HDNTComparison::compare(*one, *one)), "");
    EXPECT_EQ(linesOf(HDNTComparison::compare(*one, *other)),
              "breaking changed block assign/value A/mapping/U/P: -(1) -> !(1)\n"
              "breaking changed block assign/value A/mapping/U/Q: -(2, 1) -> !(2, 1)\n"
              "breaking changed expression/value A/mapping/if/then/expression: nan:7ff8000000000001 -> "
              "nan:7ff8000000000002");
}

#ifdef HDNT_SANITIZED
constexpr size_t stackBytes = size_t{8} << 20; // instrumented frames are several times as large
#else
constexpr size_t stackBytes = size_t{1} << 20;
#endif

TEST(Comparison, DepthIsNotBoundedByTheStack) {
    const auto repeat = [](const std::string& text, size_t count) {
        std::string result;
        for (size_t i = 0; i < count; ++i) result += text;
        return result;
    };
    const auto mapped = [](const std::string& body) {
        return "library \"L\" { function int f ( int ); block \"ADD\" { } mapsto { " + body + " } }";
    };
    const auto condition = [&](const std::string& text) { return mapped("if (" + text + ") { }"); };
    const std::string cases[] = {
        condition(repeat("1 + ", 300000) + "?"),
        condition(repeat("1 + (", 1000) + "?" + repeat(")", 1000)),
        condition(repeat("f(", 1900) + "?" + repeat(")", 1900)),
        condition(repeat("- ", 3900) + "f(?)"),
        mapped(repeat("if (1) { ", 600) + "inst \"?\" \"T\";" + repeat(" }", 600)),
        mapped(repeat("if (1) { } else ", 150) + "inst \"?\" \"T\";"),
    };
    const auto compareAll = [&] {
        Reports quiet;
        for (const std::string& text : cases) {
            const auto library = [&](char letter) {
                std::string other = text;
                std::replace(other.begin(), other.end(), '?', letter);
                return finished(other);
            };
            const auto before = library('1');
            const auto after = library('2');
            ASSERT_TRUE(before && after) << text.substr(60, 80);
            EXPECT_EQ(HDNTComparison::compare(*before, *before).size(), 0U);
            EXPECT_EQ(HDNTComparison::compare(*before, *after).size(), text.find("inst") == text.npos ? 1U : 2U);
        }
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackBytes);
    pthread_t thread;
    const auto run = [](void* action) -> void* {
        (*static_cast<const decltype(compareAll)*>(action))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<void*>(static_cast<const void*>(&compareAll))), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Comparison, ManyBlocksTakeLittleTime) {
    const auto library = [](int first, int step) {
        std::string text = "library \"L\" {\n";
        for (int i = first; i >= 0 && i < 30000; i += step) {
            text += "block \"B" + std::to_string(i) + "\" { pin \"D[7:0]\" input; pin \"Q\" output;";
            text += " property int \"P\" { default = " + std::to_string(step) + " } }\n";
        }
        return finished(text + "}");
    };
    const auto forward = library(0, 1);
    const auto backward = library(29999, -1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(HDNTComparison::compare(*forward, *backward).size(), 30001U);        // all defaults, and the order
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)); // quadratic work takes minutes
}
