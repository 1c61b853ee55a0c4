#include "tests/support/Library.h"

#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>

#include <thread>

using support::loaded;
using support::parsed;
using support::Reports;
using support::Texts;

static std::string libraryOf(const std::vector<std::string>& names) {
    std::string text = "library \"L\" {\n";
    for (const std::string& name : names) text += "block \"" + name + "\" { }\n";
    return text + "}";
}

template <typename Action>
static std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const HEXAll& e) {
        return e.what();
    }
    return "no exception";
}

TEST(Library, ChainsToItsParent) {
    const auto parent = loaded(libraryOf({"ADD", "HOLD", "BOTH"}));
    const auto child = loaded(libraryOf({"CELL_A", "both"}), parent.get());
    EXPECT_EQ(child->getNumTypeBlocks(false), 2U);
    EXPECT_EQ(child->getNumTypeBlocks(true), 5U);
    EXPECT_EQ(child->getTypeBlock(2)->getName(), "ADD");
    EXPECT_EQ(messageOf([&] { child->getTypeBlock(5); }), "HDNTLibrary::getTypeBlock call is invalid");
    EXPECT_EQ(child->getTypeBlockByName("cell_a", false), child->getTypeBlock(0));
    EXPECT_EQ(child->getTypeBlockByName("add", false), nullptr);
    EXPECT_EQ(child->getTypeBlockByName("add", true), parent->getTypeBlock(0));
    EXPECT_EQ(child->getTypeBlockByName("BOTH", true)->getName(), "both");
    EXPECT_EQ(child->getConfig(), parent->getConfig());
    EXPECT_EQ(child->getDescConfig(), parent->getDescConfig());
}

TEST(Library, BlocksThatBeginWith) {
    const auto parent = loaded(libraryOf({"bb", "AB", "aA", "B"}));
    const auto child = loaded(libraryOf({"AB"}), parent.get());
    const struct {
        const char* prefix;
        bool parents;
        std::vector<std::string> names;
    } cases[] = {{"a", true, {"AB", "aA", "AB"}}, {"a", false, {"AB"}}, {"ab", true, {"AB", "AB"}}, {"", true, {}},
                 {"B", true, {"B", "bb"}},        {"bbb", true, {}}};
    for (const auto& [prefix, parents, names] : cases) {
        std::vector<HDNTBlock*> found;
        EXPECT_EQ(child->getTypeBlocksBeginWith(prefix, found, parents), !names.empty()) << prefix;
        Texts foundNames;
        for (const HDNTBlock* block : found) foundNames.push_back(block->getName());
        EXPECT_EQ(foundNames, names) << prefix;
    }
}

TEST(Library, FindsNothingBeforeFinalize) {
    const auto library = parsed(libraryOf({"ADD"}));
    EXPECT_EQ(library->getTypeBlockByName("ADD", true), nullptr);
    std::vector<HDNTBlock*> found;
    EXPECT_FALSE(library->getTypeBlocksBeginWith("A", found, true));
}

// Names entered after a redefinition lead one block back. Required, however odd.
TEST(Library, RedefinitionsShiftLaterNames) {
    Reports reports;
    const auto library = loaded("library \"L\" {\nblock \"A\" { }\nblock \"a\" { property bool \"P\" true; }\n"
                                "block \"B\" { }\nblock \"b\" { }\n}");
    EXPECT_EQ(reports.take(), (Texts{"3:1-37 Block a has already been defined at location 2",
                                     "5:1-13 Block b has already been defined at location 4"}));
    EXPECT_EQ(library->getTypeBlockByName("A", false), library->getTypeBlock(0));
    EXPECT_EQ(library->getTypeBlockByName("B", false), library->getTypeBlock(1));
    EXPECT_EQ(library->getTypeBlock(1)->getPropertyByName("P"), nullptr);
    library->finalize();
    EXPECT_EQ(reports.take(), Texts{});
}

TEST(Library, TestBlocksAreDroppedUnlessTheFeatureIsOn) {
    for (const bool on : {false, true}) {
        HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", on);
        const auto library = loaded("library \"L\" { block \"A\" { test = true; } block \"B\" { test = false; } }");
        EXPECT_EQ(library->getNumTypeBlocks(false), on ? 2U : 1U);
    }
}

