#include "author/format/HDNTFormatter.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"
#include "tests/support/Tokens.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>

namespace {

std::string formatted(const std::string& text) {
    std::string out;
    HDNTFormatProblem problem;
    if (HDNTFormatter::format(text, out, problem)) return out;
    return std::to_string(problem.line) + ":" + std::to_string(problem.column) + " " + problem.reason;
}

std::map<std::string, std::string> shippedTexts() {
    std::map<std::string, std::string> texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(HDNT_DATA)) {
        if (entry.path().extension() != ".btl" || entry.path().filename() == "bad_names.btl") continue;
        std::ifstream file(entry.path(), std::ios::binary);
        texts[entry.path()] = std::string{std::istreambuf_iterator<char>(file), {}};
    }
    return texts;
}

/// Puts tokens together again, with anything between them that may stand there.
class Scrambler {
public:
    explicit Scrambler(std::uint64_t seed) : random_(seed) {}

    std::string make(const support::Tokens& tokens, bool withComments) {
        std::string text;
        for (const auto& [number, token] : tokens) {
            const std::string_view tight = "{}();,";
            const bool mayTouch =
                !text.empty() && (tight.find(text.back()) != tight.npos || tight.find(token[0]) != tight.npos);
            if (!mayTouch || random_() % 2 == 0) text += gap(withComments);
            text += token;
        }
        return text + gap(withComments);
    }

private:
    // Without comments there are no empty lines either.
    std::string gap(bool withComments) {
        static const std::vector<std::string> blanks = {" ", "  ", "\t", " \n", "\n\t ", " \t "};
        static const std::vector<std::string> comments = {
            "/* # */", "// #\n", "/* #\n    again */", "\n\n// #\n\n", " /**/ ", "\n  /* # */\n", "/* # *//* # */"};
        std::string text = blanks[random_() % blanks.size()];
        if (!withComments || random_() % 6 != 0) return text;
        text += comments[random_() % comments.size()];
        const size_t mark = text.find('#');
        if (mark != text.npos) text.replace(mark, 1, "c" + std::to_string(++count_));
        return text + blanks[random_() % blanks.size()];
    }

    std::mt19937_64 random_;
    int count_ = 0;
};

} // namespace

