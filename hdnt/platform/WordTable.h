#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace hdnt {

/// The words for the values of an enumeration, as NTL writes them: the one place where value and word stand together.
/// To be walked, too: `for (const auto& [value, word] : words::pinTypes)`.
template <typename Value, std::size_t Count>
struct WordTable {
    struct Entry {
        Value value;
        std::string_view word;
    };
    std::array<Entry, Count> entries;

    /// Zero-terminated, and valid for the life of the process; for a value without a word empty, with a null data().
    constexpr std::string_view wordOf(Value value) const {
        const auto place = static_cast<std::size_t>(value);
        if (place < Count && entries[place].value == value) return entries[place].word;
        for (const Entry& entry : entries)
            if (entry.value == value) return entry.word;
        return {};
    }
    /// The first value of exactly that word, upper and lower case told apart.
    constexpr std::optional<Value> valueOf(std::string_view word) const {
        for (const Entry& entry : entries)
            if (entry.word == word) return entry.value;
        return std::nullopt;
    }

    constexpr auto begin() const { return entries.begin(); }
    constexpr auto end() const { return entries.end(); }
    static constexpr std::size_t size() { return Count; }
};

} // namespace hdnt
