#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using support::loaded;
using support::parsed;
using support::Reports;
using support::Texts;

static std::string mapped(const std::string& body, const std::string& section = "mapsto") {
    return "library \"L\" {\nfunction bool f();\nblock \"HOLD\" { }\n" + section + " {\n" + body + "\n}\n}\n";
}

static HDNTNetlist& netlistOf(const std::unique_ptr<HDNTLibrary>& library) {
    return *library->getTypeBlock(0)->getNetlist();
}

TEST(Netlist, EntitiesAreSorted) {
    const auto library =
        loaded(mapped("f(); inst \"I1\" \"T\"; f(); signal \"S\" : \"I1\" \"~CLK\", \"D\"; connect \"S\" : \"Q\";"
                      "inst \"I2\" \"T\"; f(); { inst \"LOST\" \"T\"; } if (f()) { } else inst \"X\" \"T\";"
                      "assign block property \"I1\" \"P\" 1; assign pin property \"I1\" \"Q\", \"P\" 2;"));
    const HDNTNetlist& netlist = netlistOf(library);
    EXPECT_EQ(std::tuple(netlist.preInstanceCalls().size(), netlist.instances().size(),
                         netlist.postInstanceCalls().size(), netlist.signals().size(), netlist.connects().size(),
                         netlist.ifStmts().size(), netlist.blockPropertyAssigns().size(),
                         netlist.pinPropertyAssigns().size()),
              std::tuple(1U, 2U, 2U, 1U, 1U, 1U, 1U, 1U));
    EXPECT_EQ(netlist.instances()[0]->instName() + ' ' + netlist.instances()[0]->typeName(), "I1 T");
    EXPECT_TRUE(netlist.preInstanceCalls()[0]->isStatement());
    const HDNTSignal& signal = *netlist.signals()[0];
    EXPECT_EQ(signal.connect()->signalName(), "S");
    EXPECT_EQ(signal.connect()->getSignal(), &signal);
    const auto& clk = dynamic_cast<const HDNTBlockPinName&>(*signal.connect()->pins()[0]);
    EXPECT_EQ(std::tuple(clk.instName(), clk.pinName(), clk.inverted()), std::tuple("I1", "CLK", true));
    const auto& d = dynamic_cast<const HDNTBlockPinName&>(*signal.connect()->pins()[1]);
    EXPECT_EQ(std::tuple(d.instName(), d.pinName(), d.inverted()), std::tuple("", "D", false));
    const HDNTAssignPinProperty& assign = *netlist.pinPropertyAssigns()[0];
    EXPECT_EQ(assign.instName() + ' ' + assign.pinName() + ' ' + assign.propName(), "I1 Q P");
    EXPECT_EQ(assign.getParent(), nullptr);
    EXPECT_EQ(assign.value()->getParent(), &assign);
    EXPECT_EQ(netlist.preInstanceCalls()[0]->getParent(), &netlist);
    EXPECT_EQ(netlist.ifStmts()[0]->elseStmt()->getNetlist(), &netlist);
    EXPECT_EQ(HDNTBlockInst("a", "b").getNetlist(), nullptr);
    EXPECT_EQ(HDNTBlockPinName("I", "~").pinName(), "");
}

TEST(Netlist, ABlockMayBeGivenItsOwnAgain) {
    const auto library = loaded(mapped("inst \"I\" \"T\"; signal \"D[1:0]\";"));
    HDNTBlock& block = *library->getTypeBlock(0);
    HDNTNetlist* const netlist = block.getNetlist();
    block.setNetlist(netlist);
    ASSERT_EQ(block.getNetlist(), netlist);
    EXPECT_EQ(netlist->signals().size(), 2U);
    EXPECT_EQ(netlist->instances()[0]->getNetlist(), netlist);
    netlist->instances()[0]->setMark(7);
    EXPECT_EQ(std::tuple(netlist->instances()[0]->mark(), netlist->signals()[0]->mark()), std::tuple(7, 0));
}

// What owns by pointer must not be copied, which would delete twice.
template <typename... Classes>
constexpr bool noneIsCopied = (... && !(std::is_copy_constructible_v<Classes> || std::is_copy_assignable_v<Classes>));
static_assert(noneIsCopied<HDNTLibrary, HDNTBlock, HDNTBus, HDNTProperty, HATAttrSpec, HDNTNetlist, HDNTNetlistEntity,
                           HDNTSignal, HDNTSigList, HDNTConnect, HDNTBlockPinName, HDNTAssignBlockProperty,
                           HDNTAssignPinProperty, HDNTStmtBlock, HDNTIfStmt, HDNTFunctionCall, HDNTCompoundExpr,
                           HDNTIntConstant, HDNTStringConstant, HDNTExpansion, HDNTPrintVisitor, HDNTSourceVisitor>);

