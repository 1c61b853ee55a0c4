// How programs may allocate model objects.
#include "hdnt/platform/SlabMemory.internal.h"
#include "tests/support/Library.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

// Else the general heap, whose leaks the sanitizer finds.
constexpr bool ownMemory = !hdnt::platform::usesGeneralHeap;

template <typename... Classes>
constexpr bool haveEveryForm = (requires(void* address) {
    Classes::operator new(1U);
    Classes::operator new(1U, std::nothrow);
    Classes::operator new(1U, address);
    Classes::operator delete(address, std::nothrow);
    Classes::operator delete(address, address);
} && ...);
static_assert(
    haveEveryForm<HDNTNode, HDNTLibrary, HDNTBlock, HDNTFunctionDecl, HDNTBus, HDNTPin, HDNTProperty, HDNTInternalFlag,
                  HDNTTestFlag, HDNTMaturityLevel, HDNTPrimGroup, HDNTNetlist, HDNTBlockPinName, HDNTBlockInst,
                  HDNTConnect, HDNTSignal, HDNTSigList, HDNTAssignBlockProperty, HDNTAssignPinProperty, HDNTIfStmt,
                  HDNTStmtBlock, HDNTFunctionCall, HDNTCompoundExpr, HDNTIntConstant, HDNTDoubleConstant,
                  HDNTBoolConstant, HDNTStringConstant>);

TEST(NodeMemory, WithoutExceptions) {
    HDNTBlock* const block = new (std::nothrow) HDNTBlock("ADD", nullptr, nullptr, nullptr);
    HDNTNode* const constant = new (std::nothrow) HDNTIntConstant(7);
    EXPECT_EQ(block->getName(), "ADD");
    EXPECT_EQ(nodeCast<HDNTIntConstant>(constant)->getValue(), 7);
    delete block;
    delete constant;
    if (ownMemory) {
        EXPECT_EQ(HDNTNode::operator new (std::size_t{1} << 46, std::nothrow), nullptr);
    }
    HDNTNode::operator delete(nullptr, std::nothrow);
}

TEST(NodeMemory, AtAGivenAddress) {
    alignas(HDNTIntConstant) char memory[sizeof(HDNTIntConstant)];
    auto* const constant = new (memory) HDNTIntConstant(3);
    EXPECT_EQ(static_cast<void*>(constant), memory);
    EXPECT_EQ(constant->getValue(), 3);
    constant->~HDNTIntConstant();
}

// A node of some size whose constructor fails, after it has noted where it was.
template <std::size_t Bytes>
struct Failing : HDNTNode {
    explicit Failing(std::set<const void*>& places) {
        places.insert(this);
        throw std::runtime_error("no");
    }
    char more[Bytes];
};

template <std::size_t Bytes>
std::size_t numPlacesOfFailures() {
    std::set<const void*> places;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_THROW(new (std::nothrow) Failing<Bytes>(places), std::runtime_error);
        alignas(Failing<Bytes>) char memory[sizeof(Failing<Bytes>)];
        std::set<const void*> inPlace;
        EXPECT_THROW(new (memory) Failing<Bytes>(inPlace), std::runtime_error);
        EXPECT_EQ(inPlace, std::set<const void*>{memory});
    }
    return places.size();
}

// Where slabs were full, what is deleted makes room for what comes next, and all is well when the rest goes.
TEST(NodeMemory, OfFullSlabsIsUsedAgain) {
    if (!ownMemory) GTEST_SKIP();
    std::vector<std::unique_ptr<HDNTIntConstant>> nodes(100000);
    for (auto& node : nodes) node = std::make_unique<HDNTIntConstant>(1);
    for (const int step : {2, 3, 7}) {
        std::set<const void*> free;
        for (std::size_t i = 0; i < nodes.size(); i += static_cast<std::size_t>(step)) {
            free.insert(nodes[i].get());
            nodes[i].reset();
        }
        std::size_t numUsed = 0;
        for (auto& node : nodes)
            if (!node) numUsed += free.contains((node = std::make_unique<HDNTIntConstant>(1)).get());
        EXPECT_EQ(numUsed, free.size()) << step;
    }
    nodes.clear();
    EXPECT_EQ(HDNTIntConstant(3).getValue(), 3);
}

TEST(NodeMemory, GoesBackWhenAConstructorThrows) {
    const std::size_t small = numPlacesOfFailures<8>();
    const std::size_t large = numPlacesOfFailures<4096>();
    if (ownMemory) {
        EXPECT_EQ(small, 1U);
        EXPECT_LT(large, 10U);
    }
}

} // namespace
