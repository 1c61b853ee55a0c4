#include "hdnt/writer/HDNTPrintVisitor.h"

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/writer/Elements.internal.h"
#include "hdnt/writer/ExpressionBuffer.internal.h"
#include "hdnt/writer/Line.internal.h"
#include "hdnt/writer/PropertyText.internal.h"

#include <algorithm>
#include <charconv>
#include <typeinfo>
#include <utility>

using namespace hdnt::writer;

HDNTPrintVisitor::HDNTPrintVisitor() : HDNTPrintVisitor(stdout) {}
HDNTPrintVisitor::HDNTPrintVisitor(FILE* stream)
    : stream_(stream ? stream : stdout), text_(std::make_unique<ExpressionBuffer>(expression_)),
      line_(std::make_unique<Line>()) {}
HDNTPrintVisitor::~HDNTPrintVisitor() { flush(); }

void HDNTPrintVisitor::write(std::string_view text) {
    if (gathering_) write(line_->add(text));
    else std::fwrite(text.data(), 1, text.size(), stream_);
}

void HDNTPrintVisitor::write(const Line& line) {
    if (gathering_) gathered_ = line.view().size();
    else write(line.view());
}

// What a lazily loaded mapping reports goes to the standard output, between the blocks.
void HDNTPrintVisitor::endBody() {
    constexpr size_t enough = size_t{1} << 16;
    if (gathered_ >= enough || stream_ == stdout) flush();
}

void HDNTPrintVisitor::flush() {
    if (gathered_ > 0) std::fwrite(line_->view().data(), 1, std::exchange(gathered_, 0), stream_);
    line_->clear();
}

Line& HDNTPrintVisitor::emptyLine() {
    if (!gathering_) line_->clear();
    return *line_;
}

void HDNTPrintVisitor::printIndent() { write(HDNTPrintVisitor::startLine()); }

void HDNTPrintVisitor::print() { writeExpression(""); }

void HDNTPrintVisitor::writeExpression(std::string_view end) {
    write(text_->finish());
    write(end);
    text_->clear();
}

void HDNTPrintVisitor::joinWith(const char* separator) { text_->joinWith(separator); }

Line& HDNTPrintVisitor::startLine() { return emptyLine().indent(indent_); }

void HDNTPrintVisitor::openBrace(Line& line, int32_t blanks) {
    line.add('\n').fill(static_cast<size_t>(blanks), ' ').add("{\n");
}

void HDNTPrintVisitor::writeEmptyLine() { write("\n"); }

void HDNTPrintVisitor::closeBrace() {
    indentLess();
    write(startLine().add("}\n"));
}

void HDNTPrintVisitor::appendText(Line& line, const std::string& text) { line.quoted(text); }
void HDNTPrintVisitor::appendNumber(Line& line, double value) { line.fixed(value, 6); }
void HDNTPrintVisitor::appendTypeName(Line& line, HATAttrTypes::AttrType type) {
    line.add(HDNTProperty::getTypeName(type));
}
void HDNTPrintVisitor::cannotWrite(const std::string&) {}

void HDNTPrintVisitor::visit(HDNTLibrary* library) {
    Line& line = emptyLine().add("library ");
    appendText(line, library->getName());
    openBrace(line, 0);
    write(line);
    indentMore();
}

void HDNTPrintVisitor::postVisit(HDNTLibrary*) {
    indentLess();
    write("}\n");
}

void HDNTPrintVisitor::appendFunction(Line& line, const HDNTFunctionDecl& function) {
    line.add("function ");
    appendTypeName(line, function.getType());
    line.add(" ").add(function.getName()).add("(");
    for (size_t i = 0; i < function.getNumFormals(); ++i) {
        if (i > 0) line.add(", ");
        appendTypeName(line, function.getFormal(i));
    }
    line.add(");\n");
}

void HDNTPrintVisitor::visit(HDNTFunctionDecl* function) {
    Line& line = emptyLine();
    appendFunction(line, *function);
    write(line);
}

void HDNTPrintVisitor::visit(HDNTBlock* block) { beginBlock(*block, true); }

void HDNTPrintVisitor::beginBlock(const HDNTBlock& block, bool always) {
    inBlock_ = true;
    writeEmptyLine();
    Line& line = startLine();
    line.add("block ");
    appendText(line, block.getName());
    openBrace(line, 2);
    write(line);
    indentMore();
    writeAttributes(block, always);
}

void HDNTPrintVisitor::writeAttributes(const HDNTBlock& block, bool always) {
    if (block.isInternal()) write(startLine().add("internal = true;\n"));
    if (block.isTest()) write(startLine().add("test = true;\n"));
    const int level = block.getMaturityLevel();
    const std::string_view word = hdnt::words::maturityLevels.wordOf(level);
    if (word.empty()) cannotWrite("a maturity level of " + std::to_string(level));
    else if (level > 0 || always) write(startLine().add("maturityLevel = ").add(word).add(";\n"));
    if (!block.getPrimGroupType(false)) return;
    Line& line = startLine();
    line.add("primgroup = ");
    appendText(line, groupText(block));
    write(line.add(";\n"));
}

void HDNTPrintVisitor::postVisit(HDNTBlock*) {
    endBlock();
    write("\n");
}

void HDNTPrintVisitor::endBlock() {
    inBlock_ = false;
    indentLess();
    write(startLine().add("}"));
    endBody();
}

template <typename Pin>
void HDNTPrintVisitor::appendPinLine(Line& line, const std::string& name, const Pin& pin, HDNT_PIN_TYPE type) {
    line.add("pin ");
    appendText(line, name);
    line.add(' ').add(hdnt::words::directionWord(pin.getDirection()));
    if (pin.isTest()) line.add(" test");
    if (pin.isAbstract()) line.add(" abstract");
    if (type != HDNT_PIN_DATA) line.add(" ").add(HDNTPin::getTypeName(type));
    const HDNT_PIN_REQUIREDVALUE value = pin.getRequiredValue();
    const std::string_view required = hdnt::words::requiredValues.wordOf(value);
    if (!required.empty()) line.add(' ').add(required);
    else if (value != HDNT_PIN_NO_VALUE)
        cannotWrite("a required value of " + std::to_string(static_cast<unsigned>(value)));
}

const std::string& HDNTPrintVisitor::nameOf(const HDNTBus& bus) {
    if (bus.getFirstIndex() < 0) return bus.getBaseName();
    const auto addNumber = [this](int number) {
        char digits[16];
        busName_.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    };
    busName_.assign(bus.getBaseName()).append(1, '[');
    addNumber(bus.getFirstIndex());
    busName_ += ':';
    addNumber(bus.getLastIndex());
    return busName_ += ']';
}

void HDNTPrintVisitor::visit(HDNTBus* bus) {
    Line& line = startLine();
    appendPinLine(line, nameOf(*bus), *bus, bus->getType());
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

bool HDNTPrintVisitor::visitsPins() const { return typeid(*this) != typeid(HDNTPrintVisitor); }

void HDNTPrintVisitor::visit(HDNTPin* pin) {
    if (inBlock_) return;
    Line& line = startLine();
    appendPinLine(line, pin->getName(false), *pin, pin->getBus() ? pin->getBus()->getType() : HDNT_PIN_DATA);
    write(line.add(";\n"));
}

void HDNTPrintVisitor::visit(HDNTProperty* property) {
    Line& line = startLine();
    appendPrinted(line, *property);
    write(line.add('\n'));
}
