#include "hdnt/frontend/Scanner.h"
#include "tests/platform/TempDir.h"
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>
#include <libconfig.h++>

#include <cerrno>
#include <filesystem>
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

// The library knows its data by its own place, so one loaded from a place without data has none. A threadsafe death
// test starts the program anew.
TEST_F(ManagerTest, MissingDataIsNamedAndMissingConfigurationIsEmpty) {
    const std::filesystem::path copied = HDNT_LIBRARY;
    std::filesystem::copy_file(copied, dir.path(copied.filename()));
    setenv("LD_LIBRARY_PATH", dir.path().c_str(), 1);
    setenv("HDNT_DATA_PATH", "/none", 1);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto describe = [] {
        const HDNTLibrary library(nullptr);
        std::vector<std::string> drivers;
        library.getMasterDriverTypes(drivers);
        const int entries = library.getDescConfig()->getLibConfig().getRoot().getLength();
        throw HEXDataException(std::to_string(drivers.size()) + " and " + std::to_string(entries));
    };
    const struct {
        std::function<void()> question;
        const char* answer;
    } cases[] = {
        {[] { HDNTLibraryMgr::getCommonLibrary(); }, "HDNTLibraryMgr - Missing data file: tessels\\."},
        {[] { HDNTLibraryMgr::getLibrary("", nullptr); }, "HDNTLibraryMgr - Missing data file: tessels\\."},
        {[] { HDNTLibraryMgr::getDataFileName(true); }, "HDNTLibraryMgr - Missing data file: simulation\\.btl\\."},
        {describe, "0 and 0\\."},
    };
    for (const auto& [question, answer] : cases)
        EXPECT_EXIT(
            {
                std::filesystem::remove_all(dir.path());
                std::cerr << failureOf(question) << HDNTLibraryMgr::getTestDataFileName() << "." << std::endl;
                std::_Exit(0);
            },
            testing::ExitedWithCode(0), answer);
}

TEST_F(ManagerTest, WhereNothingIsTheParentIsTaken) {
    HDNTLibraryMgr::releaseSimulationLibrary();
    const std::string none = dir.path("none");
    EXPECT_EQ(failureOf([&] { manager.loadLibrary(none, nullptr); }), "No such ntl library file: " + none);
    EXPECT_EQ(failureOf([&] { HDNTLibraryMgr::getLibrary(none, nullptr); }), "No such ntl library file: " + none);
    HDNTLibrary parent(nullptr);
    HDNTLibrary other(nullptr);
    HDNTError::numErrors = 1;
    EXPECT_EQ(HDNTLibraryMgr::getLibrary(none, &parent), &parent);
    EXPECT_EQ(HDNTLibraryMgr::getLibrary(none, &other), &parent);
    EXPECT_FALSE(HDNTLibraryMgr::isPrimitive("none"));
}

// The test extension lies over the common data and the simulation library over both, whether data is a file or a
// folder, and after a release everything is loaded again.
TEST_F(ManagerTest, TestExtension) {
    const struct {
        bool on;
        bool there;
        bool folder;
        size_t blocks;
    } cases[] = {{false, true, true, 1}, {true, false, false, 1}, {true, true, false, 2}, {true, true, true, 2}};
    for (const auto& [on, there, folder, blocks] : cases) {
        const TempDir data;
        setenv("HDNT_DATA_PATH", data.path().c_str(), 1);
        HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", on);
        const auto put = [&data, folder = folder](const std::string& name, const std::string& block) {
            if (folder) data.makeDir(name);
            data.write(folder ? name + "/a.btl" : name, "library \"L\" { block \"" + block + "\" { } }");
        };
        put("tessels", "A");
        // Without it the search would go on to the data of the library itself.
        if (there) put("tessels.test", "T");
        else data.makeDir("tessels.test");
        data.write("simulation.btl", "library \"S\" { block \"S\" { } }");
        for (int round = 0; round < 2; ++round) {
            HDNTLibrary* const simulation = HDNTLibraryMgr::getSimulationLibrary();
            HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
            EXPECT_EQ(simulation->getParentLibrary(), common);
            EXPECT_EQ(HDNTLibraryMgr::getSimulationLibrary(), simulation);
            EXPECT_EQ(common->getParentLibrary() != nullptr, on);
            EXPECT_EQ(common->getNumTypeBlocks(true), blocks) << on << there << folder;
            HDNTLibraryMgr::releaseSimulationLibrary();
            EXPECT_EQ(HDNTLibraryMgr::getCommonLibrary(), common);
            EXPECT_EQ(HDNTLibraryMgr::getSimulationLibrary()->getTypeBlock(0)->getName(), "S");
            HDNTLibraryMgr::releaseLibraries();
        }
    }
}

