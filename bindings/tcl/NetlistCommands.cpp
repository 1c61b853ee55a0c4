#include "bindings/tcl/Subcommand.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::tcl {

namespace {

std::string_view section(HDNTNetlist& netlist) { return words::sections.wordOf(netlist.section()); }

// Instances may name a block of the common library, which is loaded for that.
Tcl_Obj* typeBlock(const Call& call) {
    const auto& instance = call.as<HDNTBlockInst>();
    HDNTLibrary& library = *call.life->library();
    if (HDNTBlock* const block = library.getTypeBlockByName(instance.typeName(), true)) return call.wrap(block);
    HDNTBlock* found = nullptr;
    inSection(LoadSection::Changes, instance.typeName(), [&] { found = instance.getTypeBlock(&library); });
    return found ? call.session.wrap(found, Session::lifeOf(*found->getLibrary())) : Tcl_NewObj();
}

std::string resultType(HDNTFunctionDecl& function) { return HDNTProperty::getTypeName(function.getType()); }
std::vector<std::string> formals(HDNTFunctionDecl& function) {
    std::vector<std::string> types;
    for (size_t i = 0; i < function.getNumFormals(); ++i)
        types.push_back(HDNTProperty::getTypeName(function.getFormal(i)));
    return types;
}

std::vector<Subcommand> ofNetlist() {
    return {field<section>("section"),
            field<&HDNTNetlist::getTypeBlock>("block"),
            field<&HDNTNetlist::signals>("signals"),
            field<&HDNTNetlist::connects>("connects"),
            field<&HDNTNetlist::instances>("instances"),
            field<&HDNTNetlist::blockPropertyAssigns>("block_property_assigns"),
            field<&HDNTNetlist::pinPropertyAssigns>("pin_property_assigns"),
            field<&HDNTNetlist::ifStmts>("ifs"),
            field<&HDNTNetlist::preInstanceCalls>("pre_instance_calls"),
            field<&HDNTNetlist::postInstanceCalls>("post_instance_calls"),
            field<&HDNTNetlist::getReferencedInstanceName>("referenced_instance"),
            field<scripts::fields::isMapLibrary>("is_map_library")};
}

std::vector<Subcommand> ownSubcommands(HDNTNodeKind kind) {
    switch (kind) {
    case HDNTNodeKind::Netlist: return ofNetlist();
    case HDNTNodeKind::BlockInst:
        return {field<&HDNTBlockInst::instName>("name"), field<&HDNTBlockInst::typeName>("type_name"),
                Subcommand{"type_block", typeBlock, 0, 0, nullptr, false}};
    case HDNTNodeKind::Signal:
        return {field<&HDNTSignal::name>("name"), field<&HDNTSignal::connect>("connect"),
                field<&HDNTSignal::isOne>("is_one"), field<&HDNTSignal::isZero>("is_zero")};
    case HDNTNodeKind::Connect:
        return {field<&HDNTConnect::signalName>("signal_name"), field<&HDNTConnect::getSignal>("signal"),
                field<&HDNTConnect::pins>("pins")};
    case HDNTNodeKind::AssignBlockProperty:
        return {field<&HDNTAssignBlockProperty::instName>("instance"),
                field<&HDNTAssignBlockProperty::propName>("property"), field<&HDNTAssignBlockProperty::value>("value")};
    case HDNTNodeKind::AssignPinProperty:
        return {field<&HDNTAssignPinProperty::instName>("instance"), field<&HDNTAssignPinProperty::pinName>("pin"),
                field<&HDNTAssignPinProperty::propName>("property"), field<&HDNTAssignPinProperty::value>("value")};
    case HDNTNodeKind::IfStmt:
        return {field<&HDNTIfStmt::condition>("condition"), field<&HDNTIfStmt::thenStmt>("then"),
                field<&HDNTIfStmt::elseStmt>("otherwise")};
    case HDNTNodeKind::StmtBlock: return {field<&HDNTStmtBlock::statements>("statements")};
    case HDNTNodeKind::BlockPinName:
        return {field<&HDNTBlockPinName::instName>("instance"), field<&HDNTBlockPinName::pinName>("name"),
                field<&HDNTBlockPinName::inverted>("inverted")};
    default: return {field<&HDNTFunctionDecl::getName>("name"), field<resultType>("type"), field<formals>("arguments")};
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
