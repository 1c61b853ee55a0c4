#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

// A block with everything that can be declared, and configuration files that say everything that can be said.
const char* const richLibrary = R"(library "rich" {
    block "HOLD" { pin "A" input; }
    block "RICH" {
        internal = true;
        maturityLevel = beta;
        primgroup = "LOGIC:GATE, OLD:SCHOOL";
        pin "D[3:0]" input test mixed tieHigh { property bool "FAST" true; property int "Slew" { default = 2 } }
        pin "O" output abstract;
        pin "low" bidir clock;
        pin "N[0:1]" internal;
        property 10'h "INIT" { default = 10'h0F }
        property int "LEVEL" { min = 1, max = 5, default = 9, units = "ns", test = true, simulation = true }
        property double "RATIO" { values { 0.5, 1.25 }, default = 0.5, precision = 2 }
        property string "MODE" { values { "A", "B" }, default = "A", constraintsOnly = true }
        property 3'b "IS_CLK_INVERTED" { min = 3'b001, default = 3'b010 }
        property bool "SPARE" { default = true, muxControl = true }
    }
}
)";
const char* const applicationData = R"(READ_ONLY_ATTRIBUTES = { LEVEL = true; };
IO_PIN_CONSTRAINTS = { MODE = true; };
MASTER_DRIVER_TYPES = ["RICH"];
ARCHITECTURES = { alpha = { simDevice = "SIM_A"; master = "alpha0"; internalPins = true; };
  gamma = { }; };
CELLS = { RICH = { architectures = ["alpha", "beta"]; canTiePins = true; nibbleSizedHex = true; pseudoDifferential = true;
  masterDriverPin = "O"; shadowPins = ["D"]; pinFunctions = { O = "pad"; }; }; };
)";
const char* const descriptions =
    R"(RICH = { LEVEL = "How much."; }; PINTYPES = { RICH = { D3 = "clock"; D2 = "clock"; }; };
)";

struct ListShowTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.makeDir("data");
        directory.write("data/HDNTApplicationData.cfg", applicationData);
        directory.write("data/tessel.desc.cfg", descriptions);
        directory.write("rich.btl", richLibrary);
    }
    Outcome rich(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", "data", "-l", "rich.btl"});
        return ntl.run(arguments);
    }
    Json richBlock() {
        const Outcome outcome = rich({"show", "rich", "--json", "--arch", "alpha"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out)["blocks"][0];
    }
};

std::vector<std::string> namesIn(const std::string& table) {
    std::vector<std::string> names;
    for (const std::string& line : linesOf(table)) names.push_back(line.substr(0, line.find(' ')));
    if (!names.empty()) names.erase(names.begin());
    return names;
}

Json select(const Json& json, const std::vector<std::string>& keys) {
    Json selected = Json::array();
    for (const std::string& key : keys) selected.push_back(json.at(key));
    return selected;
}

} // namespace

