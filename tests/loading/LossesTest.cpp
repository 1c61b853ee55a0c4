#include "tests/platform/TempDir.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

namespace {

using hdnt::Diagnostic;
using hdnt::Loaded;
using hdnt::LoadOptions;
using support::Texts;

/// "code line:column message", with the lines of related places behind it.
Texts said(const Loaded& loaded) {
    Texts texts;
    for (const Diagnostic& one : loaded.diagnostics) {
        texts.push_back(one.code + " " + std::to_string(one.place.line) + ":" + std::to_string(one.place.column) + " " +
                        textOf(one));
        for (const hdnt::RelatedPlace& related : one.related)
            texts.back() += " <- " + std::to_string(related.place.line);
    }
    return texts;
}

struct Losses : testing::Test {
    TempDir dir;
    LoadOptions options;
    void SetUp() override {
        dir.write("part.inc", "block \"GATE_AND_2\" { pin \"A\" input; }\n");
        options.searchDirectories = {dir.path()};
    }
    Loaded load(const std::string& content) {
        dir.write("l.btl", "library \"l\" {\n" + content + "\n}\n");
        return hdnt::load(dir.path("l.btl"), options);
    }
};

struct Case {
    std::string content; // from line 2 on
    Texts expected;
};

std::string property(const std::string& text) { return "block \"HOLD\" {\nproperty " + text + " }"; }
std::string mapping(const std::string& text) {
    return "block \"HOLD\" { pin \"D\" input { property bool \"P\" true; } } mapsto {\n" + text + " }";
}

} // namespace

TEST_F(Losses, OfTheScanner) {
    const std::string trailing = "include-trailing-text 2:";
    const std::string number = "number-overflow 3:";
    const Case cases[] = {
        {"INCLUDE part.inc; block \"HOLD\" { }",
         {trailing + "19 text on the line of a file statement is lost: block \"HOLD\" { }"}},
        {"block \"HOLD\" { } INLINE part.inc ;; //",
         {trailing + "35 text on the line of a file statement is lost: ; //"}},
        {"INCLUDE part.inc as a part;", {trailing + "18 text on the line of a file statement is lost: as a part;"}},
        {"INCLUDE part.inc; /* goes on\n*/",
         {trailing + "19 text on the line of a file statement is lost: /* goes on", "syntax-error 3:1 syntax error"}},
        {"INCLUDE part.inc /* one */ ;\t/* two */ // three;", {}},
        {"INCLUDE part.inc;\r", {}},
        {property("int \"N\" { min = 4294967296, default = 1 }"),
         {number + "26 number 4294967296 does not fit: it is read as 0"}},
        {property("int \"N\" { values { 2147483648, -2147483649, 99999999999999999999 }, default = 1 }"),
         {number + "29 number 2147483648 does not fit: it is read as -2147483648",
          number + "41 number -2147483649 does not fit: it is read as 2147483647",
          number + "54 number 99999999999999999999 does not fit: it is read as -1"}},
        {property("int \"N\" { min = -2147483648, max = 2147483647, default = 00000000000000000001 }"), {}},
        {property("double \"X\" { default = 1.0, precision = 4294967298 }"),
         {number + "50 number 4294967298 does not fit: it is read as 2"}},
        {property("double \"X\" { default = -" + std::string(400, '9') + ".0 }"),
         {number + "33 number -" + std::string(36, '9') + "... does not fit: it is read as -inf"}},
        {property("double \"X\" { default = 0." + std::string(400, '0') + "1 }"), {}},
        {mapping("if (1 == 4294967297) signal \"s\";"),
         {number + "10 number 4294967297 does not fit: it is read as 1"}},
        {mapping("signal \"s[4294967296:2147483647]\";"),
         {number + "1 number 4294967296 does not fit: it is read as 2147483647"}},
    };
    for (const auto& [content, expected] : cases) EXPECT_EQ(said(load(content)), expected) << content;
    EXPECT_EQ(load(cases[0].content).library->getNumTypeBlocks(false), 1U);
}

TEST_F(Losses, OfDeclarations) {
    const auto again = [](const char* place, const char* word) {
        return std::string("repeated-option ") + place + " \"" + word + "\" was given before, and the later one counts";
    };
    const Case cases[] = {
        {property("int \"N\" { default = 1, simulation = true, default = 2, simulation = false }"),
         {again("3:52", "default"), again("3:65", "simulation")}},
        {property("int \"N\" { min = 1, max = 2, max = 3, default = 2, units = \"a\", units = \"b\" }"),
         {again("3:38", "max"), again("3:73", "units")}},
        {property("bool \"B\" { default = true, test = true, muxControl = true, test = true }"),
         {again("3:69", "test")}},
        {property("bool \"B\" { default = true, constraintsOnly = true, description = \"a\", description = \"b\" }"),
         {again("3:80", "description")}},
        {property("double \"X\" { default = 0.5, precision = 2, constraintsOnly = true, precision = 3,"
                  " constraintsOnly = true }"),
         {again("3:77", "precision"), again("3:92", "constraintsOnly")}},
        {property("string \"S\" { muxControl = true, muxControl = false }"), {again("3:42", "muxControl")}},
        {property("8'h \"H\" { min = 8'h0, max = 8'h1, max = 8'h2, default = 8'h1 }"), {again("3:44", "max")}},
        {property("8'b \"H\" { default = 8'b0, default = 8'b1 }"), {again("3:36", "default")}},
        {property("int \"N\" { default = 1 }\nproperty int \"M\" { default = 2 }"), {}},
        {property("int \"N\" { values { 1, 2 }, max = 5 }"),
         {"ignored-option 3:1 \"max\" has no effect on a property that lists its values"}},
        {property("2'b \"N\" { values { 2'b01 }, max = 2'b11 }"),
         {"ignored-option 3:1 \"max\" has no effect on a property that lists its values"}},
        {"block \"HOLD\" { internal = true; test = false; maturityLevel = beta; primgroup = \"A:B\";\n"
         "internal = false; test = false; maturityLevel = early; primgroup = \"C\"; }",
         {again("3:1", "internal") + " <- 2", again("3:19", "test") + " <- 2", again("3:33", "maturityLevel") + " <- 2",
          again("3:56", "primgroup") + ": subgroups that it does not name stay <- 2"}},
        {"block \"HOLD\" { internal = true; } block \"GATE_AND_2\" { internal = true; }", {}},
        {"function int f(int);\n function int f(int);",
         {"function-redeclared 3:2 function \"f\" was declared before, and that declaration counts <- 2"}},
        {"function int f(int);\nfunction int F(int);", {}},
    };
    for (const auto& [content, expected] : cases) EXPECT_EQ(said(load(content)), expected) << content;
}

