#pragma once

#include "hdnt/netlist/HDNTVisitor.h"

#include <string>

/// Finds the instance that stands for a netlist whose instances are all inside statements.
class HDNT_API HDNTReferencedInstanceVisitor : public HDNTVisitor {
public:
    using HDNTVisitor::visit;
    void visit(HDNTBlockInst* inst) override;
    void visit(HDNTIfStmt* stmt) override;
    void elseVisit(HDNTIfStmt* stmt) override;

    /// Instances since the count last began anew.
    int instCount() const { return instCount_; }
    /// Name of the instance found last as the first of a count; empty when there was none.
    const std::string& recordedName() const { return recordedName_; }

private:
    int instCount_ = 0;
    std::string recordedName_;
};

/// Finds out whether a netlist may stand for a pseudo-differential buffer: an instance's block can be one, or one of
/// the functions is called that the configuration lists.
class HDNT_API HDNTPseudoDiffVisitor : public HDNTVisitor {
public:
    /// The library of the block whose netlist is visited; may be null.
    explicit HDNTPseudoDiffVisitor(HDNTLibrary* library) : library_(library) {}
    using HDNTVisitor::visit;
    void visit(HDNTBlockInst* inst) override;
    void visit(HDNTFunctionCall* call) override;

    bool found() const { return found_; }

private:
    HDNTLibrary* library_;
    bool found_ = false;
};