TEST_F(ManagerTest, SwitchesAreReadAtEveryCreation) {
    for (const bool on : {true, false, true}) {
        for (const char* name : {"ntl.enableDiagnostics", "ntl.retargetAllCells"})
            HPAParamMgr::getParamMgr()->setValueAsBool(name, on);
        EXPECT_EQ(manager.createLibrary(nullptr)->getParentLibrary(), nullptr);
        EXPECT_EQ(HDNTLibraryMgr::m_diagnostics, on);
        EXPECT_EQ(HDNTLibraryMgr::m_retargetEvalMode, on);
    }
    const std::string path = write("a.btl", "block \"A\" { pin \"X\" output tieLow; }");
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableDiagnostics", false);
    EXPECT_EQ(manager.loadLibrary(path, nullptr)->getNumTypeBlocks(false), 1U);
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

// What is thrown in the middle passes through, nothing half-built stays, and the same call works once the cause is
// gone.
TEST_F(ManagerTest, ExceptionsLeaveNoLibraryBehind) {
    dir.makeDir("tessels");
    dir.makeDir("tessels.test");
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    const struct {
        const char* file;
        const char* bad;
        const char* mended;
        const char* message;
    } cases[] = {
        {"tessels/a.btl", "block \"A\" { pin \"I\" internal; pin \"A\" input; }", "block \"A\" { pin \"A\" input; }",
         "Internal pins must be last in list, in tessel A"},
        {"tessels.test/a.btl", "block \"T\" { property bool \"P\" true; pin \"I\" internal; pin \"A\" input; }",
         "block \"T\" { property bool \"P\" true; }", "Internal pins must be last in list, in tessel T"},
    };
    for (const auto& [file, bad, mended, message] : cases) {
        write(file, bad);
        for (int attempt = 0; attempt < 2; ++attempt)
            EXPECT_EQ(failureOf([] { HDNTLibraryMgr::getCommonLibrary(); }), message);
        EXPECT_EQ(myTopLib, nullptr);
        write(file, mended);
    }
    // The test extension's text is the first to need a description.
    const std::string path = dir.write("tessel.desc.cfg", "T = ;");
    EXPECT_NE(failureOf([] { HDNTLibraryMgr::getSimulationLibrary(); }).find(path + ":1: "), std::string::npos);
    EXPECT_EQ(myTopLib, nullptr);
    dir.write("tessel.desc.cfg", "T = { P = \"text\"; };");
    const HDNTLibrary& library = *HDNTLibraryMgr::getCommonLibrary();
    EXPECT_EQ(library.getTypeBlock(0)->getProperty(0)->getAttrSpec()->getDescription(), "text");
    EXPECT_EQ(library.getNumTypeBlocks(true), 2U);
}

// A thread that holds a lock which loading takes would wait for itself.
TEST_F(ManagerTest, LockFailuresPassThroughALoad) {
    const std::string path = write("a.btl", "block \"A\" { property bool \"P\" true; }");
    HDNTLibrary* const root = manager.createLibrary(nullptr);
    for (HCTMutex* const mutex : {&HDNTCellviewLib::m_initializeValuesMutex, &root->getDescConfig()->mutex()}) {
        HCTLock held(*mutex);
        int code = 0;
        try {
            manager.loadLibrary(path, root);
        } catch (const HCTThreadException& e) {
            code = e.getCode();
        }
        EXPECT_EQ(code, EDEADLK);
        EXPECT_EQ(myTopLib, nullptr);
        held.unlock();
        EXPECT_EQ(manager.loadLibrary(path, root)->getNumTypeBlocks(false), 1U);
    }
    EXPECT_EQ(HDNTError::numErrors, 0);
    manager.deleteLibraries();
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
