#include "tests/support/Library.h"

#include "hdnt/frontend/Scanner.h"

#include <gtest/gtest.h>

#include <fstream>

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

#ifndef HDNT_SANITIZED
static size_t residentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::stoul(line.substr(6));
    return 0;
}

// Hosts live for days: what a dropped library used serves the next one or goes back to the system.
TEST(Library, DroppedOnesLeaveNoMemoryBehind) {
    std::string text = "library \"L\" {\n";
    for (int block = 0; block < 800; ++block) {
        text += "block \"CELL_" + std::to_string(block) + "\" {\n";
        for (int i = 0; i < 10; ++i)
            text += "pin \"D" + std::to_string(i) + "[63:0]\" input; property int \"N" + std::to_string(i) +
                    "\" { min = 1, max = 4, default = 2 }\n";
        text += "}\n";
    }
    text += "}";
    decltype(loaded(text)) kept; // stands in the midst of what is dropped
    const auto loadAndDrop = [&] {
        const auto library = loaded(text);
        kept = loaded(libraryOf({"ADD", "HOLD"}));
        for (size_t i = 0; i < library->getNumTypeBlocks(false); ++i)
            EXPECT_EQ(library->getTypeBlock(i)->getPin(63)->getBitIndex(), 0);
        NtlFreeScannerMem();
        return residentKiB();
    };
    const size_t held = loadAndDrop();
    const size_t dropped = residentKiB();
    EXPECT_LT(dropped + 16384, held) << "objects stay with the process";
    for (int i = 0; i < 10; ++i) loadAndDrop();
    EXPECT_LT(residentKiB(), dropped + 2048) << "each load takes more";
}
#endif

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
