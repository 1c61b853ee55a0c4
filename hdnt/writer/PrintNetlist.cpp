// The printed form of mapping netlists.
#include "hdnt/netlist/Evaluate.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/writer/Elements.h"
#include "hdnt/writer/ExpressionBuffer.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/Text.h"

#include <algorithm>

using namespace hdnt::writer;

void HDNTPrintVisitor::visit(HDNTNetlist* netlist) {
    std::string& line = startLine();
    line += netlist->isExpandsTo() ? "expandsto" : netlist->isMapsTo() ? "mapsto" : "modifiedby";
    openBrace(line, std::max(indent_, 1));
    write(line);
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTNetlist*) { closeBrace(); }

void HDNTPrintVisitor::sectionSeparator(HDNTNetlist*) { write("\n"); }

void HDNTPrintVisitor::visit(HDNTBlockInst* inst) {
    std::string& line = startLine();
    line += "inst ";
    appendText(line, inst->instName());
    line += ' ';
    appendText(line, inst->typeName());
    write(line.append(";\n"));
}

// A signal with pins is one statement: its connect writes the pins and ends it.
void HDNTPrintVisitor::visit(HDNTSignal* signal) {
    std::string& line = startLine();
    line += "signal ";
    appendText(line, signal->name());
    inSignal_ = signal->connect() != nullptr;
    if (!inSignal_) line += ";\n";
    else if (!signal->connect()->pins().empty()) line += " : ";
    write(line);
}

void HDNTPrintVisitor::visit(HDNTConnect* connect) {
    if (inSignal_) return;
    std::string& line = startLine();
    line += "connect ";
    appendText(line, connect->signalName());
    write(line.append(" : "));
}

void HDNTPrintVisitor::postVisit(HDNTConnect*) {
    inSignal_ = false;
    writeExpression(";\n");
}

void HDNTPrintVisitor::visit(HDNTAssignBlockProperty* assign) {
    std::string& line = startLine();
    line += "assign block property ";
    appendText(line, assign->instName());
    line += ' ';
    appendText(line, assign->propName());
    write(line.append(" "));
}

void HDNTPrintVisitor::postVisit(HDNTAssignBlockProperty*) { writeExpression(";\n"); }

void HDNTPrintVisitor::visit(HDNTAssignPinProperty* assign) {
    std::string& line = startLine();
    line += "assign pin property ";
    appendText(line, assign->instName());
    line += ' ';
    appendText(line, assign->pinName());
    line += ", ";
    appendText(line, assign->propName());
    write(line.append(" "));
}

void HDNTPrintVisitor::postVisit(HDNTAssignPinProperty*) { writeExpression(";\n"); }

void HDNTPrintVisitor::visit(HDNTStmtBlock*) {
    write(startLine().append("{\n"));
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTStmtBlock*) { closeBrace(); }

void HDNTPrintVisitor::writeEmptyBranch() { write(startLine().append("{ }\n")); }

void HDNTPrintVisitor::visit(HDNTIfStmt*) { write(startLine().append("if (")); }

void HDNTPrintVisitor::postVisit(HDNTIfStmt* stmt) {
    writeExpression(") \n");
    if (isPassedOver(stmt->thenStmt())) writeEmptyBranch();
    if (stmt->elseStmt() && takesElse(stmt->thenStmt())) {
        write(startLine().append("{\n"));
        indentMore();
    }
}

void HDNTPrintVisitor::elseVisit(HDNTIfStmt* stmt) {
    if (takesElse(stmt->thenStmt())) closeBrace();
    write(startLine().append("else\n"));
    if (isPassedOver(stmt->elseStmt())) writeEmptyBranch();
}

void HDNTPrintVisitor::visit(HDNTFunctionCall* call) { text_->beginCall(call->name()); }

void HDNTPrintVisitor::postVisit(HDNTFunctionCall* call) {
    text_->endCall();
    if (call->isStatement()) writeExpression(";\n");
}

template <typename Append>
void HDNTPrintVisitor::addOperand(Append&& append) {
    const size_t start = text_->beginOperand();
    append();
    text_->endOperand(start);
}

void HDNTPrintVisitor::appendPin(std::string& line, const HDNTBlockPinName& pin) {
    appendText(line, pin.instName());
    line += ' ';
    appendText(line, pin.inverted() ? '~' + pin.pinName() : pin.pinName());
}

void HDNTPrintVisitor::visit(HDNTBlockPinName* pin) {
    addOperand([&] { appendPin(expression_, *pin); });
}

void HDNTPrintVisitor::visit(HDNTIntConstant* constant) {
    addOperand([&] { appendInt(expression_, constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTDoubleConstant* constant) {
    addOperand([&] { appendNumber(expression_, constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTBoolConstant* constant) {
    addOperand([&] { expression_ += constant->getValue() ? "true" : "false"; });
}

void HDNTPrintVisitor::visit(HDNTStringConstant* constant) {
    addOperand([&] { addQuotedString(constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTCompoundExpr* expr) { text_->beginOperator(expr->op(), expr->lhs() != nullptr); }

// The language has no negation: what is compared with the "false" of its type means the same.
static const char* falseOf(const HDNTExpr* operand) {
    using State = HDNTCompoundExpr::TypeState;
    const hdnt::netlist::DerivedType type = operand ? hdnt::netlist::typeOf(*operand) : hdnt::netlist::DerivedType{};
    if (type.state != State::Known) return nullptr;
    switch (type.code) {
    case HATAttrTypes::TypeBool: return "false";
    case HATAttrTypes::TypeInt: return "0";
    case HATAttrTypes::TypeDouble: return "0.0";
    default: return nullptr;
    }
}

void HDNTPrintVisitor::postVisit(HDNTCompoundExpr* expr) {
    if (expr->op() != HDNTExpr::NOT) return text_->endOperator(expr->op(), expr->rhs() != nullptr);
    const char* const no = falseOf(expr->rhs());
    if (!no) cannotWrite("the negation of an expression whose type is not known");
    text_->endNegation(no ? no : "false");
}
