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

#include <algorithm>
#include <memory>

namespace hdnt::frontend::build {

// A netlist has no place for statement blocks at its top level.
HDNTNetlist* netlist(std::vector<HDNTNetlistEntity*>* entities, const yyltype& place) {
    OwnedList<HDNTNetlistEntity> owned(entities);
    const auto homeless = std::stable_partition(
        entities->begin(), entities->end(), [](HDNTNetlistEntity* entity) { return !nodeCast<HDNTStmtBlock>(entity); });
    for (auto entity = homeless; entity != entities->end(); ++entity)
        HDNTError::notify({HDNTNotice::Kind::StatementDropped, *(*entity)->getLocation(), {}, {}});
    std::for_each(homeless, entities->end(), [](HDNTNetlistEntity* entity) { delete entity; });
    entities->erase(homeless, entities->end());
    auto* const result = new HDNTNetlist(entities);
    owned.releaseItems();
    return placed(result, place);
}

HDNTNetlistEntity* inst(std::string_view name, std::string_view type, const yyltype& place) {
    return placed(new HDNTBlockInst(std::string(name), std::string(type)), place);
}

HDNTNetlistEntity* assignBlockProperty(std::string_view inst, std::string_view property, HDNTExpr* value,
                                       const yyltype& place) {
    std::unique_ptr<HDNTExpr> owned(value);
    const std::string instName(inst);
    const std::string propertyName(property);
    return placed(new HDNTAssignBlockProperty(instName, propertyName, owned.release()), place);
}

HDNTNetlistEntity* assignPinProperty(HDNTBlockPinName* pin, std::string_view property, HDNTExpr* value,
                                     const yyltype& place) {
    const std::unique_ptr<HDNTBlockPinName> owned(pin);
    std::unique_ptr<HDNTExpr> ownedValue(value);
    const std::string name(property);
    if (pin->inverted())
        HDNTError::notify({HDNTNotice::Kind::InversionDropped, *pin->getLocation(), pin->pinName(), {}});
    return placed(new HDNTAssignPinProperty(pin->instName(), pin->pinName(), name, ownedValue.release()), place);
}

HDNTNetlistEntity* ifStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt,
                          const yyltype& place) {
    return placed(new HDNTIfStmt(condition, thenStmt, elseStmt), place);
}

HDNTNetlistEntity* stmtBlock(std::vector<HDNTNetlistEntity*>* statements, const yyltype& place) {
    return placed(new HDNTStmtBlock(statements), place);
}

HDNTNetlistEntity* connect(std::string_view signal, std::vector<HDNTPinInst*>* pins, const yyltype& place) {
    OwnedList<HDNTPinInst> owned(pins);
    const std::string name(signal);
    return placed(new HDNTConnect(name, owned.release()), place);
}

HDNTNetlistEntity* signal(std::string_view name, std::vector<HDNTPinInst*>* pins, const yyltype& place) {
    OwnedList<HDNTPinInst> owned(pins);
    const std::string text(name);
    if (!pins && text.find_first_of("[]") != text.npos) {
        tellOfRange(text, place);
        return placed(new HDNTSigList(text), place);
    }
    auto* const result = placed(new HDNTSignal(text, owned.release()), place);
    if (result->connect()) result->connect()->setLocation(place);
    return result;
}

HDNTBlockPinName* pinInst(std::string_view inst, std::string_view pin, const yyltype& place) {
    return placed(new HDNTBlockPinName(std::string(inst), std::string(pin)), place);
}

HDNTExpr* compound(HDNTExpr* lhs, HDNTExpr::FOPERATOR op, HDNTExpr* rhs, const yyltype& place) {
    return placed(new HDNTCompoundExpr(lhs, op, rhs), place);
}

HDNTExpr* constant(int value, const yyltype& place) { return placed(new HDNTIntConstant(value), place); }
HDNTExpr* constant(double value, const yyltype& place) { return placed(new HDNTDoubleConstant(value), place); }
HDNTExpr* constant(bool value, const yyltype& place) { return placed(new HDNTBoolConstant(value), place); }
HDNTExpr* constant(std::string_view value, const yyltype& place) {
    return placed(new HDNTStringConstant(std::string(value)), place);
}

HDNTFunctionCall* call(std::string_view name, std::vector<HDNTExpr*>* actuals, const yyltype& place) {
    OwnedList<HDNTExpr> owned(actuals);
    const std::string text(name);
    return placed(new HDNTFunctionCall(text, owned.release()), place);
}

} // namespace hdnt::frontend::build
