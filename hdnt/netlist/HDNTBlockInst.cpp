#include "hdnt/netlist/HDNTBlockInst.h"

#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/ManagerState.internal.h"

HDNTBlock* HDNTBlockInst::getTypeBlock(HDNTLibrary* lib) const {
    if (lib)
        if (HDNTBlock* const block = lib->getTypeBlockByName(typeName(), true)) return block;
    const HDNTLibrary* const common = hdnt::model::commonLibrary();
    return lib == common ? nullptr : common->getTypeBlockByName(typeName(), true);
}
