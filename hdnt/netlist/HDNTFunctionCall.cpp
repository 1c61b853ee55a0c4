#include "hdnt/netlist/HDNTFunctionCall.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/CompoundWalk.internal.h"
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

HDNTFunctionCall::HDNTFunctionCall(std::string_view name, std::span<HDNTExpr* const> actuals)
    : name_(name), actuals_(actuals.begin(), actuals.end()) {
    setKind(HDNTNodeKind::FunctionCall);
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
    const HDNTLibrary* const library = hdnt::netlist::WayUp::libraryAbove(*this);
    return library ? library->getFunctionDeclByName(name()) : nullptr;
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

constinit thread_local hdnt::netlist::WayUp* hdnt::netlist::WayUp::innermost = nullptr;

// Only of calls in what is walked: others, which a listener may ask for, need not live as long as the walk.
HDNTLibrary* hdnt::netlist::WayUp::libraryAbove(const HDNTNode& call) {
    bool isWalked = false;
    const HDNTNode* node = &call;
    for (; node && !nodeCast<HDNTLibrary>(node); node = node->getParent()) {
        if (!innermost) continue;
        isWalked = isWalked || node == innermost->walked_ || node == innermost->known_;
        if (node == innermost->known_) break;
    }
    const bool isKnown = node && innermost && node == innermost->known_;
    auto* const library = isKnown ? innermost->library_ : const_cast<HDNTLibrary*>(nodeCast<HDNTLibrary>(node));
    if (isWalked) {
        innermost->known_ = call.getParent()->getParent();
        innermost->library_ = library;
    }
    return library;
}

void HDNTFunctionCall::evaluate() { hdnt::netlist::evaluateAndStore(*this); }
