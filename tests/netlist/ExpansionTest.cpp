#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using support::loaded;
using support::Reports;
using support::Texts;

static const char* const rebuilt = R"(library "L" {
function int intProperty(string);
function bool boolProperty(string);
function string stringProperty(string);
function bool isConnected(string);
function int tell(string, int);
block "AND_2" { pin "A[1:0]" input; pin "O" output { property double "LOAD" { min = 0.0, max = 2.0 } } property int "SIZE" { min = 1, max = 4 } }
block "HOLD" { pin "D" input; pin "Q" output; property int "WIDTH" { min = 0, max = 9, default = 3 } property bool "FAST" false; property string "MODE" { default = "A" } property 8'h "INIT" { default = 8'h5 } property double "DELAY" { default = 1.0 } }
mapsto {
    tell("start", intProperty("WIDTH"));
    inst "U0" "AND_2";
    signal "N[1:0]";
    connect "N[1]" : "U0" "A[1]", "~D";
    connect "@0" : "U0" "A[0]";
    assign block property "U0" "SIZE" 1 + intProperty("WIDTH") % 3;
    if (intProperty("WIDTH") > 4) {
        inst "U1" "AND_2";
        if (boolProperty("fast")) assign pin property "U1" "O", "LOAD" 1.5;
    } else if (isConnected("Q") && stringProperty("INIT") == "8'h5") connect "N[0]" : "Q";
}
})";

static std::string summaryOf(const HDNTExpansion& expansion) {
    std::string text;
    for (const HDNTExpansion::Level& level : expansion.levels()) {
        const auto at = [&](const HDNTExpansion::Origin& origin) {
            std::string place = "@" + std::to_string(origin.location.first_line);
            for (size_t b = origin.branch; b != HDNTExpansion::none; b = level.branches[b].origin.branch)
                place += (level.branches[b].taken ? " then@" : " else@") +
                         std::to_string(level.branches[b].origin.location.first_line);
            return place + "; ";
        };
        for (const auto& call : level.calls) text += call.name + (call.made ? "!" : "") + at(call.origin);
        for (const auto& inst : level.instances) {
            text += level.path + ":" + inst.name + " " + inst.type + at(inst.origin);
            for (const auto& value : inst.properties)
                text += inst.name + "." + value.pin + "." + value.name + "=" + HDNTExpansion::textOf(value.value) +
                        at(value.origin);
        }
        for (const auto& connection : level.connections)
            text += connection.signal + (connection.inverted ? "~" : "=") + connection.instance + "." + connection.pin +
                    at(connection.origin);
    }
    return text;
}

static Texts problemsOf(const HDNTExpansion& expansion) {
    Texts texts;
    for (const auto& problem : expansion.problems())
        texts.push_back(std::to_string(problem.location.first_line) + ": " + problem.message);
    return texts;
}

// A branch that is not taken declares nothing; one that is, for itself and the branches inside.
TEST(Expansion, SignalsOfBranches) {
    const struct {
        const char* statements;
        Texts problems;
    } cases[] = {
        {"if (true) { signal \"s\"; connect \"s\" : \"A\"; }", {}},
        {"if (true) { signal \"s[1:0]\"; connect \"s[0]\" : \"A\"; }", {}},
        {"if (true) { if (true) { connect \"s\" : \"A\"; } { connect \"s\" : \"A\"; } signal \"s\"; }", {}},
        {"if (true) { if (true) signal \"s\"; connect \"s\" : \"A\"; }", {"1: There is no signal s."}},
        {"if (true) signal \"s\"; connect \"s\" : \"A\";", {"1: There is no signal s."}},
        {"if (true) signal \"s\"; if (true) connect \"s\" : \"A\";", {"1: There is no signal s."}},
        {"if (false) signal \"s\"; else connect \"s\" : \"A\";", {"1: There is no signal s."}},
        {"signal \"s\"; if (true) { signal \"s\"; } connect \"s\" : \"A\";", {}},
        {"if (true) { signal \"s\" : \"A\"; }", {}},
    };
    for (const auto& [statements, problems] : cases) {
        const auto library = support::parsed(
            std::string("library \"L\" { block \"ADD\" { pin \"A\" input; } mapsto { ") + statements + " } }");
        ASSERT_TRUE(library) << statements;
        library->finalize();
        HDNTExpansion expansion(*library->getTypeBlock(0));
        EXPECT_EQ(expansion.expand(), problems.empty()) << statements;
        EXPECT_EQ(problemsOf(expansion), problems) << statements;
    }
}

