// A finished model may be asked anything by any number of threads at once, mappings included while no map library can
// be loaded. The thread sanitizer is what gives these tests their teeth.
#include "hdnt/frontend/Scanner.h"
#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <latch>
#include <sstream>
#include <thread>

static const char* const commonText = R"(library "R" {
function bool makeDiff();
function int intProperty(string);
block "HOLD" { pin "D" input tieLow; pin "Q" output { property double "LOAD" { min = 0.0, max = 2.0 } } primgroup = "G:S"; }
block "GATE_AND_2" { pin "A[1:0]" input mixed; pin "O" output; }
})";
static const char* const childText = R"(library "L" {
block "ADD" {
    property bool "FIXED" true; property string "MODE" { values { "A", "B" }, default = "A" }
    property 10'h "H" { default = 10'h0 } property 4'b "B" { default = 4'b0 } property int "N" { min = 1, max = 4 }
    pin "O" output; pin "M[3:0]" input mixed; pin "I[3:0]" internal; primgroup = "G:T, O:P";
} mapsto { makeDiff(); signal "S[1:0]"; inst "U" "HOLD"; connect "S[0]" : "U" "Q", "~O";
           if (intProperty("N") + 1 > 2) inst "V" "GATE_AND_2"; }
block "LATCH" { property double "X" { default = 1.5 } pin "D" input; }
})";
static const char* const applicationData = R"(
READ_ONLY_ATTRIBUTES = { FIXED = true; };  MASTER_DRIVER_TYPES = ["ADD"];  PSEUDO_DIFFERENTIAL_FUNCTIONS = ["makeDiff"];
ARCHITECTURES = { alpha = { simDevice = "SIM_A"; master = "alpha0"; internalPins = true; }; };
CELLS = { ADD = { architectures = ["alpha"]; nibbleSizedHex = true; masterDriverPin = "O"; shadowPins = ["OB"];
                  pinFunctions = { O = "pad"; }; }; };
)";

static void writeProperty(std::ostream& out, const HDNTProperty& property) {
    std::string reason;
    const auto list = [&](const auto& values) {
        for (const auto& value : values) out << value << ',';
    };
    out << property.getName() << property.isValidValue(3, reason) << property.isValidValue("10'h3", reason) << reason
        << property.isValidValue(0.5, reason) << property.isValidValue(true, reason) << property.isPinInversion()
        << property.getAdjustedBitWidth() << property.isMinDeclared() << property.isMaxDeclared()
        << property.formatValue("10'h1f", true) << property.formatValue("1f", 'b', 'h', "%d'%c%s")
        << property.getMinHexValue() << property.getMaxHexValue() << property.getMinBinaryValue()
        << property.getMaxBinaryValue() << property.getDefaultStringValue() << property.getDescConfig()
        << property.getBlock()->getName() << property.getAttrSpec()->getDescription()
        << property.getAttrSpec()->isReadOnly() << property.getAttrSpec()->isAllowedSourceType(8);
    list(property.getAllowedIntValues());
    list(property.getAllowedStringValues());
    list(property.getAllowedHexValues());
    list(property.getAllowedBinaryValues());
}

static void writePin(std::ostream& out, const HDNTPin& pin) {
    std::string function;
    out << pin.getName(false) << pin.getName(true) << pin.getType() << pin.getDirection() << pin.getRequiredValue()
        << pin.getPinFunction(function) << function << pin.getBus()->getName() << pin.getBus()->getPinFunction(function)
        << pin.getBlock()->getName() << pin.isTest() << pin.isAbstract() << pin.getLocation()->first_line;
    for (unsigned short i = 0; i < pin.getNumProperties(); ++i) out << pin.getProperty(i)->getName();
}

static void writeBlock(std::ostream& out, HDNTBlock& block) {
    const CommonPart::PartSpec alpha{"alpha", ""};
    std::vector<std::string> shadows = block.getCellArchesCfg();
    block.getMasterShadowPins(shadows);
    out << block.getName() << block.getType() << block.canTiePins() << block.usesNibbleSizeHexAttrs()
        << block.canBePseudoDifferential() << block.internalPinsSupported(&alpha) << block.getNumPins()
        << block.getMasterDriverPinName() << shadows.size() << block.getCanTiePins() << block.getNetlistKind()
        << block.getNetlist() << block.getNetlist("alpha") << block.getNetlist("beta") << block.getAttachedNetlist()
        << block.getReferencedInstanceName("") << block.hasPseudoDifferentialExpansion("alpha")
        << (block.getPrimGroupType(false) ? block.getPrimGroupType(true) : "none")
        << (block.getPinByName("m[2]") ? block.getPinByName("M[2]")->getPinIndex() : -1)
        << block.getBusByName("O", false) << block.getPropertyByName("fixed");
    for (size_t i = 0; i < block.getNumPins(); ++i) writePin(out, *block.getPin(i));
    for (size_t i = 0; i < block.getNumProperties(); ++i) writeProperty(out, *block.getProperty(i));
    const std::unique_ptr<HSTKeyValIter<std::string, HATAttrSpec*>> specs(block.createSpecIter());
    while (specs->hasNext()) {
        specs->next();
        out << specs->getKey();
    }
    HDNTExpansion expansion(block, "alpha");
    out << expansion.expand(true) << expansion.levels().size() << expansion.problems().size();
}

