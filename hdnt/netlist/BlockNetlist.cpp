// A block's mapping netlist: attached by the text, or loaded from a map library when it is asked for.
#include "hdnt/manager/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"

#include <algorithm>

void HDNTBlock::setNetlist(HDNTNetlist* netlist) {
    ++attachments_;
    netlist_.reset(netlist);
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

// A load attaches through setNetlist, which takes the netlist for the block's own; the kind is put right here. What a
// text attached that then failed to parse does not stay. Without map libraries nothing may be noted: any thread asks.
HDNTNetlist* HDNTBlock::loadNetlist(const std::string& architecture) {
    HDNTLibrary* const library = getLibrary();
    if (!HDNTLibrary::usesMapLibraries()) return nullptr;
    const auto tried = std::find(triedArchitectures_.begin(), triedArchitectures_.end(), architecture);
    if (!library || tried != triedArchitectures_.end()) return nullptr;
    const uint32_t attachedBefore = attachments_;
    bool forArchitectures = false;
    try {
        forArchitectures = library->loadMaplib(name_, architecture);
    } catch (...) {
        if (attachments_ != attachedBefore) setNetlist(nullptr);
        throw;
    }
    if (attachments_ == attachedBefore) {
        triedArchitectures_.push_back(architecture);
        return nullptr;
    }
    netlistKind_ = forArchitectures ? HDNTLibraryMgr::m_archEnumInfo : static_cast<unsigned short>(AnyArchitecture);
    netlistArchitecture_ = architecture;
    return netlist_.get();
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
