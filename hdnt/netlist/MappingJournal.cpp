#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/MappingJournal.internal.h"

#include <iterator>
#include <utility>

namespace hdnt::netlist {

static MappingJournal* current = nullptr;

MappingJournal::MappingJournal() : around_(std::exchange(current, this)) {}

MappingJournal::~MappingJournal() {
    current = around_;
    for (auto entry = attached_.rbegin(); entry != attached_.rend(); ++entry)
        entry->first->exchangeMapping(std::move(entry->second));
}

void MappingJournal::keep() {
    if (around_) {
        std::move(attached_.begin(), attached_.end(), std::back_inserter(around_->attached_));
        std::move(newBlocks_.begin(), newBlocks_.end(), std::back_inserter(around_->newBlocks_));
    }
    attached_.clear();
    newBlocks_.clear();
}

// Whether pins can be tied is a matter of the pins, too, and stays.
void MappingJournal::attach(HDNTBlock& block, HDNTNetlist* netlist) {
    if (current) {
        HDNTBlock::Mapping none;
        none.canTiePins = block.getCanTiePins();
        current->attached_.emplace_back(&block, block.exchangeMapping(std::move(none)));
    }
    block.setNetlist(netlist);
}

void MappingJournal::attachNew(HDNTBlock& block, HDNTNetlist* netlist) {
    if (current) current->newBlocks_.push_back(block.getName());
    block.setNetlist(netlist);
}

std::vector<HDNTBlock*> MappingJournal::blocks(const HDNTLibrary& library) const {
    std::vector<HDNTBlock*> all;
    for (const auto& [block, before] : attached_) all.push_back(block);
    for (const std::string& name : newBlocks_)
        if (HDNTBlock* const block = library.getDeclaredBlock(name)) all.push_back(block);
    return all;
}

} // namespace hdnt::netlist
