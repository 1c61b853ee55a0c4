#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"

#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/ManagerState.internal.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTFunctionCall.h"

#include <algorithm>

void HDNTReferencedInstanceVisitor::visit(HDNTBlockInst* inst) {
    if (instCount_ == 0) recordedName_ = inst->instName();
    ++instCount_;
}

void HDNTReferencedInstanceVisitor::visit(HDNTIfStmt*) {
    if (instCount_ > 0) instCount_ = 0;
}

void HDNTReferencedInstanceVisitor::elseVisit(HDNTIfStmt*) {
    if (instCount_ == 1) instCount_ = 0;
}

// Not HDNTBlockInst::getTypeBlock, which may load the common library: this may be asked in any thread.
void HDNTPseudoDiffVisitor::visit(HDNTBlockInst* inst) {
    if (!library_) return;
    const HDNTLibrary* const common = hdnt::model::loadedCommonLibrary();
    const HDNTBlock* type = library_->getTypeBlockByName(inst->typeName(), true);
    if (!type && common) type = common->getTypeBlockByName(inst->typeName(), true);
    found_ |= type && type->canBePseudoDifferential();
}

void HDNTPseudoDiffVisitor::visit(HDNTFunctionCall* call) {
    if (!library_) return;
    const auto& functions = library_->getConfigurationFacts().pseudoDifferentialFunctions;
    found_ |= std::find(functions.begin(), functions.end(), call->name()) != functions.end();
}