TEST(Library, FunctionsAreFoundByExactNameInParentsToo) {
    const auto parent = loaded("library \"P\" { function int f(int, 1'h, 1'b); function bool g(); }");
    const auto child = loaded("library \"C\" { function string G(double); }", parent.get());
    EXPECT_EQ(child->getFunctionDeclByName("g"), parent->getFunctionDecl(1));
    EXPECT_EQ(child->getFunctionDeclByName("G"), child->getFunctionDecl(0));
    EXPECT_EQ(child->getFunctionDeclByName("F"), nullptr);
    const HDNTFunctionDecl& f = *parent->getFunctionDeclByName("f");
    EXPECT_EQ(std::tuple(f.getType(), f.getNumFormals(), f.getFormal(1), f.getFormal(2)),
              std::tuple(HATAttrTypes::TypeInt, 3U, HATAttrTypes::TypeBitHex, HATAttrTypes::TypeBitBinary));
    EXPECT_THROW(f.getFormal(3), HEXAlgException);
    EXPECT_THROW(child->getFunctionDecl(1), HEXAlgException);
}

TEST(Library, InitTakesBlocksAndFunctionsOnly) {
    HDNTLibrary library(nullptr);
    HDNTBus* const bus = [] {
        std::string name = "A";
        return new HDNTBus(name, HDNT_PIN_INPUT, false, false, HDNT_PIN_DATA, HDNT_PIN_NO_VALUE, nullptr);
    }();
    std::vector<HDNTDecl*> decls = {nullptr, new HDNTBlock("ADD", nullptr, nullptr, &library), bus};
    EXPECT_EQ(messageOf([&] { library.init("L", &decls); }), "Invalid library declaration type");
    EXPECT_EQ(library.getNumTypeBlocks(false), 1U);
    delete bus;
    library.init("M", nullptr);
    EXPECT_EQ(library.getName(), "M");
}

TEST(Library, PrimitiveGroups) {
    const auto library =
        loaded("library \"L\" {"
               "block \"A\" { primgroup = \"G:S\"; } block \"B\" { primgroup = \"G:S,  O:P\"; }"
               "block \"C\" { primgroup = \"g,\"; } block \"D\" { } block \"E\" { primgroup = \"\"; } }");
    const struct {
        const char* block;
        Texts texts; // group, subgroup, legacy group, legacy subgroup
    } cases[] = {{"a", {"G", "S", "G", ""}}, {"B", {"G", "S", "O", "P"}}, {"C", {"g", "", "g", ""}},
                 {"D", {"", "", "", ""}},    {"E", {"", "", "", ""}},     {"none", {"", "", "", ""}}};
    for (const auto& [name, texts] : cases)
        EXPECT_EQ((Texts{library->getPrimGroupType(name, false), library->getPrimSubGroupType(name, false),
                         library->getPrimGroupType(name, true), library->getPrimSubGroupType(name, true)}),
                  texts)
            << name;
    EXPECT_EQ(library->getTypeBlockByName("D", false)->getPrimGroupType(false), nullptr);
    EXPECT_STREQ(library->getTypeBlockByName("E", false)->getPrimGroupType(false), "");
    EXPECT_EQ(library->getTypeBlockByName("A", false)->getPrimGroupType(false),
              library->getTypeBlockByName("B", false)->getPrimGroupType(false));
    EXPECT_EQ(messageOf([&] { library->getGroupAbbrev(6); }), "Prim group name index out of bounds");
}

static const char* const applicationData = R"(
READ_ONLY_ATTRIBUTES = { FIXED = true; };  IO_PIN_CONSTRAINTS = { PAD = true; OFF = false; BAD = 1; };
MASTER_DRIVER_TYPES = ["ADD", 1]; 
ARCHITECTURES = { alpha = { simDevice = "SIM_A"; master = "alpha0"; internalPins = true; }; beta = 1; };
CELLS = { ADD = { architectures = ["alpha"]; canTiePins = true; nibbleSizedHex = true; pseudoDifferential = true;
                  masterDriverPin = "O"; shadowPins = ["OB"]; pinFunctions = { O = "pad"; }; }; };
)";

