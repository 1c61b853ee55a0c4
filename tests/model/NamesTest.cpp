#include "tests/support/Library.h"

#include <gtest/gtest.h>
#include <regex.h>

using support::Reports;
using support::Texts;

TEST(Names, RangedForms) {
    Reports reports;
    const HDNTNode node;
    const struct {
        const char* name;
        bool valid;
        const char* base;
        int first;
        int second;
    } cases[] = {{"A[3:3]", true, "A", 3, 3},
                 {"d_0[7:0]", true, "d_0", 7, 0},
                 {"D[5]", true, "D", 5, 5},
                 {"A[007:1]", true, "A", 7, 1},
                 {"A[99999999999]", true, "A", INT_MAX, INT_MAX},
                 {"A[+3:0]", false, "", 0, 0},
                 {"A[-1:0]", false, "", 0, 0},
                 {"A[3:]", false, "", 0, 0},
                 {"A [3]", false, "", 0, 0},
                 {"@A[1]", false, "", 0, 0},
                 {"[1]", false, "", 0, 0},
                 {"A[1]x", false, "", 0, 0},
                 {"A[1:2:3]", false, "", 0, 0},
                 {"A[]", false, "", 0, 0},
                 {"A]", false, "", 0, 0},
                 {"A[1]\n", false, "", 0, 0}};
    for (const auto& [name, valid, base, first, second] : cases) {
        std::string gotBase = "untouched";
        int gotFirst = -7;
        int gotSecond = -7;
        EXPECT_EQ(node.checkValidMultipleInstFormat(name, gotBase, gotFirst, gotSecond), valid) << name;
        EXPECT_EQ(gotBase, valid ? base : "untouched") << name;
        EXPECT_EQ(gotFirst, valid ? first : -7) << name;
        EXPECT_EQ(gotSecond, valid ? second : -7) << name;
        EXPECT_EQ(reports.take().size(), valid ? 0U : 1U) << name;
    }
}

// The hand-written matcher against the pattern that defines the forms, over all short texts of telling characters.
TEST(Names, MatcherAgreesWithThePattern) {
    const Reports silent;
    regex_t pattern;
    ASSERT_EQ(regcomp(&pattern, R"(^([a-zA-Z0-9_]+)\[([0-9]+)(:[0-9]+)?\]$)", REG_EXTENDED), 0);
    const HDNTNode node;
    const std::string alphabet = "A1[]:@";
    for (unsigned long code = 0; code < 6UL * 6 * 6 * 6 * 6 * 6 * 6; ++code) {
        std::string name;
        for (unsigned long rest = code; rest > 0; rest /= 6) name += alphabet[rest % 6];
        std::string base;
        int first = 0;
        int second = 0;
        EXPECT_EQ(node.checkValidMultipleInstFormat(name, base, first, second),
                  regexec(&pattern, name.c_str(), 0, nullptr, 0) == 0)
            << name;
    }
    regfree(&pattern);
}

TEST(Names, ChecksOnlyWithDiagnostics) {
    Reports reports;
    const HDNTNode node;
    const struct {
        const char* name;
        bool array;
        const char* report;
    } cases[] = {{"ab@c", false, ""},
                 {"a-b", false, "Invalid name format in string \"a-b\" . Valid name is [a-z0-9_A-Z]+ ."},
                 {"a[1]", false, "Array Format is disallowed here in string: a[1]"},
                 {"a[1]", true, ""},
                 {"a[1", true, "Invalid name format in string \"a[1\" . Valid name is name[+veinteger:+veinteger]."},
                 {"", false, "Name cannot be empty string."},
                 {"", true, "Name cannot be empty string."}};
    for (const bool diagnostics : {false, true}) {
        HDNTLibraryMgr::m_diagnostics = diagnostics;
        for (const auto& [name, array, report] : cases) {
            node.checkNames(name, array);
            const bool silent = !diagnostics || !*report;
            EXPECT_EQ(reports.take(), silent ? Texts{} : Texts{report}) << name;
        }
    }
}

TEST(Names, Expansion) {
    Reports reports;
    const HDNTNode node;
    const std::vector<std::string> declared = {"X", "D[1:0]", "bad[", "E[0:1]", "F[5]"};
    std::vector<std::string> names;
    std::vector<int> indices;
    node.expandRangedNameVector(&declared, names, indices);
    node.expandRangedNameVector(nullptr, names, indices);
    EXPECT_EQ(names, (std::vector<std::string>{"X", "D", "D", "E", "E", "F"}));
    EXPECT_EQ(indices, (std::vector<int>{1, 0, 0, 1, 5}));
    EXPECT_EQ(reports.take().size(), 1U);
    names.clear();
    indices.clear();
    for (const auto& [name, fault] : {std::pair("D", ""), {"E[0:1]", ""}, {"F[", "\"F[\" is no name"}})
        EXPECT_EQ(node.unfoldRangedName(name, names, indices).find(fault), 0U) << name;
    EXPECT_EQ(names, (std::vector<std::string>{"D", "E", "E"}));
    EXPECT_EQ(indices, (std::vector<int>{0, 1}));
    EXPECT_TRUE(reports.take().empty());
}

TEST(Names, RangesAreLimited) {
    Reports reports;
    const HDNTNode node;
    HDNTLimits limits;
    limits.rangeElements = 4;
    HDNTLimits::set(limits);
    for (const auto& [name, count] : {std::pair("A[2:0]", 3U), {"A[3:0]", 4U}, {"A[4:0]", 0U}}) {
        std::vector<std::string> names;
        std::vector<int> indices;
        node.expandRangedNameNames(name, names, indices);
        EXPECT_EQ(names.size(), count);
    }
    EXPECT_EQ(reports.take(), Texts{"Range \"A[4:0]\" has 5 elements, more than 4 (limit rangeElements)."});
}
