#include "author/syntax/SyntaxTree.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

// What is said of faulty texts.
namespace {

using hdnt::Diagnostic;
using hdnt::author::SyntaxTree;
using hdnt::frontend::SourceItem;

std::vector<Diagnostic> saidOf(const std::string& text) {
    SyntaxTree tree;
    return tree.read(text) ? tree.diagnostics("t.btl") : std::vector<Diagnostic>();
}

// "line:column code: text", and the same of the first related place behind it.
std::string described(const Diagnostic& said) {
    const auto at = [](const hdnt::Place& place) {
        return std::to_string(place.line) + ':' + std::to_string(place.column) + ' ';
    };
    std::string text = at(said.place) + said.code + ": " + said.message;
    for (const hdnt::RelatedPlace& related : said.related) text += " | " + at(related.place) + related.message;
    return text;
}

std::string allOf(const std::string& text) {
    std::string all;
    for (const Diagnostic& said : saidOf(text)) all += (all.empty() ? "" : "\n") + described(said);
    return all;
}

/// The text with the first message's mend; the same when it has none.
std::string mended(const std::string& text) {
    SyntaxTree tree;
    if (!tree.read(text) || tree.messages().empty() || !tree.messages()[0].mend) return text;
    const hdnt::author::SyntaxMend& mend = *tree.messages()[0].mend;
    return std::string(text).replace(mend.offset, mend.length, mend.text);
}

struct Slip {
    std::string entities; ///< from line 3 on
    std::string said;
};

/// One token of a text, changed as slips of the hand change it; its line comes back.
int slip(std::string& text, std::mt19937& random) {
    hdnt::frontend::SourceItems items;
    hdnt::frontend::SourceProblem problem;
    items.read(text, problem);
    std::vector<SourceItem> tokens;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (items[i].isToken()) tokens.push_back(items[i]);
    const std::size_t at = random() % (tokens.size() - 1);
    const SourceItem& token = tokens[at];
    const SourceItem& next = tokens[at + 1];
    const int line = 1 + static_cast<int>(std::count(text.begin(), text.begin() + token.offset, '\n'));
    const std::string word = text.substr(token.offset, token.length);
    const std::string nextWord = text.substr(next.offset, next.length);
    switch (random() % 4) {
    case 0: text.erase(token.offset, token.length); break;
    case 1: text.insert(token.offset, word + ' '); break;
    case 2:
        text.replace(next.offset, next.length, word + ' ');
        text.replace(token.offset, token.length, nextWord + ' ');
        break;
    default:
        if (std::isalpha(static_cast<unsigned char>(word[0])) && word.size() > 2)
            text.erase(token.offset + 1 + random() % (word.size() - 1), 1);
        break;
    }
    return line;
}

} // namespace

