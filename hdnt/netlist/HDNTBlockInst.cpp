#include "hdnt/netlist/HDNTBlockInst.h"

#include "hdnt/manager/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTLibrary.h"

HDNTBlock* HDNTBlockInst::getTypeBlock(HDNTLibrary* lib) const {
    if (lib)
        if (HDNTBlock* const block = lib->getTypeBlockByName(typeName(), true)) return block;
    const HDNTLibrary* const common = HDNTLibraryMgr::getCommonLibrary();
    return lib == common ? nullptr : common->getTypeBlockByName(typeName(), true);
}