TEST(Library, ConfigurationQueries) {
    const TempDir dir;
    dir.write("HDNTApplicationData.cfg",
              "MASTER_DRIVER_TYPES = [\"ADD\"];" +
                  std::string(applicationData).replace(std::string(applicationData).find("MASTER"), 34, ""));
    dir.write("tessel.desc.cfg",
              "ADD = { FIXED = \"text\"; }; PINTYPES = { ADD = { M1 = \"clock\"; M0 = \"none\"; }; };");
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    const auto library =
        loaded(support::inBlock("property bool \"FIXED\" true; property bool \"PAD\" true; property bool \"OFF\" true; "
                                "property bool \"@X\" true;"
                                "property 10'h \"H\" { default = 10'h0 }"
                                "pin \"O\" output; pin \"M[1:0]\" input mixed; pin \"I[3:0]\" internal;"));
    const HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_EQ(library->getSimDeviceString("alpha"), "SIM_A");
    EXPECT_EQ(library->getMasterArchitecture("alpha"), "alpha0");
    EXPECT_EQ(library->getSimDeviceString("beta") + library->getMasterArchitecture("none"), "");
    std::vector<std::string> texts = {"old"};
    library->getMasterDriverTypes(texts);
    EXPECT_EQ(texts, Texts{"ADD"});
    block.getMasterShadowPins(texts);
    EXPECT_EQ(texts, Texts{"OB"});
    EXPECT_EQ(block.getCellArchesCfg(), Texts{"alpha"});
    EXPECT_TRUE(block.canTiePins() && block.usesNibbleSizeHexAttrs() && block.canBePseudoDifferential());
    EXPECT_FALSE(block.getCanTiePins());
    EXPECT_EQ(block.getMasterDriverPinName(), "O");
    std::string function = "old";
    EXPECT_TRUE(block.getPin(0)->getPinFunction(function) && function == "pad");
    EXPECT_FALSE(block.getPin(1)->getPinFunction(function));
    EXPECT_EQ(function, "");
    EXPECT_EQ(block.getPin(1)->getType(), HDNT_PIN_CLOCK);
    EXPECT_EQ(block.getPin(2)->getType(), HDNT_PIN_MIXED);

    EXPECT_EQ(block.getNumPins(), 3U);
    const CommonPart::PartSpec alpha{"alpha", ""};
    EXPECT_TRUE(block.internalPinsSupported(&alpha));
    HDNTLibraryMgr::getLibraryMgr()->m_partSpec = &alpha;
    EXPECT_EQ(block.getNumPins(), 7U);

    const auto specOf = [&](const char* name) { return block.getPropertyByName(name)->getAttrSpec(); };
    EXPECT_TRUE(specOf("FIXED")->isReadOnly() && specOf("FIXED")->isAllowedSourceType(8));
    EXPECT_TRUE(specOf("PAD")->isReadOnly());
    for (const int source : {2, 8, 11, 12}) EXPECT_FALSE(specOf("PAD")->isAllowedSourceType(source));
    EXPECT_FALSE(specOf("OFF")->isReadOnly());
    EXPECT_EQ(specOf("FIXED")->getDescription(), "text");
    EXPECT_EQ(specOf("@X")->getDescription(), "");
    EXPECT_EQ(block.getPropertyByName("H")->getAdjustedBitWidth(), 12);
}

TEST(Library, MalformedConfiguration) {
    const TempDir dir;
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    dir.write("HDNTApplicationData.cfg", "\nA = ;");
    EXPECT_NE(messageOf([] { HDNTLibrary library(nullptr); }).find("HDNTApplicationData.cfg"), std::string::npos);
    EXPECT_EQ(myTopLib, nullptr);
    dir.write("HDNTApplicationData.cfg", "");
    dir.write("tessel.desc.cfg", "A = ;");
    HDNTLibrary library(nullptr);
    EXPECT_NE(messageOf([&] { library.getDescConfig(); }).find("tessel.desc.cfg"), std::string::npos);
    dir.write("tessel.desc.cfg", "");
    EXPECT_NE(library.getDescConfig(), nullptr);
}

// A finished model may be asked from any thread.
TEST(Library, QueriesRunInAnyThread) {
    const auto library =
        parsed(support::inBlock("pin \"M[3:0]\" input mixed; property int \"P\" { min = 0, max = 9 }"));
    library->finalize();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 200; ++n) {
                const HDNTBlock& block = *library->getTypeBlockByName("add", true);
                EXPECT_EQ(block.getPinByName("m[2]")->getType(), HDNT_PIN_MIXED);
                std::string reason;
                EXPECT_FALSE(block.getPropertyByName("p")->isValidValue(10, reason));
                EXPECT_TRUE(HDNTLibraryMgr::isPrimitive("HOLD"));
            }
        });
    for (std::thread& thread : threads) thread.join();
}