TEST_F(ListShowTest, JsonHoldsTheDeclaredValues) {
    const Json block = richBlock();
    EXPECT_EQ(select(block, {"name", "library", "isRegistered", "cellview", "maturity", "isInternal", "isTest",
                             "isTieCapable", "netlist", "netlistKind", "pinCount", "busCount"}),
              Json::parse(R"(["RICH", "rich", false, 4001, "beta", true, false, true, null, 101, 8, 4])"));
    EXPECT_EQ(select(block, {"group", "subgroup", "legacyGroup", "legacySubgroup"}),
              Json::parse(R"(["LOGIC", "GATE", "OLD", "SCHOOL"])"));
    EXPECT_EQ(select(block, {"canTiePins", "usesNibbleSizedHex", "canBePseudoDifferential", "isMasterDriver",
                             "isInArchitecture", "supportsInternalPins"}),
              Json::parse("[true, true, true, true, true, true]"));
    EXPECT_EQ(select(block, {"architectures", "shadowPins", "masterDriverPin", "architecture", "simulationDevice",
                             "masterArchitecture"}),
              Json::parse(R"([["alpha", "beta"], ["D"], "O", "alpha", "SIM_A", "alpha0"])"));

    const Json& bus = block["buses"][0];
    EXPECT_EQ(select(bus, {"name", "range", "width", "direction", "type", "required", "isTest"}),
              Json::parse(R"(["D[3:0]", [3, 0], 4, "input", "mixed", "tieHigh", true])"));
    std::vector<std::string> types;
    for (const Json& pin : bus["pins"]) types.push_back(pin["type"]);
    EXPECT_EQ(types, (std::vector<std::string>{"clock", "clock", "mixed", "mixed"}));
    EXPECT_EQ(bus["pins"][1]["properties"], Json::parse(R"(["FAST", "Slew"])"));
    EXPECT_EQ(block["buses"][1]["function"], "pad");
    EXPECT_EQ(block["buses"][1]["foundByName"], true);
    EXPECT_EQ(block["buses"][2]["pins"][0]["foundByName"], false);

    const struct {
        size_t index;
        std::vector<std::string> keys;
        const char* values;
    } cases[] = {
        {0,
         {"name", "bitWidth", "adjustedBitWidth", "isNibbleSized", "minimum", "maximum", "default", "defaultDigits"},
         R"(["INIT", 10, 12, true, "000", "3FF", "10'h0F", "00F"])"},
        {1,
         {"minimum", "maximum", "default", "units", "isTest", "isSimulation", "isReadOnly", "description"},
         R"([1, 5, 9, "ns", true, true, true, "How much."])"},
        {1, {"defaultRefusal", "hasMinimum"}, R"(["LEVEL: 9 is above 5; allowed are 1 to 5", true])"},
        {1, {"describedByConfiguration", "precision", "isPadConstraint"}, R"([true, null, false])"},
        {2,
         {"values", "minimum", "maximum", "precision", "defaultRefusal", "hasMaximum"},
         R"([[0.5, 1.25], 0.5, 1.25, 2, null, false])"},
        {3,
         {"values", "isHidden", "isConstraintsOnly", "isPadConstraint", "isReadOnly", "refusedSourceTypes"},
         R"([["A", "B"], true, true, true, true, [2, 8, 11, 12]])"},
        {4,
         {"type", "bitWidth", "isPinInversion", "minimum", "maximum", "default"},
         R"(["bitbinary", 3, true, "3'b001", null, "3'b010"])"},
        {5, {"type", "default", "isMuxControl"}, R"(["bool", true, true])"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(select(block["properties"][each.index], each.keys), Json::parse(each.values));
}

TEST_F(ListShowTest, SheetShowsTheSame) {
    EXPECT_NE(rich({"show", "RICH", "--arch", "gamma"}).out.find("  gamma (not there)\n"), std::string::npos);
    const Outcome outcome = rich({"show", "RICH", "--arch", "alpha"});
    EXPECT_EQ(outcome.status, 0);
    for (const char* pattern :
         {"^RICH$", "declared at +rich.btl:3$", "cellview type +4001 \\(unregistered\\)$", "legacy group +OLD:SCHOOL$",
          "D +3:0 +4 +input +mixed +tieHigh +test$", "bits: clock 3 2, mixed 1 0$", "notFoundByName",
          "O +1 +output +data +abstract +pad$", "LEVEL +int +9 +ns +test,simulation,readOnly +1 to 5$", "How much\\.$",
          "! LEVEL: 9 is above 5; allowed are 1 to 5$", "RATIO +double +0.5 +2 +0.5, 1.25$",
          "INIT +bithex +10 \\(12\\) +10'h0F", "simulation device +SIM_A$", "shadow pins +D$"}) {
        const std::vector<std::string> lines = linesOf(outcome.out);
        const std::regex expected(pattern);
        EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                                [&](const std::string& line) { return std::regex_search(line, expected); }))
            << pattern << " in\n"
            << outcome.out;
    }
}

TEST_F(ListShowTest, MappingsAreShownForTheirArchitecture) {
    directory.makeDir("data/maplib");
    directory.write("data/maplib/HOLD.btl",
                    "library \"l\" {\n#ifArch \"alpha\"\nblock \"HOLD\" modifiedby { }\n#endif\n"
                    "#ifArch \"beta\"\n// here\nblock \"HOLD\" expandsto {\n"
                    "inst \"a\" \"RICH\"; if (true) { } makeDiff(); signal \"s[1:0]\"; }\n#endif\n}\n");
    directory.write("data/HDNTApplicationData.cfg", "PSEUDO_DIFFERENTIAL_FUNCTIONS = [\"makeDiff\"];");
    directory.write("own.btl", libraryOf("function bool makeDiff ( ); block \"HOLD\" { pin \"A\" input; }"));
    const std::vector<std::string> show = {"show", "HOLD", "--json", "--data", "data", "-l", "own.btl", "--arch"};
    const auto shown = [&](const std::string& architecture) {
        std::vector<std::string> arguments = show;
        arguments.push_back(architecture);
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out)["blocks"][0];
    };
    EXPECT_EQ(shown("alpha")["netlist"]["section"], "modifiedby");
    EXPECT_EQ(shown("gamma")["netlist"], nullptr);
    const Json beta = shown("beta");
    EXPECT_EQ(select(beta, {"netlistKind", "hasOwnNetlist", "hasPseudoDifferentialExpansion"}),
              Json::parse("[0, false, true]"));
    EXPECT_EQ(beta["netlist"], Json::parse(R"({"section": "expandsto", "isMapLibrary": true, "architecture": "beta",
        "location": {"file": "data/maplib/HOLD.btl", "line": 7}, "instanceCount": 1,
        "signalCount": 2, "connectCount": 0, "blockPropertyAssignCount": 0, "pinPropertyAssignCount": 0, "ifCount": 1,
        "preInstanceCallCount": 0, "postInstanceCallCount": 1, "referencedInstance": "a"})"));
    const Outcome off = ntl.run(
        {"show", "HOLD", "--data", "data", "-l", "own.btl", "--arch", "beta", "--param", "ntl.enableMapLib=false"});
    EXPECT_EQ(off.out.find("Mapping"), std::string::npos);
    const Outcome sheet = ntl.run({"show", "HOLD", "--data", "data", "-l", "own.btl", "--arch", "beta"});
    EXPECT_NE(sheet.out.find("\nMapping: expandsto\n  declared at           data/maplib/HOLD.btl:7 (map library)\n"),
              std::string::npos)
        << sheet.out;

    directory.write("data/maplib/HOLD.btl", "library \"l\" { block 7 }");
    const Outcome broken = ntl.run({"list", "--data", "data", "-l", "own.btl"});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(linesOf(broken.err).back(), "ntl: HOLD: Invalid maplib ntl file: HOLD");
    EXPECT_EQ(namesIn(broken.out), std::vector<std::string>{"HOLD"});
}

