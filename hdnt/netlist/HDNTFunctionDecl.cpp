#include "hdnt/netlist/HDNTFunctionDecl.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/netlist/Evaluate.internal.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/platform/HEX.h"

HDNTFunctionDecl::HDNTFunctionDecl(const std::string& name, HATAttrTypes::AttrType type,
                                   const std::vector<HATAttrTypes::AttrType>* formals)
    : name_(name), type_(type) {
    setKind(HDNTNodeKind::FunctionDecl);
    if (formals) formals_ = *formals;
}

HATAttrTypes::AttrType HDNTFunctionDecl::getFormal(size_t i) const {
    if (i >= formals_.size()) throw HEXAlgException("Function argument index out of range");
    return formals_[i];
}

bool HDNTFunctionDecl::matchArgs(const std::vector<HDNTExpr*>* actuals, HDNTFunctionCall* call) const {
    static const auto* const none = new std::vector<HDNTExpr*>;
    const std::vector<HDNTExpr*>& given = actuals ? *actuals : *none;
    if (given.size() != formals_.size()) {
        HDNTError::FunctionNumArgsMismatch(call->getLocation(), name_.c_str());
        return false;
    }
    bool matched = true;
    for (size_t i = 0; i < formals_.size(); ++i) {
        const hdnt::netlist::DerivedType type = hdnt::netlist::typeOf(*given[i]);
        if (type.state != HDNTCompoundExpr::TypeState::Known) continue;
        const unsigned formal = static_cast<unsigned>(formals_[i]);
        if (HDNTExpr::comparisonType(type.code) == HDNTExpr::comparisonType(formal)) continue;
        HDNTError::MismatchedArgument(call->getLocation(), static_cast<int>(i + 1));
        matched = false;
    }
    return matched;
}
