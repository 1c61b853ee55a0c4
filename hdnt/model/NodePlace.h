#pragma once

#include "hdnt/diagnostics/yyltype.h"
#include "hdnt/platform/Export.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace hdnt::model {

/// Where a model object was declared, in twelve bytes. A record that programs may keep and write to is made when
/// somebody first asks for one, or when a location is too unusual for the twelve bytes.
class HDNT_API NodePlace {
public:
    NodePlace() = default;
    /// Copies the location; the record, if there is one, stays the other's.
    NodePlace(const NodePlace& other) { take(other); }
    NodePlace& operator=(const NodePlace&) = delete;
    ~NodePlace() {
        if (yyltype* const record = recordIn(word_.load(std::memory_order_relaxed))) drop(record);
    }

    /// Null when no location was set; otherwise the same as long as this lives. Any number of threads, also when none
    /// has asked before. Throws std::bad_alloc.
    yyltype* record() const {
        const std::uint64_t word = word_.load(std::memory_order_acquire);
        return word & packedBit ? makeRecord(word) : recordIn(word);
    }
    bool isSet() const { return word_.load(std::memory_order_relaxed) != 0; }
    /// The location, without a record; nothing when none was set. Any thread.
    std::optional<yyltype> read() const;
    /// Who has the record sees the change.
    void set(const yyltype& location);
    /// As set() with the other's location; does nothing when it has none.
    void take(const NodePlace& other);

private:
    static constexpr std::uint64_t packedBit = 1;

    /// Null when the word has none.
    static yyltype* recordIn(std::uint64_t word) {
        return word & packedBit ? nullptr : reinterpret_cast<yyltype*>(static_cast<std::uintptr_t>(word));
    }
    HDNT_API yyltype* makeRecord(std::uint64_t word) const;
    HDNT_API static void drop(yyltype* record) noexcept;
    HDNT_LOCAL void setAnew(const yyltype& location);
    HDNT_LOCAL yyltype unpacked(std::uint64_t word) const;

    // Zero, or the address of a record, or all of a location but its line. One word, so that threads which ask at once
    // can agree on a record without a lock.
    mutable std::atomic<std::uint64_t> word_ = 0;
    int line_ = 0; ///< first_line
};

} // namespace hdnt::model
