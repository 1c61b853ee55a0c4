#include "bindings/shared/EventVisitor.h"

#include "bindings/shared/LoadSection.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTPrimGroup.h"
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
#include "hdnt/netlist/HDNTValue.h"

namespace hdnt::scripts {

const std::vector<std::string_view>& EventVisitor::events() {
    static const std::vector<std::string_view> names = [] {
        std::vector<std::string_view> all = {"visit_block", "leave_block", "visit_else", "visit_section",
                                             "enter_netlist"};
#define HDNT_NAMES(Class, name, holds)                                                                                 \
    all.push_back("visit_" #name);                                                                                     \
    if (holds) all.push_back("leave_" #name);
        HDNT_EVENTS(HDNT_NAMES)
#undef HDNT_NAMES
        return all;
    }();
    return names;
}

bool EventVisitor::enter(HDNTNetlist* netlist) { return !wants("enter_netlist") || ask("enter_netlist", *netlist); }
void EventVisitor::sectionSeparator(HDNTNetlist* netlist) { tellIfWanted("visit_section", netlist); }
void EventVisitor::elseVisit(HDNTIfStmt* statement) { tellIfWanted("visit_else", statement); }
void EventVisitor::visit(HDNTBlock* block) {
    enterBlock(*block);
    tellIfWanted("visit_block", block);
}
void EventVisitor::postVisit(HDNTBlock* block) { tellIfWanted("leave_block", block); }

// NOLINTBEGIN(bugprone-macro-parentheses): a type takes none
#define HDNT_DEFINE(Class, name, holds)                                                                                \
    void EventVisitor::visit(Class* node) { tellIfWanted("visit_" #name, node); }                                      \
    void EventVisitor::postVisit(Class* node) { tellIfWanted("leave_" #name, node); }
// NOLINTEND(bugprone-macro-parentheses)
HDNT_EVENTS(HDNT_DEFINE)
#undef HDNT_DEFINE

void walk(HDNTNode& node, HDNTVisitor& visitor, bool own) {
    const Reading reading;
    if (auto* const library = nodeCast<HDNTLibrary>(&node))
        own ? library->acceptOwn(visitor) : library->accept(visitor);
    else if (auto* const block = nodeCast<HDNTBlock>(&node)) own ? block->acceptOwn(visitor) : block->accept(visitor);
    else if (auto* const netlist = nodeCast<HDNTNetlist>(&node)) netlist->accept(visitor);
    else static_cast<HDNTNetlistEntity&>(node).accept(visitor);
}

} // namespace hdnt::scripts
