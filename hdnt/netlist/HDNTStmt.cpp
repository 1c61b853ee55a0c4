#include "hdnt/netlist/HDNTStmt.h"

#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

HDNTStmtBlock::HDNTStmtBlock(std::vector<HDNTNetlistEntity*>* stmts) {
    setKind(HDNTNodeKind::StmtBlock);
    const std::unique_ptr<std::vector<HDNTNetlistEntity*>> owned(stmts);
    if (stmts) statements_ = std::move(*stmts);
}

HDNTStmtBlock::HDNTStmtBlock(std::span<HDNTNetlistEntity* const> stmts) : statements_(stmts.begin(), stmts.end()) {
    setKind(HDNTNodeKind::StmtBlock);
}

HDNTStmtBlock::~HDNTStmtBlock() {
    for (const HDNTNetlistEntity* stmt : statements_) delete stmt;
}

void HDNTStmtBlock::check() {
    for (HDNTNetlistEntity* stmt : statements_) stmt->check();
}

void HDNTStmtBlock::finalize() {
    for (HDNTNetlistEntity* stmt : statements_) {
        stmt->setParent(this);
        stmt->finalize();
    }
}

HDNTIfStmt::HDNTIfStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt)
    : condition_(condition), thenStmt_(thenStmt), elseStmt_(elseStmt) {
    setKind(HDNTNodeKind::IfStmt);
}

HDNTIfStmt::~HDNTIfStmt() = default;

void HDNTIfStmt::check() {
    for (HDNTNetlistEntity* part : {static_cast<HDNTNetlistEntity*>(condition()), thenStmt(), elseStmt()})
        if (part) part->check();
}

void HDNTIfStmt::finalize() {
    for (HDNTNetlistEntity* part : {static_cast<HDNTNetlistEntity*>(condition()), thenStmt(), elseStmt()}) {
        if (!part) continue;
        part->setParent(this);
        part->finalize();
    }
}

bool HDNTIfStmt::conditionIsTrue() const {
    const HDNTExpr* const result = condition_ ? condition_->getEvaluatedExpr() : nullptr;
    if (!result) return false;
    const auto* const value = nodeCast<HDNTValue>(result);
    if (!value) throw HEXAlgException("HDNTIfStmt: Unknown expression type");
    return hdnt::netlist::isTrue(*value);
}