TEST(Netlist, SectionsAndTheirFlags) {
    using Section = HDNTNetlist::Section;
    const struct {
        const char* keyword;
        Section section;
        bool mapsTo;
        bool expandsTo;
    } cases[] = {{"mapsto", Section::mapsto, true, false},
                 {"expandsto", Section::expandsto, false, true},
                 {"modifiedby", Section::modifiedby, false, false},
                 {"retargetsto", Section::retargetsto, true, false}};
    for (const auto& [keyword, section, mapsTo, expandsTo] : cases)
        for (const bool separate : {false, true}) {
            const std::string inside = mapped("", keyword);
            const auto library =
                loaded(separate ? "library \"L\" { block \"HOLD\" { } block \"HOLD\" " + std::string(keyword) + " { } }"
                                : inside);
            const HDNTNetlist& netlist = netlistOf(library);
            EXPECT_EQ(std::tuple(netlist.section(), netlist.isMapsTo(), netlist.isExpandsTo()),
                      std::tuple(section, mapsTo, expandsTo));
        }
}

TEST(Netlist, SignalListsBecomeSignals) {
    Reports reports;
    const auto library =
        loaded(mapped("signal \"A\"; signal \"D[1:0]\"; signal \"@1\"; signal \"E[2]\" : \"Q\"; signal \"B[1:\";"
                      "connect \"D[1]\" : \"Q\"; connect \"D\" : \"Q\"; connect \"@1\" : \"Q\";"));
    HDNTNetlist& netlist = netlistOf(library);
    Texts names;
    for (const HDNTSignal* signal : netlist.signals()) names.push_back(signal->name());
    EXPECT_EQ(names, (Texts{"A", "D[1]", "D[0]", "@1", "E[2]"}));
    EXPECT_EQ(reports.take().size(), 2U); // the malformed list, and connect "D"
    const HDNTSigList& list = *netlist.signals()[1]->sigList();
    EXPECT_EQ(netlist.signals()[2]->sigList(), &list);
    EXPECT_EQ(list.firstExpanded(), netlist.signals()[1]);
    EXPECT_TRUE(netlist.signals()[3]->isOne() && !netlist.signals()[3]->isZero());
    EXPECT_EQ(netlist.signals()[0]->getBlock(), library->getTypeBlock(0));
    netlist.finalize();
    EXPECT_EQ(netlist.signals().size(), 5U);
    library->check();
    EXPECT_EQ(reports.take().size(), 1U);
}

// As a host builds one: a list of a plain name is one signal, and names are found before anything is finalized.
TEST(Netlist, ListsOfHosts) {
    std::vector<HDNTNetlistEntity*> entities{new HDNTSigList("A"), new HDNTSigList("D[1:0]")};
    HDNTNetlist netlist(&entities);
    EXPECT_EQ(netlist.findSignal("A"), netlist.signals()[0]);
    EXPECT_EQ(netlist.getSignal("B"), nullptr);
    netlist.finalize();
    Texts names;
    for (const HDNTSignal* signal : netlist.signals()) names.push_back(signal->name());
    EXPECT_EQ(names, (Texts{"A", "D[1]", "D[0]"}));
    EXPECT_EQ(netlist.signals()[0]->sigList(), nullptr);
    EXPECT_EQ(netlist.findSignal("D[0]"), netlist.signals()[2]);
    EXPECT_EQ(HDNTConnect("A", std::vector<HDNTPinInst*>{}).getSignal(), nullptr);
}

TEST(Netlist, ASignalOfTwoBillionIsOneReport) {
    Reports reports;
    const auto library = loaded(mapped("signal \"N[2000000000:0]\";"));
    EXPECT_EQ(reports.take().size(), 1U);
    EXPECT_TRUE(netlistOf(library).signals().empty());
}

