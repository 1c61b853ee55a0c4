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

/// Walks a library, a block or a netlist: the model objects' accept() calls these in a fixed order. Override what is
/// needed; by default nothing happens. Objects are borrowed, never null.
///
/// What is in angle brackets is the accept() of what the object holds, in its order:
///
///   library             visit, <functions>, <blocks, those of parents too>, postVisit
///   block               visit, <buses>, <pins>, <properties>, postVisit, then <netlist>
///   bus                 visit, <properties>, postVisit
///   netlist             enter, and if that is true: visit, <calls before the first instance>, <instances>, <signals>,
///                       <connects>, <pin property assignments>, <block property assignments>, <if statements>,
///                       <calls behind the first instance>, postVisit; sectionSeparator before each of the lists from
///                       signals to if statements that is not empty
///   signal              visit, <connect>, postVisit
///   connect             visit, <pin references>, postVisit
///   assignments         visit, <value>, postVisit
///   statement block     visit, <statements>, postVisit; nothing when it is not enabled
///   if statement        visit, <condition>, postVisit, <then>, and when there is an else branch: elseVisit, <else>
///   function call       visit, <arguments>, postVisit
///   operation           <left operand>, visit, <right operand>, postVisit
///   all others          visit
///
/// The order of the operations in this class is part of the interface.
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
};

/// A visitor that may do without the pins of blocks: when it says so, it is spared the walk over every bit of every
/// bus, which are most of what a library consists of.
class HDNT_API HDNTPinChoiceVisitor : public HDNTVisitor {
public:
    ~HDNTPinChoiceVisitor() override;

    /// Whether the pins of a block are visited; asked once for each block.
    virtual bool visitsPins() const = 0;
};
