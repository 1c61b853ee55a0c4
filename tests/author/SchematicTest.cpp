// Drawings of mappings, read back: what is in the SVG is held against the expansion.
#include "author/guide/Graphviz.internal.h"
#include "author/guide/Schematic.internal.h"
#include "tests/author/DrawnSchematic.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <random>

using hdnt::author::guide::Schematic;
using hdnt::author::guide::schematicOf;
using support::Drawing;

namespace {

std::string pageOf(const HDNTBlock& block) { return block.getName() + ".html?a&b"; }

// The drawing must say what the expansion says: all pins of a signal at one net, or the text of what they are tied to.
void hold(const Drawing& drawing, const HDNTExpansion::Level& level) {
    EXPECT_EQ(drawing.faults(), "") << level.block->getName();
    std::map<std::string, std::vector<const HDNTExpansion::Connection*>> signals;
    for (const auto& connection : level.connections) signals[connection.signal].push_back(&connection);
    std::set<std::string> nets;
    for (const auto& [signal, connections] : signals) {
        const std::string tie = signal[0] == '@' ? signal.substr(1) : connections.size() == 1 ? signal : "";
        std::set<std::string> met;
        for (const auto* connection : connections) {
            const bool isKept = connection->instance.empty() && level.section == HDNTNetlist::Section::modifiedby;
            const std::string& instance = isKept ? level.block->getName() : connection->instance;
            const std::set<std::string> here = drawing.at(instance, connection->pin);
            EXPECT_EQ(here.size(), 1U) << level.block->getName() << " " << connection->instance << " "
                                       << connection->pin;
            met.insert(here.begin(), here.end());
        }
        EXPECT_EQ(met.size(), 1U) << level.block->getName() << " " << signal;
        if (!tie.empty()) EXPECT_EQ(met.count("=" + tie), 1U) << level.block->getName() << " " << signal;
        else nets.insert(met.begin(), met.end());
    }
    EXPECT_EQ(nets.size(), drawing.numNets) << level.block->getName();
}

/// Draws a mapping of a block HOLD to AND_2, STORE and PAD.
class Mapping {
public:
    explicit Mapping(const std::string& netlist, const std::string& section = "mapsto")
        : library_(support::loaded("library \"L\" {\n"
                                   "block \"AND_2\" { pin \"A[1:0]\" input; pin \"O\" output; }\n"
                                   "block \"STORE\" { pin \"D\" input; pin \"C\" input clock; pin \"Q\" output; }\n"
                                   "block \"PAD\" { pin \"P\" bidir; property int \"P1\" { default = 0 }\n"
                                   "property int \"P2\" { default = 0 } property int \"P3\" { default = 0 }\n"
                                   "property int \"P4\" { default = 0 } property int \"P5\" { default = 0 }\n"
                                   "property int \"P6\" { default = 0 } property int \"P7\" { default = 0 } }\n"
                                   "block \"HOLD\" { pin \"D\" input; pin \"C\" input; pin \"W[7:0]\" input;\n"
                                   "pin \"X\" bidir; pin \"Q\" output; pin \"V[7:0]\" output; } " +
                                   section + " {\n" + netlist + "\n} }")),
          expansion_(*library_->getTypeBlockByName("HOLD", false)) {
        expansion_.expand();
    }

    Schematic draw(const hdnt::author::guide::PageLink& link = pageOf) const {
        return schematicOf(expansion_, link, "m");
    }

