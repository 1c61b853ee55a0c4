// The printed form of mapping netlists.
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/writer/Elements.internal.h"
#include "hdnt/writer/ExpressionBuffer.internal.h"
#include "hdnt/writer/HDNTPrintVisitor.h"
#include "hdnt/writer/Line.internal.h"

#include <algorithm>

using namespace hdnt::writer;

void HDNTPrintVisitor::visit(HDNTNetlist* netlist) {
    Line& line = startLine();
    using Section = HDNTNetlist::Section;
    const Section byFlags = netlist->isExpandsTo() ? Section::expandsto
                            : netlist->isMapsTo()  ? Section::mapsto
                                                   : Section::modifiedby;
    line.add(hdnt::words::sections.wordOf(byFlags));
    openBrace(line, std::max(indent_, 1));
    write(line);
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTNetlist*) {
    closeBrace();
    endBody();
}

void HDNTPrintVisitor::sectionSeparator(HDNTNetlist*) { writeEmptyLine(); }

void HDNTPrintVisitor::visit(HDNTBlockInst* inst) {
    Line& line = startLine();
    line.add("inst ");
    appendText(line, inst->instName());
    line.add(' ');
    appendText(line, inst->typeName());
    write(line.add(";\n"));
}

// A signal with pins is one statement: its connect writes the pins and ends it.
void HDNTPrintVisitor::visit(HDNTSignal* signal) {
    Line& line = startLine();
    line.add("signal ");
    appendText(line, signal->name());
    inSignal_ = signal->connect() != nullptr;
    if (!inSignal_) line.add(";\n");
    else if (!signal->connect()->pins().empty()) line.add(" : ");
    write(line);
}

void HDNTPrintVisitor::visit(HDNTConnect* connect) {
    if (inSignal_) return;
    Line& line = startLine();
    line.add("connect ");
    appendText(line, connect->signalName());
    write(line.add(" : "));
}

void HDNTPrintVisitor::postVisit(HDNTConnect*) {
    inSignal_ = false;
    writeExpression(";\n");
}

void HDNTPrintVisitor::visit(HDNTAssignBlockProperty* assign) {
    Line& line = startLine();
    line.add("assign block property ");
    appendText(line, assign->instName());
    line.add(' ');
    appendText(line, assign->propName());
    write(line.add(" "));
}

void HDNTPrintVisitor::postVisit(HDNTAssignBlockProperty*) { writeExpression(";\n"); }

void HDNTPrintVisitor::visit(HDNTAssignPinProperty* assign) {
    Line& line = startLine();
    line.add("assign pin property ");
    appendText(line, assign->instName());
    line.add(' ');
    appendText(line, assign->pinName());
    line.add(", ");
    appendText(line, assign->propName());
    write(line.add(" "));
}

void HDNTPrintVisitor::postVisit(HDNTAssignPinProperty*) { writeExpression(";\n"); }

void HDNTPrintVisitor::visit(HDNTStmtBlock*) {
    write(startLine().add("{\n"));
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTStmtBlock*) { closeBrace(); }

void HDNTPrintVisitor::writeEmptyBranch() { write(startLine().add("{ }\n")); }

void HDNTPrintVisitor::visit(HDNTIfStmt*) { write(startLine().add("if (")); }

void HDNTPrintVisitor::postVisit(HDNTIfStmt* stmt) {
    writeExpression(") \n");
    if (isPassedOver(stmt->thenStmt())) writeEmptyBranch();
    if (stmt->elseStmt() && takesElse(stmt->thenStmt())) {
        write(startLine().add("{\n"));
        indentMore();
    }
}

void HDNTPrintVisitor::elseVisit(HDNTIfStmt* stmt) {
    if (takesElse(stmt->thenStmt())) closeBrace();
    write(startLine().add("else\n"));
    if (isPassedOver(stmt->elseStmt())) writeEmptyBranch();
}

void HDNTPrintVisitor::visit(HDNTFunctionCall* call) { text_->beginCall(call->name()); }

void HDNTPrintVisitor::postVisit(HDNTFunctionCall* call) {
    text_->endCall();
    if (call->isStatement()) writeExpression(";\n");
}

void HDNTPrintVisitor::addQuotedString(const std::string& text) {
    addToExpression([&](Line& line) { appendText(line, text); });
}

template <typename Append>
void HDNTPrintVisitor::addOperand(Append&& append) {
    text_->joinWith(", ");
    addToExpression(append);
}

template <typename Append>
void HDNTPrintVisitor::addToExpression(Append&& append) {
    const size_t begin = line_->view().size();
    append(*line_);
    expression_ += line_->view().substr(begin);
    line_->shrink(begin);
}

void HDNTPrintVisitor::appendPin(Line& line, const HDNTBlockPinName& pin) {
    appendText(line, pin.instName());
    line.add(' ');
    if (pin.inverted()) appendText(line, '~' + pin.pinName());
    else appendText(line, pin.pinName());
}

void HDNTPrintVisitor::visit(HDNTBlockPinName* pin) {
    addOperand([&](Line& operand) { appendPin(operand, *pin); });
}

void HDNTPrintVisitor::visit(HDNTIntConstant* constant) {
    addOperand([&](Line& operand) { operand.add(constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTDoubleConstant* constant) {
    addOperand([&](Line& operand) { appendNumber(operand, constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTBoolConstant* constant) {
    addOperand([&](Line& operand) { operand.add(std::string_view(constant->getValue() ? "true" : "false")); });
}

void HDNTPrintVisitor::visit(HDNTStringConstant* constant) {
    addOperand([&](Line& operand) { appendText(operand, constant->getValue()); });
}

void HDNTPrintVisitor::visit(HDNTCompoundExpr* expr) { text_->beginOperator(expr->op(), expr->lhs() != nullptr); }

// The language has no negation: what is compared with the "false" of its type means the same.
static const char* falseOf(const HDNTExpr* operand) {
    using State = HDNTCompoundExpr::TypeState;
    const hdnt::netlist::DerivedType type = operand ? hdnt::netlist::typeOf(*operand) : hdnt::netlist::DerivedType{};
    if (type.state != State::Known) return nullptr;
    if (type.code == HATAttrTypes::TypeBool) return "false";
    if (type.code == HATAttrTypes::TypeInt) return "0";
    return type.code == HATAttrTypes::TypeDouble ? "0.0" : nullptr;
}

void HDNTPrintVisitor::postVisit(HDNTCompoundExpr* expr) {
    if (expr->op() != HDNTExpr::NOT) return text_->endOperator(expr->op());
    const char* const no = falseOf(expr->rhs());
    if (!no) cannotWrite("the negation of an expression whose type is not known");
    text_->endNegation(no ? no : "false");
}
