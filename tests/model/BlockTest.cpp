#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using support::inBlock;
using support::loaded;
using support::parsed;
using support::Reports;
using support::Texts;

TEST(Block, PinsByName) {
    const auto library = loaded(inBlock("pin \"CLK\" input clock; pin \"low\" input; pin \"D[3:0]\" input;"
                                        "pin \"D[6:8]\" input; pin \"E[5]\" bidir;"));
    const HDNTBlock& block = *library->getTypeBlock(0);
    const struct {
        const char* name;
        int position;
    } cases[] = {{"clk", 0},
                 {"CLK", 0},
                 {"low", -1},
                 {"LOW", -1},
                 {"D[3]", 2},
                 {"d[0]", 5},
                 {"D[6]", 6},
                 {"D[8]", 8},
                 {"D[5]", -1},
                 {"D", -1},
                 {"D[03]", -1},
                 {"D[+3]", -1},
                 {"D[]", -1},
                 {"D[3]x", -1},
                 {"E[5]", 9},
                 {"E", -1},
                 {"", -1},
                 {"[1]", -1},
                 {"D[99999999999]", -1},
                 {"CLK[-1]", -1}};
    for (const auto& [name, position] : cases)
        EXPECT_EQ(block.getPinByName(name), position < 0 ? nullptr : block.getPin(static_cast<size_t>(position)))
            << name;
}

TEST(Block, BusesByName) {
    const auto library =
        loaded(inBlock("pin \"D[3:0]\" input; pin \"D[9:8]\" input; pin \"E[5]\" input; pin \"c\" input;"));
    const HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_EQ(block.getBusByName("d", false), block.getBus(0));
    EXPECT_EQ(block.getBusByName("d[9:8]", true), block.getBus(1));
    EXPECT_EQ(block.getBusByName("E[5:5]", true), block.getBus(2));
    EXPECT_EQ(block.getBusByName("E[5]", true), nullptr);
    EXPECT_EQ(block.getBusByName("c", false), nullptr);
    std::vector<HDNTPin*> pins;
    block.getBusPins("D", pins);
    EXPECT_EQ(pins.size(), 6U);
}

TEST(Block, PinsOfTheFirstRunOnly) {
    const auto library = loaded(inBlock("pin \"D[1:0]\" input; pin \"E\" input; pin \"D[2]\" input;"));
    std::vector<HDNTPin*> pins;
    library->getTypeBlock(0)->getBusPins("D", pins);
    EXPECT_EQ(pins.size(), 2U);
    library->getTypeBlock(0)->getBusPins("none", pins);
    EXPECT_EQ(pins.size(), 2U);
}

TEST(Block, Redefinitions) {
    Reports reports;
    const auto library =
        loaded(inBlock("pin \"D[3:0]\" input;\npin \"A\" input;\npin \"D[1:2]\" input;\npin \"A\" output;\n"
                       "property bool \"P\" true;\nproperty int \"p\" { default = 1 }\n"
                       "property bool \"Q\" true;"));
    EXPECT_EQ(reports.take(), (Texts{"5:1-19 Pin D[1] is being redefined.", "5:1-19 Pin D[2] is being redefined.",
                                     "6:1-15 Pin A is being redefined.", "8:1-32 Property p is being redefined."}));
    const HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_EQ(block.getPinByName("D[2]"), block.getPin(1));
    EXPECT_EQ(block.getPropertyByName("p")->getType(), HATAttrTypes::TypeBool);
    EXPECT_EQ(block.getProperty(1)->getIndex(), -1);
    EXPECT_EQ(block.getProperty(2)->getIndex(), 1);
    library->getTypeBlock(0)->finalize();
    EXPECT_EQ(reports.take(), Texts{});
}

TEST(Block, IndexesOutOfRange) {
    const auto library = loaded(inBlock("pin \"D[3:0]\" input; property bool \"P\" true;"));
    const HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_EQ(block.getBus(3), nullptr);
    const auto message = [](const std::function<void()>& action) -> std::string {
        try {
            action();
        } catch (const HEXAlgException& e) {
            return e.what();
        }
        return "";
    };
    EXPECT_EQ(message([&] { block.getBus(4); }), "Bus index out of range for tessel ADD");
    EXPECT_EQ(message([&] { block.getProperty(1); }), "Property index out of range");
    EXPECT_EQ(message([&] { block.getBus(0)->getProperty(0); }), "Property index out of range");
    std::string text;
    EXPECT_EQ(support::printedBy([&] { text = message([&] { block.getPin(4); }); }).err, "4 >= 4\n");
    EXPECT_EQ(text, "Pin index out of range for tessel ADD");
}

TEST(Block, UnregisteredNamesAreNumbered) {
    const auto library =
        loaded("library \"L\" { block \"NOT_IN_TABLE\" { } block \"HOLD\" { } block \"NOR_THIS\" { } }");
    EXPECT_EQ(library->getTypeBlock(0)->getType(), 4001);
    EXPECT_LT(library->getTypeBlock(1)->getType(), 4000);
    EXPECT_EQ(library->getTypeBlock(2)->getType(), 4002);
    EXPECT_EQ(HDNTBlock::s_unregisteredNames, (Texts{"NOT_IN_TABLE", "NOR_THIS"}));
    HDNTBlock::s_unregisteredNames.resize(70000);
    EXPECT_EQ(HDNTBlock("X", nullptr, nullptr, nullptr).getType(), 65535);
}

