#include "hdnt/netlist/HDNTNetlistEntity.h"

#include "hdnt/netlist/HDNTNetlist.h"

HDNTNetlist* HDNTNetlistEntity::getNetlist() {
    for (HDNTNode* node = this; node; node = node->getParent())
        if (auto* const netlist = dynamic_cast<HDNTNetlist*>(node)) return netlist;
    return nullptr;
}
