#pragma once

#include "hdnt/platform/Export.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace hdnt::platform {

/// Where in a list the items of a name stand: built once, then read by any number of threads. It holds hashes, so that
/// what it finds has to be compared, and 12 to 16 bytes an item, in memory beside the model's.
class NameIndex {
    static constexpr std::uint32_t none = UINT32_MAX;
    /// Items whose hashes have the same low bits are a chain, in the order of the list.
    struct Item {
        std::uint32_t hash;
        std::uint32_t next;
    };

public:
    /// The positions of one hash, in the order of the list.
    class Positions {
    public:
        class Iterator {
        public:
            Iterator(const Item* items, std::uint32_t at, std::uint32_t hash) : items_(items), at_(at), hash_(hash) {
                skipOthers();
            }
            std::uint32_t operator*() const { return at_; }
            Iterator& operator++() {
                at_ = items_[at_].next;
                skipOthers();
                return *this;
            }
            bool operator==(const Iterator& other) const { return at_ == other.at_; }

        private:
            void skipOthers() {
                while (at_ != none && items_[at_].hash != hash_) at_ = items_[at_].next;
            }

            const Item* items_;
            std::uint32_t at_;
            std::uint32_t hash_;
        };

        Positions(const Item* items, std::uint32_t first, std::uint32_t hash) : begin_(items, first, hash) {}
        Iterator begin() const { return begin_; }
        static Iterator end() { return {nullptr, none, 0}; }

    private:
        Iterator begin_;
    };

    NameIndex() = default;
    NameIndex(NameIndex&& other) noexcept { swap(other); }
    NameIndex& operator=(NameIndex&& other) noexcept {
        swap(other);
        return *this;
    }
    ~NameIndex() {
        if (items_) release();
    }

    /// `hashOfItem` gives the hash of the item at a position.
    template <typename HashOfItem>
    void build(std::size_t count, HashOfItem&& hashOfItem) {
        makeRoom(static_cast<std::uint32_t>(count));
        std::fill_n(chains(), numChains(), none);
        hasShared_ = false;
        for (std::uint32_t i = count_; i-- > 0;) {
            const std::uint32_t hash = folded(hashOfItem(i));
            std::uint32_t& first = chainOf(hash);
            for (std::uint32_t at = first; at != none && !hasShared_; at = items_[at].next)
                hasShared_ = items_[at].hash == hash;
            items_[i] = {hash, first};
            first = i;
        }
    }

    bool empty() const { return count_ == 0; }
    /// Gives the memory back; the index is empty then.
    HDNT_API void release() noexcept;

    Positions find(std::uint64_t hash) const { return {items_, empty() ? none : chainOf(folded(hash)), folded(hash)}; }

    /// Calls visit(positions) for each hash that more than one item has.
    template <typename Visit>
    void forEachShared(Visit&& visit) const {
        if (!hasShared_) return;
        for (std::uint32_t i = 0; i < count_; ++i) {
            const Positions positions = find(std::uint64_t{items_[i].hash} << 32);
            auto second = positions.begin();
            if (*second == i && ++second != Positions::end()) visit(positions);
        }
    }

private:
    void swap(NameIndex& other) noexcept {
        std::swap(items_, other.items_);
        std::swap(count_, other.count_);
        std::swap(hasShared_, other.hasShared_);
    }
    static std::uint32_t folded(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

    /// The first of each chain; their number is a power of two.
    std::uint32_t* chains() const { return reinterpret_cast<std::uint32_t*>(items_ + count_); }
    std::size_t numChains() const { return empty() ? 0 : std::bit_ceil(count_); }
    std::uint32_t& chainOf(std::uint32_t hash) const { return chains()[hash & (numChains() - 1)]; }
    HDNT_LOCAL std::size_t bytes() const;
    HDNT_LOCAL void makeRoom(std::uint32_t count);

    Item* items_ = nullptr; ///< and the chains behind them
    std::uint32_t count_ = 0;
    bool hasShared_ = false;
};

} // namespace hdnt::platform
