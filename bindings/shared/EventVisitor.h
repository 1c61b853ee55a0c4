#pragma once

#include "hdnt/netlist/HDNTVisitor.h"

#include <string_view>
#include <vector>

class HDNTNode;

namespace hdnt::scripts {

/// A visitor that tells of everything by name: "visit_X" and "leave_X", with X one of the words of the
/// languages; the second only for what holds something.
class EventVisitor : public HDNTPinChoiceVisitor {
public:
    /// Every name that tell and ask can be called with.
    static const std::vector<std::string_view>& events();

    bool visitsPins() const override { return wants("visit_pin"); }
    bool enter(HDNTNetlist* netlist) override;
    void sectionSeparator(HDNTNetlist* netlist) override;
    void elseVisit(HDNTIfStmt* statement) override;
    void visit(HDNTBlock* block) override;
    void postVisit(HDNTBlock* block) override;
    void visit(HDNTPrimGroup*) override {}
    void postVisit(HDNTPrimGroup*) override {}

#define HDNT_EVENTS(X)                                                                                                 \
    X(HDNTLibrary, library, true)                                                                                      \
    X(HDNTFunctionDecl, function, false)                                                                               \
    X(HDNTBlockInst, instance, false)                                                                                  \
    X(HDNTPin, pin, false)                                                                                             \
    X(HDNTBus, bus, true)                                                                                              \
    X(HDNTProperty, property, false)                                                                                   \
    X(HDNTSignal, signal, true)                                                                                        \
    X(HDNTConnect, connect, true)                                                                                      \
    X(HDNTAssignBlockProperty, block_assign, true)                                                                     \
    X(HDNTAssignPinProperty, pin_assign, true)                                                                         \
    X(HDNTNetlist, netlist, true)                                                                                      \
    X(HDNTFunctionCall, call, true)                                                                                    \
    X(HDNTStmtBlock, statements, true)                                                                                 \
    X(HDNTIfStmt, if, true)                                                                                            \
    X(HDNTBlockPinName, pin_ref, false)                                                                                \
    X(HDNTIntConstant, int, false)                                                                                     \
    X(HDNTBoolConstant, bool, false)                                                                                   \
    X(HDNTDoubleConstant, double, false)                                                                               \
    X(HDNTStringConstant, string, false)                                                                               \
    X(HDNTCompoundExpr, operation, true)
#define HDNT_DECLARE(Class, name, holds)                                                                               \
    void visit(Class* node) override;                                                                                  \
    void postVisit(Class* node) override;
    HDNT_EVENTS(HDNT_DECLARE)
#undef HDNT_DECLARE

protected:
    virtual bool wants(std::string_view event) const = 0;
    /// Not called for events that are not wanted.
    virtual void tell(std::string_view event, HDNTNode& node) = 0;
    /// Whether to go on into what the event is about.
    virtual bool ask(std::string_view event, HDNTNode& node) = 0;
    /// Before anything of a block, wanted or not.
    virtual void enterBlock(HDNTBlock& block) = 0;

private:
    void tellIfWanted(std::string_view event, HDNTNode* node) {
        if (wants(event)) tell(event, *node);
    }
};

/// Walks a library, a block, a mapping or something of a mapping; `own` without blocks of parents and mappings of map
/// libraries.
void walk(HDNTNode& node, HDNTVisitor& visitor, bool own);

} // namespace hdnt::scripts
