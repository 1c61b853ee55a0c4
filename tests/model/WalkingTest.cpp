// Walking and asking libraries that are const.
#include "tests/support/Library.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>

using support::inBlock;
using support::loaded;
using support::Texts;

using ConstBuses = hdnt::Nodes<const HDNTBus>;
static_assert(std::random_access_iterator<ConstBuses::iterator> && std::ranges::borrowed_range<ConstBuses>);
static_assert(std::is_same_v<decltype(std::declval<const HDNTBlock&>().pins()[0]), const HDNTPin&>);
static_assert(std::is_same_v<decltype(std::declval<HDNTBlock&>().pins()[0]), HDNTPin&>);
static_assert(std::is_same_v<decltype(std::declval<const HDNTBlock&>().findPin("A")), const HDNTPin*>);

static const char* const text = R"(library "L" {
function int half(int);
function bool isWide(string, int);
block "ADD" {
  pin "A[1:0]" input { property bool "HELD" { default = true } property bool "MET" { default = false } }
  pin "C" input clock;
  pin "S[0:2]" internal;
  property int "N" { default = 1 }
  property string "M" { default = "x" }
} mapsto { inst "a" "SUB"; }
block "SUB" { pin "O" output; }
})";

template <typename Nodes>
static Texts namesOf(const Nodes& nodes) {
    Texts names;
    std::transform(nodes.begin(), nodes.end(), std::back_inserter(names), [](const auto& node) {
        if constexpr (std::is_same_v<decltype(node), const HDNTPin&>) return node.getName(false);
        else return node.getName();
    });
    return names;
}

TEST(Walking, ShowsEverythingInItsOrder) {
    const std::unique_ptr<const HDNTLibrary> library = loaded(text);
    const HDNTBlock& add = library->blocks()[0];
    const HDNTBus& a = add.buses()[0];
    EXPECT_EQ(namesOf(library->blocks()), Texts({"ADD", "SUB"}));
    EXPECT_EQ(namesOf(library->functions()), Texts({"half", "isWide"}));
    EXPECT_EQ(namesOf(add.buses()), Texts({"A[1:0]", "C", "S[0:2]"}));
    EXPECT_EQ(namesOf(add.pins()), Texts({"A[1]", "A[0]", "C", "S[0]", "S[1]", "S[2]"}));
    EXPECT_EQ(namesOf(add.properties()), Texts({"N", "M"}));
    EXPECT_EQ(namesOf(add.buses()[2].pins()), Texts({"S[0]", "S[1]", "S[2]"}));
    EXPECT_EQ(namesOf(a.properties()), Texts({"HELD", "MET"}));
    EXPECT_EQ(namesOf(a.pins()[1].properties()), Texts({"HELD", "MET"}));
    EXPECT_EQ(namesOf(library->blocks()[1].properties()), Texts());

    const auto clock = std::ranges::find_if(add.pins(), [](const HDNTPin& p) { return p.getType() == HDNT_PIN_CLOCK; });
    EXPECT_EQ(clock - add.pins().begin(), 2);
    EXPECT_EQ(clock->getName(false), "C");
    const ConstBuses buses = add.buses();
    EXPECT_EQ(std::accumulate(buses.begin(), buses.end(), 0U,
                              [](size_t sum, const HDNTBus& bus) { return sum + bus.pinCount(); }),
              add.pins().size());
    EXPECT_EQ(std::prev(buses.end())->getBaseName(), "S");
    EXPECT_TRUE(std::ranges::none_of(library->blocks(), &HDNTBlock::isTest));
}

// A bus that could not be elaborated has no pins, and one outside of a block has none either.
TEST(Walking, WhatIsNotThereIsEmpty) {
    const support::Reports silent;
    const std::unique_ptr<const HDNTLibrary> library = loaded(inBlock("pin \"A[0:40000]\" input; pin \"B\" input;"));
    const HDNTBlock& block = library->blocks()[0];
    EXPECT_EQ(block.buses().size(), 2U);
    EXPECT_EQ(block.pins().size(), 1U);
    EXPECT_TRUE(block.buses()[0].pins().empty());
    EXPECT_EQ(&block.buses()[1].pins()[0], block.getPin(0));
    std::string name = "A[3:0]";
    HDNTBus alone(name, HDNT_PIN_INPUT, false, false, HDNT_PIN_DATA, HDNT_PIN_NO_VALUE, nullptr);
    alone.placePins(0);
    EXPECT_EQ(alone.pinCount(), 4U);
    EXPECT_TRUE(alone.pins().empty());
    EXPECT_TRUE(HDNTPin(0, 0).properties().empty());
    EXPECT_TRUE(hdnt::Nodes<HDNTBlock>().empty());
}

