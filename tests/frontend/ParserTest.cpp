#include "hdnt/frontend/Scanner.h"
#include "tests/platform/TempDir.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using support::inBlock;
using support::parsed;
using support::Reports;
using support::Texts;

static std::string richText() {
    std::ostringstream text;
    text << std::ifstream(HDNT_TEST_CORPUS "/good/rich.btl").rdbuf();
    return text.str();
}

TEST(Parser, EmptyLibrary) {
    const auto library = parsed("library \"L\" { }");
    ASSERT_TRUE(library);
    EXPECT_EQ(library->getName(), "L");
    EXPECT_EQ(library->getNumTypeBlocks(true), 0U);
}

// One mistake, one report, at the token where the parser stopped.
TEST(Parser, SyntaxErrors) {
    Reports reports;
    const struct {
        std::string text;
        std::string place;
    } cases[] = {
        {"", ""},
        {"library L { }", "1:9-9"},
        {"library \"L\" { } library \"M\" { }", "1:17-23"},
        {inBlock("pin \"A\" input data test;"), "3:20-23"},
        {inBlock("pin \"A\" data input;"), "3:9-12"},
        {inBlock("property string \"A\" { description = \"d\" }"), "3:23-33"},
        {inBlock("property int \"A\" { , min = 1 }"), "3:20-20"},
        {inBlock("property double \"A\" { min = 1 }"), "3:29-29"},
        {inBlock("property int \"A\" { min = 1, description = \"d\", max = 2 }"), "3:46-46"},
        {inBlock("primgroup = A;"), "3:13-13"},
        {"library \"L\" { function int \"f\" (); }", "1:28-30"},
    };
    for (const auto& [text, place] : cases) {
        EXPECT_TRUE(parsed(text, 1)) << text;
        const Texts found = reports.take();
        ASSERT_EQ(found.size(), 1U) << text;
        EXPECT_EQ(found[0].substr(0, found[0].find(' ')), place.empty() ? "0:0-0" : place) << text;
        EXPECT_TRUE(found[0].ends_with(" syntax error"));
    }
}

// What is built, by the numbers of the language's rules.
TEST(Parser, Trace) {
    setenv("NTL_YY_DEBUG", "", 1);
    const std::string err = support::printedBy([] { parsed("library \"L\" { block \"A\" { test = true; } }"); }).err;
    EXPECT_TRUE(err.starts_with("Starting parse\nReading a token: Next token is token 258 (line 1)\n")) << err;
    std::string rules;
    for (size_t at = 0; (at = err.find("by rule ", at)) != err.npos; ++at)
        rules += err.substr(at + 8, err.find(' ', at + 8) - at - 8) + " ";
    EXPECT_EQ(rules, "83 23 2 ");
    EXPECT_TRUE(err.ends_with("Now at end of input.\n")) << err;
}

TEST(Parser, ASyntaxErrorPrintsTheLastLines) {
    const support::Printed printed = support::printedBy([] { parsed("library \"L\" {\n  oops\n}\n", 1); });
    EXPECT_EQ(printed.err,
              "\n*** Error line 2.\nfile: unknown file name line: 2.\n  oops\n  ^^^^\n*** syntax error\n\n");
    EXPECT_EQ(printed.out, "1: library \"L\" {\n2:   oops\n");
}

TEST(Parser, NodesStandWhereTheirRuleBegins) {
    const auto library =
        parsed("library \"L\" {\n  block \"ADD\" {\n  pin \"A\" input; property bool \"P\" true;\n}\n}");
    ASSERT_TRUE(library);
    const HDNTBlock& block = *library->getTypeBlock(0);
    const yyltype& atBlock = *block.getLocation();
    EXPECT_EQ(std::tuple(atBlock.fileLine, atBlock.first_column, atBlock.last_column), std::tuple(2, 3, 7));
    const yyltype& atPin = *block.getPin(0)->getLocation();
    EXPECT_EQ(std::tuple(atPin.first_line, atPin.first_column, atPin.last_column), std::tuple(3, 3, 16));
    EXPECT_EQ(block.getProperty(0)->getLocation()->first_column, 18);
    EXPECT_EQ(atPin.fileName, nullptr);
}

