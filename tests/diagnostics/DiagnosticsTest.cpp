#include "hdnt/frontend/Scanner.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

using support::printedBy;

static yyltype place(const char* file, int fileLine, int line, int first, int last) {
    return {file, fileLine, line, first, 0, last};
}

static void storeLines(int count) {
    std::string text;
    for (int i = 1; i <= count; ++i) text += "line" + std::to_string(i) + "\n";
    yy_scan_string(text.c_str());
    NtlInitScanner();
    while (HDNTParserlex() != 0) {
    }
    yylex_destroy();
}

TEST(Report, HasFileLineQuotationAndCarets) {
    storeLines(3);
    yyltype at = place("lib.ntl", 3, 2, 2, 4);
    EXPECT_EQ(printedBy([&] { HDNTError::OutputError(&at, "The message."); }).err,
              "\n*** Error line 2.\nfile: lib.ntl line: 3.\nline2\n ^^^\n*** The message.\n\n");
}

TEST(Report, EdgesOfLocations) {
    storeLines(2);
    const struct {
        yyltype at;
        std::string expected;
    } cases[] = {
        {place(nullptr, 1, 1, 1, 1), "\n*** Error line 1.\nfile: unknown file name line: 1.\nline1\n^\n*** m\n\n"},
        {place("f", 1, 0, 1, 1), "\n*** Error line 0.\nfile: f line: 1.\nUNKNOWN LINE\n^\n*** m\n\n"},
        {place("f", 1, 9, 3, 2), "\n*** Error line 9.\nfile: f line: 1.\nline2\n  \n*** m\n\n"},
        {place("f", 1, 2, 1, 0), "\n*** Error line 2.\nfile: f line: 1.\nline2\n\n*** m\n\n"},
    };
    for (auto [place, expected] : cases) {
        yyltype* const at = &place;
        EXPECT_EQ(printedBy([at] { HDNTError::OutputError(at, "m"); }).err, expected);
    }
    EXPECT_EQ(printedBy([] { HDNTError::ParserFailed("m"); }).err, "\n*** Error.\n*** m\n\n");
    EXPECT_EQ(HDNTError::numErrors, 5);
}

TEST(Report, KeepsItsPlaceAmongStandardOutput) {
    const std::string out = printedBy([] {
                                dup2(2, 1);
                                std::cout << "first ";
                                std::printf("second");
                                HDNTError::ParserFailed("third");
                            }).err;
    EXPECT_TRUE(out.find("first ") < out.find("third") && out.find("second") < out.find("third")) << out;
}

// Standard error has no buffer, and a text may have a fault in each of its lines.
TEST(Report, IsWrittenInOnePiece) {
    struct Pieces : std::streambuf {
        std::streamsize xsputn(const char*, std::streamsize count) override { return ++number, count; }
        int_type overflow(int_type character) override { return ++number, character; }
        int number = 0;
    } pieces;
    std::streambuf* const before = std::cerr.rdbuf(&pieces);
    yyltype at = place("f", 1, 0, 1, 1);
    HDNTError::OutputError(&at, "one");
    HDNTError::OutputError(nullptr, "two");
    HDNTError::UnderlineErrorInLine("three", &at);
    std::cerr.rdbuf(before);
    EXPECT_EQ(pieces.number, 3);
}

TEST(Report, NamedErrorsHaveTheirTexts) {
    const support::Reports reports;
    yyltype at = place("f", 1, 7, 1, 1);
    HDNTError::UntermComment();
    HDNTError::MissingLibraries(nullptr);
    HDNTError::NoValidSignalOnConnectStmt(nullptr);
    HDNTError::BlockDefNeedsToHaveAtleastOnePin(nullptr);
    HDNTError::InvalidNetlistEntity(nullptr);
    HDNTError::InvalidOperandType(nullptr);
    HDNTError::BadFileName("f");
    HDNTError::UntermString(nullptr, "x");
    HDNTError::FunctionNumArgsMismatch(nullptr, "x");
    HDNTError::PropertyDefaultNotInRange(nullptr, "x");
    HDNTError::UnrecogChar(nullptr, 'x');
    HDNTError::FunctionNotPresentInLibaray(nullptr, "x");
    HDNTError::BlockRedefinitionError(nullptr, &at, "x");
    HDNTError::PinRedefinition(nullptr, "x");
    HDNTError::PropertyRedefinition(nullptr, "x");
    HDNTError::MismatchedArgument(nullptr, 2);
    HDNTError::Formatted(nullptr, "%d%s", 1, "x");
    EXPECT_EQ(reports.texts,
              (support::Texts{
                  "Input ends with unterminated comment", "Libraries are missing in map",
                  "No valid signal found in connect statement", "Block Definition needs to have at least 1 pin.",
                  "Invalid netlist entry. Please refer to NTL grammar.", "Invalid operands", "Could not open file: f",
                  "Unterminated string constant: x", "Function call has mismatched number of args in function x",
                  "Property x default value not within allowed min/max range.", "Unrecognized char: 'x'",
                  "Function x is missing from library", "Block x has already been defined at location 7",
                  "Pin x is being redefined.", "Property x is being redefined.", "Argument type mismatch at argument 2",
                  "1x"}));
}

TEST(Report, LongFormattedTextIsCut) {
    const support::Reports reports;
    HDNTError::Formatted(nullptr, "%s", std::string(10000, 'x').c_str());
    EXPECT_EQ(reports.texts.at(0), std::string(4095, 'x'));
}

TEST(LineStore, FindsEachOfManyLines) {
    std::vector<std::string> expected;
    const auto scanAll = [] {
        NtlInitScanner();
        while (HDNTParserlex() != 0) continue;
        yylex_destroy();
    };
    for (const int count : {1, 200, 63, 70}) {
        std::string text;
        for (int line = 0; line < count; ++line) {
            expected.push_back(line % 3 == 1 ? "" : "a" + std::to_string(line));
            text += expected.back() + "\n";
        }
        yy_scan_string(text.c_str());
        scanAll();
    }
    yy_scan_string("a b\nc");
    NtlInitScanner();
    HDNTParserlex();
    scanAll();
    expected.insert(expected.end(), {"a b", " b", "c"});
    for (size_t n = 1; n <= expected.size(); ++n) EXPECT_EQ(NtlGetLineNumbered(n), expected[n - 1]) << n;
}

TEST(LineStore, PrintsTheLastElevenLines) {
    storeLines(13);
    const std::string out = printedBy(NtlPrintLines).out;
    EXPECT_TRUE(out.starts_with("3: line3\n") && out.ends_with("13: line13\n")) << out;
    EXPECT_EQ(NtlGetLineNumbered(0), "UNKNOWN LINE");
    EXPECT_EQ(NtlGetLineNumbered(99), "line13");
    NtlFreeScannerMem();
    EXPECT_EQ(NtlGetLineNumbered(1), "UNKNOWN LINE");
}