TEST(FormatterTest, Layout) {
    const std::string wide(40, 'w');
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", ""},
        {" \n\t\n", ""},
        {"// end", "// end\n"},
        {"// end \t ", "// end\n"},
        {"f(1); // blanks \t \nf(2);//\t\n//  \n", "f(1);  // blanks\nf(2);  //\n//\n"},
        {"f(/* x */ - g(1), g( /* y */- (2)));", "f(/* x */ -g(1), g(/* y */ -(2)));\n"},
        {"library \"l\"{}", "library \"l\" { }\n"},
        {"\n\nlibrary\"l\" // x\n{\n\n\n/* y */\n\n\nblock \"A\" { }\n\n}\n\n", // around braces
         "library \"l\"  // x\n{\n  /* y */\n\n  block \"A\" { }\n}\n"},
        {"function int f ( string ,int ) ;function 8'h g();", "function int f(string, int);\nfunction 8'h g();\n"},
        {"pin \"A\" input;pin \"LONG[7:0]\" bidir test clock tieLow; // x\npin \"B\" output data active; /* y */",
         "pin \"A\"         input;\npin \"LONG[7:0]\" bidir  test clock tieLow;  // x\n"
         "pin \"B\"         output data       active;  /* y */\n"},
        {"pin \"A\" input;\n\npin \"BBB\" input;\n// x\npin \"CC\" input;\npin \"" + wide + "\" output;",
         "pin \"A\" input;\n\npin \"BBB\" input;\n// x\npin \"CC\" input;\npin \"" + wide + "\" output;\n"},
        {"pin \"B\" bidir active data;\npin \"CC\" output active enable active clock; pin \"C\" input active enable;",
         "pin \"B\" bidir active data;\npin \"CC\" output active enable active clock;\n"
         "pin \"C\" input active enable;\n"},
        {"pin \"LONGER_\xc3\xa4\" input; pin \"B\" input;",
         "pin \"LONGER_\xc3\xa4\" input;\npin \"B\"        input;\n"},
        {"inst \"a\" \"B\"; inst \"aaa\" \"C\";\nsignal \"s\"; signal \"t\":\"x\",\"y\" \"z\"; signal \"tt\" : \"x\";",
         "inst \"a\"   \"B\";\ninst \"aaa\" \"C\";\nsignal \"s\";\nsignal \"t\"  : \"x\", \"y\" \"z\";\nsignal \"tt\" "
         ": \"x\";\n"},
        {"property int\"N\"{min=0,\nmax= -7 , default=- 1}",
         "property int \"N\" { min = 0, max = -7, default = - 1 }\n"},
        {"property int \"N\" { // h\nmin = 0 /* i */, max = 1 /* j */}",
         "property int \"N\" {  // h\n  min = 0 /* i */,\n  max = 1  /* j */\n}\n"},
        {"property string \"S\" { values { \"" + wide + "\", \"" + wide + "\", \"c\" }, default = \"c\" }",
         "property string \"S\" {\n  values { \"" + wide + "\", \"" + wide +
             "\",\n      \"c\" },\n  default = \"c\"\n}\n"},
        {"pin \"A\" input { property bool \"B\" true; }", "pin \"A\" input {\n  property bool \"B\" true;\n}\n"},
        {"block \"A\" { } /* x */ mapsto { f(1) ; }", "block \"A\" { } /* x */ mapsto {\n  f(1);\n}\n"},
        {"if(a( )&&b(-1)||c(- 1)>-d(1)) { f(1); } else if (e()) f(2); else { }",
         "if (a() && b(-1) || c(- 1) > -d(1)) {\n  f(1);\n} else if (e())\n  f(2);\nelse { }\n"},
        {"if (a()) if (b()) { f(1); }\n\nelse f(2); else f(3); f(4);",
         "if (a())\n  if (b()) {\n    f(1);\n  } else\n    f(2);\nelse\n  f(3);\nf(4);\n"},
        {"if (a()) // x\n{ f(1); } // y\nelse f(2);", "if (a())  // x\n{\n  f(1);\n}  // y\nelse\n  f(2);\n"},
        {"assign block property \"i\" \"N\" - f(1)-1 -1; assign pin property \"i\" \"p\",\"q\" -(2)*3;",
         "assign block property \"i\" \"N\" -f(1) -1 -1;\nassign pin property \"i\" \"p\", \"q\" -(2) * 3;\n"},
        {"connect \"" + wide + "\" : \"" + wide + "\" \"a\",\"" + wide + "\" \"b\", \"c\";",
         "connect \"" + wide + "\" : \"" + wide + "\" \"a\",\n    \"" + wide + "\" \"b\", \"c\";\n"},
        {"block \"A\" { INCLUDE  a.btl ; pin \"no\" // \" kept\npin\"B\"input;INLINE\n\n b.btl;\n}",
         "block \"A\" {\n  INCLUDE  a.btl ; pin \"no\" // \" kept\n  pin \"B\" input;\n  INLINE\n\n b.btl;\n}\n"},
        {"library \"l\" {\n#ifArch \"x\"  \nblock \"A\" { }\n#endif\n}",
         "library \"l\" {\n#ifArch \"x\"  \n  block \"A\" { }\n#endif\n}\n"},
        {"block \"A\" {\n      /* one\n         two\n\t  three\n\n  four */\n}",
         "block \"A\" {\n  /* one\n     two\n      three\n\nfour */\n}\n"},
        {"4'b102 1e 1 .5 8'h FF 8'hFF > = >= / / \"\t\xc3\xa4\" x [3 ]", // tokens, if not sentences
         "4'b10 2 1 e 1 . 5 8'h FF 8'hFF > = >= / / \"\t\xc3\xa4\" x [ 3 ]\n"},
        {"\nBZh91AY", "BZh91AY\n"},                                // not taken for an archive
        {"} } else ; { ) if (", "}\n}\nelse\n  ;\n{\n  ) if (\n"}, // nonsense stays as it is
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(formatted(text), expected) << text;
        EXPECT_EQ(formatted(expected), expected) << text;
    }
}

