#pragma once

#include "hdnt/model/HDNTBlock.h"

#include <string>
#include <utility>
#include <vector>

namespace hdnt::netlist {

/// What the texts of one load attach to blocks that were there before. When the load fails, such as a map library that
/// does not parse or a library over a parent whose blocks it has mappings of, the blocks get back what they had.
///
/// One that begins while another lives is a part of it. Loading thread only.
class MappingJournal {
public:
    MappingJournal();
    /// Undoes everything that was not kept. The blocks must still live.
    ~MappingJournal();
    MappingJournal(const MappingJournal&) = delete;
    MappingJournal& operator=(const MappingJournal&) = delete;

    /// The load was good; what was replaced is deleted, or handed to the journal around this one.
    void keep();

    /// Attaches a mapping to a block that lives whatever becomes of the parse, and notes it if a journal lives.
    static void attach(HDNTBlock& block, HDNTNetlist* netlist);
    /// The same for a block of the text itself, which goes with it when the parse fails.
    static void attachNew(HDNTBlock& block, HDNTNetlist* netlist);

    /// The blocks that something was attached to and that are still in the library or were before.
    std::vector<HDNTBlock*> blocks(const HDNTLibrary& library) const;

private:
    MappingJournal* around_;
    std::vector<std::pair<HDNTBlock*, HDNTBlock::Mapping>> attached_;
    std::vector<std::string> newBlocks_; ///< by name, since a library does not keep every block of its text
};

} // namespace hdnt::netlist
