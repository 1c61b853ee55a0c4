#pragma once

#include "hdnt/platform/Export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

/// Handle to the one shared copy of a text: a pointer in size, compared by that pointer. Handles count references; the
/// copy goes with the last handle. Texts may hold NUL bytes; empty or absent text is the null string, which costs
/// nothing. Safe in any thread, also in static initialisers and at process exit: the pool is never destroyed. Making a
/// handle to a known text takes one hash, one uncontended lock and no allocation; copying one is an atomic increment.
class HDNT_API HSTUniqString {
public:
    constexpr HSTUniqString() noexcept = default;
    explicit HSTUniqString(std::string_view text);
    /// Null is the null string.
    explicit HSTUniqString(const char* text) : HSTUniqString(text ? std::string_view(text) : std::string_view()) {}
    HSTUniqString(const HSTUniqString& other) noexcept : entry_(other.entry_) {
        if (entry_) entry_->references.fetch_add(1, std::memory_order_relaxed);
    }
    HSTUniqString(HSTUniqString&& other) noexcept : entry_(std::exchange(other.entry_, nullptr)) {}
    HSTUniqString& operator=(HSTUniqString other) noexcept {
        std::swap(entry_, other.entry_);
        return *this;
    }
    ~HSTUniqString() {
        if (entry_) drop(entry_);
    }

    /// The shared text, at one address as long as any handle to it lives.
    const std::string& str() const noexcept { return entry_ ? entry_->text : emptyText(); }
    const char* c_str() const noexcept { return str().c_str(); }
    bool empty() const noexcept { return !entry_; }
    /// Equal exactly for equal texts; null for the null string. For hashing and ordering by identity.
    const void* id() const noexcept { return entry_; }
    /// Internal: its platform::textHash(), which is kept.
    std::uint64_t hash() const noexcept { return entry_ ? entry_->hash : 0; }

    friend bool operator==(const HSTUniqString& a, const HSTUniqString& b) noexcept { return a.entry_ == b.entry_; }
    friend bool operator==(const HSTUniqString& a, std::string_view b) noexcept { return a.str() == b; }

    /// A copy of the text that lives as long as the process, zero-terminated; the same pointer for the same text. For
    /// names that records without an owner refer to, such as the file names in locations. Never null.
    static const char* internCString(std::string_view text);

    /// Gives up the handle's reference without releasing it: what packed records store. The token is null for the null
    /// string; adopt() makes it a handle again, textOf() reads it.
    const void* detach() noexcept { return std::exchange(entry_, nullptr); }
    static HSTUniqString adopt(const void* token) noexcept {
        HSTUniqString result;
        result.entry_ = static_cast<const Entry*>(token);
        return result;
    }
    static const std::string& textOf(const void* token) noexcept {
        return token ? static_cast<const Entry*>(token)->text : emptyText();
    }

    /// Number of distinct texts the pool holds now, for tests and memory reports.
    static std::size_t numTexts();

private:
    struct Entry {
        Entry(std::string_view t, std::uint64_t h, std::uint64_t first, std::uint64_t last)
            : text(t), hash(h), firstBytes(first), lastBytes(last) {}
        HDNT_LOCAL static void* operator new(std::size_t size);
        HDNT_LOCAL static void operator delete(void* entry, std::size_t size) noexcept;

        const std::string text;
        const std::uint64_t hash;
        mutable std::atomic<std::uint64_t> references{0};
        const std::uint64_t firstBytes; ///< of the text, so that a short one is compared without a look at it
        const std::uint64_t lastBytes;
    };
    struct HDNT_LOCAL Pool;
    struct HDNT_LOCAL Sought;

    /// With one reference more; of a text that is not empty.
    HDNT_LOCAL static const Entry* taken(std::string_view text, std::uint64_t hash);
    HDNT_API static const std::string& emptyText();
    HDNT_API static void drop(const Entry* entry) noexcept;

    const Entry* entry_ = nullptr;
};
