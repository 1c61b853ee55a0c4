// Every mapping of the shipped data expands, and each of its branches is taken for some values.
#include "tests/support/Library.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

using nlohmann::json;

namespace {

// An if statement and the way it went, by its place.
using Outcome = std::tuple<std::string, int, int, bool>;

Outcome outcome(const yyltype& place, bool taken) {
    return {place.fileName ? place.fileName : "", place.fileLine, place.first_column, taken};
}

class Ifs : public HDNTVisitor {
public:
    using HDNTVisitor::visit;
    void visit(HDNTIfStmt* stmt) override {
        for (const bool taken : {true, false}) outcomes.insert(outcome(*stmt->getLocation(), taken));
    }
    std::set<Outcome> outcomes;
};

HDNTExpansion::Value valueOf(const json& value) {
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_number_integer()) return value.get<int>();
    if (value.is_number()) return value.get<double>();
    return value.get<std::string>();
}

// Expands with the values of an entry and notes the outcomes met.
void expand(HDNTBlock& block, const json& entry, std::set<Outcome>& met) {
    HDNTExpansion expansion(block, entry.value("arch", ""));
    std::string reason;
    const json set = entry.value("set", json::object());
    const json connect = entry.value("connect", json::array());
    for (const auto& [name, value] : set.items())
        EXPECT_TRUE(expansion.setProperty(name, valueOf(value), reason)) << block.getName() << ": " << reason;
    for (const auto& pin : connect)
        EXPECT_TRUE(expansion.connect(pin.get<std::string>(), reason)) << block.getName() << ": " << reason;
    EXPECT_TRUE(expansion.expand(true)) << block.getName();
    for (const auto& problem : expansion.problems()) ADD_FAILURE() << block.getName() << ": " << problem.message;
    for (const auto& branch : expansion.levels().at(0).branches)
        met.insert(outcome(branch.origin.location, branch.taken));
}

} // namespace

TEST(ShippedMappings, EveryBranchIsTaken) {
    HPAParamMgr::getParamMgr()->setValueAsBool("arch.enableTestFeatures", true);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableDiagnostics", true);
    HPAParamMgr::getParamMgr()->setValueAsBool("ntl.enableMapLib", true);
    HDNTLibraryMgr::m_archEnumInfo = 1;
    HDNTLibrary& library = *HDNTLibraryMgr::getCommonLibrary();
    std::ifstream file(HDNT_TEST_BRANCHES);
    const json entries = json::parse(file);
    size_t mapped = 0;
    std::set<HDNTNetlist::Section> sections;
    for (size_t i = 0; i < library.getNumTypeBlocks(true); ++i) {
        HDNTBlock& block = *library.getTypeBlock(i);
        const json values = entries.value(block.getName(), json::array());
        std::set<Outcome> met;
        Ifs ifs;
        for (const json& entry : values) {
            expand(block, entry, met);
            block.getNetlist(entry.value("arch", ""))->accept(ifs);
        }
        const HDNTNetlist* const own = block.getAttachedNetlist();
        if (own && values.empty()) {
            expand(block, json::object(), met);
            block.getNetlist()->accept(ifs);
        }
        EXPECT_EQ(met, ifs.outcomes) << block.getName();
        if (!own) continue;
        ++mapped;
        sections.insert(own->section());
        if (values.empty() || !values[0].contains("arch")) expand(block, json::object(), met);
    }
    EXPECT_GE(mapped, 40U);
    EXPECT_EQ(sections.size(), 4U);
    EXPECT_TRUE(library.getDroppedMappings().empty());
}
