#include "hdnt/writer/HDNTSourceVisitor.h"

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
#include "hdnt/writer/Elements.h"
#include "hdnt/writer/PropertyText.h"
#include "hdnt/writer/Text.h"

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
    problems_->push_back(place + element_ + ": cannot write " + what);
}

void HDNTSourceVisitor::enterElement(std::string_view kind, const std::string& name) {
    element_.assign(kind).append(" \"").append(name).append("\"");
}

std::string& HDNTSourceVisitor::startLine() {
    std::string& line = HDNTPrintVisitor::startLine();
    if (!std::exchange(branchDue_, false)) return line;
    line.insert(0, "\n");
    return line.append("  ");
}

void HDNTSourceVisitor::openBrace(std::string& line, int32_t) { line += " {\n"; }

void HDNTSourceVisitor::appendText(std::string& line, const std::string& text) {
    appendSourceText(line, text, [this](const std::string& what) { cannotWrite(what); });
}

void HDNTSourceVisitor::appendNumber(std::string& line, double value) {
    appendSourceNumber(line, value, [this](const std::string& what) { cannotWrite(what); });
}

// The grammar knows bit vectors by a width, which functions have no use for.
void HDNTSourceVisitor::appendTypeName(std::string& line, HATAttrTypes::AttrType type) {
    if (type == HATAttrTypes::TypeBitHex) line += "1'h";
    else if (type == HATAttrTypes::TypeBitBinary) line += "1'b";
    else HDNTPrintVisitor::appendTypeName(line, type);
}

void HDNTSourceVisitor::appendPin(std::string& line, const HDNTBlockPinName& pin) {
    if (!pin.inverted() && pin.pinName().starts_with('~')) cannotWrite("a pin name that begins with \"~\"");
    if (!pin.instName().empty()) return HDNTPrintVisitor::appendPin(line, pin);
    appendText(line, pin.inverted() ? '~' + pin.pinName() : pin.pinName());
}

void HDNTSourceVisitor::checkFunctionName(const std::string& name) {
    if (!isIdentifier(name))
        cannotWrite("the function name \"" + name + "\", which is no identifier of fewer than 32 characters");
}

void HDNTSourceVisitor::visit(HDNTLibrary* library) {
    element_ = "library";
    HDNTPrintVisitor::visit(library);
}

void HDNTSourceVisitor::visit(HDNTFunctionDecl* function) {
    enterElement("function", function->getName());
    checkFunctionName(function->getName());
    std::string& line = startLine();
    appendFunction(line, *function);
    write(line);
}

void HDNTSourceVisitor::visit(HDNTBlock* block) {
    block_ = block;
    element_ = "declaration";
    beginBlock(*block, false);
}

void HDNTSourceVisitor::postVisit(HDNTBlock* block) {
    mappingDue_ = block->hasOwnNetlist();
    endBlock();
    if (!mappingDue_) write("\n");
}

void HDNTSourceVisitor::visit(HDNTBus* bus) {
    bus_ = bus;
    element_ = "declaration";
    HDNTPrintVisitor::visit(bus);
}

void HDNTSourceVisitor::postVisit(HDNTBus* bus) {
    bus_ = nullptr;
    HDNTPrintVisitor::postVisit(bus);
}

void HDNTSourceVisitor::visit(HDNTProperty* property) {
    enterElement("property", property->getName());
    std::string& line = startLine();
    appendSource(line, *property, [this](const std::string& what) { cannotWrite(what); });
    write(line.append("\n"));
}

bool HDNTSourceVisitor::enter(HDNTNetlist* netlist) {
    const HDNTBlock* const block = netlist->getTypeBlock();
    return !block || block->hasOwnNetlist();
}

void HDNTSourceVisitor::visit(HDNTNetlist* netlist) {
    static constexpr const char* sections[] = {"mapsto", "expandsto", "modifiedby", "retargetsto"};
    element_ = "mapping";
    for (const HDNTFunctionCall* call : netlist->preInstanceCalls()) checkStatement(call);
    for (const HDNTFunctionCall* call : netlist->postInstanceCalls()) checkStatement(call);
    write(std::exchange(mappingDue_, false) ? " " : startLine());
    write(sections[static_cast<size_t>(netlist->section())]);
    write(" {\n");
    indentMore();
}

