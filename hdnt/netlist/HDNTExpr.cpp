#include "hdnt/netlist/HDNTExpr.h"

#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/Words.h"

HDNTExpr::HDNTExpr() = default;
HDNTExpr::~HDNTExpr() = default;

unsigned HDNTExpr::comparisonType(unsigned type) {
    return HATAttrTypes::isBitVector(static_cast<HATAttrTypes::AttrType>(type))
               ? static_cast<unsigned>(HATAttrTypes::TypeString)
               : type;
}

HDNTExpr* HDNTExpr::getEvaluatedExpr() const {
    if (!evaluatedExpr_ && nodeCast<HDNTValue>(this)) return const_cast<HDNTExpr*>(this);
    return evaluatedExpr_.get();
}

// An expression that held itself would be deleted by itself.
void HDNTExpr::setEvaluatedExpr(HDNTExpr* expr) {
    if (expr == this) expr = nullptr;
    if (expr != evaluatedExpr_.get()) evaluatedExpr_.reset(expr);
}

const char* HDNTExpr::getStringOperator(FOPERATOR op) {
    const std::string_view word = op == NEGATE || op == NOT ? std::string_view() : hdnt::words::operators.wordOf(op);
    return word.empty() ? "" : word.data();
}
