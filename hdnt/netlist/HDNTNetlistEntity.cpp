#include "hdnt/netlist/HDNTNetlistEntity.h"

#include "hdnt/netlist/HDNTNetlist.h"

HDNTNetlist* HDNTNetlistEntity::getNetlist() {
    for (HDNTNode* node = this; node; node = node->getParent())
        if (auto* const netlist = nodeCast<HDNTNetlist>(node)) return netlist;
    return nullptr;
}
