// The builder's part for whole blocks, mappings and libraries, and what a mapping finds.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/MappingJournal.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <memory>
#include <new>
#include <utility>

namespace hdnt::frontend::build {

namespace {

using hdnt::netlist::MappingJournal;

// Blocks of the parse in progress. The parser owns them until they are handed to the library.
model::LateBlockNames& pendingBlocks() {
    alignas(model::LateBlockNames) static char memory[sizeof(model::LateBlockNames)];
    static auto* const blocks = new (memory) model::LateBlockNames; // asked for where no exception may come
    return *blocks;
}

HDNTLibrary& target() {
    if (!myTopLib) throw HEXAlgException("NTL parser has no library to parse into");
    return *myTopLib;
}

// To a block of the library that is parsed into, from a text before this one or from this one; else of its parents.
bool attach(std::unique_ptr<HDNTNetlist>& netlist, const HDNTLibrary& library, const std::string& name) {
    HDNTBlock* block = library.getDeclaredBlock(name);
    HDNTBlock* const pending = block ? nullptr : pendingBlocks().find(name);
    const HDNTLibrary* const parent = library.getParentLibrary();
    if (block) tellOfReplaced(*block, *netlist, false);
    if (pending) tellOfReplaced(*pending, *netlist, true);
    // To map the blocks of its parents anew is what a library may be there for: nothing is told.
    if (!block && !pending && parent) block = parent->getTypeBlockByName(name, true);
    if (block) MappingJournal::attach(*block, netlist.release());
    if (pending) MappingJournal::attachNew(*pending, netlist.release());
    return block || pending;
}

// Items for a constructor that owns them as soon as it runs, whether it succeeds or throws.
template <typename T>
class Handed {
public:
    explicit Handed(std::vector<T*>& list) : list_(list) {}
    Handed(const Handed&) = delete;
    Handed& operator=(const Handed&) = delete;
    ~Handed() {
        if (isHanded_) list_.clear();
    }
    std::vector<T*>* list() {
        isHanded_ = true;
        return &list_;
    }

private:
    std::vector<T*>& list_;
    bool isHanded_ = false;
};

} // namespace

HDNTBlock* block(std::string_view name, std::vector<HDNTBlockEntity*>& entities, HDNTNetlist* netlist,
                 HDNTNetlist::Section section, const yyltype& place) {
    std::unique_ptr<HDNTNetlist> ownedNetlist(netlist);
    const std::string blockName(name);
    forgetAttributes();
    HDNTLibrary& library = target();
    if (netlist) netlist->setSection(section);
    Handed<HDNTBlockEntity> handed(entities);
    std::unique_ptr<HDNTBlock> result(new HDNTBlock(blockName, handed.list(), ownedNetlist.release(), &library));
    result->setLocation(place);
    pendingBlocks().add(result.get());
    return result.release();
}

void mapping(std::string_view blockName, HDNTNetlist* netlist, HDNTNetlist::Section section, const yyltype& place) {
    std::unique_ptr<HDNTNetlist> owned(netlist);
    const std::string name(blockName);
    HDNTLibrary& library = target();
    netlist->setSection(section);
    netlist->setLocation(place);
    const char* reason = "the name is not a registered cellview type";
    if (HDNTCellviewLib::getGlobal()->getType(name) != HDNTCellviewLib::UNKNOWN) {
        if (attach(owned, library, name)) return;
        reason = "no block of that name was declared before";
    }
    HDNTError::notify({HDNTNotice::Kind::MappingDropped, place, name, reason});
    library.addDroppedMapping({name, reason, place});
}

void beginParse() noexcept {
    pendingBlocks().clear();
    forgetAttributes();
}

void library(std::string_view name, std::vector<HDNTDecl*>& decls, const yyltype& place) {
    HDNTLibrary& library = target();
    library.setLocation(place);
    tellOfFunctions(decls, library);
    library.init(std::string(name), &decls);
    decls.clear();
}

} // namespace hdnt::frontend::build