// What is said of one block does not come behind what is said of the next.
TEST_F(ListShowTest, BrokenMappingsAreSaidInTurn) {
    directory.makeDir("data/maplib");
    for (const char* const name : {"HOLD", "KEEP"})
        directory.write(std::string("data/maplib/") + name + ".btl", "library \"l\" { block 7 }");
    directory.write("data/HDNTApplicationData.cfg", "CELLS = { };");
    directory.write("own.btl", libraryOf("block \"HOLD\" { } block \"KEEP\" { }"));
    const Outcome broken = ntl.run({"list", "--data", "data", "-l", "own.btl"});
    const std::string line = "1: library \"l\" { block 7 }"; // through standard output's buffer
    std::vector<std::string> said = linesOf(broken.err);
    std::erase_if(said, [&](const std::string& text) { return text != line && text.find("ntl: ") != 0; });
    EXPECT_EQ(said, (std::vector<std::string>{line, "ntl: HOLD: Invalid maplib ntl file: HOLD", line,
                                              "ntl: KEEP: Invalid maplib ntl file: KEEP"}));
}

TEST_F(ListShowTest, UnknownBlocksSuggestOthers) {
    const struct {
        std::string name;
        std::string err;
    } cases[] = {
        {"GATE_NAD_2", "ntl: no block 'GATE_NAD_2'; did you mean GATE_AND_2?\n"},
        {"gate_and2", "ntl: no block 'gate_and2'; did you mean GATE_AND_2?\n"},
        {"NOTHING_LIKE_IT", "ntl: no block 'NOTHING_LIKE_IT'\n"},
        {"a\x1b[0m\n", "ntl: no block 'a\\x1b[0m\\n'\n"},
    };
    for (const auto& each : cases) {
        const Outcome outcome = ntl.run({"show", each.name, "HOLD"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, each.err);
        EXPECT_EQ(outcome.out.find("HOLD\n"), 0U);
    }
}

TEST_F(ListShowTest, ListChoosesBlocks) {
    const std::vector<std::string> both = {"HOLD", "RICH"};
    EXPECT_EQ(namesIn(rich({"list"}).out), both);
    EXPECT_EQ(namesIn(rich({"list", "--arch", "alpha"}).out), both);
    const std::vector<std::string> one = {"RICH"};
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--group", "logic"}, {"--group", "LOGIC:gate"}, {"--prefix", "ri"}})
        EXPECT_EQ(namesIn(rich({"list", options[0], options[1]}).out), one) << options[1];
    EXPECT_EQ(namesIn(rich({"list", "--arch", "gamma"}).out), std::vector<std::string>{"HOLD"});
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--group", "old"}, {"--group", "logic:none"}, {"--prefix", "x"}}) {
        const Outcome outcome = rich({"list", options[0], options[1]});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(linesOf(outcome.err).size(), 1U);
        EXPECT_NE(outcome.err.find("'" + options[1] + "'"), std::string::npos);
    }
}