    Drawing held() const {
        const Schematic schematic = draw();
        EXPECT_EQ(schematic.reason, "");
        Drawing drawing(schematic.svg);
        hold(drawing, expansion_.levels().front());
        return drawing;
    }

private:
    support::Reports reports_;
    std::unique_ptr<HDNTLibrary> library_;
    HDNTExpansion expansion_;
};

std::string instances(const std::string& type, int number) {
    std::string text;
    for (int i = 0; i < number; ++i) text += "inst \"" + type + std::to_string(i) + "\" \"" + type + "\";\n";
    return text;
}

/// Each input gets something that drives, or a constant, or nothing; pads are joined in groups.
std::string randomNetlist(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](size_t end) { return static_cast<size_t>(random() % end); };
    const int number = 1 + static_cast<int>(below(12));
    std::vector<std::string> drivers = {"\"D\"", "\"C\"", "\"W[0]\"", "\"W[1]\"", "\"W[2]\""};
    std::vector<std::string> takers = {"\"Q\"", "\"V[7]\"", "\"V[6]\"", "\"V[5]\""};
    for (int i = 0; i < number; ++i) {
        const std::string both = "\"AND_2" + std::to_string(i) + "\" \"";
        const std::string store = "\"STORE" + std::to_string(i) + "\" \"";
        takers.insert(takers.end(),
                      {both + "A[0]\"", both + "A[1]\"", store + (below(2) ? "~D\"" : "D\""), store + "C\""});
        drivers.insert(drivers.end(), {both + "O\"", store + "Q\""});
    }
    std::map<std::string, std::string> signals;
    const auto connect = [&](const std::string& signal, const std::string& pin) {
        signals[signal] += (signals[signal].empty() ? "" : ", ") + pin;
    };
    for (size_t i = 0; i < drivers.size(); ++i) connect("s" + std::to_string(i), drivers[i]);
    for (const std::string& taker : takers) {
        const size_t driver = below(drivers.size() + 1);
        if (below(5) > 0) connect(driver < drivers.size() ? "s" + std::to_string(driver) : "@1", taker);
    }
    for (int i = 0; i < 3; ++i) connect("p" + std::to_string(below(2)), "\"PAD" + std::to_string(i) + "\" \"P\"");
    std::string text = instances("AND_2", number) + instances("STORE", number) + instances("PAD", 3);
    for (const auto& [signal, connected] : signals)
        text += "signal \"" + signal + "\"; connect \"" + signal + "\" : " + connected + ";\n";
    return text;
}

class SchematicTest : public testing::Test {
protected:
    void SetUp() override {
        const std::string reason = hdnt::author::guide::rankedByDot("digraph{phase=1;n0}", 1).reason;
        if (reason == "built without Graphviz") GTEST_SKIP() << reason;
    }
};

} // namespace

TEST_F(SchematicTest, NoBoxHasMoreThanSixValues) {
    std::string text = instances("PAD", 1);
    for (int i = 1; i <= 7; ++i) {
        const std::string number = std::to_string(i);
        text += "assign block property \"PAD0\" \"P" + number + "\" " + number + ";\n";
        const std::string svg = Mapping(text).draw().svg;
        EXPECT_EQ(svg.find(">P" + number + " = " + number + "</text>") != svg.npos, i < 7) << svg;
        EXPECT_EQ(svg.find(">...</text>") != svg.npos, i == 7) << svg;
    }
}

TEST_F(SchematicTest, ShippedMappings) {
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    HDNTLibraryMgr::m_archEnumInfo = 1;
    size_t number = 0;
    const HDNTLibrary& library = *HDNTLibraryMgr::getCommonLibrary();
    for (size_t i = 0; i < library.getNumTypeBlocks(true); ++i)
        for (const char* const architecture : {"copper", "harbor", "meadow"}) {
            HDNTBlock& block = *library.getTypeBlock(i);
            HDNTExpansion expansion(block, architecture);
            expansion.expand();
            if (expansion.levels().empty()) continue;
            const Schematic schematic = schematicOf(expansion, pageOf, "m");
            EXPECT_EQ(schematic.reason, "") << block.getName();
            if (schematic.reason.empty()) hold(Drawing(schematic.svg), expansion.levels().front());
            EXPECT_EQ(schematicOf(expansion, pageOf, "m").svg, schematic.svg) << block.getName();
            ++number;
        }
    EXPECT_GT(number, 150U);
}

