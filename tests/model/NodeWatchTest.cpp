#include "bindings/cache/native_cache.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTNodeWatch.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <thread>

namespace {

class Recorder : public HDNTNodeWatch::Observer {
public:
    Recorder() { HDNTNodeWatch::addObserver(*this); }
    ~Recorder() override { HDNTNodeWatch::removeObserver(*this); }
    void nodeDies(const HDNTNode& node) noexcept override { dead.emplace(&node, node.getKind()); }

    std::map<const HDNTNode*, HDNTNodeKind> dead;
};

std::unique_ptr<HDNTLibrary> library() {
    auto made = std::make_unique<HDNTLibrary>(nullptr);
    EXPECT_EQ(0, made->parseString(R"(library "l" {
        block "CELL_A" { pin "D[1:0]" input; pin "Q" output; property int "N" { default = 1 } } mapsto { inst "u" "CELL_B"; }
        block "CELL_B" { pin "Q" output; } })"));
    made->finalize();
    return made;
}

} // namespace

TEST(NodeWatch, tells_of_watched_objects_alone) {
    Recorder first, second;
    auto made = library();
    HDNTBlock* const block = made->getTypeBlock(0);
    std::map<const HDNTNode*, HDNTNodeKind> watched;
    for (const HDNTNode* node : std::initializer_list<const HDNTNode*>{
             made.get(), block, block->getPin(1), block->getBus(0), block->getProperty(0), block->getNetlist()}) {
        HDNTNodeWatch::watch(*node);
        HDNTNodeWatch::watch(*node);
        watched.emplace(node, node->getKind());
    }
    EXPECT_TRUE(first.dead.empty());
    std::thread([&] { made.reset(); }).join();
    EXPECT_EQ(watched, first.dead);
    EXPECT_EQ(watched, second.dead);
}

TEST(NodeWatch, copies_begin_unwatched_and_removed_observers_hear_nothing) {
    auto recorder = std::make_unique<Recorder>();
    {
        const HDNTPin pin(1, 2);
        HDNTNodeWatch::watch(pin);
        const HDNTPin copy(pin); // NOLINT(performance-unnecessary-copy-initialization): that is what ends here
    }
    EXPECT_EQ(1u, recorder->dead.size());
    auto made = library();
    HDNTNodeWatch::watch(*made);
    recorder.reset();
    made.reset();
}

TEST(NativeCache, empties_handles_of_dead_objects_and_forgets_dropped_ones) {
    using namespace wpx::tcltasks;
    native_caches caches;
    auto made = library();
    HDNTBlock& block = *made->getTypeBlock(0);
    native_handle ofLibrary, ofBlock, ofPin;
    caches.of(HDNTNodeKind::Library).enter(*made, ofLibrary);
    caches.of(HDNTNodeKind::Block).enter(block, ofBlock);
    caches.of(HDNTNodeKind::Pin).enter(*block.getPin(0), ofPin);
    EXPECT_EQ(&ofBlock, caches.of(HDNTNodeKind::Block).find(block));
    EXPECT_EQ(nullptr, caches.of(HDNTNodeKind::Pin).find(*block.getPin(1)));
    caches.of(HDNTNodeKind::Pin).drop(ofPin);
    EXPECT_EQ(nullptr, caches.of(HDNTNodeKind::Pin).find(*block.getPin(0)));
    EXPECT_EQ(2u, caches.size());
    made.reset();
    EXPECT_EQ(nullptr, ofLibrary.node());
    EXPECT_EQ(nullptr, ofBlock.node());
    EXPECT_EQ(0u, caches.size());
    caches.of(HDNTNodeKind::Block).drop(ofBlock);
}

TEST(GiveAway, hands_over_what_the_manager_has) {
    HDNTLibraryMgr& manager = *HDNTLibraryMgr::getLibraryMgr();
    HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
    const std::unique_ptr<HDNTLibrary> mine = manager.giveAway(common);
    EXPECT_EQ(common, mine.get());
    EXPECT_EQ(nullptr, manager.giveAway(common));
    HDNTLibraryMgr::releaseLibraries();
    EXPECT_GT(mine->getNumTypeBlocks(false), 0u);
    EXPECT_NE(common, HDNTLibraryMgr::getCommonLibrary());
}
