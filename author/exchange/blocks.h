#pragma once

#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;
class HDNTNetlist;

// What lists of blocks ask for.
namespace hdnt::author {

/// The library's own blocks; those of its parents behind them, if wanted.
HDNT_API std::vector<HDNTBlock*> blocksOf(const HDNTLibrary& library, bool withParents);
/// Whether the block is in the registry of cells.
HDNT_API bool isRegistered(const HDNTBlock& block);
/// Whether the configuration lets the block be there in an architecture: it does unless it names others only.
HDNT_API bool isInArchitecture(const HDNTBlock& block, const std::string& architecture);
/// "GROUP:SUBGROUP" or "GROUP"; empty without one.
HDNT_API std::string groupOf(const HDNTBlock& block);
/// The groups of the blocks, with and without subgroups, by name.
HDNT_API std::vector<std::string> groupsOf(const std::vector<HDNTBlock*>& blocks);

/// The mapping of a block for an architecture, which may have to be loaded; an empty one is that of
/// HDNTBlock::getNetlist(). Null when there is none. Throws HEXDataException for a broken map library.
HDNT_API const HDNTNetlist* mappingFor(HDNTBlock& block, const std::string& architecture);
/// The file of the block's map library, whether it exists or not; empty when there is no place for them.
HDNT_API std::string mapLibraryOf(const HDNTBlock& block);

} // namespace hdnt::author
