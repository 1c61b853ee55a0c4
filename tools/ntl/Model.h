#pragma once

#include "hdnt/model/HDNTBus.h"

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
/// "early", "beta", "production", "deprecated"
std::string maturityName(int level);
/// As written in NTL; empty when there is none.
std::string requiredValueName(HDNT_PIN_REQUIREDVALUE value);
/// "GROUP:SUBGROUP" or "GROUP"; empty when there is none.
std::string groupOf(const HDNTBlock& block, bool legacy);

std::string numberText(int value);
/// The shortest text that reads back to the same number.
std::string numberText(double value);

} // namespace ntl
