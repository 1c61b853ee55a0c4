#include "tests/platform/TempDir.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

using support::Reports;
using support::Texts;

class ManagerTest : public testing::Test {
protected:
    ManagerTest() {
        setenv("HDNT_DATA_PATH", dir.path().c_str(), 1);
        setenv("HDNT_CONFIG_PATH", dir.path().c_str(), 1);
        setenv("HDNT_PARAM_ntl_enableDiagnostics", "1", 1);
    }
    std::string write(const std::string& name, const std::string& blocks) {
        return dir.write(name, "library \"L\" {\n" + blocks + "\n}\n");
    }
    static std::string failureOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const HEXDataException& e) {
            return e.what();
        }
        return "";
    }
    const TempDir dir;
    HDNTLibraryMgr& manager = *HDNTLibraryMgr::getLibraryMgr();
};

TEST_F(ManagerTest, KnownLibrariesAreLoadedOnceAndChained) {
    dir.makeDir("tessels");
    dir.makeDir("tessels.test");
    write("tessels/a.btl", "block \"A\" { }");
    write("tessels.test/t.btl", "block \"T\" { test = true; }");
    write("simulation.btl", "block \"S\" { }");
    manager.getLibrary("", nullptr);
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
    EXPECT_EQ(HDNTLibraryMgr::getCommonLibrary(), common);
    ASSERT_NE(common->getParentLibrary(), nullptr);
    EXPECT_EQ(HDNTLibraryMgr::getSimulationLibrary()->getParentLibrary(), common);
    EXPECT_EQ(HDNTLibraryMgr::getSimulationLibrary()->getNumTypeBlocks(true), 3U);
    EXPECT_EQ(manager.getLibrary("", nullptr)->getNumTypeBlocks(true), 1U);
    HDNTLibraryMgr::releaseSimulationLibrary();
    HDNTLibraryMgr::releaseLibraries();
    EXPECT_EQ(HDNTLibraryMgr::getCommonLibrary()->getNumTypeBlocks(true), 2U);
}

TEST_F(ManagerTest, MissingData) {
    HDNTLibraryMgr::releaseSimulationLibrary();
    setenv("HDNT_DATA_PATH", "/none", 1);
    const std::string none = dir.path("none");
    EXPECT_EQ(failureOf([&] { manager.loadLibrary(none, nullptr); }), "No such ntl library file: " + none);
    HDNTLibrary parent(nullptr);
    EXPECT_EQ(HDNTLibraryMgr::getLibrary(none, &parent), &parent);
    EXPECT_EQ(HDNTLibraryMgr::getTestDataFileName().ends_with("tessels.test"), true);
    EXPECT_FALSE(HDNTLibraryMgr::isPrimitive("none"));
}

TEST_F(ManagerTest, FoldersAreOneLibraryReadInNameOrder) {
    write("c.btl", "block \"A\" { pin \"P\" input; }");
    write("a.btl", "block \"B\" { }");
    write("b.txt", "oops");
    const HDNTLibrary& library = *manager.loadLibrary(dir.path(), nullptr);
    EXPECT_EQ(library.getTypeBlock(0)->getName(), "B");
    EXPECT_EQ(library.getNumTypeBlocks(true), 2U);
    EXPECT_NE(library.getTypeBlockByName("a", false), nullptr);
}

// Reports of finalize and check come when all files were read, and quote the line of the right one.
TEST_F(ManagerTest, ReportsOfAFolderQuoteTheRightFile) {
    write("a.btl", "block \"A\" {\npin \"X\" output tieLow;\n}");
    const std::string b = write("b.btl", "block \"B\" {\npin \"Y\" output tieLow;\n}");
    std::string failure;
    const std::string err =
        support::printedBy([&] { failure = failureOf([&] { manager.loadLibrary(dir.path(), nullptr); }); }).err;
    EXPECT_EQ(failure, "Invalid ntl library file: " + dir.path());
    EXPECT_TRUE(err.ends_with("\n*** Error line 3.\nfile: " + b + " line: 3.\npin \"Y\" output tieLow;\n" +
                              "^^^^^^^^^^^^^^^^^^^^^^\n*** Invalid tieoff of output pin \"Y\"\n\n"))
        << err;
}

