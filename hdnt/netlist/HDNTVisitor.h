#pragma once

#include "hdnt/platform/Export.h"

class HDNTAssignBlockProperty;
class HDNTAssignPinProperty;
class HDNTBlock;
class HDNTBlockInst;
class HDNTBlockPinName;
class HDNTBoolConstant;
class HDNTBus;
class HDNTCompoundExpr;
class HDNTConnect;
class HDNTDoubleConstant;
class HDNTFunctionCall;
class HDNTFunctionDecl;
class HDNTIfStmt;
class HDNTIntConstant;
class HDNTLibrary;
class HDNTNetlist;
class HDNTPin;
class HDNTPrimGroup;
class HDNTProperty;
class HDNTSignal;
class HDNTStmtBlock;
class HDNTStringConstant;

/// Walks a library, a block or a netlist: the model objects' accept() calls these in a fixed order, given in
/// hdnt/netlist/Traversal.cpp. Override what is needed; by default nothing happens. Objects are borrowed, never null.
///
/// The order of the operations is part of the interface.
class HDNT_API HDNTVisitor {
public:
    HDNTVisitor() = default;
    HDNTVisitor(const HDNTVisitor&) = delete;
    virtual ~HDNTVisitor();

    /// Asked before a netlist; false passes over it without any further call for it.
    virtual bool enter(HDNTNetlist*) { return true; }
    virtual void visit(HDNTLibrary*) {}
    virtual void postVisit(HDNTLibrary*) {}
    virtual void visit(HDNTFunctionDecl*) {}
    virtual void postVisit(HDNTFunctionDecl*) {}
    virtual void visit(HDNTBlock*) {}
    virtual void postVisit(HDNTBlock*) {}
    virtual void visit(HDNTBlockInst*) {}
    virtual void postVisit(HDNTBlockInst*) {}
    virtual void visit(HDNTPin*) {}
    virtual void postVisit(HDNTPin*) {}
    virtual void visit(HDNTBus*) {}
    virtual void postVisit(HDNTBus*) {}
    virtual void visit(HDNTProperty*) {}
    virtual void postVisit(HDNTProperty*) {}
    virtual void visit(HDNTSignal*) {}
    virtual void postVisit(HDNTSignal*) {}
    virtual void visit(HDNTConnect*) {}
    virtual void postVisit(HDNTConnect*) {}
    virtual void visit(HDNTAssignBlockProperty*) {}
    virtual void postVisit(HDNTAssignBlockProperty*) {}
    virtual void visit(HDNTAssignPinProperty*) {}
    virtual void postVisit(HDNTAssignPinProperty*) {}
    virtual void visit(HDNTNetlist*) {}
    virtual void postVisit(HDNTNetlist*) {}
    /// Before each part of a netlist that has something in it, from the signals on.
    virtual void sectionSeparator(HDNTNetlist*) {}
    virtual void visit(HDNTFunctionCall*) {}
    virtual void postVisit(HDNTFunctionCall*) {}
    virtual void visit(HDNTStmtBlock*) {}
    virtual void postVisit(HDNTStmtBlock*) {}
    virtual void visit(HDNTIfStmt*) {}
    virtual void postVisit(HDNTIfStmt*) {}
    /// Before the else branch, if there is one.
    virtual void elseVisit(HDNTIfStmt*) {}
    virtual void visit(HDNTBlockPinName*) {}
    virtual void postVisit(HDNTBlockPinName*) {}
    virtual void visit(HDNTIntConstant*) {}
    virtual void postVisit(HDNTIntConstant*) {}
    virtual void visit(HDNTBoolConstant*) {}
    virtual void postVisit(HDNTBoolConstant*) {}
    virtual void visit(HDNTDoubleConstant*) {}
    virtual void postVisit(HDNTDoubleConstant*) {}
    virtual void visit(HDNTStringConstant*) {}
    virtual void postVisit(HDNTStringConstant*) {}
    virtual void visit(HDNTPrimGroup*) {}
    virtual void postVisit(HDNTPrimGroup*) {}
    virtual void visit(HDNTCompoundExpr*) {}
    virtual void postVisit(HDNTCompoundExpr*) {}

    /// Whether a block's pins are visited. A visitor that does nothing with them says no and is spared the walk over
    /// every bit of every bus, which are most of what a library consists of.
    virtual bool visitsPins() const { return true; }
};
