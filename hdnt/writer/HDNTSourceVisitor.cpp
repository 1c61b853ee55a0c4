#include "hdnt/writer/HDNTSourceVisitor.h"

#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/writer/Elements.internal.h"
#include "hdnt/writer/ExpressionBuffer.internal.h"
#include "hdnt/writer/Line.internal.h"
#include "hdnt/writer/PropertyText.internal.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

using namespace hdnt::writer;

HDNTSourceVisitor::HDNTSourceVisitor(FILE* stream, std::vector<std::string>* problems)
    : HDNTPrintVisitor(stream), problems_(problems) {}
HDNTSourceVisitor::~HDNTSourceVisitor() = default;

void HDNTSourceVisitor::cannotWrite(const std::string& what) {
    complete_ = false;
    if (!problems_) return;
    std::string place;
    if (block_) place += "block \"" + block_->getName() + "\", ";
    if (bus_) place += "pin \"" + bus_->getName() + "\", ";
    place += kind_;
    if (name_) place += " \"" + *name_ + "\"";
    problems_->push_back(place + ": cannot write " + what);
}

void HDNTSourceVisitor::enterElement(const char* kind, const std::string* name) {
    kind_ = kind;
    name_ = name;
}

Line& HDNTSourceVisitor::startLine() {
    atOpening_ = false;
    if (!std::exchange(branchDue_, false)) return HDNTPrintVisitor::startLine();
    write("\n");
    return HDNTPrintVisitor::startLine().add("  ");
}

void HDNTSourceVisitor::openBrace(Line& line, int32_t) { line.add(" {\n"); }

void HDNTSourceVisitor::writeEmptyLine() {
    if (!atOpening_) HDNTPrintVisitor::writeEmptyLine();
}

void HDNTSourceVisitor::appendText(Line& line, const std::string& text) {
    appendSourceText(line, text, [this](const std::string& what) { cannotWrite(what); });
}

void HDNTSourceVisitor::appendNumber(Line& line, double value) {
    appendSourceNumber(line, value, [this](const std::string& what) { cannotWrite(what); });
}

// The grammar knows bit vectors by a width, which functions have no use for.
void HDNTSourceVisitor::appendTypeName(Line& line, HATAttrTypes::AttrType type) {
    if (type == HATAttrTypes::TypeBitHex) line.add("1'h");
    else if (type == HATAttrTypes::TypeBitBinary) line.add("1'b");
    else HDNTPrintVisitor::appendTypeName(line, type);
}

void HDNTSourceVisitor::appendPin(Line& line, const HDNTBlockPinName& pin) {
    if (!pin.inverted() && pin.pinName().starts_with('~')) cannotWrite("a pin name that begins with \"~\"");
    if (!pin.instName().empty()) return HDNTPrintVisitor::appendPin(line, pin);
    appendText(line, pin.inverted() ? '~' + pin.pinName() : pin.pinName());
}

void HDNTSourceVisitor::checkFunctionName(const std::string& name) {
    if (!isIdentifier(name))
        cannotWrite("the function name \"" + name + "\", which is no identifier of fewer than 32 characters");
}

void HDNTSourceVisitor::visit(HDNTLibrary* library) {
    enterElement("library", nullptr);
    HDNTPrintVisitor::visit(library);
    atOpening_ = true;
}

void HDNTSourceVisitor::visit(HDNTFunctionDecl* function) {
    enterElement("function", &function->getName());
    checkFunctionName(function->getName());
    Line& line = startLine();
    appendFunction(line, *function);
    write(line);
}

void HDNTSourceVisitor::visit(HDNTBlock* block) {
    block_ = block;
    enterElement("declaration", nullptr);
    if (!groupReadsBack(*block)) cannotWrite("its primitive group");
    beginBlock(*block, false);
}

void HDNTSourceVisitor::postVisit(HDNTBlock* block) {
    mappingDue_ = block->hasOwnNetlist();
    endBlock();
    if (!mappingDue_) write("\n");
}

