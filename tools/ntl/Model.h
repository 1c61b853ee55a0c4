#pragma once

#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

namespace ntl {

// The model as lists and texts.

/// The library's own blocks; those of its parents behind them, if wanted.
std::vector<HDNTBlock*> blocksOf(const HDNTLibrary& library, bool withParents);

/// Whether the block is in the registry of cells.
bool isRegistered(const HDNTBlock& block);
/// Whether the configuration lets the block be there in an architecture: it does unless it names others only.
bool isInArchitecture(const HDNTBlock& block, const std::string& architecture);

} // namespace ntl
