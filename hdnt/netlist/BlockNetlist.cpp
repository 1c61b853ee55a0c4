// A block's mapping netlist: attached by the text, or loaded from a map library when it is asked for.
#include "hdnt/manager/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"

#include <algorithm>
#include <optional>

// Which load of a map library is under way, counted from 1; 0 for none. How often it has set a netlist so far.
static uint32_t loadUnderWay = 0;
static size_t attachedByLoadUnderWay = 0;

void HDNTBlock::setNetlist(HDNTNetlist* netlist) {
    attachedByLoad_ = loadUnderWay;
    if (loadUnderWay != 0) ++attachedByLoadUnderWay;
    if (netlist != netlist_.get()) netlist_.reset(netlist);
    netlistKind_ = NoNetlist;
    if (!netlist) return;
    const HDNTLibrary* const library = getLibrary();
    netlistKind_ = library && library->getParentLibrary() ? OwnNetlistInChild : OwnNetlist;
    netlist->setParent(this);
    netlist->finalize();
    if (netlist->isTieCapable()) canTiePins_ |= canTiePins();
}

HDNTNetlist* HDNTBlock::getNetlist() {
    return netlistKind_ != NoNetlist ? netlist_.get() : getNetlist(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
}

HDNTNetlist* HDNTBlock::getNetlist(const std::string& architecture) {
    switch (netlistKind_) {
    case OwnNetlist:
    case OwnNetlistInChild:
    case AnyArchitecture: return netlist_.get();
    case NoNetlist: break;
    default:
        if (netlistKind_ == HDNTLibraryMgr::m_archEnumInfo && netlistArchitecture_ == architecture)
            return netlist_.get();
    }
    return loadNetlist(architecture);
}

// A load attaches through setNetlist, which takes the netlist for the block's own; the kind is put right here, also for
// other blocks that the text has mappings of. What a text attached that then failed to parse does not stay. Without map
// libraries nothing may be noted: any thread asks.
HDNTNetlist* HDNTBlock::loadNetlist(const std::string& architecture) {
    HDNTLibrary* const library = getLibrary();
    if (!library || !HDNTLibrary::usesMapLibraries()) return nullptr;
    if (std::find(triedArchitectures_.begin(), triedArchitectures_.end(), architecture) != triedArchitectures_.end())
        return nullptr;
    static uint32_t loads = 0;
    const uint32_t load = loadUnderWay = ++loads;
    attachedByLoadUnderWay = 0;
    std::optional<unsigned short> kind;
    try {
        kind = library->loadMaplib(name_, architecture) ? HDNTLibraryMgr::m_archEnumInfo
                                                        : static_cast<unsigned short>(AnyArchitecture);
    } catch (...) {
        settleLoad(load, kind, architecture);
        throw;
    }
    settleLoad(load, kind, architecture);
    if (attachedByLoad_ == load) return netlist_.get();
    triedArchitectures_.push_back(architecture);
    return nullptr;
}

// The block that was asked is nearly always the only one, so the others are gone through only when some are left.
void HDNTBlock::settleLoad(uint32_t load, std::optional<unsigned short> kind, const std::string& architecture) const {
    loadUnderWay = 0;
    size_t left = attachedByLoadUnderWay;
    const auto settle = [&](HDNTBlock* block) {
        if (!block || block->attachedByLoad_ != load || (kind && block->netlistKind_ == *kind)) return;
        if (!kind) block->setNetlist(nullptr);
        block->netlistKind_ = kind.value_or(NoNetlist);
        block->netlistArchitecture_ = architecture;
        --left;
    };
    const HDNTLibrary& library = *getLibrary();
    if (left > 0) settle(library.getTypeBlockByName(name_, false));
    for (size_t i = 0, count = library.getNumTypeBlocks(true); left > 0 && i < count; ++i)
        settle(library.getTypeBlock(i));
}

std::string HDNTBlock::getReferencedInstanceName(std::string architecture) {
    if (architecture.empty()) architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
    HDNTNetlist* const netlist = getNetlist(architecture);
    return netlist ? netlist->getReferencedInstanceName() : std::string();
}

bool HDNTBlock::hasPseudoDifferentialExpansion(std::string architecture) {
    if (architecture.empty()) architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
    HDNTNetlist* const netlist = getNetlist(architecture);
    if (!netlist) return false;
    HDNTPseudoDiffVisitor visitor(getLibrary());
    netlist->accept(visitor);
    return visitor.found();
}
