#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace hdnt::platform {

/// Where in a list the items of a name stand: built once, then read by any number of threads. It holds hashes, so that
/// what it finds has to be compared, and 8 bytes an item.
class NameIndex {
public:
    struct Entry {
        std::uint32_t hash;
        std::uint32_t position;
        bool operator<(const Entry& other) const {
            return hash != other.hash ? hash < other.hash : position < other.position;
        }
    };

    /// `hashOfItem` gives the hash of the item at a position.
    template <typename HashOfItem>
    void build(std::size_t count, HashOfItem&& hashOfItem) {
        entries_.clear();
        entries_.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) entries_.push_back({folded(hashOfItem(i)), i});
        std::sort(entries_.begin(), entries_.end());
    }

    bool empty() const { return entries_.empty(); }

    /// The items of one hash, in the order of the list.
    std::span<const Entry> find(std::uint64_t hash) const {
        const auto [first, last] = std::equal_range(entries_.begin(), entries_.end(), Entry{folded(hash), 0},
                                                    [](const Entry& a, const Entry& b) { return a.hash < b.hash; });
        return {first, last};
    }

    /// Calls visit(span) for the items of each hash that more than one has.
    template <typename Visit>
    void forEachShared(Visit&& visit) const {
        for (auto first = entries_.begin(); first != entries_.end();) {
            const auto last =
                std::find_if(first, entries_.end(), [&](const Entry& e) { return e.hash != first->hash; });
            if (last - first > 1) visit(std::span<const Entry>(first, last));
            first = last;
        }
    }

private:
    static std::uint32_t folded(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

    std::vector<Entry> entries_;
};

} // namespace hdnt::platform
