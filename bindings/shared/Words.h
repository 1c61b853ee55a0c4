#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTNetlist.h"

/// Words for what the model has as numbers, beyond those that it has itself.
namespace hdnt::scripts {

/// Null when nothing is required.
const char* requiredWord(HDNT_PIN_REQUIREDVALUE value);
/// Of a level from 0 to 3.
const char* maturityWord(int level);
const char* sectionWord(HDNTNetlist::Section section);
/// As it is written, also for the operators of one operand.
const char* operatorWord(HDNTExpr::FOPERATOR sign);

} // namespace hdnt::scripts
