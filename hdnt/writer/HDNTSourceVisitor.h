#pragma once

#include "hdnt/writer/HDNTPrintVisitor.h"

#include <vector>

class HDNTAssignProperty;
class HDNTExpr;
class HDNTNetlistEntity;

/// Writes a library as NTL source: a text that reads back to an equal library (HDNTComparison.h), and written again
/// gives the same bytes. HDNTLibrary::printSource is the usual way to it.
///
/// What the configuration or finalize() added is left out. So are mappings that came from map libraries: enter() passes
/// over them. A `!x`, which no text can bring about, is written as a comparison that means the same.
class HDNT_API HDNTSourceVisitor : public HDNTPrintVisitor {
public:
    /// What cannot be written is appended to `problems`, one text for each, with the element's name; may be null.
    HDNTSourceVisitor(FILE* stream, std::vector<std::string>* problems);
    ~HDNTSourceVisitor() override;

    /// Whether everything so far could be written. If not, the text is of no use.
    bool isComplete() const { return complete_; }

    using HDNTPrintVisitor::postVisit;
    using HDNTPrintVisitor::visit;
    bool enter(HDNTNetlist* netlist) override;
    bool visitsPins() const override;
    void visit(HDNTLibrary* library) override;
    void visit(HDNTFunctionDecl* function) override;
    void visit(HDNTBlock* block) override;
    void postVisit(HDNTBlock* block) override;
    void visit(HDNTBus* bus) override;
    void postVisit(HDNTBus* bus) override;
    void visit(HDNTProperty* property) override;
    void visit(HDNTNetlist* netlist) override;
    void visit(HDNTBlockInst* inst) override;
    void visit(HDNTSignal* signal) override;
    void visit(HDNTConnect* connect) override;
    void visit(HDNTAssignBlockProperty* assign) override;
    void postVisit(HDNTAssignBlockProperty* assign) override;
    void visit(HDNTAssignPinProperty* assign) override;
    void postVisit(HDNTAssignPinProperty* assign) override;
    void visit(HDNTStmtBlock* block) override;
    void visit(HDNTIfStmt* stmt) override;
    void postVisit(HDNTIfStmt* stmt) override;
    void elseVisit(HDNTIfStmt* stmt) override;
    void visit(HDNTFunctionCall* call) override;
    void postVisit(HDNTFunctionCall* call) override;
    void visit(HDNTCompoundExpr* expr) override;

private:
    hdnt::writer::Line& startLine() override;
    void openBrace(hdnt::writer::Line& line, int32_t blanks) override;
    void writeEmptyLine() override;
    void appendText(hdnt::writer::Line& line, const std::string& text) override;
    void appendNumber(hdnt::writer::Line& line, double value) override;
    void appendTypeName(hdnt::writer::Line& line, HATAttrTypes::AttrType type) override;
    void appendPin(hdnt::writer::Line& line, const HDNTBlockPinName& pin) override;
    void cannotWrite(const std::string& what) override;

    /// The name stays the model's; null: none.
    HDNT_LOCAL void enterElement(const char* kind, const std::string* name);
    HDNT_LOCAL void enterAssign(const HDNTAssignProperty& assign);
    HDNT_LOCAL void checkFunctionName(const std::string& name);
    HDNT_LOCAL void checkStatement(const HDNTNetlistEntity* statement);
    /// Of a statement whose parts nest so many symbols deep in it.
    HDNT_LOCAL void checkDepth(const HDNTNetlistEntity* statement, size_t symbols);
    HDNT_LOCAL void checkExpression(const HDNTExpr* expr);
    HDNT_LOCAL void writeBranch(const HDNTNetlistEntity* branch);

    std::vector<std::string>* problems_;
    bool complete_ = true;
    bool atOpening_ = false;  ///< nothing stands behind the last brace
    bool branchDue_ = false;  ///< the line ends in a condition or an "else"
    bool mappingDue_ = false; ///< the line ends in the brace of the block whose mapping follows
    const HDNTBlock* block_ = nullptr;
    const HDNTBus* bus_ = nullptr;
    const char* kind_ = ""; ///< of what is being written, for problems
    const std::string* name_ = nullptr;
};
