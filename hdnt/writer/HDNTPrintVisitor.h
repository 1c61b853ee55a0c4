#pragma once

#include "hdnt/model/HDNTBus.h"
#include "hdnt/netlist/HDNTVisitor.h"
#include "hdnt/platform/HATAttrTypes.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace hdnt::writer {
class ExpressionBuffer;
class Line;
} // namespace hdnt::writer

/// Writes what it visits as NTL text, in the printed form: a fixed text for people and for tools that compare texts.
///
/// Most of it reads back. Not so the values of hex and binary properties, which bear no radix, and the types "bithex"
/// and "bitbinary" of functions; doubles lose digits, descriptions and the kind `retargetsto` are not shown. The source
/// form (HDNTSourceVisitor) always reads back.
///
/// One visitor writes one library, block or netlist, and is destroyed. Each operation has written its text to the
/// stream when it returns, but for expressions, which come with the statement they stand in. Errors of the stream are
/// not looked at: ask the stream. The text is that of the C locale. One thread at a time; the model is not changed.
class HDNT_API HDNTPrintVisitor : public HDNTPinChoiceVisitor {
public:
    /// Writes to standard output.
    HDNTPrintVisitor();
    /// Writes to the stream, which is not owned; null: to standard output.
    explicit HDNTPrintVisitor(FILE* stream);
    ~HDNTPrintVisitor() override;

    using HDNTVisitor::postVisit;
    using HDNTVisitor::visit;
    void visit(HDNTLibrary* library) override;
    void postVisit(HDNTLibrary* library) override;
    void visit(HDNTFunctionDecl* function) override;
    void visit(HDNTBlock* block) override;
    void postVisit(HDNTBlock* block) override;
    /// The pins of a block are written by their buses; a pin that is visited on its own is a line.
    void visit(HDNTPin* pin) override;
    /// False, since their buses write them; true in classes derived from this one, which may do something with pins.
    bool visitsPins() const override;
    void visit(HDNTBus* bus) override;
    void postVisit(HDNTBus* bus) override;
    void visit(HDNTProperty* property) override;
    void visit(HDNTNetlist* netlist) override;
    void postVisit(HDNTNetlist* netlist) override;
    /// An empty line.
    void sectionSeparator(HDNTNetlist* netlist) override;
    void visit(HDNTBlockInst* inst) override;
    void visit(HDNTSignal* signal) override;
    void visit(HDNTConnect* connect) override;
    void postVisit(HDNTConnect* connect) override;
    void visit(HDNTAssignBlockProperty* assign) override;
    void postVisit(HDNTAssignBlockProperty* assign) override;
    void visit(HDNTAssignPinProperty* assign) override;
    void postVisit(HDNTAssignPinProperty* assign) override;
    void visit(HDNTStmtBlock* block) override;
    void postVisit(HDNTStmtBlock* block) override;
    void visit(HDNTIfStmt* stmt) override;
    void postVisit(HDNTIfStmt* stmt) override;
    void elseVisit(HDNTIfStmt* stmt) override;
    void visit(HDNTFunctionCall* call) override;
    void postVisit(HDNTFunctionCall* call) override;
    void visit(HDNTBlockPinName* pin) override;
    void visit(HDNTIntConstant* constant) override;
    void visit(HDNTDoubleConstant* constant) override;
    void visit(HDNTBoolConstant* constant) override;
    void visit(HDNTStringConstant* constant) override;
    void visit(HDNTCompoundExpr* expr) override;
    void postVisit(HDNTCompoundExpr* expr) override;

    // What the operations above are made of, for visitors that write more. An operand is what is appended to the
    // expression buffer up to the next separator, operator or end of a call, so that a visitor may write operands in
    // its own way and leave operators, calls and parentheses to the operations above.

    /// Writes the indent in blanks; an indent of 0 is one blank.
    void printIndent();
    /// Writes the expression buffer and empties it. What was written so gets no parentheses any more.
    void print();
    /// Appends the separator to the expression buffer. Not at the beginning: when the buffer is empty, behind an
    /// operator and behind the opening of a call. Constants, pin references and calls begin with ", ".
    void joinWith(const char* separator);
    /// Appends the text in double quotes to the expression buffer. Nothing is escaped: a text that the scanner
    /// delivered has neither quotes nor line breaks, and others cannot be written.
    void addQuotedString(const std::string& text);

private:
    friend class HDNTLibrary;
    friend class HDNTSourceVisitor;

    // Where the source form differs.

    /// Empties the line and begins it with the indent.
    virtual hdnt::writer::Line& startLine();
    /// Ends the line with the brace of a body; in the printed form that stands on a line of its own, behind so many
    /// blanks.
    virtual void openBrace(hdnt::writer::Line& line, int32_t blanks);
    /// Before a block, and between the sections of a mapping.
    virtual void writeEmptyLine();
    virtual void appendText(hdnt::writer::Line& line, const std::string& text);
    virtual void appendNumber(hdnt::writer::Line& line, double value);
    virtual void appendTypeName(hdnt::writer::Line& line, HATAttrTypes::AttrType type);
    virtual void appendPin(hdnt::writer::Line& line, const HDNTBlockPinName& pin);
    /// Something that no text can say. The printed form passes over it.
    virtual void cannotWrite(const std::string& what);

    int32_t indent() const { return indent_; }
    void indentMore() { indent_ += 2; }
    void indentLess() { indent_ -= 2; }
    HDNT_LOCAL void write(std::string_view text);
    HDNT_LOCAL void write(const hdnt::writer::Line& line);
    /// For when nobody looks at the stream between two operations: text goes to it in large pieces then.
    void gather() { gathering_ = true; }
    /// The end of a block or a mapping, where what was gathered may go to the stream.
    HDNT_LOCAL void endBody();
    HDNT_LOCAL void flush();
    HDNT_LOCAL hdnt::writer::Line& emptyLine();
    /// Writes the expression, closed by the text.
    HDNT_LOCAL void writeExpression(std::string_view end);
    HDNT_LOCAL void appendFunction(hdnt::writer::Line& line, const HDNTFunctionDecl& function);
    /// `always`: also a maturity level that no one has to write.
    HDNT_LOCAL void beginBlock(const HDNTBlock& block, bool always);
    /// Without the end of the line.
    HDNT_LOCAL void endBlock();
    HDNT_LOCAL void closeBrace();

    HDNT_LOCAL void writeAttributes(const HDNTBlock& block, bool always);
    HDNT_LOCAL const std::string& nameOf(const HDNTBus& bus);
    template <typename Pin>
    HDNT_LOCAL void appendPinLine(hdnt::writer::Line& line, const std::string& name, const Pin& pin,
                                  HDNT_PIN_TYPE type);
    HDNT_LOCAL void writeEmptyBranch();
    template <typename Append>
    HDNT_LOCAL void addOperand(Append&& append);
    template <typename Append>
    HDNT_LOCAL void addToExpression(Append&& append);

    int32_t indent_ = 0;
    std::string expression_;
    FILE* stream_;
    std::unique_ptr<hdnt::writer::ExpressionBuffer> text_;
    std::unique_ptr<hdnt::writer::Line> line_; ///< behind what was gathered
    size_t gathered_ = 0;                      ///< bytes
    std::string busName_;
    bool inBlock_ = false;
    bool inSignal_ = false;
    bool gathering_ = false;
};
