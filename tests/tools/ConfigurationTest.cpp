#include "tests/tools/NtlTool.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace {

const std::string application = "HDNTApplicationData.cfg";
const std::string descriptions = "tessel.desc.cfg";

struct EntryCase {
    std::string code;
    std::string file;
    std::string text; // stands on line 2 of the file
    std::string message;
    bool isOwn = false; // about a cell, so that it is judged with an input, too
};

// The libraries have a HOLD, with D[1:0] mixed, O and INIT, a function makePair and, in the simulation library, a
// GATE_INVERT.
const std::vector<EntryCase>& entryCases() {
    static const std::string alpha = "ARCHITECTURES = { alpha = { }; }; ";
    static const std::vector<EntryCase> cases = {
        {"config-unknown-key", application, "CELL = { };", "CELL: unknown key; did you mean CELLS?"},
        {"config-unknown-key", application, "ARCHITECTURES = { a = { simDevices = \"A\"; }; };",
         "ARCHITECTURES.a.simDevices: unknown key; did you mean simDevice?"},
        {"config-unknown-key", application, "CELLS = { HOLD = { canTie = true; }; };",
         "CELLS.HOLD.canTie: unknown key; did you mean canTiePins?", true},
        {"config-wrong-type", application, "CELLS = { HOLD = { canTiePins = 1; }; };",
         "CELLS.HOLD.canTiePins: not true or false, so that it counts as absent", true},
        {"config-wrong-type", application, "CELLS = { HOLD = { pinFunctions = { O = 1; }; }; };",
         "pinFunctions.O: not a text", true},
        {"config-wrong-type", application, "CELLS = { HOLD = { shadowPins = \"O\"; }; };", "not a list of texts", true},
        {"config-wrong-type", application, "MASTER_DRIVER_TYPES = (\"HOLD\", 1);",
         "MASTER_DRIVER_TYPES.[1]: not a text"},
        {"config-wrong-type", application, "IO_PIN_CONSTRAINTS = { INIT = \"yes\"; };", "not true or false"},
        {"config-wrong-type", application, "ARCHITECTURES = { a = true; };", "ARCHITECTURES.a: not a group"},
        {"config-wrong-type", descriptions, "HOLD = { INIT = 1; };", "HOLD.INIT: not a text", true},
        {"config-unknown-cell", application, "CELLS = { GATE_INVERTS = { }; };",
         "no cell \"GATE_INVERTS\"; did you mean GATE_INVERT?"},
        {"config-unknown-cell", application, "MASTER_DRIVER_TYPES = [\"hold\"];",
         "MASTER_DRIVER_TYPES.[0]: no cell \"hold\"; did you mean HOLD?"},
        {"config-unknown-cell", descriptions, "PINTYPE = { };", "did you mean PINTYPES?"},
        {"config-unknown-cell", descriptions, "PINTYPES = { OTHER = { }; };", "no cell \"OTHER\""},
        {"config-unknown-pin", application, "CELLS = { HOLD = { masterDriverPin = \"OO\"; }; };",
         "no pin \"OO\" in block \"HOLD\"; did you mean O?", true},
        {"config-unknown-pin", application, "CELLS = { HOLD = { shadowPins = [\"O\", \"D\", \"D[1]\", \"D[2]\"]; }; };",
         "CELLS.HOLD.shadowPins.[3]: no pin \"D[2]\"", true},
        {"config-unknown-pin", application, "CELLS = { HOLD = { pinFunctions = { D = \"data\"; D1 = \"data\"; }; }; };",
         "pinFunctions.D1: no pin \"D1\"", true},
        {"config-unknown-pin", descriptions, "PINTYPES = { HOLD = { D1 = \"clock\"; D2 = \"clock\"; }; };",
         "PINTYPES.HOLD.D2: no pin \"D2\"", true},
        {"config-unknown-property", application, "READ_ONLY_ATTRIBUTES = { INIT = 1; INTI = 1; };",
         "no property \"INTI\"; did you mean INIT?"},
        {"config-unknown-property", application, "IO_PIN_CONSTRAINTS = { init = true; };", "no property \"init\""},
        {"config-unknown-property", descriptions, "HOLD = { DEPTH = \"Of GATE_INVERT.\"; };",
         "HOLD.DEPTH: no property \"DEPTH\" in block \"HOLD\"", true},
        {"config-unknown-architecture", application, alpha + "CELLS = { HOLD = { architectures = [\"alhpa\"]; }; };",
         "no architecture \"alhpa\"; did you mean alpha?", true},
        {"config-unknown-architecture", application,
         "ARCHITECTURES = { }; CELLS = { HOLD = { architectures = [\"alpha\"]; }; };", "no architecture \"alpha\"",
         true},
        {"config-unknown-architecture", application, "ARCHITECTURES = { a = { master = \"b\"; }; };",
         "ARCHITECTURES.a.master: no architecture \"b\""},
        {"config-unknown-function", application, "PSEUDO_DIFFERENTIAL_FUNCTIONS = [\"makePair\", \"makePairs\"];",
         "no function \"makePairs\"; did you mean makePair?"},
        {"config-unknown-pin-type", descriptions, "PINTYPES = { HOLD = { D1 = \"Clock\"; }; };",
         "no pin type \"Clock\"; did you mean clock?", true},
        {"config-no-effect", descriptions, "PINTYPES = { HOLD = { O = \"data\"; }; };", "not \"mixed\"", true},
    };
    return cases;
}

