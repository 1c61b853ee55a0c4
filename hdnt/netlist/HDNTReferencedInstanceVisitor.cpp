#include "hdnt/netlist/HDNTReferencedInstanceVisitor.h"

#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
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

// Not HDNTBlockInst::getTypeBlock, which may load the common library: the configuration answers by name, and this may
// be asked in any thread.
void HDNTPseudoDiffVisitor::visit(HDNTBlockInst* inst) {
    if (!library_) return;
    const HDNTBlock* const type = library_->getTypeBlockByName(inst->typeName(), true);
    const auto& cells = library_->getConfigurationFacts().cells;
    const auto cell = cells.find(type ? type->getName() : inst->typeName());
    found_ |= cell != cells.end() && cell->second.pseudoDifferential;
}

void HDNTPseudoDiffVisitor::visit(HDNTFunctionCall* call) {
    if (!library_) return;
    const auto& functions = library_->getConfigurationFacts().pseudoDifferentialFunctions;
    found_ |= std::find(functions.begin(), functions.end(), call->name()) != functions.end();
}
