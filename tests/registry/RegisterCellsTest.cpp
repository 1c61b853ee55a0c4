#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

namespace {

struct RegisterCells : testing::Test {
    std::string refusalOf(const std::string& text) {
        const std::string path = directory.write("own.csv", text);
        try {
            hdnt::registerCells(path);
        } catch (const HEXDataException& error) {
            const std::string reason = error.what();
            return reason.compare(0, path.size(), path) == 0 ? reason.substr(path.size()) : reason;
        }
        return "";
    }
    static int typeOf(const std::string& name) { return HDNTCellviewLib::getGlobal()->getType(name); }

    const TempDir directory;
    const std::string builtIn = [] {
        HDNTCellviewLib::initializeValues();
        return std::string(HDNTCellviewLib::s_typeToName[7]);
    }();
};

} // namespace

TEST_F(RegisterCells, RowsAreAddedToTheTable) {
    EXPECT_EQ(refusalOf("1729,PULSE_SHAPER\n3999,LAST_CELL"), "");
    EXPECT_EQ(refusalOf("7," + builtIn + "\n1729,PULSE_SHAPER\n1800,GLUE\n4000,UNKNOWN\n"), "");
    const HDNTCellviewLib& table = *HDNTCellviewLib::getGlobal();
    EXPECT_EQ(table.allTesselEnums().size(), 1695U + 3U);
    EXPECT_EQ(HDNTCellviewLib::MAX, 3999);
    EXPECT_EQ(typeOf("PULSE_SHAPER"), 1729);
    EXPECT_EQ(typeOf(builtIn), 7);
    EXPECT_EQ(table.getName(static_cast<HDNTCellviewLib::Type>(1800)), "GLUE");
    EXPECT_TRUE(HDNTLibraryMgr::isPrimitive("LAST_CELL"));
    const auto library = support::parsed("library \"L\" { block \"GLUE\" { } block \"OTHER\" { }\n"
                                         "block \"GLUE\" mapsto { } block \"OTHER\" mapsto { } }");
    EXPECT_EQ(library->getTypeBlock(0)->getType(), 1800);
    EXPECT_NE(library->getTypeBlock(0)->getAttachedNetlist(), nullptr);
    EXPECT_EQ(library->getTypeBlock(1)->getType(), 4001);
    EXPECT_EQ(library->getTypeBlock(1)->getAttachedNetlist(), nullptr);
}

TEST_F(RegisterCells, ARefusedTableAddsNothing) {
    const std::string form = ":2: expected 'value,NAME', found '";
    const std::string bound = " is not within 0 and 3999 (4000 is UNKNOWN)";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", form + "'"},
        {"1801", form + "1801'"},
        {"1801,", form + "1801,'"},
        {",GLUE_2", form + ",GLUE_2'"},
        {"01801,GLUE_2", form + "01801,GLUE_2'"},
        {"-1,GLUE_2", form + "-1,GLUE_2'"},
        {"99999999999999999999,GLUE_2", form + "99999999999999999999,GLUE_2'"},
        {"1801, GLUE_2", form + "1801, GLUE_2'"},
        {"1801,glue_2", form + "1801,glue_2'"},
        {"1801,GLUE_2,", form + "1801,GLUE_2,'"},
        {"1801,GLUE_2\r", form + "1801,GLUE_2\r'"},
        {"1801,GLU", ":2: name 'GLU' has not 4 to 35 characters"},
        {"1801," + std::string(36, 'G'), ":2: name '" + std::string(36, 'G') + "' has not 4 to 35 characters"},
        {"4000,GLUE_2", ":2: value 4000" + bound},
        {"4001,GLUE_2", ":2: value 4001" + bound},
        {"1801,UNKNOWN", ":2: value 1801" + bound},
        {"1800,GLUE_2", ":2: value 1800 of GLUE_2 is that of GLUE already"},
        {"1801,GLUE", ":2: cell GLUE has the value 1800 already, not 1801"},
        {"7,GLUE_2", ":2: value 7 of GLUE_2 is that of " + builtIn + " already"},
        {"1801," + builtIn, ":2: cell " + builtIn + " has the value 7 already, not 1801"},
    };
    for (const auto& [line, reason] : cases) EXPECT_EQ(refusalOf("1800,GLUE\n" + line + "\n1802,GLUE_3"), reason);
    EXPECT_THROW(hdnt::registerCells(directory.path("none.csv")), HEXDataException);
    EXPECT_EQ(HDNTCellviewLib::getGlobal()->allTesselEnums().size(), 1695U);
    EXPECT_EQ(typeOf("GLUE"), HDNTCellviewLib::UNKNOWN);
}

TEST_F(RegisterCells, AfterTheFirstLookUpItIsTooLate) {
    EXPECT_EQ(typeOf("GLUE"), HDNTCellviewLib::UNKNOWN);
    EXPECT_EQ(refusalOf("1800,GLUE"), ": too late to register cells: some have been looked up");
    EXPECT_EQ(typeOf("GLUE"), HDNTCellviewLib::UNKNOWN);
    EXPECT_EQ(HDNTCellviewLib::s_typeToName[1800], nullptr);
}

TEST_F(RegisterCells, TheEnvironmentNamesTables) {
    const std::string first = directory.write("first.csv", "1800,GLUE\n");
    const std::string second = directory.write("second.csv", "1800,GLUE_2\n");
    setenv("HDNT_CELLVIEWS", (":" + first + "::" + second).c_str(), 1);
    for (int i = 0; i < 2; ++i) EXPECT_THROW(HDNTCellviewLib::getGlobal(), HEXDataException);
    const std::string text = "library \"L\" { block \"GLUE\" { } }";
    const hdnt::Loaded refused = hdnt::load(directory.write("l.btl", text));
    EXPECT_EQ(refused.library, nullptr);
    ASSERT_EQ(refused.diagnostics.size(), 1U);
    EXPECT_NE(hdnt::textOf(refused.diagnostics[0]).find(second + ":1: value 1800"), std::string::npos);
    directory.write("second.csv", "1801,GLUE_2\n");
    EXPECT_EQ(typeOf("GLUE"), 1800);
    EXPECT_EQ(typeOf("GLUE_2"), 1801);
}
