#pragma once

#include "hdnt/netlist/HDNTExpr.h"

#include <memory>
#include <span>

/// Statements in braces.
class HDNT_API HDNTStmtBlock : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::StmtBlock, lastKind = firstKind;

    /// Takes over the statements and deletes the vector, which may be null.
    explicit HDNTStmtBlock(std::vector<HDNTNetlistEntity*>* stmts);
    /// Takes over the statements; the list stays as it is.
    explicit HDNTStmtBlock(std::span<HDNTNetlistEntity* const> stmts);
    ~HDNTStmtBlock() override;
    void check() override;
    void finalize() override;
    void accept(HDNTVisitor& visitor) override;

    const std::vector<HDNTNetlistEntity*>& statements() const { return statements_; }
    /// Not bounds-checked.
    HDNTNetlistEntity* getStmt(size_t index) const { return statements_[index]; }

private:
    std::vector<HDNTNetlistEntity*> statements_;
};

/// `if (condition) statement else statement`
class HDNT_API HDNTIfStmt : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::IfStmt, lastKind = firstKind;

    /// Takes over all three; the last may be null.
    HDNTIfStmt(HDNTExpr* condition, HDNTNetlistEntity* thenStmt, HDNTNetlistEntity* elseStmt);
    ~HDNTIfStmt() override;
    void check() override;
    void finalize() override;
    void accept(HDNTVisitor& visitor) override;

    HDNTExpr* condition() const { return condition_.get(); }
    HDNTNetlistEntity* thenStmt() const { return thenStmt_.get(); }
    HDNTNetlistEntity* elseStmt() const { return elseStmt_.get(); }

    /// Whether the condition's stored result means yes; false when it was never evaluated. Numbers mean yes when they
    /// are not 0; texts are "TRUE" or "FALSE", others throw HEXAlgException as HDNTValue::getBoolValue does. A result
    /// that is no constant throws "HDNTIfStmt: Unknown expression type".
    bool conditionIsTrue() const;

private:
    std::unique_ptr<HDNTExpr> condition_;
    std::unique_ptr<HDNTNetlistEntity> thenStmt_;
    std::unique_ptr<HDNTNetlistEntity> elseStmt_;
};
