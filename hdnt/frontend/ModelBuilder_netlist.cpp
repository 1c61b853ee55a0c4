// The builder's part for what mapping netlists are made of.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"

#include <memory>
#include <span>

namespace hdnt::frontend::build {

// A netlist has no place for statement blocks at its top level.
HDNTNetlist* netlist(std::vector<HDNTNetlistEntity*>& entities, const yyltype& place) {
    for (const HDNTNetlistEntity* entity : entities)
        if (nodeCast<HDNTStmtBlock>(entity))
            HDNTError::notify({HDNTNotice::Kind::StatementDropped, *entity->getLocation(), {}, {}});
    std::erase_if(entities, [](HDNTNetlistEntity* entity) {
        const std::unique_ptr<HDNTStmtBlock> homeless(nodeCast<HDNTStmtBlock>(entity));
        return homeless != nullptr;
    });
    auto* const result = new HDNTNetlist(&entities);
    entities.clear();
    return placed(result, place);
}

HDNTNetlistEntity* inst(std::string_view name, std::string_view type, const yyltype& place) {
    return placed(new HDNTBlockInst(name, type), place);
}

HDNTNetlistEntity* assignBlockProperty(std::string_view inst, std::string_view property, HDNTExpr* value,
                                       const yyltype& place) {
    return placed(new HDNTAssignBlockProperty(inst, property, value), place);
}

HDNTNetlistEntity* assignPinProperty(HDNTBlockPinName* pin, std::string_view property, HDNTExpr* value,
                                     const yyltype& place) {
    const std::unique_ptr<HDNTBlockPinName> owned(pin);
    std::unique_ptr<HDNTExpr> ownedValue(value);
    if (pin->inverted())
        HDNTError::notify({HDNTNotice::Kind::InversionDropped, *pin->getLocation(), pin->pinName(), {}});
    return placed(new HDNTAssignPinProperty(pin->instName(), pin->pinName(), property, ownedValue.release()), place);
}

HDNTNetlistEntity* ifStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt,
                          const yyltype& place) {
    return placed(new HDNTIfStmt(condition, thenStmt, elseStmt), place);
}

HDNTNetlistEntity* stmtBlock(std::vector<HDNTNetlistEntity*>& statements, std::size_t begin, const yyltype& place) {
    auto* const result = new HDNTStmtBlock(std::span(statements).subspan(begin));
    statements.resize(begin);
    return placed(result, place);
}

HDNTNetlistEntity* connect(std::string_view signal, std::vector<HDNTPinInst*>& pins, const yyltype& place) {
    auto* const result = new HDNTConnect(signal, pins);
    pins.clear();
    return placed(result, place);
}

HDNTNetlistEntity* signal(std::string_view name, const yyltype& place) {
    if (name.find_first_of("[]") == name.npos) return placed(new HDNTSignal(name, nullptr), place);
    tellOfRange(std::string(name), place);
    return placed(new HDNTSigList(name), place);
}

HDNTNetlistEntity* signal(std::string_view name, std::vector<HDNTPinInst*>& pins, const yyltype& place) {
    auto* const result = new HDNTSignal(name, pins);
    pins.clear();
    result->connect()->setLocation(place);
    return placed(result, place);
}

HDNTBlockPinName* pinInst(std::string_view inst, std::string_view pin, const yyltype& place) {
    return placed(new HDNTBlockPinName(inst, pin), place);
}

HDNTExpr* compound(HDNTExpr* lhs, HDNTExpr::FOPERATOR op, HDNTExpr* rhs, const yyltype& place) {
    return placed(new HDNTCompoundExpr(lhs, op, rhs), place);
}

HDNTExpr* constant(int value, const yyltype& place) { return placed(new HDNTIntConstant(value), place); }
HDNTExpr* constant(double value, const yyltype& place) { return placed(new HDNTDoubleConstant(value), place); }
HDNTExpr* constant(bool value, const yyltype& place) { return placed(new HDNTBoolConstant(value), place); }
HDNTExpr* constant(std::string_view value, const yyltype& place) {
    return placed(new HDNTStringConstant(value), place);
}

HDNTFunctionCall* call(std::string_view name, std::vector<HDNTExpr*>& arguments, std::size_t begin,
                       const yyltype& place) {
    auto* const result = new HDNTFunctionCall(name, std::span(arguments).subspan(begin));
    arguments.resize(begin);
    return placed(result, place);
}

} // namespace hdnt::frontend::build