TEST_F(ManagerTest, AFileThatFailsStopsNeitherTheOthersNorLaterLoadsOfTheirOwn) {
    Reports reports;
    write("a.btl", "oops");
    write("b.btl", "block \"B\" { pin \"X\" output tieLow; } #");
    support::printedBy([&] { failureOf([&] { manager.loadLibrary(dir.path(), nullptr); }); });
    EXPECT_EQ(reports.take(), (Texts{"2:1-4 syntax error", "2:38-38 Unrecognized char: '#'"}));
    const std::string good = dir.makeDir("good");
    write("good/a.btl", "");
    EXPECT_EQ(failureOf([&] { manager.loadLibrary(good, nullptr); }), "Invalid ntl library file: " + good);
    HDNTError::numErrors = 0;
    EXPECT_NE(manager.loadLibrary(good, nullptr), nullptr);
}

TEST_F(ManagerTest, ExceptionsLeaveNoLibraryBehind) {
    const std::string path = write("a.btl", "block \"A\" { pin \"I\" internal; pin \"A\" input; }");
    EXPECT_EQ(failureOf([&] { manager.loadLibrary(path, nullptr); }),
              "Internal pins must be last in list, in tessel A");
    EXPECT_EQ(myTopLib, nullptr);
    dir.write("tessel.desc.cfg", "A = ;");
    write("a.btl", "block \"A\" { property bool \"P\" true; }");
    EXPECT_NE(failureOf([&] { manager.loadLibrary(path, nullptr); }).find("tessel.desc.cfg"), std::string::npos);
    dir.write("tessel.desc.cfg", "A = { P = \"text\"; };");
    const HDNTLibrary& library = *manager.loadLibrary(path, nullptr);
    EXPECT_EQ(library.getTypeBlock(0)->getProperty(0)->getAttrSpec()->getDescription(), "text");
}

TEST_F(ManagerTest, TheSimulationEntryMayBeTheCommonLibrary) {
    dir.makeDir("tessels");
    write("simulation.btl", "");
    HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
    const std::string none = dir.path("none");
    EXPECT_EQ(HDNTLibraryMgr::getLibrary(none, common), common);
    EXPECT_EQ(HDNTLibraryMgr::getLibrary("simulation", common), common);
    HDNTLibraryMgr::releaseSimulationLibrary();
    EXPECT_NE(HDNTLibraryMgr::getLibrary(none, HDNTLibraryMgr::getCommonLibrary()), nullptr);
}

TEST(Cellviews, TableHasItsForm) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(HDNTCellviewLib::getGlobal);
    for (std::thread& thread : threads) thread.join();
    const HDNTCellviewLib& registry = *HDNTCellviewLib::getGlobal();
    const auto& all = registry.allTesselEnums();
    EXPECT_EQ(all.size(), 1695U);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()) && std::adjacent_find(all.begin(), all.end()) == all.end());
    EXPECT_EQ(all.back(), HDNTCellviewLib::UNKNOWN);
    EXPECT_EQ(HDNTCellviewLib::MAX, 1728);
    EXPECT_EQ(registry.getTypeToNameMap().size(), 1695U);
    size_t tests = 0;
    size_t besideBase = 0;
    for (const HDNTCellviewLib::Type type : all) {
        const std::string& name = registry.getName(type);
        if (type == HDNTCellviewLib::UNKNOWN) continue;
        EXPECT_EQ(registry.getType(name), type);
        if (!name.ends_with("_TEST")) continue;
        ++tests;
        besideBase += registry.getType(name.substr(0, name.size() - 5)) != HDNTCellviewLib::UNKNOWN;
    }
    EXPECT_EQ(tests, 294U);
    EXPECT_EQ(besideBase, 199U);
    for (const char* name : {"", "UNKNOWN", "add", "NOT_IN_TABLE"}) EXPECT_EQ(registry.getType(name), 4000) << name;
    EXPECT_EQ(registry.getName(HDNTCellviewLib::UNKNOWN), "UNKNOWN");
}

TEST(Cellviews, AnUnusedValueLeavesStandardOutputBad) {
    const std::string out =
        support::printedBy([] {
            EXPECT_THROW(HDNTCellviewLib::getGlobal()->getName(static_cast<HDNTCellviewLib::Type>(3999)),
                         HEXInternalException);
        }).out;
    EXPECT_EQ(out, "Error: HDNTCellviewLib: Not able to find the type ");
    EXPECT_TRUE(std::cout.bad());
    std::ostringstream stream;
    stream << static_cast<HDNTCellviewLib::Type>(0) << static_cast<HDNTCellviewLib::Type>(-1);
    EXPECT_TRUE(stream.bad());
    EXPECT_FALSE(stream.str().empty());
}
