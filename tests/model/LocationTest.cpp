// Where a node was declared: kept small, and a record of its own for whoever asks.
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <climits>
#include <latch>
#include <memory>
#include <thread>

namespace {

auto fieldsOf(const yyltype& location) {
    return std::tuple(location.fileName, location.fileLine, location.first_line, location.first_column,
                      location.last_line, location.last_column, location.storeOffset);
}

const yyltype locations[] = {
    {"f", 1, 2, 3, 0, 4},
    {"f", 7, 8, 65536, 0, 70000, 5},
    {nullptr, 1, 1, 1, 0, 0, -3},
    {"g", 0, 0, 0, 0, 0},
    {"f", 9, 9, 9, 11, 2},
    {nullptr, 1, 1, 10, 0, 3},
    // Around the greatest column and length that are packed.
    {"f", 1, 1, (1 << 24) - 1, 0, 1 << 24},
    {"f", 1, 1, 1 << 24, 0, (1 << 24) + 5},
    {"f", 1, 1, 1, 0, 1 << 20},
    {"f", 1, 1, 1, 0, (1 << 20) + 1},
    {"f", 1, 1, 2000000, 0, 2000000 - (1 << 20)},
    {"f", 1, 1, 2000000, 0, 1999999 - (1 << 20)},
    {"f", 1, 1, INT_MAX, 0, INT_MIN},
    {"f", 1, 1, -5, 0, 5},
    {"f", INT_MIN, INT_MAX, 1, 0, 2, INT_MAX},
    {"f", INT_MAX, INT_MIN, 1, 0, 2, INT_MIN},
};

TEST(Location, AllFieldsAreKept) {
    for (const yyltype& location : locations) {
        HDNTNode node;
        EXPECT_FALSE(node.hasLocation() || node.copyOfLocation() || node.getLocation());
        node.setLocation(location);
        EXPECT_TRUE(node.hasLocation());
        EXPECT_EQ(fieldsOf(node.copyOfLocation().value()), fieldsOf(location));
        const HDNTNode before(node);
        EXPECT_EQ(fieldsOf(*node.getLocation()), fieldsOf(location));
        const HDNTNode after(node);
        for (const HDNTNode* copy : {&before, &after}) {
            EXPECT_NE(copy->getLocation(), node.getLocation());
            EXPECT_EQ(fieldsOf(*copy->getLocation()), fieldsOf(location));
        }
    }
}

TEST(Location, TheRecordIsTheNodes) {
    for (const yyltype& location : locations) {
        for (const yyltype& next : locations) {
            HDNTNode node;
            node.setLocation(location);
            HDNTNode silent(node); // is never asked for its record
            yyltype* const record = node.getLocation();
            node.setLocation(next);
            silent.setLocation(next);
            EXPECT_EQ(fieldsOf(*record), fieldsOf(next));
            EXPECT_EQ(fieldsOf(silent.copyOfLocation().value()), fieldsOf(next));
            record->first_line = 12345;
            EXPECT_EQ(node.getLocation(), record);
            EXPECT_EQ(node.copyOfLocation()->first_line, 12345);
            EXPECT_EQ(HDNTNode(node).getLocation()->first_line, 12345);
            silent.takeLocation(node);
            EXPECT_EQ(silent.copyOfLocation()->first_line, 12345);
            node.takeLocation(HDNTNode());
            node.takeLocation(silent);
            EXPECT_EQ(node.getLocation(), record);
        }
    }
}

// More files and stretches of text than packed places can tell apart.
TEST(Location, AnyNumberOfFiles) {
    constexpr int count = 300000;
    const auto nodes = std::make_unique<HDNTNode[]>(count);
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < count; ++i) nodes[i].setLocation({"f", 1, 2, 3, 0, 4, i});
    for (int i = 0; i < count; ++i) ASSERT_EQ(nodes[i].copyOfLocation()->storeOffset, i);
    HDNTNode late;
    late.setLocation({"f", 1, 2, 3, 0, 4, 7});
    EXPECT_EQ(late.getLocation()->storeOffset, 7);
}

TEST(Location, ThreadsGetOneRecord) {
    constexpr size_t count = 8;
    const auto library = support::loaded("library \"L\" { block \"ADD\" { pin \"A[999:0]\" input; } }");
    const HDNTBlock& block = *library->getTypeBlock(0);
    std::vector<std::vector<const yyltype*>> records(count);
    std::latch start(count);
    std::vector<std::thread> threads;
    for (auto& seen : records)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (const HDNTPin& pin : block.pins()) {
                EXPECT_EQ(pin.copyOfLocation()->first_line, 1);
                seen.push_back(pin.getLocation());
            }
        });
    for (std::thread& thread : threads) thread.join();
    for (const auto& seen : records) EXPECT_EQ(seen, records.front());
    EXPECT_EQ(fieldsOf(*block.getPin(500)->getLocation()), fieldsOf(*block.buses()[0].getLocation()));
}

} // namespace
