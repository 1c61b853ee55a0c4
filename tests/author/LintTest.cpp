#include "author/lint/lint.h"

#include "author/lint/SettingCover.h"
#include "author/lint/Waivers.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

// What is said of libraries that load.
namespace {

namespace fs = std::filesystem;
using hdnt::Diagnostic;
using hdnt::DiagnosticRule;

class LintTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("HDNT_DATA_PATH", HDNT_DATA, 1);
        HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path written(const std::string& name, std::string_view text) const {
        const fs::path path = folder_ / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    // What is said of a library that loads without a report.
    static std::vector<Diagnostic> saidOf(const fs::path& path, const hdnt::LintOptions& options = {}) {
        const hdnt::Loaded loaded = hdnt::load(path.string());
        EXPECT_TRUE(loaded) << (loaded.diagnostics.empty() ? "" : textOf(loaded.diagnostics.front()));
        if (!loaded) return {};
        std::vector<Diagnostic> said = hdnt::lint(*loaded.library, options);
        using namespace std::chrono_literals;
        hdnt::author::applyWaivers(said, loaded.files, {2026y / 11 / 22});
        return said;
    }

    static std::set<std::string> codesOf(const std::vector<Diagnostic>& said) {
        std::set<std::string> codes;
        for (const Diagnostic& one : said) codes.insert(one.code);
        return codes;
    }

private:
    fs::path folder_ = fs::path(testing::TempDir()) / ("lint" + std::to_string(getpid()));
};

// Names of examples are in no table of cells.
std::set<std::string> without(std::set<std::string> codes, const std::string& code) {
    codes.erase(code);
    return codes;
}

TEST_F(LintTest, ExamplesShowTheirRuleAndNoOther) {
    for (const DiagnosticRule& rule : hdnt::author::lintRules()) {
        if (rule.bad.empty() || rule.bad.starts_with("//")) continue;
        SCOPED_TRACE(rule.name);
        const std::string noise = rule.name == "unregistered-block" ? "" : "unregistered-block";
        EXPECT_EQ(without(codesOf(saidOf(written("bad.btl", rule.bad))), noise),
                  std::set<std::string>{std::string(rule.name)});
        for (const Diagnostic& one : saidOf(written("mended.btl", rule.mended)))
            EXPECT_EQ(one.code, noise) << one.message;
    }
}

TEST_F(LintTest, ExamplesOfTheConfigurationShowTheirRule) {
    setenv("HDNT_CONFIG_PATH", fs::path(written("none", "")).parent_path().c_str(), 1);
    const auto codes = [&](std::string_view text) {
        const std::string first(text.substr(3, text.find('\n') - 3));
        const fs::path file = written(first, text);
        const hdnt::Loaded common = hdnt::load(HDNT_DATA "/tessels");
        EXPECT_TRUE(common);
        const auto said = hdnt::author::lintConfiguration(*common.library, hdnt::author::ConfigScope::Whole);
        fs::remove(file);
        return codesOf(said);
    };
    for (const DiagnosticRule& rule : hdnt::author::lintRules()) {
        if (!rule.bad.starts_with("//")) continue;
        SCOPED_TRACE(rule.name);
        EXPECT_EQ(codes(rule.bad), std::set<std::string>{std::string(rule.name)});
        EXPECT_EQ(codes(rule.mended), std::set<std::string>());
    }
}

// The codes behind "//!" of each line.
std::multimap<int, std::string> expectedIn(const fs::path& path) {
    std::multimap<int, std::string> expected;
    std::ifstream file(path);
    int number = 1;
    for (std::string line; std::getline(file, line); ++number) {
        const std::size_t mark = line.find("//!");
        std::istringstream codes(mark == line.npos ? "" : line.substr(mark + 3));
        for (std::string code; codes >> code;) expected.emplace(number, code);
    }
    return expected;
}

bool holds(const std::multimap<int, std::string>& all, int line, const std::string& code) {
    const auto [first, last] = all.equal_range(line);
    return std::any_of(first, last, [&](const auto& one) { return one.second == code; });
}

TEST_F(LintTest, EachFaultOfAFaultyLibraryIsFoundWhereItIs) {
    const fs::path path = HDNT_AUTHOR_TESTS "/faulty.btl";
    std::multimap<int, std::string> found;
    for (const Diagnostic& one : saidOf(path)) {
        found.emplace(one.place.line, one.code);
        EXPECT_GT(one.place.column, 0) << one.message;
    }
    const std::multimap<int, std::string> expected = expectedIn(path);
    for (const auto& [line, code] : found) EXPECT_TRUE(holds(expected, line, code)) << line << ": " << code;
    for (const auto& [line, code] : expected) EXPECT_TRUE(holds(found, line, code)) << line << ": no " << code;
    EXPECT_EQ(found.size(), expected.size());
}

TEST_F(LintTest, ChecksWithoutTryingSayNothingOfOutcomes) {
    hdnt::LintOptions brief;
    brief.isThorough = false;
    const fs::path path = HDNT_AUTHOR_TESTS "/faulty.btl";
    const std::set<std::string> all = codesOf(saidOf(path));
    const std::set<std::string> few = codesOf(saidOf(path, brief));
    EXPECT_TRUE(std::includes(all.begin(), all.end(), few.begin(), few.end()));
    EXPECT_TRUE(few.contains("unknown-pin") && few.contains("value-refused"));
    EXPECT_FALSE(few.contains("two-drivers") || few.contains("similar-names"));
}

TEST_F(LintTest, NothingIsSaidOfAllSettingsWhenNotAllWereTried) {
    hdnt::LintOptions small;
    small.budget = 1;
    const std::set<std::string> codes = codesOf(saidOf(HDNT_AUTHOR_TESTS "/faulty.btl", small));
    EXPECT_TRUE(codes.contains("undriven-output"));
    for (const char* const code : {"branch-never-taken", "condition-always-true", "property-without-effect"})
        EXPECT_FALSE(codes.contains(code)) << code;
}

TEST_F(LintTest, MessagesTellTheSettings) {
    const fs::path several = HDNT_AUTHOR_TESTS "/faulty.btl";
    const fs::path one = written("one.btl", "library \"l\" { block \"ONE\" { pin \"A\" input; pin \"Q\" output; } "
                                            "mapsto { if (1 > 2) signal \"q\" : \"A\", \"Q\"; } }");
    const struct {
        fs::path path;
        std::string code, end;
    } cases[] = {{several, "mapping-problem", "; with RATE = 0 (1 of 3 settings)"},
                 {several, "two-drivers", "; with BOTH = true, SIDE = \"RIGHT\" (1 of 6 settings)"},
                 {several, "undriven-signal", "has no driver; in every setting"},
                 {several, "condition-always-true", "the condition holds in each of 7 settings"},
                 {one, "undriven-output", "nothing drives output Q of block \"ONE\""},
                 {one, "branch-never-taken", "the condition never holds in the only setting"}};
    for (const auto& each : cases) {
        const auto isIt = [&](const Diagnostic& one) {
            return one.code == each.code && one.message.ends_with(each.end);
        };
        EXPECT_TRUE(std::ranges::any_of(saidOf(each.path), isIt)) << each.end;
    }
}

TEST_F(LintTest, OfWhatNoTextDeclaresNoPlaceIsSaid) {
    HDNTLibrary library(nullptr);
    std::vector<HDNTDecl*> decls{new HDNTBlock("PASTURE", nullptr, nullptr, &library)};
    library.init("L", &decls);
    library.finalize();
    hdnt::LintOptions options;
    options.isThorough = false;
    const std::vector<Diagnostic> said = hdnt::lint(library, options);
    ASSERT_EQ(said.size(), 1U);
    EXPECT_EQ(said.front().code, "unregistered-block");
    EXPECT_EQ(describe(said.front().place), "(unknown file)");
}

// A map library that says something, but is whole, is judged like any other.
TEST_F(LintTest, WarningsOfMapLibrariesAreFindings) {
    const fs::path mapped =
        written("maplib/HOLD.btl", "library \"l\" {\nINCLUDE nowhere.btl\nblock \"HOLD\" { pin \"A\" input; } }");
    setenv("HDNT_DATA_PATH", (mapped.parent_path().parent_path().string() + ":" + HDNT_DATA).c_str(), 1);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    const fs::path own = written("own.btl", "library \"l\" { block \"HOLD\" { pin \"A\" input; } }");
    hdnt::LintOptions options;
    options.architectures = {"meadow"};
    EXPECT_TRUE(codesOf(saidOf(own, options)).contains("include-not-found"));
}

TEST_F(LintTest, ShippedDataIsClean) {
    for (const Diagnostic& one : saidOf(HDNT_DATA "/tessels")) ADD_FAILURE() << one.message << " [" << one.code << ']';
}

} // namespace