TEST_F(SchematicTest, WhatANetlistMayHold) {
    const std::string loop =
        "connect \"f\" : \"STORE0\" \"Q\", \"STORE1\" \"D\"; connect \"g\" : \"STORE1\" \"Q\", \"STORE0\" \"D\";";
    std::string split;
    for (const char bit : std::string("76543210"))
        split += std::string("connect \"w[") + bit + "]\" : \"W[" + bit + "]\", \"STORE" + bit + "\" \"D\";\n";
    const struct {
        const char* what;
        std::string netlist;
        size_t boxes, nets;
    } cases[] = {
        {"alone", instances("STORE", 1), 1, 0},
        {"through", "signal \"w\"; connect \"w\" : \"D\", \"Q\";", 0, 1},
        {"back", instances("STORE", 2) + "signal \"f\"; signal \"g\";" + loop, 2, 2},
        {"to itself", instances("AND_2", 1) + "signal \"f\"; connect \"f\" : \"AND_20\" \"O\", \"AND_20\" \"A[0]\";", 1,
         1},
        {"split", instances("STORE", 8) + "signal \"w[7:0]\";\n" + split, 8, 1},
        {"turned round",
         instances("AND_2", 1) + "signal \"w[1:0]\"; connect \"w[0]\" : \"W[0]\", \"AND_20\" \"A[1]\";"
                                 "connect \"w[1]\" : \"W[1]\", \"AND_20\" \"A[0]\";",
         1, 1},
        {"inverted",
         instances("STORE", 1) + "signal \"w\"; signal \"v\"; connect \"w\" : \"D\", \"STORE0\" \"~D\";"
                                 "connect \"v\" : \"STORE0\" \"~Q\", \"Q\";",
         1, 2},
        {"without direction",
         instances("PAD", 3) + "signal \"w\"; connect \"w\" : \"PAD0\" \"P\", \"PAD1\" \"P\", \"PAD2\" \"P\";", 3, 1},
        {"bits without direction",
         instances("PAD", 6) + "signal \"w[1:0]\"; connect \"w[0]\" : \"PAD0\" \"P\", \"PAD1\" \"P\", \"PAD2\" \"P\";"
                               "connect \"w[1]\" : \"PAD3\" \"P\", \"PAD4\" \"P\", \"PAD5\" \"P\";",
         6, 2},
        {"to nowhere", instances("STORE", 1) + "signal \"w\"; connect \"w\" : \"STORE0\" \"Q\";", 1, 0},
        {"tied", instances("STORE", 1) + "signal \"@1\"; connect \"@1\" : \"STORE0\" \"D\", \"Q\";", 1, 0},
    };
    for (const auto& [what, netlist, boxes, nets] : cases) {
        SCOPED_TRACE(what);
        const Drawing drawing = Mapping(netlist).held();
        EXPECT_EQ(drawing.titles.size(), boxes);
        EXPECT_EQ(drawing.numNets, nets);
    }
    EXPECT_EQ(Mapping("signal \"w\"; connect \"w\" : \"X\", \"D\";", "modifiedby").held().titles.size(), 1U);
}

TEST_F(SchematicTest, PartsOfABus) {
    const std::map<std::string, std::string> expected = {
        {"AND_20 A[1]", "[0]"}, {"AND_20 A[0]", "[1]"}, {" V[7:6]", "[1:0]"}, {" V[3:2]", "[3:2]"}};
    const Drawing drawing =
        Mapping(instances("AND_2", 1) +
                "signal \"w[3:0]\"; connect \"w[0]\" : \"W[0]\", \"AND_20\" \"A[1]\", \"V[6]\";"
                "connect \"w[1]\" : \"W[1]\", \"AND_20\" \"A[0]\", \"V[7]\"; connect \"w[2]\" : \"W[2]\", \"V[2]\";"
                "connect \"w[3]\" : \"W[3]\", \"V[3]\";")
            .held();
    EXPECT_EQ(drawing.partsOfRows(), expected);
}

TEST_F(SchematicTest, RandomNetlists) {
    for (unsigned seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        Mapping(randomNetlist(seed)).held();
        if (HasFailure()) break;
    }
}

TEST_F(SchematicTest, NamesAndLinks) {
    const Mapping mapping("inst \"a<b>&'\xff\" \"STORE\"; inst \"none\" \"ELSEWHERE\";"
                          "signal \"w\"; connect \"w\" : \"D\", \"a<b>&'\xff\" \"D\", \"none\" \"D\", \"gone\" \"I\";");
    const Schematic linked = mapping.draw();
    const Drawing drawing(linked.svg);
    EXPECT_EQ(drawing.faults(), "");
    EXPECT_EQ(drawing.titles, (support::Texts{"a<b>&'\\xff STORE", "none ELSEWHERE", "gone (no such instance)"}));
    EXPECT_NE(linked.svg.find("<a href=\"STORE.html?a&amp;b\">"), std::string::npos);
    EXPECT_EQ(linked.svg.find("ELSEWHERE.html"), std::string::npos);
    // Links inside an image are none for screen readers.
    EXPECT_NE(linked.svg.find("role=\"group\""), std::string::npos);
    for (const hdnt::author::guide::PageLink& link :
         {hdnt::author::guide::PageLink(), {[](const HDNTBlock&) { return ""; }}})
        EXPECT_NE(mapping.draw(link).svg.find("role=\"img\""), std::string::npos);
}

TEST_F(SchematicTest, WhatIsNotDrawn) {
    EXPECT_EQ(Mapping("").draw().reason, "nothing to draw");
    EXPECT_EQ(Mapping(instances("STORE", 300)).draw().reason, "");
    EXPECT_EQ(Mapping(instances("STORE", 301)).draw().reason, "too large for a drawing: 301 parts, 0 wires");
}
