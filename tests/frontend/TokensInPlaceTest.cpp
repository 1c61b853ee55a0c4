// What the parser has of the scanner: tokens where they stand.
#include "hdnt/frontend/ScannerState.internal.h"
#include "tests/platform/TempDir.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

using hdnt::frontend::Scanner;
using hdnt::frontend::SourceText;

namespace {

using Place = std::tuple<std::string, int, int, int, int>;

Place placeOf(const yyltype& place) {
    return {place.fileName ? place.fileName : "", place.fileLine, place.first_line, place.first_column,
            place.last_column};
}

struct Token {
    int number;
    std::string text;
    Place place;
    bool operator==(const Token&) const = default;
};

void PrintTo(const Token& token, std::ostream* out) {
    *out << token.number << " " << token.text << " at " << testing::PrintToString(token.place);
}

/// The tokens as hosts get them.
std::vector<Token> copiedTokens(const std::string& text) {
    yy_scan_bytes(text.data(), static_cast<int>(text.size()));
    NtlInitScanner();
    std::vector<Token> tokens;
    for (int number = 1; number != 0;) {
        number = HDNTParserlex();
        const bool ownsText = number == T_StringConstant || number == T_HexConstant || number == T_BinaryConstant;
        const std::string value = ownsText ? *HDNTParserlval.text : "";
        if (ownsText) delete HDNTParserlval.text;
        const std::string match = number == 0 ? "" : yyget_text();
        EXPECT_EQ(value, number == T_StringConstant ? match.substr(1, match.size() - 2) : ownsText ? match : "");
        tokens.push_back({number, match, placeOf(HDNTParserlloc)});
    }
    yylex_destroy();
    return tokens;
}

/// The same in place. What was given is looked at behind the end of the text only.
std::vector<Token> tokensInPlace() {
    Scanner& scanner = Scanner::instance();
    std::vector<Token> tokens;
    std::vector<std::string_view> texts;
    for (int number = 1; number != 0;) {
        number = scanner.scan();
        const Place place = placeOf(scanner.tokenPlace());
        if (number != 0) {
            EXPECT_EQ(scanner.tokenLine(), std::get<2>(place));
            EXPECT_EQ(scanner.tokenLastColumn(), std::get<4>(place));
            EXPECT_EQ(scanner.fileName() ? scanner.fileName() : "", std::get<0>(place));
            scanner.syncPlace();
        }
        EXPECT_EQ(placeOf(HDNTParserlloc), place);
        tokens.push_back({number, {}, place});
        texts.push_back(number == 0 ? std::string_view() : scanner.tokenText());
        if (number == T_StringConstant) {
            EXPECT_EQ(scanner.stringText(), texts.back().substr(1, texts.back().size() - 2));
        }
        if (tokens.size() % 50 == 0) NtlFreeScannerMem();
    }
    NtlFreeScannerMem(); // lets go of the texts
    for (size_t i = 0; i < texts.size(); ++i) tokens[i].text = texts[i];
    return tokens;
}

std::string longText(const std::string& fileName) {
    std::string text;
    for (int i = 0; i < 600; ++i)
        text +=
            "pin \"NAME_" + std::to_string(i) + "[7:0]\" mustConnect;\n\n\t{ 16'h" + std::to_string(i) + " } // end\n";
    return text + "INLINE " + fileName + ";\n/* in\nbetween */ -12 1.5 a_long_identifier_of_many true\nINLINE " +
           fileName + ";\n\"longer than sixteen bytes\" <= \n  ";
}

} // namespace

TEST(TokensInPlace, AreThoseThatHostsGet) {
    const TempDir dir;
    const std::string text = longText(dir.write("inner", "block \"inner\" {\n}"));
    const std::vector<Token> expected = copiedTokens(text);
    {
        std::string exact = text;
        exact.shrink_to_fit();
        Scanner::instance().beginText(std::make_shared<SourceText>(SourceText{exact}));
        Scanner::instance().init();
        EXPECT_EQ(tokensInPlace(), expected);
        Scanner::instance().endText();
    }
    std::istringstream stream(text);
    yyrestart(&stream);
    NtlInitScanner();
    EXPECT_EQ(tokensInPlace(), expected);
    yylex_destroy();
}

// A host may take the text away while a parse has tokens of it.
TEST(TokensInPlace, HoldUntilTheTextEnds) {
    Scanner& scanner = Scanner::instance();
    scanner.beginText(std::make_shared<SourceText>(SourceText{"pin \"more than sixteen bytes\""}));
    scanner.init();
    EXPECT_EQ(scanner.scan(), T_Pin);
    EXPECT_EQ(scanner.scan(), T_StringConstant);
    const std::string_view text = scanner.stringText();
    scanner.beginText(std::make_shared<SourceText>(SourceText{"end"}));
    scanner.endText();
    yylex_destroy();
    NtlFreeScannerMem();
    NtlInitScanner();
    EXPECT_EQ(text, "more than sixteen bytes");
    scanner.endText();
    EXPECT_EQ(yyget_leng(), 0);
}

TEST(TokensInPlace, HaveValues) {
    Scanner& scanner = Scanner::instance();
    scanner.beginText(std::make_shared<SourceText>(SourceText{"-12 2.5 true false 4294967297"}));
    scanner.init();
    HDNTParserlval.intValue = 77;
    EXPECT_EQ((scanner.scan(), scanner.tokenNumber().asInt), -12);
    EXPECT_EQ((scanner.scan(), scanner.tokenNumber().asDouble), 2.5);
    EXPECT_EQ((scanner.scan(), scanner.tokenText()), "true");
    EXPECT_EQ((scanner.scan(), scanner.tokenText()), "false");
    EXPECT_EQ((scanner.scan(), scanner.tokenNumber().asInt), 1);
    EXPECT_EQ(HDNTParserlval.intValue, 77);
    scanner.endText();
}

TEST(TokensInPlace, AnExpectedMarkIsTakenWhereItStands) {
    const struct {
        const char* text;
        char mark;
        bool taken;
        int next;
    } cases[] = {{"pin;", ';', true, 0},
                 {"pin   { }", '{', true, '}'},
                 {"pin = 1", '=', true, T_IntConstant},
                 {"pin == 1", '=', false, T_EqualTo},
                 {"pin , ;", ';', false, ','},
                 {"pin\n;", ';', false, ';'},
                 {"pin /**/ ;", ';', false, ';'},
                 {"pin", ';', false, 0}};
    Scanner& scanner = Scanner::instance();
    for (const auto& [text, mark, taken, next] : cases) {
        scanner.beginText(std::make_shared<SourceText>(SourceText{text}));
        scanner.init();
        EXPECT_FALSE(scanner.scanExpected('p')); // nothing stands anywhere yet
        EXPECT_EQ(scanner.scan(), T_Pin);
        EXPECT_EQ(scanner.scanExpected(mark), taken) << text;
        EXPECT_EQ(scanner.tokenText(), taken ? std::string(1, mark) : "pin");
        EXPECT_EQ(scanner.tokenPlace().last_column, scanner.tokenLastColumn());
        EXPECT_EQ(scanner.scan(), next) << text;
        scanner.endText();
    }
}
