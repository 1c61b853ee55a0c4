// What the configuration files answer, and what is answered where they say nothing.
#include "hdnt/frontend/Scanner.h"
#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using support::Texts;

static const char* const libraryText = R"(library "L" {
function bool makeDiff();
block "ADD" {
    property bool "FIXED" true; property bool "PAD" true; property bool "@X" true; property 10'h "H" { default = 10'h0 }
    pin "O" output; pin "M[1:0]" input mixed; pin "I[3:0]" internal;
} mapsto { inst "U" "ADD"; }
block "HOLD" { } mapsto { makeDiff(); }
})";

static const char* const applicationData = R"(
READ_ONLY_ATTRIBUTES = { FIXED = true; };  IO_PIN_CONSTRAINTS = { PAD = true; FIXED = false; };
MASTER_DRIVER_TYPES = ("ADD", 1, "HOLD");  PSEUDO_DIFFERENTIAL_FUNCTIONS = ["makeDiff"];
ARCHITECTURES = { alpha = { simDevice = "SIM_A"; master = "alpha0"; internalPins = true; }; };
CELLS = { ADD = { architectures = ["alpha", "beta"]; canTiePins = true; nibbleSizedHex = true; pseudoDifferential = true;
                  masterDriverPin = "O"; shadowPins = ["OB"]; pinFunctions = { O = "pad"; M = "mux"; }; }; };
)";
static const char* const descriptions =
    "ADD = { FIXED = \"text\"; }; PINTYPES = { ADD = { M1 = \"clock\"; M0 = \"none\"; }; };";

static std::string joined(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) all += text + ",";
    return all;
}

template <typename PinOrBus>
static std::string functionOf(const PinOrBus* owner) {
    std::string function = "old";
    const bool found = owner->getPinFunction(function);
    return found ? function : function + "-";
}

static std::string stateOf(const HDNTBlock& block, const char* name) {
    const HATAttrSpec& spec = *block.getPropertyByName(name)->getAttrSpec();
    std::string state = spec.isReadOnly() ? "fixed:" : "free:";
    for (const int source : {2, 8, 11, 12, 1}) state += spec.isAllowedSourceType(source) ? "+" : "-";
    return state + spec.getDescription();
}

// Every query's answer, in one list.
static Texts answersOf(const HDNTLibrary& library) {
    HDNTBlock& block = *library.getTypeBlock(0);
    const CommonPart::PartSpec alpha{"alpha", ""};
    const CommonPart::PartSpec none{"none", ""};
    Texts drivers = {"old"};
    Texts shadows = {"old"};
    library.getMasterDriverTypes(drivers);
    block.getMasterShadowPins(shadows);
    const auto flags = [](std::initializer_list<bool> values) {
        std::string text;
        for (const bool value : values) text += value ? '1' : '0';
        return text;
    };
    return {library.getSimDeviceString("alpha") + library.getSimDeviceString("none") + library.getSimDeviceString("@"),
            library.getMasterArchitecture("alpha") + library.getMasterArchitecture(""),
            joined(drivers),
            joined(shadows),
            joined(block.getCellArchesCfg()),
            block.getMasterDriverPinName(),
            flags({library.isIOPinConstr("PAD"), library.isIOPinConstr("FIXED"), library.isIOPinConstr("@X")}),
            flags({library.isReadOnlyAttribute("FIXED"), library.isReadOnlyAttribute("fixed")}),
            flags({block.canTiePins(), block.usesNibbleSizeHexAttrs(), block.canBePseudoDifferential()}),
            flags({block.internalPinsSupported(&alpha), block.internalPinsSupported(&none),
                   block.internalPinsSupported(nullptr)}),
            flags({block.hasPseudoDifferentialExpansion("alpha"),
                   library.getTypeBlock(1)->hasPseudoDifferentialExpansion("")}),
            functionOf(block.getPin(0)) + functionOf(block.getPin(1)) + functionOf(block.getBus(1)) +
                functionOf(block.getBus(2)),
            HDNTPin::getTypeName(block.getPin(1)->getType()) + " " + HDNTPin::getTypeName(block.getPin(2)->getType()),
            stateOf(block, "FIXED") + " " + stateOf(block, "PAD") + " " + stateOf(block, "@X"),
            std::to_string(block.getPropertyByName("H")->getAdjustedBitWidth())};
}