TEST(FormatterTest, RefusesWithThePlaceAndLeavesNoTrace) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"pin \"A\" input;\r\n", "1:15 carriage return"},
        {"\n\t\"\xc3\xa4\" #", "2:6 unrecognized character '#'"},
        {"a ! b", "1:3 unrecognized character '!'"},
        {std::string("a\0b", 3), "1:2 unrecognized character \\x00"},
        {"// \xc3\xa4\n\xc3", "2:1 unrecognized character \\xc3"},
        {"pin \"A\n", "1:5 string that does not end"},
        {"a /* b\n*", "1:3 comment that does not end"},
        {"f\n" + std::string(32, 'i'), "2:1 identifier of 32 characters"},
        {"INCLUDE a.btl;", "1:1 file statement"},
        {"a\n INLINE a.btl\n", "2:2 file statement"},
        {"/*\n#endif */", "2:1 directive"},
        {"#ifArch /* \n */", "1:9 comment or statement that goes on"},
        {"\x1f\x8b\x08", "1:1 compressed"},
    };
    support::Reports reports;
    support::parsed("library \"L\" { }\n");
    const support::Printed printed = support::printedBy([&] {
        for (const auto& [text, expected] : cases) EXPECT_EQ(formatted(text).find(expected), 0U) << formatted(text);
        EXPECT_EQ(formatted("INCLUDE /etc/passwd ;\n"), "INCLUDE /etc/passwd ;\n");
    });
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(HDNTError::numErrors, 0);
    EXPECT_TRUE(reports.texts.empty());
    EXPECT_TRUE(reports.notices.empty());
    EXPECT_EQ(NtlGetLineNumbered(9), "library \"L\" { }");
    support::printedBy([] { support::parsed("INCLUDE /etc/passwd ;\nlibrary \"M\" { }\n"); });
    ASSERT_FALSE(reports.notices.empty() && reports.texts.empty()); // it was not taken for included before
    EXPECT_TRUE(std::count(reports.notices.begin(), reports.notices.end(), HDNTNotice::Kind::IncludeSkipped) == 0);
}

TEST(FormatterTest, ShippedDataIsInTheStyle) {
    const auto texts = shippedTexts();
    EXPECT_GE(texts.size(), 29U);
    for (const auto& [path, text] : texts) EXPECT_EQ(formatted(text), text) << path;
}

// Any text with the same tokens, without comments and empty lines, has the same layout. With both, every ink mark stays
// in its order, and so do the tokens. HDNT_FORMAT_SEED repeats one run.
TEST(FormatterTest, ScrambledDataComesBack) {
    const char* const wanted = std::getenv("HDNT_FORMAT_SEED");
    const std::uint64_t first = wanted ? std::strtoull(wanted, nullptr, 10) : 1;
    support::Reports silence;
    for (const auto& [path, text] : shippedTexts()) {
        if (text.find("#ifArch") != text.npos) continue;
        support::Tokens tokens;
        support::printedBy([&, &bytes = text] { tokens = support::tokensOf(bytes); });
        std::string plain;
        for (const auto& [number, token] : tokens) plain += token + " ";
        plain = formatted(plain);
        for (std::uint64_t seed = first; seed < first + (wanted ? 1 : 8); ++seed) {
            SCOPED_TRACE(path + ", HDNT_FORMAT_SEED=" + std::to_string(seed));
            Scrambler scrambler(seed);
            ASSERT_EQ(formatted(scrambler.make(tokens, false)), plain);
            const std::string scrambled = scrambler.make(tokens, true);
            const std::string result = formatted(scrambled);
            ASSERT_EQ(support::inkOf(result), support::inkOf(scrambled));
            ASSERT_EQ(support::tokensOf(result), tokens);
            ASSERT_EQ(formatted(result), result);
        }
    }
}

// Items come some hundred at a time, and statements and lines go as soon as they can.
TEST(FormatterTest, LengthChangesNothing) {
    const auto repeated = [](const std::string& piece, std::size_t count) {
        std::string text;
        for (; count > 0; --count) text += piece;
        return text;
    };
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"#ifArch " + repeated("a ", 3000) + "\na;", "#ifArch " + repeated("a ", 3000) + "\na;\n"},
        {repeated("a;// b\n", 9000), repeated("a;  // b\n", 9000)},
        {repeated("a; // b\n", 9000) + "cc;// d", repeated("a;   // b\n", 9000) + "cc;  // d\n"},
        {repeated("pin \"A\" input;", 9000) + "pin \"AA\" output;",
         repeated("pin \"A\"  input;\n", 9000) + "pin \"AA\" output;\n"},
        {"if (a) b; /* c */" + repeated("\n// d", 3000) + "\nelse e;",
         "if (a)\n  b;  /* c */\n" + repeated("// d\n", 3000) + "else\n  e;\n"},
        {repeated("a ", 40000), repeated("a ", 39999) + "a\n"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_TRUE(formatted(text) == expected) << text.substr(0, 40) << "\n" << formatted(text).substr(0, 400);
}

TEST(FormatterTest, DepthCostsNeitherStackNorSpace) {
    for (const std::string piece : {"{ ", "} ", "( ", "if (a) ", "else if (a) { } ", "if (a) { } else ", "values { ",
                                    "property int \"N\" { ", "/* x */ ", "a, ", "- ", "/* x\n */"}) {
        std::string text;
        while (text.size() < 400000) text += piece;
        const std::string result = formatted(text);
        EXPECT_EQ(support::inkOf(result), support::inkOf(text)) << piece;
        EXPECT_LT(result.size(), 4 * text.size()) << piece;
    }
}
