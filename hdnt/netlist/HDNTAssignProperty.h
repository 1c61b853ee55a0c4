#pragma once

#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/platform/HSTUniqString.h"

#include <memory>
#include <string_view>

/// Gives a property of an instance, or of a pin of one, a value.
class HDNT_API HDNTAssignProperty : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::AssignBlockProperty,
                                  lastKind = HDNTNodeKind::AssignPinProperty;

    /// Takes over the value, which gets this as parent and may be null.
    HDNTAssignProperty(std::string_view instName, std::string_view propName, HDNTExpr* value);
    ~HDNTAssignProperty() override;
    void check() override;
    void finalize() override;

    const std::string& instName() const { return instName_.str(); }
    const std::string& propName() const { return propName_.str(); }
    HDNTExpr* value() const { return value_.get(); }

private:
    HSTUniqString instName_;
    HSTUniqString propName_;
    std::unique_ptr<HDNTExpr> value_;
};

/// `assign block property "U0" "WIDTH" 8;`
class HDNT_API HDNTAssignBlockProperty : public HDNTAssignProperty {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::AssignBlockProperty, lastKind = firstKind;

    HDNTAssignBlockProperty(std::string_view instName, std::string_view propName, HDNTExpr* value)
        : HDNTAssignProperty(instName, propName, value) {
        setKind(HDNTNodeKind::AssignBlockProperty);
    }
    void accept(HDNTVisitor& visitor) override;
};

/// `assign pin property "U0" "Q", "LOAD" 1.5;`
class HDNT_API HDNTAssignPinProperty : public HDNTAssignProperty {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::AssignPinProperty, lastKind = firstKind;

    HDNTAssignPinProperty(std::string_view instName, std::string_view pinName, std::string_view propName,
                          HDNTExpr* value);
    void accept(HDNTVisitor& visitor) override;

    const std::string& pinName() const { return pinName_.str(); }

private:
    HSTUniqString pinName_;
};
