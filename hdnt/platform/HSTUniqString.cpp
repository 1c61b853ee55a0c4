#include "hdnt/platform/HSTUniqString.h"

#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/SpinLock.internal.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <vector>

using hdnt::platform::equalTexts;
using hdnt::platform::isOnlyThread;
using hdnt::platform::TextEnds;
using hdnt::platform::textHash;

static constexpr std::memory_order relaxed = std::memory_order_relaxed;

// A cache line for each: what a look-up in a large pool costs is the lines that it touches.
static constexpr std::size_t entryBytes = 64;

void* HSTUniqString::Entry::operator new(std::size_t size) {
    static_assert(sizeof(Entry) <= entryBytes);
    return hdnt::platform::allocateObject(std::max(size, entryBytes));
}
void HSTUniqString::Entry::operator delete(void* entry, std::size_t size) noexcept {
    hdnt::platform::freeObject(entry, std::max(size, entryBytes));
}

struct HSTUniqString::Sought {
    Sought(std::string_view text, const TextEnds& ends, std::uint64_t hash) : text(text), ends(ends), hash(hash) {}

    bool isTextOf(const Entry& entry) const {
        return entry.text.size() == text.size() && entry.firstBytes == ends.first && entry.lastBytes == ends.last &&
               (text.size() <= TextEnds::most || equalTexts(entry.text, text));
    }

    std::string_view text;
    TextEnds ends;
    std::uint64_t hash;
};

// Shards keep threads apart. An entry's count falls from one to zero only under its shard's lock, where look-ups raise
// it too, so an entry that is found is never one that another thread is about to erase.
struct HSTUniqString::Pool {
    /// A table of slots; a text is sought from the slot on that its hash says, up to an empty one. A slot is an entry's
    /// address and, in the bits that no address has, part of its hash: what is not sought is hardly ever looked at.
    class Shard {
    public:
        hdnt::platform::SpinLock lock;

        std::size_t size() const { return size_; }

        /// Null when there is none.
        const Entry* find(const Sought& sought) const {
            const std::uint64_t* const slots = slots_.data();
            const std::uint64_t mask = mask_;
            for (std::uint64_t at = sought.hash & mask; slots[at] != 0; at = (at + 1) & mask) {
                if (tagIn(slots[at]) != tagOf(sought.hash)) continue;
                const Entry* const entry = entryIn(slots[at]);
                if (sought.isTextOf(*entry)) return entry;
            }
            return nullptr;
        }

        [[gnu::noinline]] const Entry* add(const Sought& sought) {
            if (4 * (size_ + 1) > 3 * slots_.size()) grow();
            std::uint64_t at = sought.hash & mask_;
            while (slots_[at] != 0) at = (at + 1) & mask_;
            const Entry* const entry = new Entry(sought.text, sought.hash, sought.ends.first, sought.ends.last);
            slots_[at] = slotOf(entry);
            ++size_;
            return entry;
        }

        void erase(const Entry* entry) noexcept {
            std::uint64_t at = entry->hash & mask_;
            while (entryIn(slots_[at]) != entry) at = (at + 1) & mask_;
            // What stands behind would not be found any more across an empty slot, so it moves up.
            for (std::uint64_t next = (at + 1) & mask_; slots_[next] != 0; next = (next + 1) & mask_) {
                const std::uint64_t from = entryIn(slots_[next])->hash & mask_;
                if (((next - from) & mask_) < ((next - at) & mask_)) continue;
                slots_[std::exchange(at, next)] = slots_[next];
            }
            slots_[at] = 0;
            --size_;
            delete entry;
        }

