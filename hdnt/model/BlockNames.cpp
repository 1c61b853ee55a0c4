#include "hdnt/model/BlockNames.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/TextHash.internal.h"

#include <bit>
#include <cstring>
#include <utility>

namespace hdnt::model {

static std::uint32_t hashOf(std::string_view name) {
    return static_cast<std::uint32_t>(platform::caselessHash(name) >> 32);
}

// The slot of that name, or the free one where it belongs.
std::size_t BlockNames::slotOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    for (; slots_[at].block; at = (at + 1) & mask)
        if (slots_[at].hash == hash && platform::equalCaseless(nameAt(slots_[at].name), name)) break;
    return at;
}

std::string_view BlockNames::nameAt(std::size_t offset) const {
    std::size_t length = 0;
    std::memcpy(&length, &names_[offset], sizeof length);
    return {&names_[offset] + sizeof length, length};
}

bool BlockNames::add(HDNTBlock* block) {
    if (slots_.size() < 2 * (blocks_.size() + 1)) resize(std::bit_ceil(4 * (blocks_.size() + 1)));
    const std::uint32_t hash = hashOf(block->getName());
    Slot& slot = slots_[slotOf(block->getName(), hash)];
    if (slot.block) return false;
    const std::string& name = block->getName();
    const std::size_t length = name.size();
    const std::size_t offset = names_.size();
    names_.append(reinterpret_cast<const char*>(&length), sizeof length).append(name);
    blocks_.push_back(block);
    slot = {block, hash, static_cast<std::uint32_t>(blocks_.size() - 1), offset};
    return true;
}

BlockNames::Entry BlockNames::find(std::string_view name) const {
    if (slots_.empty()) return {nullptr, 0};
    const Slot& slot = slots_[slotOf(name, hashOf(name))];
    return {slot.block, slot.position};
}

void BlockNames::reserve(std::size_t count) {
    blocks_.reserve(count);
    if (slots_.size() < 2 * count) resize(std::bit_ceil(2 * count));
}

void BlockNames::clear() {
    slots_ = {};
    blocks_ = {};
    names_ = {};
}

void BlockNames::resize(std::size_t slots) {
    std::vector<Slot> old(slots);
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (!slot.block) continue;
        std::size_t at = slot.hash & (slots - 1);
        while (slots_[at].block) at = (at + 1) & (slots - 1);
        slots_[at] = slot;
    }
}

HDNTBlock* LateBlockNames::find(std::string_view name) const {
    for (HDNTBlock* const block : waiting_) names_.add(block);
    waiting_.clear();
    return names_.find(name).block;
}

void LateBlockNames::clear() {
    names_.clear();
    waiting_ = {};
}

} // namespace hdnt::model
