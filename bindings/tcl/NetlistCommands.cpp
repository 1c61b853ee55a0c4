#include "bindings/shared/MappingFields.h"
#include "bindings/tcl/Subcommand.h"

namespace hdnt::tcl {

namespace {

// Instances may name a block of the common library, which is loaded for that.
Tcl_Obj* typeBlock(const Call& call) {
    const auto& instance = call.as<HDNTBlockInst>();
    HDNTLibrary& library = *call.life->library();
    if (HDNTBlock* const block = library.getTypeBlockByName(instance.typeName(), true)) return call.wrap(block);
    HDNTBlock* found = nullptr;
    inSection(LoadSection::Changes, instance.typeName(), [&] { found = instance.getTypeBlock(&library); });
    return found ? call.session.wrap(found, Session::lifeOf(*found->getLibrary())) : Tcl_NewObj();
}

std::vector<Subcommand> ownSubcommands(HDNTNodeKind kind) {
    switch (kind) {
    case HDNTNodeKind::Netlist: return subcommands(scripts::netlistFields);
    case HDNTNodeKind::BlockInst:
        return subcommands(scripts::instanceFields, {{"type_block", typeBlock, 0, 0, nullptr, false}});
    case HDNTNodeKind::Signal: return subcommands(scripts::signalFields);
    case HDNTNodeKind::Connect: return subcommands(scripts::connectFields);
    case HDNTNodeKind::AssignBlockProperty: return subcommands(scripts::blockAssignFields);
    case HDNTNodeKind::AssignPinProperty: return subcommands(scripts::pinAssignFields);
    case HDNTNodeKind::IfStmt: return subcommands(scripts::ifFields);
    case HDNTNodeKind::StmtBlock: return subcommands(scripts::statementsFields);
    case HDNTNodeKind::BlockPinName: return subcommands(scripts::pinRefFields);
    default: return subcommands(scripts::functionFields);
    }
}

} // namespace

std::vector<Subcommand> netlistSubcommands(HDNTNodeKind kind) {
    std::vector<Subcommand> all = ownSubcommands(kind);
    if (kind != HDNTNodeKind::BlockPinName && kind != HDNTNodeKind::FunctionDecl)
        all.push_back({"visit", visit, 2, -1, "event prefix ?event prefix ...?", false});
    return all;
}

} // namespace hdnt::tcl