static const Texts configured = {
    "SIM_A", "alpha0", "ADD,HOLD,", "OB,", "alpha,beta,", "O",           "100",
    "10",    "111",    "100",       "11",  "padmuxmux-",  "clock mixed", "fixed:+++++text fixed:----+ free:+++++",
    "12"};
static const Texts neutral = {
    "",  "", "", "", "", "", "000", "00", "000", "000", "00", "----", "mixed mixed", "free:+++++ free:+++++ free:+++++",
    "10"};

static const char* const cellOfOtherTypes =
    "READ_ONLY_ATTRIBUTES = { OTHER = true; }; IO_PIN_CONSTRAINTS = { PAD = 1; FIXED = \"true\"; };"
    "MASTER_DRIVER_TYPES = \"ADD\"; PSEUDO_DIFFERENTIAL_FUNCTIONS = { makeDiff = true; };"
    "ARCHITECTURES = { alpha = { simDevice = 1; master = true; internalPins = \"yes\"; }; };"
    "CELLS = { ADD = { architectures = \"alpha\"; canTiePins = 1; nibbleSizedHex = \"true\"; pseudoDifferential = 1.0;"
    "masterDriverPin = [\"O\"]; shadowPins = [1]; pinFunctions = { O = 1; M = [\"mux\"]; }; }; };";
static const char* const groupsOfOtherTypes =
    "READ_ONLY_ATTRIBUTES = [\"FIXED\"]; IO_PIN_CONSTRAINTS = true; MASTER_DRIVER_TYPES = 1;"
    "PSEUDO_DIFFERENTIAL_FUNCTIONS = \"makeDiff\"; ARCHITECTURES = (); CELLS = [\"ADD\"];";

TEST(ConfigQueries, AnswerWhatIsConfiguredAndNeutralElse) {
    const struct {
        const char* what;
        const char* application;
        const char* description;
        const Texts& answers;
    } cases[] = {{"configured", applicationData, descriptions, configured},
                 {"empty files", "", "", neutral},
                 {"no entries", "CELLS = { HOLD = { canTiePins = true; }; }; ARCHITECTURES = { };",
                  "HOLD = { FIXED = \"text\"; }; PINTYPES = { HOLD = { M1 = \"clock\"; }; };", neutral},
                 {"entries of other types", cellOfOtherTypes,
                  "ADD = { FIXED = 1; PAD = { }; }; PINTYPES = { ADD = { M1 = 2; M0 = [\"clock\"]; }; };", neutral},
                 {"cells of other types", "ARCHITECTURES = { alpha = 1; }; CELLS = { ADD = true; };",
                  "ADD = \"text\"; PINTYPES = { ADD = \"clock\"; };", neutral},
                 {"groups of other types", groupsOfOtherTypes, "ADD = [1]; PINTYPES = \"clock\";", neutral}};
    for (const auto& [what, application, description, answers] : cases) {
        const TempDir dir;
        dir.makeDir("tessels");
        setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
        setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
        dir.write("HDNTApplicationData.cfg", application);
        dir.write("tessel.desc.cfg", description);
        const auto root = support::loaded("library \"R\" { }");
        const auto child = support::loaded(libraryText, root.get());
        EXPECT_EQ(answersOf(*child), answers) << what;
    }
}

TEST(ConfigQueries, DescriptionsTakeThePlaceOfDeclaredOnes) {
    const struct {
        const char* configured;
        const char* description;
    } cases[] = {{"P = \"other\";", "other"}, {"P = \"\";", ""}, {"P = 1;", "declared"}, {"Q = \"\";", "declared"}};
    for (const auto& [entries, description] : cases) {
        const TempDir dir;
        dir.write("tessel.desc.cfg", std::string("ADD = { ") + entries + " };");
        setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
        const auto library = support::loaded(
            support::inBlock("property int \"P\" { min = 1, description = \"declared\" } property bool \"Q\" true;"));
        HDNTProperty& property = *library->getTypeBlock(0)->getProperty(0);
        library->finalize(); // changes nothing more
        property.finalize();
        EXPECT_EQ(property.getAttrSpec()->getDescription(), description) << entries;
        EXPECT_EQ(property.getDeclaredDescription(), "declared") << entries;
    }
}