TEST(Netlist, AMappingFindsWhatWasDeclaredBefore) {
    Reports reports;
    const auto parent = loaded("library \"P\" { block \"GATE_AND_2\" { } }");
    const auto library =
        parsed("library \"L\" { block \"HOLD\" { } block \"ADD_CHAIN_8\" mapsto { } block \"NOT_IN_TABLE\" mapsto { }"
               "block \"HOLD\" mapsto { inst \"I\" \"T\"; } block \"hold\" expandsto { } }",
               0, parent.get());
    ASSERT_EQ(library->parseString("library \"L\" { block \"HOLD\" expandsto { } block \"ADD_CHAIN_8\" { } }"), 0);
    EXPECT_TRUE(library->getTypeBlock(0)->getNetlist()->isExpandsTo());
    ASSERT_EQ(library->parseString("library \"L\" { block \"ADD_CHAIN_8\" retargetsto { } }"), 0);
    EXPECT_EQ(library->getTypeBlock(1)->getNetlist()->section(), HDNTNetlist::Section::retargetsto);
    EXPECT_EQ(library->getTypeBlock(1)->getNetlistKind(), HDNTBlock::OwnNetlistInChild);
    Texts dropped;
    for (const auto& mapping : library->getDroppedMappings())
        dropped.push_back(mapping.blockName + ": " + mapping.reason);
    EXPECT_EQ(dropped, (Texts{"ADD_CHAIN_8: no block of that name was declared before",
                              "NOT_IN_TABLE: the name is not a registered cellview type",
                              "hold: the name is not a registered cellview type"}));
    using Kind = HDNTNotice::Kind;
    EXPECT_EQ(reports.notices,
              (std::vector{Kind::MappingDropped, Kind::MappingDropped, Kind::MappingDropped, Kind::MappingReplaced}));
    EXPECT_EQ(reports.take(), Texts{});
}

TEST(Netlist, ABlockThatAFailedParseDroppedIsNotFound) {
    const Reports silent;
    EXPECT_TRUE(parsed("library \"L\" { block \"HOLD\" { } oops", 1));
    const auto library = parsed("library \"L\" { block \"HOLD\" mapsto { } }");
    EXPECT_EQ(library->getDroppedMappings().size(), 1U);
}

TEST(Netlist, InstancesAreSoughtInTheCommonLibraryToo) {
    const TempDir dir;
    dir.makeDir("tessels");
    dir.write("tessels/a.btl", "library \"C\" { block \"HOLD\" { } }");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
    const auto own = loaded("library \"L\" { block \"ADD_CHAIN_8\" { } }");
    EXPECT_EQ(HDNTBlockInst("I", "add_chain_8").getTypeBlock(own.get()), own->getTypeBlock(0));
    EXPECT_EQ(HDNTBlockInst("I", "HOLD").getTypeBlock(own.get()), common->getTypeBlock(0));
    EXPECT_EQ(HDNTBlockInst("I", "NONE").getTypeBlock(common), nullptr);
}

TEST(Netlist, ReferencedInstances) {
    const struct {
        const char* body;
        const char* name;
    } cases[] = {{"if (f()) inst \"A\" \"T\"; inst \"B\" \"T\";", "B"},
                 {"if (f()) inst \"A\" \"T\"; else inst \"B\" \"T\";", "B"},
                 {"if (f()) { inst \"A\" \"T\"; inst \"C\" \"T\"; } else inst \"B\" \"T\";", "A"},
                 {"if (f()) inst \"A\" \"T\"; if (f()) inst \"B\" \"T\";", "B"},
                 {"if (f()) { inst \"A\" \"T\"; }", "A"},
                 {"", ""}};
    for (const auto& [body, name] : cases)
        EXPECT_EQ(netlistOf(loaded(mapped(body))).getReferencedInstanceName(), name) << body;
}

TEST(Netlist, PseudoDifferential) {
    const TempDir dir;
    dir.write("HDNTApplicationData.cfg",
              "PSEUDO_DIFFERENTIAL_FUNCTIONS = [\"f\"]; CELLS = { GATE_AND_2 = { pseudoDifferential = true; };"
              "ELSEWHERE = { pseudoDifferential = true; }; };");
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    for (const auto& [body, expected] : {std::pair("f();", true),
                                         {"if (true) { inst \"I\" \"gate_and_2\"; }", true},
                                         {"inst \"I\" \"ELSEWHERE\";", false},
                                         {"inst \"I\" \"NONE\";", false},
                                         {"", false}}) {
        const auto library = loaded(mapped(body).insert(13, "block \"GATE_AND_2\" { } "));
        EXPECT_EQ(library->getTypeBlock(1)->hasPseudoDifferentialExpansion(""), expected) << body;
        EXPECT_FALSE(library->getTypeBlock(0)->hasPseudoDifferentialExpansion("x"));
        HDNTPseudoDiffVisitor unbound(nullptr);
        library->getTypeBlock(1)->getNetlist()->accept(unbound);
        EXPECT_FALSE(unbound.found()) << body;
    }
    // Of the common library's blocks once it is loaded; it is not loaded for the question.
    dir.makeDir("tessels");
    dir.write("tessels/a.btl", "library \"C\" { block \"ELSEWHERE\" { } }");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    const auto library = loaded(mapped("inst \"I\" \"ELSEWHERE\";"));
    EXPECT_FALSE(library->getTypeBlock(0)->hasPseudoDifferentialExpansion(""));
    HDNTLibraryMgr::getCommonLibrary();
    EXPECT_TRUE(library->getTypeBlock(0)->hasPseudoDifferentialExpansion(""));
}
