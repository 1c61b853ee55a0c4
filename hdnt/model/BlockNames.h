#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class HDNTBlock;

namespace hdnt::model {

/// Blocks by name, case aside, the first of each name. A look-up allocates nothing; it reads a slot and a name, and
/// names stand close together wherever the blocks are.
class HDNT_API BlockNames {
public:
    struct Entry {
        HDNTBlock* block; ///< null: none of that name
        std::size_t position;
    };

    /// False, and nothing is added, when the name is taken.
    bool add(HDNTBlock* block);
    /// The block of that name with its position among those added.
    Entry find(std::string_view name) const;
    void reserve(std::size_t count);
    void clear();
    /// In the order they were added.
    const std::vector<HDNTBlock*>& blocks() const { return blocks_; }

private:
    struct Slot {
        HDNTBlock* block = nullptr;
        std::uint32_t hash = 0;
        std::uint32_t position = 0;
        std::size_t name = 0; ///< where it begins in names_
    };

    HDNT_LOCAL std::size_t slotOf(std::string_view name, std::uint32_t hash) const;
    HDNT_LOCAL std::string_view nameAt(std::size_t offset) const;
    HDNT_LOCAL void resize(std::size_t slots);

    std::vector<Slot> slots_; ///< a power of two, twice as many as blocks or more; a name is sought from its hash on
    std::vector<HDNTBlock*> blocks_;
    std::string names_; ///< of the blocks, end to end, each behind its length
};

/// The same for names that are hardly ever asked for: nothing is indexed before the first question.
class HDNT_API LateBlockNames {
public:
    void add(HDNTBlock* block) { waiting_.push_back(block); }
    /// The first block of that name, or null.
    HDNTBlock* find(std::string_view name) const;
    void clear();

private:
    mutable BlockNames names_;
    mutable std::vector<HDNTBlock*> waiting_; ///< not yet in names_
};

} // namespace hdnt::model
