// Words of enumerations against what the reader makes of them.
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <functional>

using support::inBlock;
using support::loaded;

namespace words = hdnt::words;

template <typename Table>
static void expectBothWays(const Table& table, int past) {
    for (const auto& [value, word] : table) {
        EXPECT_EQ(table.wordOf(value), word);
        EXPECT_EQ(word.data()[word.size()], '\0') << word;
        EXPECT_EQ(table.wordOf(*table.valueOf(word)), word);
    }
    using Value = decltype(table.begin()->value);
    for (const int value : {past, -1, 1000})
        EXPECT_EQ(table.wordOf(static_cast<Value>(value)).data(), nullptr) << value;
    for (const char* const word : {"", " ", "none", "INPUT", "data ", "Early", "bit"})
        EXPECT_FALSE(table.valueOf(word)) << word;
}

TEST(Words, LeadToTheirValuesAndBack) {
    expectBothWays(words::pinDirections, 4);
    expectBothWays(words::pinTypes, 10);
    expectBothWays(words::requiredValues, HDNT_PIN_NO_VALUE);
    expectBothWays(words::requiredValues, 7);
    expectBothWays(words::maturityLevels, 4);
    expectBothWays(words::propertyTypes, 4);
    expectBothWays(words::sections, 4);
    expectBothWays(words::operators, 15);
    EXPECT_EQ(words::operators.valueOf("-"), HDNTExpr::SUBTRACT);
}

// The value that stands in the model for a word of the text.
template <typename Table>
static void expectRead(const Table& table, const std::string& before, const std::string& after,
                       const std::function<int(const HDNTBlock&)>& valueIn) {
    for (const auto& [value, word] : table) {
        const auto library = loaded(inBlock(before + std::string(word) + after));
        ASSERT_TRUE(library) << word;
        EXPECT_EQ(valueIn(library->blocks()[0]), static_cast<int>(value)) << word;
    }
}

TEST(Words, AreThoseOfTheLanguage) {
    const support::Reports silent; // not every operator takes truth values
    const auto bus = [](const HDNTBlock& block) -> const HDNTBus& { return block.buses()[0]; };
    expectRead(words::pinDirections, "pin \"A\" ", ";", [&](const HDNTBlock& b) { return bus(b).getDirection(); });
    expectRead(words::pinTypes, "pin \"A\" input ", ";", [&](const HDNTBlock& b) { return bus(b).getType(); });
    expectRead(words::requiredValues, "pin \"A\" input ", ";",
               [&](const HDNTBlock& b) { return bus(b).getRequiredValue(); });
    expectRead(words::maturityLevels, "maturityLevel = ", ";", std::mem_fn(&HDNTBlock::getMaturityLevel));
    expectRead(words::sections, "} ", " { inst \"a\" \"SUB\";",
               [](const HDNTBlock& b) { return static_cast<int>(b.getAttachedNetlist()->section()); });
    for (const auto& [op, word] : words::operators) {
        if (op == HDNTExpr::NEGATE || op == HDNTExpr::NOT) continue; // the language has none of one operand
        const auto library = loaded(inBlock("} mapsto { if (true " + std::string(word) + " true) { }"));
        ASSERT_TRUE(library) << word;
        const HDNTIfStmt* const stmt = library->blocks()[0].getAttachedNetlist()->ifStmts().at(0);
        EXPECT_EQ(static_cast<const HDNTCompoundExpr*>(stmt->condition())->op(), op) << word;
    }
}

TEST(Words, OfRequiredOperationsAreTheSame) {
    for (const auto& [type, word] : words::pinTypes) EXPECT_EQ(HDNTPin::getTypeName(type), word);
    for (const int type : {-1, 10})
        EXPECT_THROW(HDNTPin::getTypeName(static_cast<HDNT_PIN_TYPE>(type)), HEXDataException) << type;
    for (const auto& [direction, word] : words::pinDirections) EXPECT_EQ(HDNTPin::getDirectionName(direction), word);
    for (const int direction : {-1, 4, 99})
        EXPECT_EQ(HDNTPin::getDirectionName(static_cast<HDNT_PIN_DIRECTION>(direction)), "internal") << direction;
    for (const auto& [type, word] : words::propertyTypes) EXPECT_EQ(HDNTProperty::getTypeName(type), word);
    for (const auto& [op, word] : words::operators)
        EXPECT_EQ(HDNTExpr::getStringOperator(op), op == HDNTExpr::NEGATE || op == HDNTExpr::NOT ? "" : word);
    EXPECT_STREQ(HDNTExpr::getStringOperator(static_cast<HDNTExpr::FOPERATOR>(15)), "");
}
