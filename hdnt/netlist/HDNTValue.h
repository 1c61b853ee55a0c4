#pragma once

#include "hdnt/model/Value.h"
#include "hdnt/netlist/HDNTExpr.h"
#include "hdnt/platform/HSTUniqString.h"

#include <string_view>

/// A constant. It is its own value.
class HDNT_API HDNTValue : public HDNTExpr {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::IntConstant, lastKind = HDNTNodeKind::StringConstant;

    /// Drops what setEvaluatedExpr() put in place of the constant itself.
    void evaluate() override { setEvaluatedExpr(nullptr); }

    // The value of a constant of exactly that class. Anything else, null included, throws HEXAlgException
    // "Attribute type mismatch (not int) in block mapping", or double, string, bool.
    static int getIntValue(const HDNTExpr* expr);
    static double getDoubleValue(const HDNTExpr* expr);
    static const std::string& getStringValue(const HDNTExpr* expr);
    /// Takes the texts "TRUE" and "FALSE" too.
    static bool getBoolValue(const HDNTExpr* expr);

    /// The constant's value; a constant of another class throws as above.
    hdnt::Value getPlainValue() const;
    /// A new constant of that value.
    static std::unique_ptr<HDNTValue> makeConstant(const hdnt::Value& value);
};

class HDNT_API HDNTIntConstant : public HDNTValue {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::IntConstant, lastKind = firstKind;

    explicit HDNTIntConstant(int value) : value_(value) {
        setKind(HDNTNodeKind::IntConstant);
        setExprType(HATAttrTypes::TypeInt);
    }
    void accept(HDNTVisitor& visitor) override;
    int getValue() const { return value_; }

private:
    int value_;
};

class HDNT_API HDNTDoubleConstant : public HDNTValue {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::DoubleConstant, lastKind = firstKind;

    explicit HDNTDoubleConstant(double value) : value_(value) {
        setKind(HDNTNodeKind::DoubleConstant);
        setExprType(HATAttrTypes::TypeDouble);
    }
    void accept(HDNTVisitor& visitor) override;
    double getValue() const { return value_; }

private:
    double value_;
};

class HDNT_API HDNTBoolConstant : public HDNTValue {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::BoolConstant, lastKind = firstKind;

    explicit HDNTBoolConstant(bool value) : value_(value) {
        setKind(HDNTNodeKind::BoolConstant);
        setExprType(HATAttrTypes::TypeBool);
    }
    void accept(HDNTVisitor& visitor) override;
    bool getValue() const { return value_; }

private:
    bool value_;
};

class HDNT_API HDNTStringConstant : public HDNTValue {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::StringConstant, lastKind = firstKind;

    explicit HDNTStringConstant(std::string_view value) : value_(value) {
        setKind(HDNTNodeKind::StringConstant);
        setExprType(HATAttrTypes::TypeString);
    }
    void accept(HDNTVisitor& visitor) override;
    const std::string& getValue() const { return value_.str(); }

private:
    HSTUniqString value_;
};