TEST(Parser, OptionRecordsStartNeutralAndTheLastWins) {
    const auto library = parsed(
        inBlock("property int \"I\" { test = true, default = 3, default = 4 } property int \"J\" { values { 7, 2 } }"
                "property double \"D\" { default = 0.5 } property 6'b \"B\" { values { 6'b1, 6'b0 }, units = \"u\" }"
                "property string \"S\" { muxControl = true } property 4'h \"H\" { min = 4'h1 }"));
    ASSERT_TRUE(library);
    const HDNTBlock& block = *library->getTypeBlock(0);
    const HDNTProperty& i = *block.getProperty(0);
    EXPECT_EQ(std::tuple(i.getMinIntValue(), i.getMaxIntValue(), i.getDefaultIntValue()),
              std::tuple(INT_MIN, INT_MAX, 4));
    EXPECT_TRUE(i.getAttrSpec()->isTest());
    const HDNTProperty& j = *block.getProperty(1);
    EXPECT_EQ(std::tuple(j.getMinIntValue(), j.getMaxIntValue(), j.getDefaultIntValue()), std::tuple(2, 7, 7));
    EXPECT_EQ(block.getProperty(2)->getPrecision(), 6);
    const HDNTProperty& b = *block.getProperty(3);
    EXPECT_EQ(std::tuple(b.getBitWidth(), b.getDefaultBinaryValue()), std::tuple(6, "6'b1"));
    EXPECT_EQ(b.getAttrSpec()->getUnitDefault(), "u");
    EXPECT_TRUE(block.getProperty(4)->isMuxControl());
    EXPECT_EQ(block.getProperty(5)->getMinHexValue(), "4'h1");
    EXPECT_EQ(block.getProperty(5)->getDefaultHexValue(), "");
}

// Limits: below, at and above.
TEST(Parser, LimitsOfTheText) {
    Reports reports;
    const struct {
        std::string text;
        bool reported;
    } cases[] = {
        {"property 65536'h \"P\" { default = 8'h0 }", false},
        {"property 65537'h \"P\" { default = 8'h0 }", true},
        {"property 99999999999999999999'b \"P\" { default = 8'b0 }", true},
        {"property double \"P\" { default = 0.0, precision = 100 }", false},
        {"property double \"P\" { default = 0.0, precision = 101 }", true},
        {"property double \"P\" { default = 0.0, precision = -1 }", true},
        {"pin \"A[32767:0]\" input;", false},
        {"pin \"A[32768:1]\" input;", true},
        {"pin \"A[32767:0]\" input; pin \"B[32767:0]\" input;", false},
        {"pin \"A[32767:0]\" input; pin \"B[32767:0]\" input; pin \"C\" input;", true},
        {"pin \"A[2000000:0]\" input;", true},
        {"pin \"A[99999999999999999999]\" input;", true},
    };
    for (const auto& [text, reported] : cases) {
        EXPECT_TRUE(parsed(inBlock(text))) << text;
        EXPECT_EQ(reports.take().size(), reported ? 1U : 0U) << text;
    }
}

TEST(Parser, ExceptionsPassAndTheNextParseWorks) {
    const std::string bad =
        inBlock("pin \"A\" input; pin \"I[1:0]\" internal; pin \"B\" output; property bool \"P\" true;");
    try {
        parsed(bad);
        FAIL();
    } catch (const HEXDataException& e) {
        EXPECT_STREQ(e.what(), "Internal pins must be last in list, in tessel ADD");
    }
    EXPECT_TRUE(parsed(inBlock("pin \"A\" input; pin \"I[1:0]\" internal;")));
    EXPECT_EQ(HDNTError::numErrors, 0);
}

TEST(Parser, WithoutALibraryAnExceptionIsKeptFromTheParser) {
    yy_scan_string("library \"L\" { }");
    NtlInitScanner();
    EXPECT_NE(HDNTParserparse(), 0);
    yylex_destroy();
}

// With the leak checker on this shows that a syntax error anywhere leaves nothing behind.
TEST(Parser, EveryCutOfARichText) {
    Reports reports;
    const std::string text = richText();
    ASSERT_GT(text.size(), 4000U);
    HDNTLibrary library(nullptr);
    support::printedBy([&] {
        for (size_t length = 0; length < text.size(); ++length) library.parseString(text.substr(0, length));
    });
    EXPECT_GE(reports.take().size(), text.size() - 2);
    EXPECT_TRUE(support::loaded(text));
    EXPECT_EQ(reports.take(), Texts{});
}

TEST(ParseEntry, FilesThatCannotBeOpened) {
    Reports reports;
    HDNTLibrary library(nullptr);
    EXPECT_EQ(library.parseFile("/no/such/file"), 1);
    EXPECT_EQ(library.parseFile("/"), 1);
    EXPECT_EQ(reports.texts, (Texts{"Could not open file: /no/such/file", "Could not open file: /"}));
    EXPECT_FALSE(reports.details.at(0).empty());
}

