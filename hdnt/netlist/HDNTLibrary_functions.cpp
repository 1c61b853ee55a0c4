// The function declarations of a library.
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/HEX.h"

bool HDNTLibrary::adoptFunction(HDNTDecl* decl) {
    auto* const function = nodeCast<HDNTFunctionDecl>(decl);
    if (function) functions_.push_back(function);
    return function != nullptr;
}

void HDNTLibrary::deleteFunctions() noexcept {
    for (const HDNTFunctionDecl* function : functions_) delete function;
}

HDNTFunctionDecl* HDNTLibrary::getFunctionDecl(size_t i) const {
    if (i >= functions_.size()) throw HEXAlgException("Function declaration index out of range");
    return functions_[i];
}

HDNTFunctionDecl* HDNTLibrary::getFunctionDeclByName(const std::string& name) const { return lookUpFunction(name); }

const HDNTFunctionDecl* HDNTLibrary::findFunction(std::string_view name) const { return lookUpFunction(name); }
HDNTFunctionDecl* HDNTLibrary::findFunction(std::string_view name) { return lookUpFunction(name); }

HDNTFunctionDecl* HDNTLibrary::lookUpFunction(std::string_view name) const {
    for (HDNTFunctionDecl* function : functions_)
        if (function->getName() == name) return function;
    return parentLibrary_ ? parentLibrary_->lookUpFunction(name) : nullptr;
}
