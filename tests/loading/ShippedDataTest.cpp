// The data that every checkout runs on.
#include "tests/support/Capture.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

using support::Reports;
using support::Texts;

TEST(ShippedData, LoadsWithoutAReportAndIsRegistered) {
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableDiagnostics", true);
    HDNTLibrary& library = *HDNTLibraryMgr::getSimulationLibrary();
    EXPECT_EQ(HDNTBlock::s_unregisteredNames, Texts{});
    EXPECT_GE(library.getNumTypeBlocks(true), 90U);
    std::set<int> types;
    std::set<int> values;
    std::set<int> directions;
    std::set<int> maturities;
    for (size_t i = 0; i < library.getNumTypeBlocks(true); ++i) {
        const HDNTBlock& block = *library.getTypeBlock(i);
        maturities.insert(block.getMaturityLevel());
        for (size_t b = 0; b < block.getNumBuses(); ++b) {
            types.insert(block.getBus(b)->getType());
            values.insert(block.getBus(b)->getRequiredValue());
            directions.insert(block.getBus(b)->getDirection());
        }
    }
    EXPECT_EQ(std::tuple(types.size(), values.size(), directions.size(), maturities.size()),
              std::tuple(10U, 7U, 4U, 4U));
}

// The block that netlist examples are written for.
static std::string inMapping(const std::string& body) {
    return R"(library "L" {
function int intProperty(string); function double doubleProperty(string); function bool boolProperty(string);
function string stringProperty(string); function bool isConnected(string);
block "ADD_CHAIN_8" { pin "A[7:0]" input; pin "O" output; property int "WIDTH" { min = 0, max = 16 } }
mapsto {
)" + body + "} }\n";
}

// The fenced examples of the language reference: what is shown as right parses without a report, what is shown as wrong
// is reported.
TEST(ShippedData, ExamplesOfTheLanguageReference) {
    Reports reports;
    std::ifstream reference(HDNT_DOCS "/language.md");
    std::string line;
    size_t examples = 0;
    while (std::getline(reference, line)) {
        if (!line.starts_with("```ntl")) continue;
        const std::string kind = line.substr(3);
        std::string text;
        while (std::getline(reference, line) && line != "```") text += line + "\n";
        if (kind == "ntl-block") text = support::inBlock(text);
        if (kind == "ntl-netlist") text = inMapping(text);
        if (kind == "ntl-library") text = "library \"L\" {\n" + text + "}\n";
        ++examples;
        support::printedBy([&] {
            const auto library = std::make_unique<HDNTLibrary>(nullptr);
            HDNTLibraryMgr::m_diagnostics = true;
            if (library->parseString(text) != 0) return;
            library->finalize();
            library->check();
        });
        const Texts found = reports.take();
        EXPECT_EQ(found.empty() && reports.notices.empty(), kind != "ntl-error")
            << kind << "\n"
            << text << (found.empty() ? "" : found.front());
        reports.notices.clear();
    }
    EXPECT_GE(examples, 45U);
}

// Of each limit, by default and for files of someone else, as the page has them.
TEST(ShippedData, LimitsAreThoseOfTheirPage) {
    std::ifstream page(HDNT_DOCS "/limits.md");
    const HDNTLimits usual;
    const HDNTLimits tight = HDNTLimits::forUntrusted();
    const auto written = [](std::string text) { // "64 MiB", "1,048,576", "none", "yes"
        std::erase(text, ',');
        const std::size_t shift = text.ends_with(" GiB") ? 30 : text.ends_with(" MiB") ? 20 : 0;
        return text == "yes" ? 1 : std::strtoull(text.c_str(), nullptr, 10) << shift;
    };
    std::size_t numLimits = 0;
    const auto expectRow = [&](const std::string& row, const char* name, auto member) {
        const std::string begin = std::string("| `") + name + "` | ";
        if (!row.starts_with(begin)) return;
        const std::size_t middle = row.find(" | ", begin.size());
        const std::string untrusted = row.substr(middle + 3, row.find(" | ", middle + 3) - middle - 3);
        EXPECT_EQ(written(row.substr(begin.size(), middle - begin.size())), static_cast<std::size_t>(usual.*member))
            << row;
        EXPECT_EQ(written(untrusted), static_cast<std::size_t>(tight.*member)) << row;
        ++numLimits;
    };
    for (std::string row;
         std::getline(page, row) && row != "What is at a limit is read as if there were none. What is above it:";) {
        expectRow(row, "includeDepth", &HDNTLimits::includeDepth);
        expectRow(row, "inputBytes", &HDNTLimits::inputBytes);
        expectRow(row, "includedBytes", &HDNTLimits::includedBytes);
        expectRow(row, "expansionRatio", &HDNTLimits::expansionRatio);
        expectRow(row, "expansionFloor", &HDNTLimits::expansionFloor);
        expectRow(row, "rangeElements", &HDNTLimits::rangeElements);
        expectRow(row, "bitWidth", &HDNTLimits::bitWidth);
        expectRow(row, "precision", &HDNTLimits::precision);
        expectRow(row, "parserDepth", &HDNTLimits::parserDepth);
        expectRow(row, "expansionInstances", &HDNTLimits::expansionInstances);
        expectRow(row, "diagnostics", &HDNTLimits::diagnostics);
        expectRow(row, "seconds", &HDNTLimits::seconds);
        expectRow(row, "ownFolderOnly", &HDNTLimits::ownFolderOnly);
    }
    EXPECT_EQ(numLimits, 13U);
}