struct ConfigurationTest : testing::Test {
    TempDir directory;
    NtlTool ntl{directory};
    void SetUp() override {
        directory.makeDir("data");
        directory.makeDir("data/tessels");
        directory.makeDir("data/tessels.test");
        directory.write("data/tessels/a.btl", libraryOf(R"(function bool makePair ( string );
            block "HOLD" { pin "D[1:0]" input mixed; pin "O" output; property int "INIT" { default = 0 } })"));
        directory.write("data/simulation.btl",
                        libraryOf(R"(block "GATE_INVERT" { pin "A" input; property int "DEPTH" { default = 0 } })"));
    }
    Outcome check(std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"check", "--data", "data"});
        return ntl.run(more);
    }
};

std::set<std::string> codesIn(const std::string& text, const std::string& pattern) {
    const std::regex code(pattern);
    std::set<std::string> codes;
    for (std::sregex_iterator match(text.begin(), text.end(), code), end; match != end; ++match)
        codes.insert((*match)[1]);
    return codes;
}

bool saysSomething(const Json& value) {
    return !value.is_null() && value != false && !(value.is_array() && value.empty());
}

// The facts that the configuration tells of a block, by their keys in its data sheet.
std::set<std::string> factsOf(const Json& block) {
    std::set<std::string> facts;
    for (const char* const key :
         {"canTiePins", "usesNibbleSizedHex", "canBePseudoDifferential", "architectures", "isMasterDriver",
          "masterDriverPin", "shadowPins", "architecture", "isInArchitecture", "supportsInternalPins",
          "simulationDevice", "masterArchitecture", "hasPseudoDifferentialExpansion"})
        if (saysSomething(block[key])) facts.insert(key);
    for (const Json& property : block["properties"])
        for (const char* const key : {"describedByConfiguration", "isReadOnly", "isPadConstraint"})
            if (saysSomething(property[key])) facts.insert(key);
    for (const Json& bus : block["buses"]) {
        if (saysSomething(bus["function"])) facts.insert("function");
        if (bus["type"] == "mixed" && bus["pins"][0]["type"] != "mixed") facts.insert("mixed");
    }
    return facts;
}

size_t warningsAbout(const std::string& code, const Outcome& outcome) { return countOf(outcome.err, "[" + code + "]"); }

} // namespace

TEST_F(ConfigurationTest, DoubtfulEntriesAreNamedWithFileAndLine) {
    std::set<std::string> raised;
    for (const EntryCase& each : entryCases()) {
        SCOPED_TRACE(each.text);
        directory.write("data/" + application, "");
        directory.write("data/" + descriptions, "");
        directory.write("data/" + each.file, "\n" + each.text + "\n");
        const Outcome outcome = check();
        EXPECT_EQ(outcome.status, 0);
        const std::vector<std::string> lines = linesOf(outcome.err);
        ASSERT_EQ(lines.size(), 1U) << outcome.err;
        EXPECT_EQ(lines[0].find("data/" + each.file + ":2: warning: "), 0U) << lines[0];
        EXPECT_NE(lines[0].find(each.message), std::string::npos) << lines[0];
        EXPECT_NE(lines[0].find(" [" + each.code + "]"), std::string::npos) << lines[0];
        EXPECT_EQ(linesOf(outcome.out).back(), "data/simulation.btl: 1 block, no errors, 1 warning");
        EXPECT_EQ(check({"--werror"}).status, 1);

        EXPECT_EQ(warningsAbout(each.code, check({"data/tessels"})), each.isOwn ? 1U : 0U);
        EXPECT_EQ(warningsAbout(each.code, check({"data/simulation.btl"})), 0U);
        EXPECT_EQ(warningsAbout(each.code, check({"--param", "arch.enableTestFeatures=false"})), each.isOwn ? 1U : 0U);
        raised.insert(each.code);
    }
    EXPECT_EQ(codesIn(check({"--format=sarif"}).out, "\"id\": \"(config-[a-z-]+)\""), raised);
    EXPECT_EQ(codesIn(readFile(NTL_SOURCE_DIR "/docs/lint.md"), "\n### `(config-[a-z-]+)`"), raised);
}

