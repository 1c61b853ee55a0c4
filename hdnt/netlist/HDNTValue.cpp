#include "hdnt/netlist/HDNTValue.h"

#include "hdnt/platform/HEX.h"

template <typename Constant>
static const Constant& constantOf(const HDNTExpr* expr, const char* type) {
    if (const auto* const constant = nodeCast<Constant>(expr)) return *constant;
    throw HEXAlgException(std::string("Attribute type mismatch (not ") + type + ") in block mapping");
}

int HDNTValue::getIntValue(const HDNTExpr* expr) { return constantOf<HDNTIntConstant>(expr, "int").getValue(); }

double HDNTValue::getDoubleValue(const HDNTExpr* expr) {
    return constantOf<HDNTDoubleConstant>(expr, "double").getValue();
}

const std::string& HDNTValue::getStringValue(const HDNTExpr* expr) {
    return constantOf<HDNTStringConstant>(expr, "string").getValue();
}

bool HDNTValue::getBoolValue(const HDNTExpr* expr) {
    if (const auto* const text = nodeCast<HDNTStringConstant>(expr)) {
        if (text->getValue() == "TRUE") return true;
        if (text->getValue() == "FALSE") return false;
    }
    return constantOf<HDNTBoolConstant>(expr, "bool").getValue();
}

hdnt::Value HDNTValue::getPlainValue() const {
    if (const auto* const flag = nodeCast<HDNTBoolConstant>(this)) return flag->getValue();
    if (const auto* const number = nodeCast<HDNTIntConstant>(this)) return number->getValue();
    if (const auto* const number = nodeCast<HDNTDoubleConstant>(this)) return number->getValue();
    return getStringValue(this);
}

std::unique_ptr<HDNTValue> HDNTValue::makeConstant(const hdnt::Value& value) {
    if (const auto* const flag = std::get_if<bool>(&value)) return std::make_unique<HDNTBoolConstant>(*flag);
    if (const auto* const number = std::get_if<int>(&value)) return std::make_unique<HDNTIntConstant>(*number);
    if (const auto* const number = std::get_if<double>(&value)) return std::make_unique<HDNTDoubleConstant>(*number);
    return std::make_unique<HDNTStringConstant>(std::get<std::string>(value));
}