TEST(ConfigQueries, DescriptionsAreThoseOfTheFileThatWasReadLast) {
    const TempDir dir;
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    dir.write("tessel.desc.cfg", "ADD = { P = \"first\"; };");
    dir.write("other.cfg", "ADD = { P = \"third\"; }; PART = { ADD = { P = \"second\"; }; };");
    HDNTLibrary root(nullptr);
    const auto described = [&] {
        const auto library = support::loaded(support::inBlock("property bool \"P\" true;"), &root);
        return library->getTypeBlock(0)->getProperty(0)->getAttrSpec()->getDescription();
    };
    EXPECT_EQ(described(), "first");
    for (const auto& [section, text] : {std::pair("PART", "second"), std::pair("", "third"), std::pair("NONE", "")}) {
        root.getDescConfig()->readFile("other.cfg", section);
        EXPECT_EQ(described(), text);
    }
}

TEST(ConfigQueries, TheCurrentPartDecidesWhichPinsCount) {
    const TempDir dir;
    dir.write("HDNTApplicationData.cfg", applicationData);
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    const auto library = support::loaded(libraryText);
    const CommonPart::PartSpec alpha{"alpha", ""};
    const HDNTBlock& block = *library->getTypeBlock(0);
    EXPECT_EQ(block.getNumPins(), 3U);
    HDNTLibraryMgr::getLibraryMgr()->m_partSpec = &alpha;
    EXPECT_EQ(block.getNumPins(), 7U);
    EXPECT_FALSE(HDNTBlock("LONE", nullptr, nullptr, nullptr).internalPinsSupported(&alpha));
}

// A failed load leaves no library behind, neither as the parser's target nor with the manager, and the next one reads
// the mended file.
TEST(ConfigQueries, AMalformedFileFailsOneLoadAndNoMore) {
    const TempDir dir;
    dir.makeDir("tessels");
    dir.write("tessels/a.btl", libraryText);
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    const struct {
        const char* file;
        const char* text;
        const char* place;
        const char* mended;
    } cases[] = {{"HDNTApplicationData.cfg", "\n\nCELLS = ;", ":3: ", applicationData},
                 {"tessel.desc.cfg", "ADD = {\n  FIXED = ;\n};", ":2: ", descriptions}};
    for (const auto& [file, text, place, mended] : cases) {
        dir.write(file, text);
        for (int attempt = 0; attempt < 2; ++attempt) {
            std::string failure;
            try {
                HDNTLibraryMgr::getCommonLibrary();
            } catch (const HEXDataException& e) {
                failure = e.what();
            }
            EXPECT_TRUE(failure.starts_with("Invalid configuration file: " + dir.path(file) + place)) << failure;
            EXPECT_EQ(myTopLib, nullptr) << file;
        }
        HDNTLibraryMgr::releaseLibraries();
        dir.write(file, mended);
    }
    EXPECT_EQ(answersOf(*HDNTLibraryMgr::getCommonLibrary()), configured);
    HDNTLibraryMgr::releaseLibraries();
    EXPECT_EQ(myTopLib, nullptr);
}

TEST(ConfigQueries, AFinalizeThatFailsCanBeRepeated) {
    const TempDir dir;
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    dir.write("tessel.desc.cfg", "ADD = {");
    const auto library = support::parsed(libraryText);
    EXPECT_THROW(library->finalize(), HEXDataException);
    EXPECT_EQ(library->findBlock("ADD"), nullptr);
    dir.write("tessel.desc.cfg", descriptions);
    library->finalize();
    ASSERT_NE(library->findBlock("HOLD"), nullptr);
    EXPECT_EQ(library->findBlock("ADD")->findProperty("FIXED")->getAttrSpec()->getDescription(), "text");
}

// Read at the first question that needs it, when the text has no properties; then it is the question that fails.
TEST(ConfigQueries, ADescriptionFileReadLateFailsTheQuestion) {
    const TempDir dir;
    setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
    dir.write("tessel.desc.cfg", "PINTYPES = {");
    const auto library = support::loaded(support::inBlock("pin \"M[1:0]\" input mixed;"));
    EXPECT_THROW(library->getTypeBlock(0)->getPin(0)->getType(), HEXDataException);
    dir.write("tessel.desc.cfg", descriptions);
    EXPECT_EQ(library->getTypeBlock(0)->getPin(0)->getType(), HDNT_PIN_CLOCK);
}
