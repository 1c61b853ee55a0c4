#include "hdnt/platform/NameIndex.h"

#include "hdnt/platform/SlabMemory.internal.h"

#include <utility>

namespace hdnt::platform {

void NameIndex::makeRoom(std::uint32_t count) {
    if (items_) release();
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
    freeObject(std::exchange(items_, nullptr), bytes());
    count_ = 0;
}

} // namespace hdnt::platform