TEST_F(ListShowTest, ListAlignsItsColumns) {
    const std::vector<std::string> lines = linesOf(rich({"list"}).out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "NAME  GROUP       PINS  BUSES  PROPERTIES  MATURITY  MAPPING  FLAGS     SOURCE");
    EXPECT_EQ(lines[1], "HOLD              1     1      0           early                        rich.btl:2");
    EXPECT_EQ(lines[2], "RICH  LOGIC:GATE  6     4      6           beta               internal  rich.btl:3");
    const Json json = Json::parse(rich({"list", "--json", "--prefix", "R"}).out);
    EXPECT_EQ(json["version"], 2);
    EXPECT_EQ(json["blocks"],
              Json::parse(R"([{"name": "RICH", "group": "LOGIC", "subgroup": "GATE", "pinCount": 6, "busCount": 4,
        "propertyCount": 6, "maturity": "beta", "section": null, "isTest": false, "isInternal": true,
        "isRegistered": false, "architectures": ["alpha", "beta"], "location": {"file": "rich.btl", "line": 3}}])"));
}

TEST_F(ListShowTest, LibrariesThatDoNotLoad) {
    directory.write("bad.btl", libraryOf("#"));
    for (const char* const command : {"list", "show"}) {
        std::vector<std::string> arguments = {command, "-l", "bad.btl"};
        if (command == std::string("show")) arguments.push_back("HOLD");
        const Outcome outcome = ntl.run(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(linesOf(outcome.err).back(), "ntl: bad.btl: 1 error");
    }
    const Outcome parent = ntl.run({"show", "hold", "-l", "rich.btl", "--parent", "common"});
    EXPECT_EQ(parent.status, 0);
    EXPECT_NE(parent.out.find("rich.btl:2\n"), std::string::npos);
}
