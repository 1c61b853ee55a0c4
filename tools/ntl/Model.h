#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <string>
#include <vector>

class HDNTBlock;
class HDNTBus;
class HDNTLibrary;
class HDNTPin;
class HDNTProperty;

namespace ntl {

// The model as lists and texts.

std::vector<HDNTBus*> busesOf(const HDNTBlock& block);
std::vector<HDNTProperty*> propertiesOf(const HDNTBlock& block);
std::vector<HDNTProperty*> propertiesOf(const HDNTBus& bus);
/// The pins of one bus, internal ones included.
std::vector<HDNTPin*> pinsOf(const HDNTBlock& block, const HDNTBus& bus);
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

/// "mapsto", "expandsto", "modifiedby" or "retargetsto"
std::string sectionName(HDNTNetlist::Section section);

std::string numberText(int value);
/// The shortest text that reads back to the same number.
std::string numberText(double value);

} // namespace ntl