TEST(Block, AttributesAndNetlist) {
    const auto library = loaded(inBlock("internal = true; maturityLevel = deprecated; pin \"A\" input tieHigh;"));
    HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_TRUE(block.isInternal() && !block.isTest() && block.getCanTiePins());
    EXPECT_EQ(block.getMaturityLevel(), 3);
    EXPECT_EQ(block.getNetlistKind(), HDNTBlock::NoNetlist);
    block.setNetlist(new HDNTNetlist);
    EXPECT_EQ(block.getNetlistKind(), HDNTBlock::OwnNetlist);
    EXPECT_EQ(block.getNetlist()->getTypeBlock(), &block);
    block.setNetlist(nullptr);
    EXPECT_EQ(block.getNetlistKind(), HDNTBlock::NoNetlist);
    HDNTLibrary child(library.get());
    EXPECT_EQ(HDNTBlock("ADD", nullptr, new HDNTNetlist, &child).getNetlistKind(), HDNTBlock::OwnNetlistInChild);
}

TEST(Pins, NamesAndAttributes) {
    const auto library =
        loaded(inBlock("pin \"D[0:2]\" bidir test abstract setreset mustConnect { property bool \"P\" true;"
                       " property bool \"p\" false; }\npin \"C\" output;"));
    const HDNTBlock& block = *library->getTypeBlock(0);
    const HDNTPin& pin = *block.getPin(2);
    EXPECT_EQ(pin.getName(false) + ' ' + pin.getName(true) + ' ' + pin.getBus()->getName(), "D[2] D2 D[0:2]");
    EXPECT_EQ(std::tuple(pin.getBitIndex(), pin.getPinIndex(), pin.getDirection(), pin.getType()),
              std::tuple(2, 2, HDNT_PIN_BIDIR, HDNT_PIN_SET_RESET));
    EXPECT_TRUE(pin.isTest() && pin.isAbstract() && pin.getRequiredValue() == HDNT_PIN_MUST_CONNECT);
    EXPECT_EQ(pin.getPropertyByName("p"), pin.getProperty(1));
    EXPECT_EQ(pin.getProperty(0)->getBlock(), &block);
    const HDNTPin& scalar = *block.getPin(3);
    EXPECT_EQ(std::tuple(scalar.getName(false), scalar.getBitIndex(), scalar.getBus()->getFirstIndex()),
              std::tuple("C", -1, -1));
    EXPECT_EQ(HDNTPin::getDirectionName(static_cast<HDNT_PIN_DIRECTION>(9)), "internal");
    EXPECT_EQ(HDNTPin::getTypeName(HDNT_PIN_WRITE_ENABLE), "writeEnable");
    EXPECT_THROW(HDNTPin::getTypeName(static_cast<HDNT_PIN_TYPE>(10)), HEXDataException);
    EXPECT_EQ(HDNTPin(1, 2).getName(false), "[1]");
}

TEST(Pins, ABusElaboratedAgainHasTheSameBits) {
    for (const auto& [declared, bits] : {std::pair("D[1:3]", std::vector<int>{1, 2, 3}), {"Q", {-1}}}) {
        std::string name = declared;
        HDNTBus bus(name, HDNT_PIN_INPUT, false, false, HDNT_PIN_DATA, HDNT_PIN_NO_VALUE, nullptr);
        for (const size_t before : {0U, 2U}) {
            std::vector<HDNTPin*> pins(before);
            bus.elaborate(pins);
            std::vector<int> found;
            for (size_t i = before; i < pins.size(); ++i) {
                found.push_back(pins[i]->getBitIndex());
                EXPECT_EQ(pins[i]->getPinIndex(), i);
                delete pins[i];
            }
            EXPECT_EQ(found, bits);
            EXPECT_EQ(bus.getName(), declared);
            EXPECT_EQ(bus.getFirstPinIndex(), static_cast<int>(before));
        }
    }
}

// Ranges without a fault are cut before the block has them.
TEST(Pins, WhatIsTooMuchKeepsItsNameAsWritten) {
    Reports reports;
    const auto library = parsed(inBlock("pin \"A[32767:0]\" input;\npin \"B[0:32766]\" input;\npin \"C[0:7]\" input;\n"
                                        "pin \"D[05:4]\" input;\npin \"E[32768:0]\" input;\npin \"F[5]\" input;"));
    Texts names;
    for (const HDNTBus& bus : library->blocks()[0].buses())
        names.push_back(bus.getBaseName() + " " + bus.getName() + " " + std::to_string(bus.pinCount()));
    EXPECT_EQ(names, (Texts{"A A[32767:0] 32768", "B B[0:32766] 32767", "C[0:7] C[0:7] 0", "D[05:4] D[05:4] 0",
                            "E[32768:0] E[32768:0] 0", "F F[5:5] 1"}));
    EXPECT_EQ(reports.take(), (Texts{"5:1-19 Pin \"C[0:7]\" makes 65543 pins of its block, more than 65536.",
                                     "6:1-20 Pin \"D[05:4]\" makes 65537 pins of its block, more than 65536.",
                                     "7:1-23 Pin \"E[32768:0]\" has bit 32768, above 32767."}));
}

TEST(Pins, FaultsOfDeclarations) {
    Reports reports;
    loaded(inBlock("pin \"O\" output tieLow;\npin \"a-b\" input;\npin \"D[3:]\" input;\npin \"B\" bidir tieLow;"));
    EXPECT_EQ(reports.take(),
              (Texts{"5:1-18 Invalid name format in string \"D[3:]\" . Valid name is name[+veinteger:+veinteger].",
                     "3:1-22 Invalid tieoff of output pin \"O\"",
                     "4:1-16 Invalid name format in string \"a-b\" . Valid name is [a-z0-9_A-Z]+ ."}));
}
