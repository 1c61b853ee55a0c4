#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace hdnt::platform {

/// Where in a list the items of a name stand: built once, then read by any number of threads. It holds hashes, so that
/// what it finds has to be compared, and 12 to 16 bytes an item.
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

    /// `hashOfItem` gives the hash of the item at a position.
    template <typename HashOfItem>
    void build(std::size_t count, HashOfItem&& hashOfItem) {
        items_.resize(count);
        chains_.assign(std::bit_ceil(count), none);
        hasShared_ = false;
        for (auto i = static_cast<std::uint32_t>(count); i-- > 0;) {
            const std::uint32_t hash = folded(hashOfItem(i));
            std::uint32_t& first = chains_[hash & (chains_.size() - 1)];
            for (std::uint32_t at = first; at != none && !hasShared_; at = items_[at].next)
                hasShared_ = items_[at].hash == hash;
            items_[i] = {hash, first};
            first = i;
        }
    }

    bool empty() const { return items_.empty(); }

    Positions find(std::uint64_t hash) const {
        const std::uint32_t first = empty() ? none : chains_[folded(hash) & (chains_.size() - 1)];
        return {items_.data(), first, folded(hash)};
    }

    /// Calls visit(positions) for each hash that more than one item has.
    template <typename Visit>
    void forEachShared(Visit&& visit) const {
        if (!hasShared_) return;
        for (std::uint32_t i = 0; i < items_.size(); ++i) {
            const Positions positions = find(std::uint64_t{items_[i].hash} << 32);
            auto second = positions.begin();
            if (*second == i && ++second != Positions::end()) visit(positions);
        }
    }

private:
    static std::uint32_t folded(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

    std::vector<Item> items_;
    std::vector<std::uint32_t> chains_; ///< the first of each; their number is a power of two
    bool hasShared_ = false;
};

} // namespace hdnt::platform
