// What the writer promises, on the shipped data, the accepted files of the corpus, and libraries of random shape.
#include "tests/support/Library.h"
#include "tests/support/Written.h"
#include "tests/writer/LibraryGenerator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

class Laws : public testing::Test {
protected:
    void SetUp() override { HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true); }

    static std::string differences(HDNTLibrary& one, HDNTLibrary& other) {
        std::string text;
        for (const HDNTDifference& difference : HDNTComparison::compare(one, other))
            text += difference.path + ' ' + HDNTComparison::nameOf(difference.facet) + ": " + difference.oldValue +
                    " -> " + difference.newValue + '\n';
        return text;
    }

    static void expectLaws(HDNTLibrary& library) {
        const std::string text = support::source(library);
        const std::unique_ptr<HDNTLibrary> again = support::loaded(text, library.getParentLibrary());
        ASSERT_TRUE(again) << text;
        EXPECT_EQ(HDNTError::numErrors, 0) << text;
        EXPECT_EQ(differences(library, *again), "");
        EXPECT_EQ(support::source(*again), text);
        const std::string printed = support::printed(library);
        EXPECT_EQ(support::printed(library), printed);
        EXPECT_EQ(support::printed(*again), printed);
    }

    static HDNTLibrary& load(const std::string& path, HDNTLibrary* parent) {
        HDNTLibraryMgr::m_diagnostics = true;
        return *HDNTLibraryMgr::getLibraryMgr()->loadLibrary(path, parent);
    }
};

TEST_F(Laws, HoldForTheShippedData) {
    HDNTLibrary& common = load(HDNT_DATA "/tessels", nullptr);
    expectLaws(common);
    expectLaws(load(HDNT_DATA "/tessels.test", &common));
    expectLaws(load(HDNT_DATA "/simulation.btl", nullptr));
    ASSERT_GE(common.getNumTypeBlocks(false), 158U);
}

// Another seed, or a number of them from there: HDNT_TEST_SEED, HDNT_TEST_LIBRARIES.
TEST_F(Laws, HoldForGeneratedLibraries) {
    const auto number = [](const char* variable, const char* fallback) {
        const char* const value = std::getenv(variable);
        return std::strtoull(value ? value : fallback, nullptr, 10);
    };
    const uint64_t first = number("HDNT_TEST_SEED", "1");
    const uint64_t end = first + number("HDNT_TEST_LIBRARIES", "300");
    for (uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
        SCOPED_TRACE("HDNT_TEST_LIBRARIES=1 HDNT_TEST_SEED=" + std::to_string(seed));
        const std::string text = generator::libraryText(seed);
        const std::unique_ptr<HDNTLibrary> library = support::loaded(text);
        ASSERT_TRUE(library && HDNTError::numErrors == 0) << text;
        expectLaws(*library);
    }
}

std::vector<std::string> acceptedInputs() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(HDNT_CORPUS "/good"))
        if (entry.path().extension() == ".btl") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class CorpusLaws : public Laws, public testing::WithParamInterface<std::string> {};

TEST_P(CorpusLaws, Hold) {
    NtlAddSearchDirectory(HDNT_CORPUS "/include");
    expectLaws(load(HDNT_CORPUS "/good/" + GetParam() + ".btl", nullptr));
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusLaws, testing::ValuesIn(acceptedInputs()),
                         [](const auto& info) { return info.param; });

} // namespace
