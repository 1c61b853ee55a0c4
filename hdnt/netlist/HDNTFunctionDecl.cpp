#include "hdnt/netlist/HDNTFunctionDecl.h"

#include "hdnt/platform/HEX.h"

HDNTFunctionDecl::HDNTFunctionDecl(const std::string& name, HATAttrTypes::AttrType type,
                                   const std::vector<HATAttrTypes::AttrType>* formals)
    : name_(name), type_(type) {
    if (formals) formals_ = *formals;
}

HATAttrTypes::AttrType HDNTFunctionDecl::getFormal(size_t i) const {
    if (i >= formals_.size()) throw HEXAlgException("Function argument index out of range");
    return formals_[i];
}
