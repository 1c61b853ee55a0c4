#include "hdnt/netlist/HDNTAssignProperty.h"

HDNTAssignProperty::HDNTAssignProperty(const std::string& instName, const std::string& propName, HDNTExpr* value)
    : instName_(instName), propName_(propName), value_(value) {
    if (value) value->setParent(this);
}

HDNTAssignProperty::~HDNTAssignProperty() = default;

void HDNTAssignProperty::check() {
    if (value_) value_->check();
}

void HDNTAssignProperty::finalize() {
    if (value_) value_->finalize();
}

HDNTAssignPinProperty::HDNTAssignPinProperty(const std::string& instName, const std::string& pinName,
                                             const std::string& propName, HDNTExpr* value)
    : HDNTAssignProperty(instName, propName, value), pinName_(pinName) {
    setKind(HDNTNodeKind::AssignPinProperty);
}
