// Every accept() of the model: the order in which visitors see it, as HDNTVisitor.h gives it.
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/CompoundWalk.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/HDNTVisitor.h"

HDNTVisitor::~HDNTVisitor() = default;
HDNTPinChoiceVisitor::~HDNTPinChoiceVisitor() = default;

static bool visitsPins(const HDNTVisitor& visitor) {
    const auto* const choice = dynamic_cast<const HDNTPinChoiceVisitor*>(&visitor);
    return !choice || choice->visitsPins();
}

// In a large library they have left the caches since they were read; so they are called for side by side.
template <typename Node>
static void acceptAll(const std::vector<Node*>& nodes, HDNTVisitor& visitor) {
    for (const Node* node : nodes) __builtin_prefetch(node);
    for (Node* node : nodes) node->accept(visitor);
}

void HDNTLibrary::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    acceptAll(functions_, visitor);
    for (size_t i = 0; i < getNumTypeBlocks(true); ++i) getTypeBlock(i)->accept(visitor);
    visitor.postVisit(this);
}

// In acceptOwn(), visitors get nodes that they could change; that they change none is their part.

template <typename Node>
static void acceptConst(const Node& node, HDNTVisitor& visitor) {
    const_cast<Node&>(node).accept(visitor);
}

void HDNTFunctionDecl::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTBus::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTPin::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTProperty::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTNetlist::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTNetlistEntity::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }
void HDNTPinInst::acceptOwn(HDNTVisitor& visitor) const { acceptConst(*this, visitor); }

void HDNTLibrary::acceptOwn(HDNTVisitor& visitor) const {
    auto* const library = const_cast<HDNTLibrary*>(this);
    visitor.visit(library);
    acceptAll(functions_, visitor);
    for (const HDNTBlock* block : blocks_) block->acceptOwn(visitor);
    visitor.postVisit(library);
}

void HDNTFunctionDecl::accept(HDNTVisitor& visitor) { visitor.visit(this); }

void HDNTBlock::accept(HDNTVisitor& visitor) {
    acceptDeclared(visitor);
    if (HDNTNetlist* const netlist = getNetlist()) netlist->accept(visitor);
}

void HDNTBlock::acceptOwn(HDNTVisitor& visitor) const {
    const_cast<HDNTBlock*>(this)->acceptDeclared(visitor);
    if (hasOwnNetlist()) netlist_->accept(visitor);
}

void HDNTBlock::acceptDeclared(HDNTVisitor& visitor) {
    visitor.visit(this);
    acceptAll(buses_, visitor);
    if (visitsPins(visitor)) acceptAll(allPins(), visitor);
    acceptAll(properties_, visitor);
    visitor.postVisit(this);
}

void HDNTBus::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    if (properties_) acceptAll(*properties_, visitor);
    visitor.postVisit(this);
}

void HDNTPin::accept(HDNTVisitor& visitor) { visitor.visit(this); }
void HDNTProperty::accept(HDNTVisitor& visitor) { visitor.visit(this); }

void HDNTNetlist::accept(HDNTVisitor& visitor) {
    if (!visitor.enter(this)) return;
    const auto section = [&](const auto& entities) {
        if (!entities.empty()) visitor.sectionSeparator(this);
        acceptAll(entities, visitor);
    };
    visitor.visit(this);
    acceptAll(preInstanceCalls_, visitor);
    acceptAll(instances_, visitor);
    section(signals_);
    section(connects_);
    section(pinPropertyAssigns_);
    section(blockPropertyAssigns_);
    section(ifStmts_);
    acceptAll(postInstanceCalls_, visitor);
    visitor.postVisit(this);
}

void HDNTBlockInst::accept(HDNTVisitor& visitor) { visitor.visit(this); }

void HDNTSignal::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    if (connect_) connect_->accept(visitor);
    visitor.postVisit(this);
}

void HDNTConnect::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    acceptAll(pins_, visitor);
    visitor.postVisit(this);
}

void HDNTBlockPinName::accept(HDNTVisitor& visitor) { visitor.visit(this); }

template <typename Assign>
static void acceptAssign(Assign* assign, HDNTVisitor& visitor) {
    visitor.visit(assign);
    if (HDNTExpr* const value = assign->value()) value->accept(visitor);
    visitor.postVisit(assign);
}

void HDNTAssignBlockProperty::accept(HDNTVisitor& visitor) { acceptAssign(this, visitor); }
void HDNTAssignPinProperty::accept(HDNTVisitor& visitor) { acceptAssign(this, visitor); }

void HDNTStmtBlock::accept(HDNTVisitor& visitor) {
    if (!enabled()) return;
    visitor.visit(this);
    acceptAll(statements_, visitor);
    visitor.postVisit(this);
}

// postVisit comes between the condition and the branches.
void HDNTIfStmt::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    if (condition_) condition_->accept(visitor);
    visitor.postVisit(this);
    if (thenStmt_) thenStmt_->accept(visitor);
    if (!elseStmt_) return;
    visitor.elseVisit(this);
    elseStmt_->accept(visitor);
}

void HDNTFunctionCall::accept(HDNTVisitor& visitor) {
    visitor.visit(this);
    acceptAll(actuals_, visitor);
    visitor.postVisit(this);
}

// An operator is visited between its operands.
void HDNTCompoundExpr::accept(HDNTVisitor& visitor) {
    hdnt::netlist::walk(
        *this, [&](HDNTExpr& leaf) { leaf.accept(visitor); }, [&](HDNTCompoundExpr& expr) { visitor.visit(&expr); },
        [&](HDNTCompoundExpr& expr) { visitor.postVisit(&expr); });
}

void HDNTIntConstant::accept(HDNTVisitor& visitor) { visitor.visit(this); }
void HDNTDoubleConstant::accept(HDNTVisitor& visitor) { visitor.visit(this); }
void HDNTBoolConstant::accept(HDNTVisitor& visitor) { visitor.visit(this); }
void HDNTStringConstant::accept(HDNTVisitor& visitor) { visitor.visit(this); }
