#include "hdnt/netlist/HDNTAssignProperty.h"

HDNTAssignProperty::HDNTAssignProperty(std::string_view instName, std::string_view propName, HDNTExpr* value)
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

HDNTAssignPinProperty::HDNTAssignPinProperty(std::string_view instName, std::string_view pinName,
                                             std::string_view propName, HDNTExpr* value)
    : HDNTAssignProperty(instName, propName, value), pinName_(pinName) {
    setKind(HDNTNodeKind::AssignPinProperty);
}