void HDNTSourceVisitor::visit(HDNTBlockInst* inst) {
    enterElement("instance", inst->instName());
    HDNTPrintVisitor::visit(inst);
}

// The signals of a ranged declaration follow each other.
void HDNTSourceVisitor::visit(HDNTSignal* signal) {
    enterElement("signal", signal->name());
    if (const HDNTSigList* const list = signal->sigList()) {
        if (list->firstExpanded() != signal) return;
        std::string& line = startLine();
        line += "signal ";
        appendText(line, list->name());
        return write(line.append(";\n"));
    }
    HDNTPrintVisitor::visit(signal);
}

void HDNTSourceVisitor::visit(HDNTConnect* connect) {
    enterElement("connection of signal", connect->signalName());
    if (connect->pins().empty()) cannotWrite("a list of pins that is empty");
    HDNTPrintVisitor::visit(connect);
}

void HDNTSourceVisitor::visit(HDNTAssignBlockProperty* assign) {
    enterElement("assignment to", assign->propName());
    if (!assign->value()) cannotWrite("an assignment without a value");
    HDNTPrintVisitor::visit(assign);
}

void HDNTSourceVisitor::visit(HDNTAssignPinProperty* assign) {
    enterElement("assignment to", assign->propName());
    if (!assign->value()) cannotWrite("an assignment without a value");
    if (assign->pinName().starts_with('~')) cannotWrite("a pin name that begins with \"~\"");
    HDNTPrintVisitor::visit(assign);
}

// What the grammar knows as a statement, and visitors deliver.
void HDNTSourceVisitor::checkStatement(const HDNTNetlistEntity* statement) {
    const auto* const call = dynamic_cast<const HDNTFunctionCall*>(statement);
    if (isPassedOver(statement)) cannotWrite("a statement that is missing, or a statement block that is not enabled");
    else if (call ? !call->isStatement() : dynamic_cast<const HDNTExpr*>(statement) != nullptr)
        cannotWrite("an expression that stands as a statement");
}

void HDNTSourceVisitor::visit(HDNTStmtBlock* block) {
    element_ = "statement block";
    for (const HDNTNetlistEntity* statement : block->statements()) checkStatement(statement);
    if (!std::exchange(branchDue_, false)) return HDNTPrintVisitor::visit(block);
    write(" {\n");
    indentMore();
}

void HDNTSourceVisitor::visit(HDNTIfStmt* stmt) {
    element_ = "if statement";
    if (!stmt->condition()) cannotWrite("an if statement without a condition");
    if (stmt->elseStmt() && takesElse(stmt->thenStmt()))
        cannotWrite("an if statement without \"else\" as the branch of one that has it");
    write(std::exchange(branchDue_, false) ? " " : startLine());
    write("if (");
}

void HDNTSourceVisitor::writeBranch(const HDNTNetlistEntity* branch) {
    element_ = "if statement";
    checkStatement(branch);
    branchDue_ = !isPassedOver(branch);
    if (!branchDue_) write("\n");
}

void HDNTSourceVisitor::postVisit(HDNTIfStmt* stmt) {
    writeExpression(")");
    writeBranch(stmt->thenStmt());
}

void HDNTSourceVisitor::elseVisit(HDNTIfStmt* stmt) {
    write(startLine().append("else"));
    writeBranch(stmt->elseStmt());
}

void HDNTSourceVisitor::visit(HDNTFunctionCall* call) {
    if (call->isStatement()) {
        enterElement("call of function", call->name());
        write(startLine());
    }
    checkFunctionName(call->name());
    HDNTPrintVisitor::visit(call);
}

void HDNTSourceVisitor::visit(HDNTCompoundExpr* expr) {
    const bool unary = expr->op() == HDNTExpr::NEGATE || expr->op() == HDNTExpr::NOT;
    if (expr->op() > HDNTExpr::EQUAL || !expr->rhs() || unary != (expr->lhs() == nullptr))
        cannotWrite("an operation that is not complete");
    HDNTPrintVisitor::visit(expr);
}
