#include "hdnt/netlist/HDNTNetlist.h"

#include "hdnt/model/HDNTBlock.h"

HDNTBlock* HDNTNetlist::getTypeBlock() const { return dynamic_cast<HDNTBlock*>(getParent()); }