void HDNTSourceVisitor::visit(HDNTBus* bus) {
    bus_ = bus;
    enterElement("declaration", nullptr);
    HDNTPrintVisitor::visit(bus);
}

void HDNTSourceVisitor::postVisit(HDNTBus* bus) {
    bus_ = nullptr;
    HDNTPrintVisitor::postVisit(bus);
}

void HDNTSourceVisitor::visit(HDNTProperty* property) {
    enterElement("property", &property->getName());
    Line& line = startLine();
    appendSource(line, *property, [this](const std::string& what) { cannotWrite(what); });
    write(line.add("\n"));
}

bool HDNTSourceVisitor::visitsPins() const { return typeid(*this) != typeid(HDNTSourceVisitor); }

bool HDNTSourceVisitor::enter(HDNTNetlist* netlist) {
    const HDNTBlock* const block = netlist->getTypeBlock();
    return !block || block->hasOwnNetlist();
}

void HDNTSourceVisitor::visit(HDNTNetlist* netlist) {
    enterElement("mapping", nullptr);
    for (const HDNTFunctionCall* call : netlist->preInstanceCalls()) checkStatement(call);
    for (const HDNTFunctionCall* call : netlist->postInstanceCalls()) checkStatement(call);
    if (std::exchange(mappingDue_, false)) write(" ");
    else write(startLine());
    write(hdnt::words::sections.wordOf(netlist->section()));
    write(" {\n");
    indentMore();
    atOpening_ = true;
}

void HDNTSourceVisitor::visit(HDNTBlockInst* inst) {
    enterElement("instance", &inst->instName());
    HDNTPrintVisitor::visit(inst);
}

// The signals of a ranged declaration follow each other.
void HDNTSourceVisitor::visit(HDNTSignal* signal) {
    enterElement("signal", &signal->name());
    if (const HDNTSigList* const list = signal->sigList()) {
        if (list->firstExpanded() != signal) return;
        Line& line = startLine();
        line.add("signal ");
        appendText(line, list->name());
        return write(line.add(";\n"));
    }
    const bool readsAsList = !signal->connect() && signal->isMultipleInstances(signal->name());
    if (readsAsList && !nodeCast<HDNTSigList>(signal))
        cannotWrite("a single signal without pins whose name has brackets, which would be a list");
    HDNTPrintVisitor::visit(signal);
}

void HDNTSourceVisitor::visit(HDNTConnect* connect) {
    enterElement("connection of signal", &connect->signalName());
    if (connect->pins().empty()) cannotWrite("a list of pins that is empty");
    HDNTPrintVisitor::visit(connect);
}

void HDNTSourceVisitor::enterAssign(const HDNTAssignProperty& assign) {
    enterElement("assignment to", &assign.propName());
    if (!assign.value()) cannotWrite("an assignment without a value");
    checkExpression(assign.value());
}

void HDNTSourceVisitor::visit(HDNTAssignBlockProperty* assign) {
    enterAssign(*assign);
    HDNTPrintVisitor::visit(assign);
}

void HDNTSourceVisitor::postVisit(HDNTAssignBlockProperty* assign) {
    checkDepth(assign, 5 + text_->depth());
    HDNTPrintVisitor::postVisit(assign);
}

void HDNTSourceVisitor::visit(HDNTAssignPinProperty* assign) {
    enterAssign(*assign);
    if (assign->pinName().starts_with('~')) cannotWrite("a pin name that begins with \"~\"");
    HDNTPrintVisitor::visit(assign);
}

void HDNTSourceVisitor::postVisit(HDNTAssignPinProperty* assign) {
    checkDepth(assign, 6 + text_->depth());
    HDNTPrintVisitor::postVisit(assign);
}