TEST(Walking, FindsByTextsOfAnyKind) {
    const auto parent = loaded(text);
    const std::unique_ptr<const HDNTLibrary> library =
        loaded("library \"M\" { function int half(bool); block \"MUL\" { test = false; } block \"SUB\" { test = "
               "false; } }",
               parent.get());
    const std::string_view query = "add C c[9] half n";
    const HDNTBlock* const add = library->findBlock(query.substr(0, 3));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add, &parent->blocks()[0]);
    EXPECT_EQ(library->findBlock("sub"), &library->blocks()[1]) << "the own one hides the parent's";
    EXPECT_EQ(library->findBlock("DIV"), nullptr);
    EXPECT_EQ(library->findFunction(query.substr(11, 4)), &library->functions()[0]);
    EXPECT_EQ(library->findFunction("isWide"), &std::as_const(*parent).functions()[1]);
    EXPECT_EQ(library->findFunction("iswide"), nullptr);
    EXPECT_EQ(add->findPin(query.substr(4, 1)), &add->pins()[2]);
    EXPECT_EQ(add->findPin("a[0]"), &add->pins()[1]);
    EXPECT_EQ(add->findPin(query.substr(6, 4)), nullptr);
    EXPECT_EQ(add->findProperty(query.substr(16)), &add->properties()[0]);
    EXPECT_EQ(add->findProperty(""), nullptr);
    for (const char* const bus : {"a", "A[1:0]"}) EXPECT_EQ(add->findBus(bus), &add->buses()[0]) << bus;
    for (const char* const bus : {"A[0:1]", "A[1:0", "A[1]", "[1:0]", "", "AB"})
        EXPECT_EQ(add->findBus(bus), nullptr) << bus;
    EXPECT_EQ(add->findBus("C"), &add->buses()[1]);
    EXPECT_EQ(add->buses()[0].findProperty("MET"), &add->buses()[0].properties()[1]);
    EXPECT_EQ(add->buses()[0].findProperty("met"), nullptr);
}

// Names of any length, at the length from which memory is asked for and beyond.
TEST(Walking, FindsLongNames) {
    for (const size_t length : {1, 15, 60, 63, 64, 65, 200}) {
        const std::string name(length, 'X');
        const auto library = loaded(inBlock("pin \"" + name + "[3:0]\" input;"));
        const HDNTBlock& block = library->blocks()[0];
        EXPECT_EQ(block.findPin(std::string(length, 'x') + "[2]"), &block.pins()[1]) << length;
        EXPECT_EQ(block.findBus(std::string(length, 'x')), &block.buses()[0]) << length;
        EXPECT_EQ(block.getBusByName(std::string(length, 'x') + "[3:0]", true), &block.buses()[0]) << length;
        EXPECT_EQ(block.findPin(name + "X[2]"), nullptr) << length;
    }
}

TEST(Walking, AConstLibraryIsVisitedAndWritten) {
    struct Names : HDNTVisitor {
        Texts texts;
        void visit(HDNTBlock* block) override { texts.push_back(block->getName()); }
        void visit(HDNTBlockInst* inst) override { texts.push_back(inst->instName()); }
    } names;
    const auto parent = loaded("library \"P\" { block \"MUL\" { test = false; } }");
    const auto owned = loaded(text, parent.get());
    const HDNTLibrary& library = *owned;
    library.acceptOwn(names);
    library.blocks()[1].acceptOwn(names);
    EXPECT_EQ(names.texts, Texts({"ADD", "a", "SUB", "SUB"}));

    const std::string source = support::writtenBy([&](FILE* out) { EXPECT_TRUE(library.printSource(out, nullptr)); });
    const auto again = loaded(source, parent.get());
    EXPECT_TRUE(HDNTComparison::compare(*again, library).empty()) << source;
    const HDNTProperty& property = library.blocks()[0].properties()[0];
    EXPECT_EQ(support::writtenBy([&](FILE* out) { property.print(2, out); }),
              support::writtenBy([&](FILE* out) { owned->blocks()[0].properties()[0].print(2, out); }));
}