    private:
        static constexpr unsigned addressBits = 48; ///< as systems give them to whoever does not ask for more
        static_assert(sizeof(std::uintptr_t) == sizeof(std::uint64_t));
        static std::uint64_t tagIn(std::uint64_t slot) { return slot >> addressBits; }
        // None where the sanitizer looks for addresses as they are.
        static std::uint64_t tagOf(std::uint64_t hash) {
            return hdnt::platform::usesGeneralHeap ? 0 : hash >> 32 & 0xffff;
        }
        static Entry* entryIn(std::uint64_t slot) {
            return reinterpret_cast<Entry*>(slot & ((std::uint64_t{1} << addressBits) - 1));
        }
        static std::uint64_t slotOf(const Entry* entry) {
            return reinterpret_cast<std::uintptr_t>(entry) | tagOf(entry->hash) << addressBits;
        }

        void grow() {
            std::vector<std::uint64_t> old(slots_.size() * 2);
            old.swap(slots_);
            mask_ = slots_.size() - 1;
            for (const std::uint64_t slot : old) {
                if (slot == 0) continue;
                std::uint64_t at = entryIn(slot)->hash & mask_;
                while (slots_[at] != 0) at = (at + 1) & mask_;
                slots_[at] = slot;
            }
        }

        std::vector<std::uint64_t> slots_ = std::vector<std::uint64_t>(64); ///< their number is a power of two
        std::uint64_t mask_ = slots_.size() - 1;
        std::size_t size_ = 0;
    };

    static constexpr unsigned shardBits = 4;
    std::array<Shard, 1U << shardBits> shards;

    Shard& shardOf(std::uint64_t hash) noexcept { return shards[hash >> (64 - shardBits)]; }

    static Pool& instance() {
        static Pool* const pool = new Pool;
        return *pool;
    }
};

// Most names are short, and there already: this calls nothing for them, and so keeps no registers.
HSTUniqString::HSTUniqString(std::string_view text) {
    if (text.empty()) return;
    const TextEnds ends(text);
    const std::uint64_t hash = textHash(text, ends);
    if (text.size() <= TextEnds::most && isOnlyThread()) {
        if (const Entry* const entry = Pool::instance().shardOf(hash).find({text, ends, hash})) {
            entry->references.store(entry->references.load(relaxed) + 1, relaxed);
            entry_ = entry;
            return;
        }
    }
    entry_ = taken(text, hash);
}

[[gnu::noinline]] const HSTUniqString::Entry* HSTUniqString::taken(std::string_view text, std::uint64_t hash) {
    const Sought sought(text, TextEnds(text), hash);
    Pool::Shard& shard = Pool::instance().shardOf(hash);
    const std::lock_guard lock(shard.lock);
    const Entry* entry = shard.find(sought);
    if (!entry) entry = shard.add(sought);
    if (isOnlyThread()) entry->references.store(entry->references.load(relaxed) + 1, relaxed);
    else entry->references.fetch_add(1, relaxed);
    return entry;
}

void HSTUniqString::drop(const Entry* entry) noexcept {
    std::uint64_t count = entry->references.load(relaxed);
    if (isOnlyThread() && count > 1) return entry->references.store(count - 1, relaxed);
    while (count > 1) {
        if (entry->references.compare_exchange_weak(count, count - 1, std::memory_order_release, relaxed)) return;
    }
    Pool::Shard& shard = Pool::instance().shardOf(entry->hash);
    const std::lock_guard lock(shard.lock);
    if (entry->references.fetch_sub(1, std::memory_order_acq_rel) == 1) shard.erase(entry);
}

const std::string& HSTUniqString::emptyText() {
    // Outlives whatever else is static, and needs no memory.
    alignas(std::string) static char memory[sizeof(std::string)];
    static const std::string* const text = new (memory) std::string;
    return *text;
}

const char* HSTUniqString::internCString(std::string_view text) {
    HSTUniqString handle(text);
    return textOf(handle.detach()).c_str();
}

std::size_t HSTUniqString::numTexts() {
    std::size_t count = 0;
    for (Pool::Shard& shard : Pool::instance().shards) {
        const std::lock_guard lock(shard.lock);
        count += shard.size();
    }
    return count;
}