TEST(Syntax, UsualSlips) {
    const Slip slips[] = {
        {"pin \"A\" input tieLow\npin \"B\" output;", "3:23 missing-token: expected ';' after 'tieLow'"},
        {"pin \"A\" inout;", "3:11 misspelt-word: expected input, output, bidir or internal; did you mean bidir?"},
        {"pin \"A\" input clk;",
         "3:17 misspelt-word: expected a pin type, a required value, test, abstract, '{' or ';'; did you mean clock?"},
        {"pin \"A\";", "3:10 missing-token: expected input, output, bidir or internal after '\"A\"'"},
        {"pin \"A\" input clock test;",
         "3:23 wrong-order: 'test' is out of its order: direction, test, abstract, pin type, required value"},
        {"pin pin \"A\" input;", "3:7 unexpected-token: 'pin' stands twice"},
        {"\"A\" input;", "3:3 missing-token: expected pin before '\"A\"'"},
        {"PIN \"A\" input;", "3:3 misspelt-word: expected a declaration or '}'; did you mean pin?"},
        {"pin A input;", "3:7 wrong-token: expected a text in quotes instead of 'A'"},
        {"pin \xe2\x80\x9c"
         "A\xe2\x80\x9d input;",
         "3:7 typographic-quote: typographic quote; write \" (2 such places)"},
        {"pin \"B input;\npin \"C\" input;", "3:7 open-string: text without its second quote; add it"},
        {"property integer \"A\" { default = 3 }", "3:12 misspelt-word: expected a type; did you mean int?"},
        {"property double \"A\" { min = 1, max = 2.0 }", "3:31 number-form: expected a number with a point; write 1.0"},
        {"property 8'h \"A\" { default = 0x0 }",
         "3:32 number-form: expected a hexadecimal such as 8'hFF instead of '0'"},
        {"property int \"A\" { min = 1, max = 3, }", "3:38 trailing-comma: no ',' before '}'"},
        {"property int \"A\" { min = 1, max = 3 };", "3:40 unexpected-token: no ';' behind '}'"},
        {"property int \"A\" { max = 3, min = 1 }",
         "3:22 wrong-order: 'max' stands behind 'min': write min = ..., max = ..."},
        {"property bool \"A\" TRUE;", "3:21 misspelt-word: expected true or false or '{'; did you mean true?"},
        {"attribute \"A\" integer default 1 min 1;\n  attribute \"B\" integer default 1 min 1;\n  pin \"C\" input;",
         "3:3 unexpected-token: expected a declaration or '}' instead of 'attribute'\n"
         "4:3 unexpected-token: expected a declaration or '}' instead of 'attribute'"},
        {"maturityLevel = released;",
         "3:19 misspelt-word: expected early, beta, production or deprecated; did you mean production?"},
        {"} mapsto { if (f(\"N\") = 1) inst \"a\" \"B\"; } block \"X\" {",
         "3:25 wrong-token: '=' does not compare; write '=='"},
        {"} mapsto { if (f(\"N\") 1) inst \"a\" \"B\"; } block \"X\" {",
         "3:24 missing-token: expected an operator or ')' after ')'"},
        {"} mapsto { if (f(\"N\") & g(1)) inst \"a\" \"B\"; } block \"X\" {",
         "3:25 wrong-token: expected an operator or ')' instead of '&'"},
        {"} mapsto { if (f(\"N\") == ) inst \"a\" \"B\"; } block \"X\" {",
         "3:27 missing-token: expected a value after '=='"},
        {"} mapsto { if (f(\"N\") <> 1) inst \"a\" \"B\"; } block \"X\" {",
         "3:26 wrong-token: expected a value instead of '>'"},
        {"} mapsto { conect \"a\" : \"B\"; } block \"X\" {",
         "3:14 misspelt-word: expected a statement; did you mean connect?"},
        {"} mapsto { asign block property \"a\" \"N\" 1; } block \"X\" {",
         "3:14 misspelt-word: expected a statement; did you mean assign?"},
        {"} mapsto { f \"a\"; } block \"X\" {", "3:16 unexpected-token: expected '(' instead of '\"a\"'"},
        {"} mapsto { if (flase || g(2) == f(1)) inst \"a\" \"B\"; } block \"X\" {",
         "3:18 misspelt-word: expected a value; did you mean false?"},
        {"} mapsto { if (N == 1 && f(M) != 2) inst \"a\" \"B\"; } block \"X\" {",
         "3:18 wrong-token: 'N' is no value: texts stand in quotes, functions have parentheses\n"
         "3:30 wrong-token: 'M' is no value: texts stand in quotes, functions have parentheses"},
        {"} mapsto { if (N = 1 && f(2) != 2) inst \"a\" \"B\"; } block \"X\" {",
         "3:18 wrong-token: 'N' is no value: texts stand in quotes, functions have parentheses"},
        {"property bool \"A\" ture;", "3:21 misspelt-word: expected true or false or '{'; did you mean true?"},
        {"Include \"a.inc\";", "3:3 misspelt-word: files are brought in by INCLUDE NAME; or INLINE NAME; in capitals, "
                               "without quotes"},
        {"pin \"A\" input {\n    property bool \"P\" true;\n  pin \"B\" input;",
         "3:17 unclosed-brace: this '{' is not closed before 'pin' | 4:28 expected '}' here"},
        {"pin \"A\" input\r\npin \"B\" output;",
         "3:16 carriage-return: carriage return; lines end with a newline alone\n"
         "3:16 missing-token: expected ';' after 'input'"},
        {"pin \"B\" output;\n}\n  pin \"C\" input;",
         "4:1 stray-brace: this '}' has no '{', so that 'pin' stands outside | 5:3 what stands outside"},
    };
    int mends = 0;
    for (const Slip& slip : slips) {
        const std::string text = "library \"L\" {\nblock \"A\" {\n  " + slip.entities +
                                 "\n  pin \"Z\" output;\n}\nblock \"Q\" { pin \"R\" input; }\n}\n";
        EXPECT_EQ(allOf(text), slip.said) << text;
        const std::string better = mended(text);
        EXPECT_EQ(allOf(better), better == text ? slip.said : "") << better;
        mends += better == text ? 0 : 1;
    }
    EXPECT_EQ(mends, 18);
}

