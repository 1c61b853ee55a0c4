#include "hdnt/platform/NameIndex.h"

#include "hdnt/platform/SlabMemory.internal.h"

#include <utility>

namespace hdnt::platform {

// Rounded up: each size of small objects has memory of its own, and blocks are of all sizes.
std::size_t NameIndex::bytes() const {
    constexpr std::size_t step = 64;
    const std::size_t used = count_ * sizeof(Item) + numChains() * sizeof(std::uint32_t);
    return (used + step - 1) & ~(step - 1);
}

void NameIndex::makeRoom(std::uint32_t count) {
    release();
    if (count == 0) return;
    count_ = count;
    try {
        items_ = static_cast<Item*>(allocateObject(bytes()));
    } catch (...) {
        count_ = 0;
        throw;
    }
}

void NameIndex::release() noexcept {
    if (items_) freeObject(std::exchange(items_, nullptr), bytes());
    count_ = 0;
}

} // namespace hdnt::platform