TEST(Expansion, FollowsThePropertyValues) {
    const auto library = loaded(rebuilt);
    HDNTExpansion expansion(*library->getTypeBlock(1));
    const std::string always = "tell@10; :U0 AND_2@11; U0..SIZE=";
    const std::string wires = "N[1]=U0.A[1]@13; N[1]~.D@13; @0=U0.A[0]@14; ";
    EXPECT_TRUE(expansion.expand());
    EXPECT_EQ(summaryOf(expansion), always + "1@15; " + wires);
    std::string reason;
    EXPECT_TRUE(expansion.connect("q", reason));
    EXPECT_TRUE(expansion.expand());
    EXPECT_EQ(summaryOf(expansion), always + "1@15; " + wires + "N[0]=.Q@19 then@19 else@16; ");
    EXPECT_TRUE(expansion.setPropertyText("width", "8", reason));
    EXPECT_TRUE(expansion.setProperty("FAST", true, reason));
    EXPECT_TRUE(expansion.expand());
    EXPECT_EQ(summaryOf(expansion), always + "3@15; :U1 AND_2@17 then@16; U1.O.LOAD=1.5@18 then@18 then@16; " + wires);
    EXPECT_EQ(library->getTypeBlock(1)->getNetlist()->ifStmts()[0]->condition()->getEvaluatedExpr(), nullptr);
}

TEST(Expansion, RefusesWhatThePropertyRefuses) {
    const auto library = loaded(rebuilt);
    HDNTExpansion expansion(*library->getTypeBlock(1));
    const struct {
        const char* name;
        const char* text;
        const char* reason;
    } cases[] = {{"WIDTH", "10", "WIDTH: 10 is above 9; allowed are 0 to 9"},
                 {"WIDTH", "1x", "WIDTH: '1x' is no int value; write 0 to 9"},
                 {"DELAY", "nan", "DELAY: 'nan' is no double value; write a number"},
                 {"FAST", "yes", "FAST: 'yes' is no bool value; write true or false"},
                 {"INIT", "9'h1FF", "INIT: 9'h1FF is wider than 8 bits; write 8'h00 to 8'hFF"},
                 {"NONE", "1", "Block HOLD has no property NONE."}};
    for (const auto& [name, text, expected] : cases) {
        std::string reason;
        EXPECT_FALSE(expansion.setPropertyText(name, text, reason));
        EXPECT_EQ(reason, expected);
    }
    std::string reason;
    EXPECT_FALSE(expansion.connect("X", reason));
    EXPECT_EQ(reason, "Block HOLD has no pin X.");
    HDNTExpansion unmapped(*library->getTypeBlock(0));
    EXPECT_FALSE(unmapped.expand());
    EXPECT_TRUE(unmapped.problems().empty());
}

TEST(Expansion, SaysWhatIsWrongAndGoesOn) {
    const Reports silent;
    const auto library = loaded(R"(library "L" { function int intProperty(string); function double f();
block "AND_2" { property int "SIZE" { min = 1, max = 4 } }
block "HOLD" { property bool "P" true; } mapsto {
inst "U0" "AND_2"; inst "U0" "AND_2"; inst "U1" "NONE_SUCH";
connect "N" : "U0" "X", "U9" "Y", "Z";
assign block property "U0" "SIZE" 9; assign block property "U0" "SIZE" 1.5; assign block property "U0" "NONE" 1;
assign block property "U0" "SIZE" 1 / 0; assign block property "U0" "SIZE" intProperty("P");
if (intProperty("NONE") == 1) { } if (f() > 1.0) { }
assign block property "U9" "SIZE" 1; intProperty(1);
} })");
    HDNTExpansion expansion(*library->getTypeBlock(1));
    HDNTError::numErrors = 0; // or the common library, where NONE_SUCH is sought too, would not load
    EXPECT_FALSE(expansion.expand());
    EXPECT_EQ(problemsOf(expansion),
              (Texts{"4: There are two instances U0.", "4: There is no block NONE_SUCH.",
                     "8: Block HOLD has no property NONE", "8: HDNTNetlist: no implementation of function f",
                     "9: Attribute type mismatch (not string) in block mapping", "5: There is no signal N.",
                     "5: Block AND_2 has no pin X.", "5: There is no instance U9.", "5: Block HOLD has no pin Z.",
                     "6: SIZE: 9 is above 4; allowed are 1 to 4", "6: SIZE: 1.5 is no int value; write 1 to 4",
                     "6: NONE: Block AND_2 has no property NONE.", "7: Divide by zero",
                     "7: intProperty: property P is of another type", "9: There is no instance U9."}));
    EXPECT_TRUE(expansion.levels().at(0).instances.at(0).properties.empty());
}