TEST(Syntax, WhatIsWrongAllOverIsSaidOnce) {
    EXPECT_EQ(allOf("library \"L\" {\r\nblock \"A\" {\r\n}\r\n}\r\n"),
              "1:14 carriage-return: carriage return; lines end with a newline alone (4 such places)");
    EXPECT_EQ(allOf("\xef\xbb\xbflibrary \"L\" { }"), "1:1 byte-order-mark: byte order mark; save the text without it");
    EXPECT_EQ(allOf("library \"L\" { } /* no end"), "1:17 open-comment: comment that does not end; add */");
}

// Columns count characters; a missing part has an empty place.
TEST(Syntax, PlacesAreInCharacters) {
    const std::vector<Diagnostic> said =
        saidOf("library \"L\" { block \"A\" {\n\tpin \"A\" /* \xc3\xa4 */ inpt;\n\tpin \"B\" input\n} }");
    ASSERT_EQ(said.size(), 2U);
    EXPECT_EQ(said[0].place.column, 18);
    EXPECT_EQ(said[0].place.endColumn, 22);
    EXPECT_EQ(said[1].place.column, 15);
    EXPECT_EQ(said[1].place.endColumn, 15);
    EXPECT_EQ(said[1].place.text, "\tpin \"B\" input");
}

// A part goes from its first token to its last one.
// As while it is typed: the blocks behind it are still blocks.
TEST(Syntax, WhatIsNotClosedEndsBeforeABlock) {
    for (const char* const begun : {"pin \"P\" inpt {", "pin \"P\" {\n    property", "property int { min = {",
                                    "primgroup = {", "wrong { more {", "mapsto {\n inst \"i\" {"}) {
        SyntaxTree tree;
        tree.read("library \"L\" {\nblock \"A\" {\n  " + std::string(begun) +
                  "\nblock \"B\" { pin \"Q\" input; }\nblock \"C\" { pin \"R\" input; }\n}\n");
        std::string names;
        for (const auto& node : tree.nodes())
            if (node.part == hdnt::frontend::NtlPart::block) names += tree.items().textOf(node.begin + 1);
        EXPECT_EQ(names, "\"A\"\"B\"\"C\"") << begun;
    }
}