TEST_F(Losses, OfMappings) {
    const std::string replaces = "mapping-replaced 3:1 mapping of block \"HOLD\" replaces the one it had <- 2";
    const Case cases[] = {
        {"block \"HOLD\" { } mapsto { }\nblock \"HOLD\" expandsto { }", {replaces}},
        {"block \"HOLD\" { } block \"HOLD\" mapsto { }\nblock \"HOLD\" mapsto { }", {replaces}},
        {"block \"HOLD\" { }\nblock \"HOLD\" mapsto { }", {}},
        {mapping("{ signal \"s\"; } signal \"t\"; { }"),
         {"statement-dropped 3:1 statements in braces are dropped at the top of a mapping",
          "statement-dropped 3:29 statements in braces are dropped at the top of a mapping"}},
        {mapping("if (true) { { signal \"s\"; } }"), {}},
        {mapping("assign pin property \"~D\", \"P\" false;"),
         {"inversion-dropped 3:21 inversion of pin \"D\" has no effect here"}},
        {mapping("signal \"s\" : \"~D\"; assign pin property \"D\", \"P\" false;"), {}},
        {"block \"GATE_AND_2\" mapsto { }\nblock \"no_such\" mapsto { }",
         {"dropped-mapping 2:1 mapping of block \"GATE_AND_2\" is dropped: no block of that name was declared before",
          "dropped-mapping 3:1 mapping of block \"no_such\" is dropped: the name is not a registered cellview type"}},
    };
    for (const auto& [content, expected] : cases) EXPECT_EQ(said(load(content)), expected) << content;
    EXPECT_TRUE(load(cases[0].content).library->getTypeBlock(0)->getAttachedNetlist()->isExpandsTo());
}

// Each text of a folder may declare the functions that it calls; a mapping of another text is told by its place.
TEST_F(Losses, BetweenTexts) {
    dir.makeDir("folder");
    dir.write("folder/1.btl", "library \"1\" { function int f(int); block \"HOLD\" { } mapsto { } }");
    dir.write("folder/2.btl", "library \"2\" { function int f(int); }");
    EXPECT_EQ(said(hdnt::load(dir.path("folder"), options)), Texts{});
    dir.write("folder/3.btl", "library \"3\" { function int f(string);\nblock \"HOLD\" mapsto { } }");
    EXPECT_EQ(said(hdnt::load(dir.path("folder"), options)),
              (Texts{"mapping-replaced 2:1 mapping of block \"HOLD\" replaces the one it had: of " +
                         dir.path("folder/1.btl") + ":1",
                     "function-redeclared 1:15 function \"f\" was declared before, and that declaration counts"}));
}

TEST_F(Losses, NoneWhereAChildSaysItsParentsThingsAnew) {
    const Loaded parent = load("function int f(string); block \"HOLD\" { } expandsto { }");
    options.parent = parent.library.get();
    const std::string child = dir.write("c.btl", "library \"c\" { function int f(int); block \"HOLD\" mapsto { } }");
    EXPECT_EQ(said(hdnt::load(child, options)), Texts{});
    EXPECT_FALSE(parent.library->getTypeBlock(0)->getAttachedNetlist()->isExpandsTo());
}

TEST_F(Losses, NoneWhereAnArchitectureHasAnotherMapping) {
    dir.makeDir("maplib");
    dir.write("maplib/HOLD.btl", "library \"M\" {\n#ifArch \"alpha\"\nblock \"HOLD\" mapsto { }\n#endif\n"
                                 "#ifArch \"beta\"\nblock \"HOLD\" expandsto { }\n#endif\n}\n");
    setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    const Loaded loaded = load("block \"HOLD\" { }");
    HDNTBlock& block = *loaded.library->getTypeBlock(0);
    support::Reports reports;
    ASSERT_NE(block.getNetlist("alpha"), nullptr);
    ASSERT_NE(block.getNetlist("beta"), nullptr);
    EXPECT_TRUE(block.getAttachedNetlist()->isExpandsTo());
    EXPECT_EQ(reports.notices, std::vector<HDNTNotice::Kind>{});
}

TEST_F(Losses, ExamplesOfTheTableSayWhatTheyAreFor) {
    size_t shown = 0;
    for (const hdnt::DiagnosticRule& rule : hdnt::diagnosticRules()) {
        if (rule.bad.empty()) continue;
        ++shown;
        const auto codesOf = [&](std::string_view text) {
            Texts codes;
            for (const Diagnostic& one : hdnt::load(dir.write("e.btl", std::string(text)), options).diagnostics)
                codes.push_back(one.code);
            return codes;
        };
        EXPECT_EQ(codesOf(rule.bad), Texts{std::string(rule.name)});
        EXPECT_EQ(codesOf(rule.mended), Texts{}) << rule.name;
    }
    EXPECT_GE(shown, 8U);
}