TEST(Expansion, RefusedValuesAreNotInTheResult) {
    const auto library = loaded(R"(library "L" { function int intProperty(string);
block "AND_2" { pin "A" input; property int "SIZE" { min = 1, max = 4, default = 1 } } mapsto {
if (intProperty("SIZE") == 2) inst "Z" "ADD_CHAIN_8"; }
block "HOLD" { pin "A" input { property int "LOAD" { min = 1, max = 4 } } } mapsto { inst "U" "AND_2"; inst "V" "AND_2";
assign block property "U" "SIZE" 9; assign block property "V" "SIZE" 2; assign block property "V" "SIZE" 1.5;
assign pin property "A", "LOAD" 5; } block "ADD_CHAIN_8" { } })");
    HDNTExpansion expansion(*library->getTypeBlock(1));
    EXPECT_FALSE(expansion.expand(true));
    EXPECT_EQ(expansion.problems().size(), 3U);
    EXPECT_EQ(summaryOf(expansion), ":U AND_2@4; :V AND_2@4; V..SIZE=2@5; V:Z ADD_CHAIN_8@3 then@3; ");
    EXPECT_TRUE(expansion.levels().at(0).pinProperties.empty());
}

// Trees that no text has: an operand without a value, a missing condition, a pin reference of the host's own.
TEST(Expansion, WhatOnlyProgramsMakeIsAProblemToo) {
    class HostsPin : public HDNTPinInst {
    public:
        void check() override {}
        void accept(HDNTVisitor&) override {}
    };
    HDNTFunctionTable::global().add("tell", [](const auto&, const auto&) { return nullptr; });
    const auto call = [] {
        auto* const made = new HDNTFunctionCall("tell", nullptr);
        made->setStatement(true);
        return made;
    };
    const auto library = loaded("library \"L\" { block \"AND_2\" { property int \"SIZE\" { min = 1, max = 4 } } }");
    std::vector<HDNTNetlistEntity*> entities{
        new HDNTIfStmt(nullptr, call(), nullptr),
        new HDNTIfStmt(call(), new HDNTStmtBlock(nullptr), nullptr),
        new HDNTFunctionCall("tell", new std::vector<HDNTExpr*>{call()}),
        new HDNTAssignBlockProperty("U", "SIZE", call()),
        new HDNTBlockInst("U", "AND_2"),
        new HDNTConnect("@0", new std::vector<HDNTPinInst*>{new HostsPin}),
    };
    library->getTypeBlock(0)->setNetlist(new HDNTNetlist(&entities));
    HDNTExpansion expansion(*library->getTypeBlock(0));
    EXPECT_FALSE(expansion.expand());
    const std::string missing = "0: HDNTNetlist: invalid nullptr expression";
    EXPECT_EQ(problemsOf(expansion),
              (Texts{missing, "0: There is no condition.", missing,
                     "0: A pin reference is of a class that the language does not have.", missing}));
}

// Loading leaves the lists inside statements alone, so their names are looked at here first.
TEST(Expansion, SignalListsThatCannotBeUnfoldedAreProblems) {
    Reports reports;
    HDNTLimits limits;
    limits.rangeElements = 9;
    HDNTLimits::set(limits);
    const auto library = loaded(R"(library "L" { block "AND_2" { } block "HOLD" { } mapsto {
if (true) { signal "D[";
signal "E[9:0]"; signal "F[8:0]"; inst "U" "AND_2"; }
} })");
    HDNTExpansion expansion(*library->getTypeBlock(1));
    EXPECT_FALSE(expansion.expand());
    EXPECT_EQ(
        problemsOf(expansion),
        (Texts{"2: \"D[\" is no name: with brackets it is letters, digits and \"_\" before one bit or a range, as "
               "in D[3] or D[3:0].",
               "3: Range \"E[9:0]\" has 10 elements, more than 9 (limit rangeElements)."}));
    EXPECT_EQ(expansion.levels().at(0).signals.size(), 9U);
    EXPECT_EQ(expansion.levels().at(0).instances.size(), 1U);
    EXPECT_EQ(reports.take(), Texts{});
    EXPECT_EQ(HDNTError::numErrors, 0);
}

