// A block's mapping netlist: attached by the text, or loaded from a map library when it is asked for.
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/ManagerState.internal.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"
#include "hdnt/netlist/MappingJournal.internal.h"

#include <algorithm>
#include <utility>

using hdnt::model::architectureNumber;
using hdnt::model::currentArchitecture;

void HDNTBlock::DeleteNetlist::operator()(HDNTNetlist* netlist) const noexcept { delete netlist; }

// The block's own netlist decides its kind and whether the pins can be tied.
void HDNTBlock::noteNetlist() {
    const HDNTLibrary* const library = getLibrary();
    netlistKind_ = library && library->getParentLibrary() ? OwnNetlistInChild : OwnNetlist;
    if (netlist_->isTieCapable()) canTiePins_ |= canTiePins();
}

void HDNTBlock::checkNetlist() {
    if (netlist_) netlist_->check();
}

void HDNTBlock::finalizeNetlist() {
    if (!netlist_) return;
    netlist_->setParent(this);
    netlist_->finalize();
}

void HDNTBlock::setNetlist(HDNTNetlist* netlist) {
    if (netlist != netlist_.get()) netlist_.reset(netlist);
    netlistKind_ = NoNetlist;
    if (!netlist) return;
    noteNetlist();
    finalizeNetlist();
}

HDNTNetlist* HDNTBlock::getNetlist() {
    return netlistKind_ != NoNetlist ? netlist_.get() : getNetlist(currentArchitecture());
}

HDNTNetlist* HDNTBlock::getNetlist(const std::string& architecture) {
    const bool isForAll = hasOwnNetlist() || netlistKind_ == AnyArchitecture;
    const bool isForThis =
        netlistKind_ != NoNetlist && netlistKind_ == architectureNumber() && netlistArchitecture_ == architecture;
    return isForAll || isForThis ? netlist_.get() : loadNetlist(architecture);
}

HDNTBlock::Mapping HDNTBlock::exchangeMapping(Mapping mapping) {
    return {std::exchange(netlist_, std::move(mapping.netlist)),
            std::exchange(netlistArchitecture_, std::move(mapping.architecture)),
            std::exchange(netlistKind_, mapping.kind), std::exchange(canTiePins_, mapping.canTiePins)};
}

// A load attaches through setNetlist, which takes the netlist for the block's own; the kind is put right here, also for
// other blocks that the text has mappings of. Without map libraries nothing may be noted: any thread asks.
HDNTNetlist* HDNTBlock::loadNetlist(const std::string& architecture) {
    HDNTLibrary* const library = getLibrary();
    if (!library || !HDNTLibrary::usesMapLibraries()) return nullptr;
    if (std::find(triedArchitectures_.begin(), triedArchitectures_.end(), architecture) != triedArchitectures_.end())
        return nullptr;
    hdnt::netlist::MappingJournal journal;
    unsigned short kind = AnyArchitecture;
    if (library->loadMaplib(name_, architecture)) kind = architectureNumber();
    bool attached = false;
    for (HDNTBlock* const block : journal.blocks(*library)) {
        block->netlistKind_ = kind;
        block->netlistArchitecture_ = architecture;
        attached |= block == this;
    }
    journal.keep();
    if (attached) return netlist_.get();
    triedArchitectures_.push_back(architecture);
    return nullptr;
}

std::string HDNTBlock::getReferencedInstanceName(std::string architecture) {
    if (architecture.empty()) architecture = currentArchitecture();
    HDNTNetlist* const netlist = getNetlist(architecture);
    return netlist ? netlist->getReferencedInstanceName() : std::string();
}

bool HDNTBlock::hasPseudoDifferentialExpansion(std::string architecture) {
    if (architecture.empty()) architecture = currentArchitecture();
    HDNTNetlist* const netlist = getNetlist(architecture);
    if (!netlist) return false;
    HDNTPseudoDiffVisitor visitor(getLibrary());
    netlist->accept(visitor);
    return visitor.found();
}