// Everything that can be asked of a library, as one text. Pointers are the same for all who ask.
static std::string answersOf(HDNTLibrary& library) {
    std::ostringstream out;
    std::vector<std::string> drivers;
    std::vector<HDNTBlock*> blocks;
    library.getMasterDriverTypes(drivers);
    out << library.getSimDeviceString("alpha") << library.getMasterArchitecture("alpha") << drivers.size()
        << library.isIOPinConstr("FIXED") << library.isReadOnlyAttribute("FIXED") << library.getConfig()
        << library.getDescConfig() << library.getTypeBlocksBeginWith("a", blocks, true) << blocks.size()
        << library.getTypeBlockByName("gate_and_2", true) << library.getDeclaredBlock("add")
        << library.getFunctionDeclByName("makeDiff") << library.getPrimGroupType("add", true)
        << library.getPrimSubGroupType("hold", false) << HDNTLibraryMgr::isPrimitive("HOLD")
        << HDNTCellviewLib::getGlobal()->getName(static_cast<HDNTCellviewLib::Type>(0));
    for (size_t i = 0; i < library.getNumTypeBlocks(true); ++i) writeBlock(out, *library.getTypeBlock(i));
    HDNTAllSpecIter specs(&library);
    while (specs.hasNext()) {
        specs.next();
        out << specs.getKey() << specs.getVal()->getAttrType();
    }
    const HDNTModelTree tree(library);
    out << tree.toBytes() << HDNTComparison::compare(library, library).size()
        << HDNTComparison::compare(*library.getParentLibrary(), library).size()
        << HDNTComparison::compare(tree, tree).size() << support::printed(library) << support::source(library);
    return out.str();
}

// Beside another thread that loads. HDNT_ROUNDS says how often each asks.
TEST(Threads, AllAskEverythingAtOnce) {
    constexpr int count = 16;
    const char* const wanted = std::getenv("HDNT_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : 25;
    const TempDir dir;
    dir.write("HDNTApplicationData.cfg", applicationData);
    dir.write("tessel.desc.cfg", "ADD = { FIXED = \"text\"; }; PINTYPES = { ADD = { M1 = \"clock\"; }; };");
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    const auto root = support::loaded(commonText);
    const auto child = support::loaded(childText, root.get());
    ASSERT_NE(child, nullptr);
    std::vector<std::string> answers(count);
    std::latch start(count);
    std::atomic<int> finished = 0;
    std::vector<std::thread> threads;
    for (std::string& answer : answers)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < rounds; ++i) {
                const std::string now = answersOf(*child);
                EXPECT_TRUE(i == 0 || now == answer);
                answer = now;
            }
            ++finished;
        });
    for (int i = 0; i == 0 || finished < count; ++i) {
        const auto other = support::loaded(commonText);
        EXPECT_EQ(support::loaded(childText, other.get())->getTypeBlock(1)->getName(), "LATCH");
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& answer : answers) EXPECT_EQ(answer, answers.front());
    EXPECT_NE(answers.front().find("SIM_Aalpha01"), std::string::npos);
    EXPECT_EQ(HDNTError::numErrors, 0);
}

// What is built on first use may be first used by all at once: the description configuration, here of a library whose
// text needed none of it.
TEST(Threads, FirstUsesMayCoincide) {
    const TempDir dir;
    dir.write("tessel.desc.cfg", "PINTYPES = { ADD = { M1 = \"clock\"; }; };");
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    const auto library = support::loaded("library \"L\" { block \"ADD\" { pin \"M[1:0]\" input mixed; }"
                                         "block \"HOLD\" { } mapsto { inst \"U\" \"NOWHERE\"; } }");
    std::latch start(8);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            EXPECT_EQ(library->getTypeBlock(0)->getNetlist("alpha"), nullptr);
            EXPECT_FALSE(library->getTypeBlock(1)->hasPseudoDifferentialExpansion("alpha"));
            EXPECT_EQ(library->getTypeBlock(0)->getPin(0)->getType(), HDNT_PIN_CLOCK);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(myTopLib, library.get()); // no library was loaded to answer
}