TEST(Expansion, InstancesOfBranchesMayBeUsedOutsideOfThem) {
    const Reports silent;
    const auto library =
        loaded(R"(library "L" { block "AND_2" { pin "A" input; property int "SIZE" { min = 1, max = 4 } }
block "HOLD" { pin "Q" output { property double "LOAD" { default = 0.5 } } } mapsto {
signal "S" : "U" "A"; assign block property "U" "SIZE" 2; assign pin property "Q", "LOAD" 100000000000000000000.0;
if (true) { inst "U" "AND_2"; }
} })");
    HDNTExpansion expansion(*library->getTypeBlock(1));
    EXPECT_TRUE(expansion.expand());
    EXPECT_EQ(summaryOf(expansion), ":U AND_2@4 then@4; U..SIZE=2@3; S=U.A@3; ");
    const auto& own = expansion.levels()[0].pinProperties.at(0);
    EXPECT_EQ(own.pin + ' ' + own.name + ' ' + HDNTExpansion::textOf(own.value), "Q LOAD 100000000000000000000.0");
}

TEST(Expansion, DeepExpandsInstancesAndReportsCircles) {
    const auto library = loaded(R"(library "L" { function int intProperty(string); function bool isConnected(string);
block "HOLD" { pin "A" input; } mapsto { inst "X" "AND_2"; signal "N" : "X" "B", "A"; assign block property "X" "SIZE" 2; }
block "AND_2" { pin "B" input; property int "SIZE" { min = 0, max = 9 } }
mapsto { if (intProperty("SIZE") == 2 && isConnected("B")) inst "Y" "ADD_CHAIN_8"; }
block "ADD_CHAIN_8" { } expandsto { inst "Z" "HOLD"; }
})");
    HDNTExpansion expansion(*library->getTypeBlock(0));
    EXPECT_FALSE(expansion.expand(true));
    EXPECT_EQ(summaryOf(expansion),
              ":X AND_2@2; X..SIZE=2@2; N=X.B@2; N=.A@2; X:Y ADD_CHAIN_8@4 then@4; X/Y:Z HOLD@5; ");
    EXPECT_EQ(problemsOf(expansion), Texts{"5: Mappings lead in a circle: HOLD -> AND_2 -> ADD_CHAIN_8 -> HOLD"});
}

// Expanding an instance may load a map library that replaces a mapping expanded before.
TEST(Expansion, LevelsOutliveTheMappingsTheyCameFrom) {
    const TempDir dir;
    dir.makeDir("maplib");
    dir.write("maplib/HOLD.btl", R"(library "M" { block "HOLD" mapsto { inst "U" "GATE_AND_2"; } })");
    dir.write(
        "maplib/GATE_AND_2.btl",
        R"(library "M" { block "HOLD" expandsto { } block "GATE_AND_2" retargetsto { inst "V" "GATE_AND_2"; } })");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    setenv("HDNT_PARAM_ntl_enableMapLib", "on", 1);
    const auto library = loaded("library \"L\" { block \"HOLD\" { } block \"GATE_AND_2\" { } }");
    HDNTExpansion expansion(*library->getTypeBlock(0));
    EXPECT_FALSE(expansion.expand(true));
    EXPECT_EQ(problemsOf(expansion), Texts{"1: Mappings lead in a circle: GATE_AND_2 -> GATE_AND_2"});
    EXPECT_EQ(expansion.levels().at(0).section, HDNTNetlist::Section::mapsto);
    EXPECT_EQ(expansion.levels().at(1).section, HDNTNetlist::Section::retargetsto);
    EXPECT_TRUE(library->getTypeBlock(0)->getAttachedNetlist()->isExpandsTo());
}

TEST(Expansion, InstancesAreLimited) {
    const auto library = loaded("library \"L\" { block \"A\" { } mapsto { inst \"1\" \"B\"; inst \"2\" \"B\"; }"
                                "block \"B\" { } mapsto { inst \"1\" \"C\"; inst \"2\" \"C\"; } block \"C\" { } }");
    for (const long limit : {7L, 6L, 5L, 1L}) {
        HDNTLimits limits;
        limits.expansionInstances = limit;
        HDNTLimits::set(limits);
        HDNTExpansion expansion(*library->getTypeBlock(0));
        for (int time = 0; time < 3; ++time) {
            EXPECT_EQ(expansion.expand(true), limit >= 6) << limit << ' ' << time;
            EXPECT_EQ(expansion.problems().size(), limit >= 6 ? 0U : 1U) << limit;
        }
    }
}
