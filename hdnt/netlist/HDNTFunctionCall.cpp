#include "hdnt/netlist/HDNTFunctionCall.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/platform/HEX.h"

HDNTFunctionCall::HDNTFunctionCall(std::string_view name, std::vector<HDNTExpr*>* actuals) : name_(name) {
    setKind(HDNTNodeKind::FunctionCall);
    const std::unique_ptr<std::vector<HDNTExpr*>> owned(actuals);
    if (actuals) actuals_ = std::move(*actuals);
    for (HDNTExpr* actual : actuals_) actual->setParent(this);
}

HDNTFunctionCall::~HDNTFunctionCall() {
    for (const HDNTExpr* actual : actuals_) delete actual;
}

HDNTExpr* HDNTFunctionCall::getActual(size_t i) const {
    if (i >= actuals_.size()) throw HEXAlgException("Function argument index out of range");
    return actuals_[i];
}

HDNTFunctionDecl* HDNTFunctionCall::getDecl() const {
    for (const HDNTNode* node = this; node; node = node->getParent())
        if (const auto* const library = nodeCast<HDNTLibrary>(node)) return library->getFunctionDeclByName(name());
    return nullptr;
}

void HDNTFunctionCall::check() {
    if (const HDNTFunctionDecl* const decl = getDecl()) decl->matchArgs(&actuals_, this);
    else HDNTError::FunctionNotPresentInLibaray(getLocation(), name().c_str());
    for (HDNTExpr* actual : actuals_) actual->check();
}

void HDNTFunctionCall::finalize() {
    for (HDNTExpr* actual : actuals_) actual->finalize();
    if (const HDNTFunctionDecl* const decl = getDecl()) setExprType(static_cast<unsigned>(decl->getType()));
}

void HDNTFunctionCall::evaluate() { hdnt::netlist::evaluateAndStore(*this); }