// What a text nests is more than what the model does: parentheses that it cannot do without.
void HDNTSourceVisitor::checkDepth(const HDNTNetlistEntity* statement, size_t symbols) {
    constexpr size_t aroundStatements = 13;
    symbols += aroundStatements;
    for (const HDNTNode* node = statement; const HDNTNode* const around = node->getParent(); node = around) {
        const auto* const branch = nodeCast<HDNTIfStmt>(around);
        if (branch) symbols += node == branch->elseStmt() ? 6 : 4;
        else if (nodeCast<HDNTStmtBlock>(around)) symbols += 2;
        else break;
    }
    const int limit = std::max(HDNTLimits::get().parserDepth, 200);
    if (symbols >= static_cast<size_t>(limit))
        cannotWrite("what nests deeper than the limit parserDepth allows, which is " + std::to_string(limit));
}

// What the grammar knows as a statement, and visitors deliver.
void HDNTSourceVisitor::checkStatement(const HDNTNetlistEntity* statement) {
    const auto* const call = nodeCast<HDNTFunctionCall>(statement);
    if (isPassedOver(statement)) cannotWrite("a statement that is missing, or a statement block that is not enabled");
    else if (call ? !call->isStatement() : dynamic_cast<const HDNTExpr*>(statement) != nullptr)
        cannotWrite("an expression that stands as a statement");
}

// Null is told of elsewhere.
void HDNTSourceVisitor::checkExpression(const HDNTExpr* expr) {
    const auto* const call = nodeCast<HDNTFunctionCall>(expr);
    if (call && call->isStatement()) cannotWrite("a call as an operand that is marked as a statement");
    if (expr && !nodeCast<HDNTExpr>(expr)) cannotWrite("an expression of a class that the language does not have");
}

void HDNTSourceVisitor::visit(HDNTStmtBlock* block) {
    enterElement("statement block", nullptr);
    for (const HDNTNetlistEntity* statement : block->statements()) checkStatement(statement);
    checkDepth(block, 3);
    if (!std::exchange(branchDue_, false)) return HDNTPrintVisitor::visit(block);
    write(" {\n");
    indentMore();
}

void HDNTSourceVisitor::visit(HDNTIfStmt* stmt) {
    enterElement("if statement", nullptr);
    if (!stmt->condition()) cannotWrite("an if statement without a condition");
    checkExpression(stmt->condition());
    if (stmt->elseStmt() && takesElse(stmt->thenStmt()))
        cannotWrite("an if statement without \"else\" as the branch of one that has it");
    if (std::exchange(branchDue_, false)) write(" ");
    else write(startLine());
    write("if (");
}

void HDNTSourceVisitor::writeBranch(const HDNTNetlistEntity* branch) {
    enterElement("if statement", nullptr);
    checkStatement(branch);
    branchDue_ = !isPassedOver(branch);
    if (!branchDue_) write("\n");
}

void HDNTSourceVisitor::postVisit(HDNTIfStmt* stmt) {
    checkDepth(stmt, std::max<size_t>(2 + text_->depth(), 6));
    writeExpression(")");
    writeBranch(stmt->thenStmt());
}

void HDNTSourceVisitor::elseVisit(HDNTIfStmt* stmt) {
    write(startLine().add("else"));
    writeBranch(stmt->elseStmt());
}

void HDNTSourceVisitor::visit(HDNTFunctionCall* call) {
    if (call->isStatement()) {
        enterElement("call of function", &call->name());
        write(startLine());
    }
    checkFunctionName(call->name());
    for (const HDNTExpr* actual : call->actuals()) checkExpression(actual);
    HDNTPrintVisitor::visit(call);
}

void HDNTSourceVisitor::postVisit(HDNTFunctionCall* call) {
    if (!call->isStatement()) return HDNTPrintVisitor::postVisit(call);
    text_->endCall();
    checkDepth(call, text_->depth());
    writeExpression(";\n");
}

void HDNTSourceVisitor::visit(HDNTCompoundExpr* expr) {
    const bool unary = expr->op() == HDNTExpr::NEGATE || expr->op() == HDNTExpr::NOT;
    if (expr->op() > HDNTExpr::EQUAL || !expr->rhs() || unary != (expr->lhs() == nullptr))
        cannotWrite("an operation that is not complete");
    checkExpression(expr->lhs());
    checkExpression(expr->rhs());
    HDNTPrintVisitor::visit(expr);
}
