#include "hdnt/platform/HSTUniqString.h"

#include <array>
#include <functional>
#include <mutex>
#include <unordered_set>

// Shards keep threads apart. An entry's count falls from one to zero only under its shard's lock, where look-ups raise
// it too, so an entry that is found is never one that another thread is about to erase.
struct HSTUniqString::Pool {
    struct Key {
        std::string_view text;
        std::size_t hash;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Key& key) const noexcept { return key.hash; }
        std::size_t operator()(const Entry& entry) const noexcept { return hashOf(entry.text); }
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(const Entry& a, const Entry& b) const noexcept { return a.text == b.text; }
        bool operator()(const Key& a, const Entry& b) const noexcept { return a.text == b.text; }
        bool operator()(const Entry& a, const Key& b) const noexcept { return a.text == b.text; }
    };
    struct Shard {
        std::mutex mutex;
        std::unordered_set<Entry, Hash, Equal> entries;
    };

    static constexpr unsigned ShardBits = 4;
    std::array<Shard, 1U << ShardBits> shards;

    static std::size_t hashOf(std::string_view text) noexcept { return std::hash<std::string_view>()(text); }
    Shard& shardOf(std::size_t hash) noexcept { return shards[hash >> (8 * sizeof hash - ShardBits)]; }

    static Pool& instance() {
        static Pool* const pool = new Pool;
        return *pool;
    }
};

HSTUniqString::HSTUniqString(std::string_view text) {
    if (text.empty()) return;
    const Pool::Key key{text, Pool::hashOf(text)};
    Pool::Shard& shard = Pool::instance().shardOf(key.hash);
    const std::lock_guard lock(shard.mutex);
    auto found = shard.entries.find(key);
    if (found == shard.entries.end()) found = shard.entries.emplace(text).first;
    found->references.fetch_add(1, std::memory_order_relaxed);
    entry_ = &*found;
}

void HSTUniqString::drop(const Entry* entry) noexcept {
    std::uint64_t count = entry->references.load(std::memory_order_relaxed);
    while (count > 1) {
        if (entry->references.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                                    std::memory_order_relaxed))
            return;
    }
    const Pool::Key key{entry->text, Pool::hashOf(entry->text)};
    Pool::Shard& shard = Pool::instance().shardOf(key.hash);
    const std::lock_guard lock(shard.mutex);
    if (entry->references.fetch_sub(1, std::memory_order_acq_rel) == 1) shard.entries.erase(shard.entries.find(key));
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
        const std::lock_guard lock(shard.mutex);
        count += shard.entries.size();
    }
    return count;
}
