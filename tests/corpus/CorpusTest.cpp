#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTLibrary.h"
#include "tests/support/Capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path corpus = HDNT_CORPUS;

std::vector<std::string> inputs(const char* folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(corpus / folder))
        if (entry.path().extension() == ".btl") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << "cannot read " << path;
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string replaced(std::string text, const std::string& mark, const std::string& by) {
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + by.size()))
        text.replace(at, mark.size(), by);
    return text;
}

struct Outcome {
    int result = -1;
    int errors = 0;
    std::string reports; ///< standard error
};

/// Reads the file as the only library of the process, with all checks.
Outcome load(const fs::path& path) {
    NtlAddSearchDirectory((corpus / "include").string());
    HDNTLibraryMgr::m_diagnostics = true;
    HDNTLibrary library(nullptr);
    Outcome outcome;
    const support::Printed printed = support::printedBy([&] {
        outcome.result = library.parseFile(path.string());
        if (outcome.result != 0) return;
        library.finalize();
        library.check();
    });
    outcome.reports = printed.err;
    outcome.errors = HDNTError::numErrors;
    return outcome;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) { return info.param; }

class GoodInput : public testing::TestWithParam<std::string> {};
class BadInput : public testing::TestWithParam<std::string> {};

TEST_P(GoodInput, IsReadWithoutAReport) {
    const Outcome outcome = load(corpus / "good" / (GetParam() + ".btl"));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.errors, 0);
    EXPECT_EQ(outcome.reports, "");
}

TEST_P(BadInput, GivesExactlyItsReport) {
    const fs::path path = corpus / "bad" / (GetParam() + ".btl");
    std::string expected = contents(corpus / "bad" / (GetParam() + ".expect"));
    ASSERT_FALSE(expected.empty());
    expected = replaced(expected, "@FILE@", path.string());
    expected = replaced(expected, "@INCLUDE@", (corpus / "include").string());
    const Outcome outcome = load(path);
    EXPECT_EQ(outcome.reports, expected);
    EXPECT_EQ(outcome.result != 0, expected.find("*** syntax error\n") != std::string::npos);
    EXPECT_GT(outcome.errors, 0);
}

INSTANTIATE_TEST_SUITE_P(Corpus, GoodInput, testing::ValuesIn(inputs("good")), nameOf);
INSTANTIATE_TEST_SUITE_P(Corpus, BadInput, testing::ValuesIn(inputs("bad")), nameOf);

} // namespace
