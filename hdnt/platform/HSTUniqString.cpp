#include "hdnt/platform/HSTUniqString.h"

#include "hdnt/platform/SlabMemory.internal.h"
#include "hdnt/platform/SpinLock.internal.h"
#include "hdnt/platform/TextHash.internal.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <vector>

using hdnt::platform::textHash;

// A cache line for each: what a look-up in a large pool costs is the lines that it touches.
static constexpr std::size_t entryBytes = 64;

void* HSTUniqString::Entry::operator new(std::size_t size) {
    static_assert(sizeof(Entry) <= entryBytes);
    return hdnt::platform::allocateObject(std::max(size, entryBytes));
}
void HSTUniqString::Entry::operator delete(void* entry, std::size_t size) noexcept {
    hdnt::platform::freeObject(entry, std::max(size, entryBytes));
}

// Shards keep threads apart. An entry's count falls from one to zero only under its shard's lock, where look-ups raise
// it too, so an entry that is found is never one that another thread is about to erase.
struct HSTUniqString::Pool {
    /// A table of chains: entries stay where they are, and keep their hash for the table to grow.
    class Shard {
    public:
        hdnt::platform::SpinLock lock;

        std::size_t size() const { return size_; }

        const Entry& findOrAdd(std::string_view text, std::uint64_t hash) {
            for (Entry* entry = *chainOf(hash); entry; entry = entry->next)
                if (entry->hash == hash && entry->text == text) return *entry;
            if (size_ == chains_.size()) grow();
            Entry*& chain = *chainOf(hash);
            chain = new Entry(text, hash, chain);
            ++size_;
            return *chain;
        }

        void erase(const Entry* entry) noexcept {
            Entry** link = chainOf(entry->hash);
            while (*link != entry) link = &(*link)->next;
            *link = entry->next;
            --size_;
            delete entry;
        }

    private:
        Entry** chainOf(std::uint64_t hash) { return &chains_[hash & (chains_.size() - 1)]; }

        void grow() {
            std::vector<Entry*> old(chains_.size() * 2);
            old.swap(chains_);
            for (Entry* chain : old) {
                while (chain) {
                    Entry* const entry = std::exchange(chain, chain->next);
                    Entry** const link = chainOf(entry->hash);
                    entry->next = std::exchange(*link, entry);
                }
            }
        }

        std::vector<Entry*> chains_ = std::vector<Entry*>(64); ///< their number is a power of two
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

HSTUniqString::HSTUniqString(std::string_view text) {
    if (text.empty()) return;
    const std::uint64_t hash = textHash(text);
    Pool::Shard& shard = Pool::instance().shardOf(hash);
    const std::lock_guard lock(shard.lock);
    entry_ = &shard.findOrAdd(text, hash);
    entry_->references.fetch_add(1, std::memory_order_relaxed);
}

void HSTUniqString::drop(const Entry* entry) noexcept {
    std::uint64_t count = entry->references.load(std::memory_order_relaxed);
    while (count > 1) {
        if (entry->references.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                                    std::memory_order_relaxed))
            return;
    }
    Pool::Shard& shard = Pool::instance().shardOf(entry->hash);
    const std::lock_guard lock(shard.lock);
    if (entry->references.fetch_sub(1, std::memory_order_acq_rel) == 1) shard.erase(entry);
}

const std::string& HSTUniqString::emptyText() {
    static const std::string* const text = new std::string;
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