TEST(Syntax, PartsHoldTheirTokens) {
    using hdnt::frontend::NtlPart;
    SyntaxTree tree;
    tree.read("library \"L\" { block \"A\" { pin \"P\" input; } mapsto {\n"
              "  assign block property \"i\" \"N\" 1 + 2 * 3; assign pin property \"i\" \"P\", \"Y\" true;\n"
              "} block /* c */ \"B\" mapsto { if (f(1)) g(); } blok \"C\" { } }");
    const auto firstOf = [&](NtlPart part) {
        std::string all;
        for (const auto& node : tree.nodes())
            if (node.part == part)
                all += std::string(tree.items().textOf(node.begin)) + ".." +
                       std::string(tree.items().textOf(node.end - 1)) + " ";
        return all;
    };
    EXPECT_EQ(firstOf(NtlPart::block), "block..} blok..} ");
    EXPECT_EQ(firstOf(NtlPart::mapping), "block..} ");
    EXPECT_EQ(firstOf(NtlPart::assignBlockProperty), "assign..; ");
    EXPECT_EQ(firstOf(NtlPart::assignPinProperty), "assign..; ");
    EXPECT_EQ(firstOf(NtlPart::operation), "1..3 2..3 ");
    EXPECT_EQ(firstOf(NtlPart::call), "f..) g..; ");
}

// A text without a library around it is what an included file holds.
TEST(Syntax, Fragments) {
    EXPECT_EQ(allOf("pin \"A\" input;\nmaturityLevel = beta;\n"), "");
    EXPECT_EQ(allOf("inst \"a\" \"B\";\nif (f()) signal \"s\";\n"), "");
    EXPECT_EQ(allOf("block \"A\" { }\nblock \"B\" { pin \"A\" }\n"),
              "2:21 unexpected-token: expected input, output, bidir or internal instead of \'}\'");
    EXPECT_EQ(allOf(""), "1:1 unexpected-token: expected library instead of the end of the text");
    const std::string behindBlock =
        "block, mapsto, function, modifiedby, expandsto, retargetsto or the end of the text";
    EXPECT_EQ(allOf("block \"A\" { } x"), "1:15 unexpected-token: unexpected 'x'; expected " + behindBlock);
    EXPECT_EQ(allOf("block \"A\" { }\n;\nblock \"B\" { }"), "2:1 unexpected-token: no ';' behind '}'");
}

// Nothing nests or repeats so much that it takes long or runs out of stack.
TEST(Syntax, ExtremeTexts) {
    const std::string head = "library \"L\" { block \"A\" mapsto { ";
    for (const std::string& text :
         {std::string(200000, '{'), head + "if (" + std::string(200000, '('), head + std::string(200000, '{'),
          head + std::string(200000, ';'), std::string(200000, '}')}) {
        EXPECT_FALSE(saidOf(text).empty());
        EXPECT_LE(saidOf(text).size(), 20U);
    }
}

// One slip, one message, and where it is. A slip that leaves a good text is none.
TEST(Syntax, SlipsInRealTexts) {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(HDNT_DATA "/tessels")) {
        std::ifstream file(entry.path(), std::ios::binary);
        texts.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    std::sort(texts.begin(), texts.end());
    std::mt19937 random(5);
    std::size_t slips = 0;
    std::size_t messages = 0;
    std::size_t near = 0;
    std::size_t mends = 0;
    std::size_t good = 0;
    while (slips < 300) {
        std::string text = texts[random() % texts.size()];
        const int line = slip(text, random);
        const std::vector<Diagnostic> said = saidOf(text);
        if (said.empty()) continue;
        ++slips;
        messages += said.size();
        const auto isNear = [&](const hdnt::Place& place) { return place.line == line || place.line == line + 1; };
        near += isNear(said[0].place) || (!said[0].related.empty() && isNear(said[0].related[0].place)) ? 1 : 0;
        const std::string better = mended(text);
        mends += better == text ? 0 : 1;
        good += saidOf(better).size() < said.size() ? 1 : 0;
    }
    EXPECT_GE(mends, slips * 3 / 4);
    EXPECT_GE(good, mends - mends / 100);
    EXPECT_LE(static_cast<double>(messages), 1.15 * static_cast<double>(slips));
    EXPECT_GE(static_cast<double>(near), 0.95 * static_cast<double>(slips));
}
