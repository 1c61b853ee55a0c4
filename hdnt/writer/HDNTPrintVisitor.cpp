#include "hdnt/writer/HDNTPrintVisitor.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/writer/Elements.h"
#include "hdnt/writer/ExpressionBuffer.h"
#include "hdnt/writer/Text.h"

#include <algorithm>

using namespace hdnt::writer;

HDNTPrintVisitor::HDNTPrintVisitor() : HDNTPrintVisitor(stdout) {}
HDNTPrintVisitor::HDNTPrintVisitor(FILE* stream)
    : stream_(stream ? stream : stdout), text_(std::make_unique<ExpressionBuffer>(expression_)) {}
HDNTPrintVisitor::~HDNTPrintVisitor() = default;

void HDNTPrintVisitor::write(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stream_); }

void HDNTPrintVisitor::printIndent() { write(HDNTPrintVisitor::startLine()); }

void HDNTPrintVisitor::print() { writeExpression(""); }

void HDNTPrintVisitor::writeExpression(const char* end) {
    write(text_->finish());
    write(end);
    text_->clear();
}

void HDNTPrintVisitor::joinWith(const char* separator) {
    if (!expression_.empty()) expression_ += separator;
}

void HDNTPrintVisitor::addQuotedString(const std::string& text) { appendText(expression_, text); }

std::string& HDNTPrintVisitor::startLine() {
    line_.clear();
    appendIndent(line_, indent_);
    return line_;
}

void HDNTPrintVisitor::openBrace(std::string& line, int32_t blanks) {
    line += '\n';
    line.append(static_cast<size_t>(blanks), ' ').append("{\n");
}

void HDNTPrintVisitor::closeBrace() {
    indentLess();
    write(startLine().append("}\n"));
}

void HDNTPrintVisitor::appendText(std::string& line, const std::string& text) { appendQuoted(line, text); }
void HDNTPrintVisitor::appendNumber(std::string& line, double value) { appendFixed(line, value, 6); }
void HDNTPrintVisitor::appendTypeName(std::string& line, HATAttrTypes::AttrType type) {
    line += HDNTProperty::getTypeName(type);
}
void HDNTPrintVisitor::cannotWrite(const std::string&) {}

void HDNTPrintVisitor::visit(HDNTLibrary* library) {
    line_ = "library ";
    appendText(line_, library->getName());
    openBrace(line_, 0);
    write(line_);
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTLibrary*) {
    indentLess();
    write("}\n");
}

void HDNTPrintVisitor::appendFunction(std::string& line, const HDNTFunctionDecl& function) {
    line += "function ";
    appendTypeName(line, function.getType());
    line.append(" ").append(function.getName()).append("(");
    for (size_t i = 0; i < function.getNumFormals(); ++i) {
        if (i > 0) line += ", ";
        appendTypeName(line, function.getFormal(i));
    }
    line += ");\n";
}

void HDNTPrintVisitor::visit(HDNTFunctionDecl* function) {
    line_.clear();
    appendFunction(line_, *function);
    write(line_);
}

void HDNTPrintVisitor::visit(HDNTBlock* block) { beginBlock(*block, true); }

void HDNTPrintVisitor::beginBlock(const HDNTBlock& block, bool always) {
    inBlock_ = true;
    write("\n");
    std::string& line = startLine();
    line += "block ";
    appendText(line, block.getName());
    openBrace(line, 2);
    write(line);
    indentMore();
    writeAttributes(block, always);
}

void HDNTPrintVisitor::writeAttributes(const HDNTBlock& block, bool always) {
    static constexpr const char* levels[] = {"early;\n", "beta;\n", "production;\n", "deprecated;\n"};
    if (block.isInternal()) write(startLine().append("internal = true;\n"));
    if (block.isTest()) write(startLine().append("test = true;\n"));
    const int level = block.getMaturityLevel();
    if (level < 0 || level > 3) cannotWrite("a maturity level of " + std::to_string(level));
    else if (level > 0 || always) write(startLine().append("maturityLevel = ").append(levels[level]));
    if (!groupReadsBack(block)) cannotWrite("its primitive group");
    if (!block.getPrimGroupType(false)) return;
    std::string& line = startLine();
    line += "primgroup = ";
    appendText(line, groupText(block));
    write(line.append(";\n"));
}

void HDNTPrintVisitor::postVisit(HDNTBlock*) {
    endBlock();
    write("\n");
}

void HDNTPrintVisitor::endBlock() {
    inBlock_ = false;
    indentLess();
    write(startLine().append("}"));
}

template <typename Pin>
void HDNTPrintVisitor::appendPinLine(std::string& line, const std::string& name, const Pin& pin, HDNT_PIN_TYPE type) {
    static constexpr const char* required[] = {"",         " active",     " mustConnect", " tieLow",
                                               " tieHigh", " tieSpecial", " untie"};
    line += "pin ";
    appendText(line, name);
    line.append(" ").append(HDNTPin::getDirectionName(pin.getDirection()));
    if (pin.isTest()) line += " test";
    if (pin.isAbstract()) line += " abstract";
    if (type != HDNT_PIN_DATA) line.append(" ").append(HDNTPin::getTypeName(type));
    const unsigned value = pin.getRequiredValue();
    if (value < std::size(required)) line += required[value];
    else cannotWrite("a required value of " + std::to_string(value));
}

void HDNTPrintVisitor::visit(HDNTBus* bus) {
    std::string& line = startLine();
    appendPinLine(line, bus->getName(), *bus, bus->getType());
    if (bus->getNumProperties() > 0) {
        openBrace(line, std::max(indent_, 1));
        indentMore();
    }
    write(line);
}

void HDNTPrintVisitor::postVisit(HDNTBus* bus) {
    if (bus->getNumProperties() > 0) closeBrace();
    else write(";\n");
}

void HDNTPrintVisitor::visit(HDNTPin* pin) {
    if (inBlock_) return;
    std::string& line = startLine();
    appendPinLine(line, pin->getName(false), *pin, pin->getBus() ? pin->getBus()->getType() : HDNT_PIN_DATA);
    write(line.append(";\n"));
}

void HDNTPrintVisitor::visit(HDNTProperty* property) {
    property->print(static_cast<unsigned long>(std::max(indent_, 0)), stream_);
}