TEST_F(ConfigurationTest, ShippedFilesAreNotHeldAgainstOtherLibraries) {
    EXPECT_EQ(check().err, "");
    directory.write("data/tessels/a.btl", libraryOf(R"(block "PAD_OUT_DIFF" {
        pin "PAD_P" output;
        property string "PAD_STANDARD" { default = "" }
    })"));
    EXPECT_EQ(warningsAbout("config-unknown-pin", check()), 2U);
    EXPECT_EQ(linesOf(check().err).size(), 2U);
}

TEST_F(ConfigurationTest, PlacesWithoutColumnInJsonAndSarif) {
    directory.write("data/included.cfg", "\n\nGATE_INVERT = { DEPHT = \"How deep.\"; };");
    directory.write("data/" + descriptions, "@include \"included.cfg\"");
    const Json warning = Json::parse(check({"--format=json"}).out)["inputs"][1]["diagnostics"][0];
    EXPECT_EQ(warning["location"], Json::parse(R"({"file": "data/included.cfg", "line": 3, "column": null,
        "endColumn": null, "offset": null, "endOffset": null, "textLine": null})"));
    const Json result = Json::parse(check({"--format=sarif"}).out)["runs"][0]["results"][0];
    EXPECT_EQ(result["ruleId"], "config-unknown-property");
    EXPECT_EQ(result["locations"][0]["physicalLocation"],
              Json::parse(R"({"artifactLocation": {"uri": "data/included.cfg"}, "region": {"startLine": 3}})"));
}

TEST_F(ConfigurationTest, PageAndCheckKnowTheKeysThatAreRead) {
    const auto source = [](const std::string& path) { return readFile(NTL_SOURCE_DIR "/" + path); };
    const std::string reader = R"re((?:(?:flagIn|textIn|memberOf)\(\w+, |lookup\(|, \{)"([A-Za-z_]+)")re";
    const std::set<std::string> read =
        codesIn(source("hdnt/model/ConfigurationFacts.cpp") + source("hdnt/model/HDNTPin.cpp"), reader);
    EXPECT_EQ(read.size(), 17U);
    EXPECT_EQ(codesIn(source("author/lint/lintConfiguration.cpp"), R"re((?:one|group)\("([A-Za-z_]+)")re"), read);
    EXPECT_EQ(codesIn(source("docs/configuration.md"), "\n\\| `([A-Za-z_]+)` \\|(?=(?:[^|\n]+\\|){4}\n)"), read);
    for (const std::string& key : read) {
        const std::string files =
            source("data/examples/configured/" + application) + source("data/examples/configured/" + descriptions);
        EXPECT_NE(files.find(key + " ="), std::string::npos) << key << " has no example";
    }
}

TEST_F(ConfigurationTest, ShippedFilesSayEverythingOfTwoArchitectures) {
    std::map<std::string, std::set<std::string>> architectures; // by fact
    for (const std::string architecture : {"meadow", "harbor", "copper"}) {
        const Json list = Json::parse(ntl.run({"list", "--json", "--arch", architecture}).out);
        std::vector<std::string> show = {"show", "--json", "--arch", architecture};
        for (const Json& block : list["blocks"])
            if (!block["architectures"].empty()) show.push_back(block["name"]);
        const Json sheets = Json::parse(ntl.run(show).out);
        for (const Json& block : sheets["blocks"])
            for (const std::string& fact : factsOf(block)) architectures[fact].insert(architecture);
    }
    for (const auto& [fact, where] : architectures) EXPECT_GE(where.size(), 2U) << fact;
    EXPECT_EQ(architectures.size(), 18U);
}