TEST(ParseEntry, TextGoesToTheLibraryConstructedLast) {
    HDNTLibrary first(nullptr);
    {
        HDNTLibrary second(&first);
        EXPECT_EQ(first.parseString("library \"S\" { }"), 0);
        EXPECT_EQ(second.getName(), "S");
    }
    EXPECT_EQ(myTopLib, nullptr);
    EXPECT_EQ(first.parseString("library \"F\" { }"), 0);
    EXPECT_EQ(first.getName(), "F");
}

TEST(ParseEntry, ArchitectureFilter) {
    const TempDir dir;
    const std::string path =
        dir.write("m.btl", "a\n#ifArch \"x\" \"y\"\nb\n#ifArch \"z\"\nc\n#endif tail\n  #ifArch \"q\"\nd");
    const struct {
        const char* arch;
        const char* expected;
    } cases[] = {
        {"x", "a\nb\n  #ifArch \"q\"\nd\n"}, {"z", "a\n  #ifArch \"q\"\nd\n"}, {"", "a\n  #ifArch \"q\"\nd\n"}};
    for (const auto& [arch, expected] : cases) {
        std::string out;
        // The second directive ends nothing: sections do not nest, and what names none of the architectures is dropped.
        EXPECT_TRUE(slurpAndFilterFile(path, arch, out));
        EXPECT_EQ(out, expected) << arch;
    }
    std::string out;
    EXPECT_FALSE(slurpAndFilterFile(dir.write("n.btl", "a"), "x", out));
    EXPECT_THROW(slurpAndFilterFile("/none", "x", out), HEXAlgException);
}

TEST(ParseEntry, MapLibraries) {
    const TempDir dir;
    dir.makeDir("maplib");
    dir.write("maplib/ADD.btl", "library \"M\" {\n#ifArch \"x\"\nblock \"ADD\" { }\n#endif\n}");
    dir.write("maplib/PLAIN.btl", "library \"M\" { }");
    dir.write("maplib/BAD.btl", "library");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    setenv("HDNT_PARAM_ntl_enableMapLib", "on", 1);
    HDNTLibrary library(nullptr);
    EXPECT_TRUE(library.loadMaplib("ADD", "x"));
    EXPECT_EQ(library.getNumTypeBlocks(false), 1U);
    EXPECT_TRUE(library.loadMaplib("ADD.any", ""));
    EXPECT_EQ(library.getNumTypeBlocks(false), 1U);
    for (const char* name : {"PLAIN", "NONE", "", "../maplib/ADD"}) EXPECT_FALSE(library.loadMaplib(name, "x")) << name;
    const Reports silent;
    EXPECT_THROW(library.loadMaplib("BAD", "x"), HEXDataException);
}

TEST(ParseEntry, MapLibrariesAreOffByDefault) {
    HDNTLibrary library(nullptr);
    EXPECT_FALSE(library.loadMaplib("ADD", "x"));
}

// What is kept of a statement's tokens is little, and a statement may be of any length.
TEST(Parser, NamesOutliveLongExpressions) {
    const auto times = [](size_t count, const std::string& text) {
        std::string all;
        for (size_t i = 0; i < count; ++i) all += text;
        return all;
    };
    for (const size_t n : {size_t{28}, size_t{29}, size_t{31}, size_t{70}})
        for (const std::string& value :
             {times(n, "(") + "1" + times(n, ")"), times(n, "(") + "1" + times(n, " + 1)"),
              times(n, "f(") + "1" + times(n, ")"), "1" + times(n, " + (1)"), "g(1" + times(n, ", (1)") + ")"}) {
            const auto library =
                support::parsed(support::inBlock("} mapsto { assign block property \"inst\" \"name\" " + value +
                                                 "; assign pin property \"inst\" \"pin\", \"name\" " + value + ";"));
            ASSERT_NE(library, nullptr) << value;
            library->finalize();
            const HDNTNetlist& netlist = *library->getTypeBlock(0)->getAttachedNetlist();
            const HDNTAssignBlockProperty& ofBlock = *netlist.blockPropertyAssigns().at(0);
            const HDNTAssignPinProperty& ofPin = *netlist.pinPropertyAssigns().at(0);
            EXPECT_EQ(ofBlock.instName() + "/" + ofBlock.propName(), "inst/name") << value;
            EXPECT_EQ(ofPin.instName() + "/" + ofPin.pinName() + "/" + ofPin.propName(), "inst/pin/name") << value;
        }
}
