#pragma once

#include "hdnt/netlist/HDNTExpr.h"

class HDNTValue;

/// An operator with one operand or two. Operations in operations are walked in loops and may have any depth.
class HDNT_API HDNTCompoundExpr : public HDNTExpr {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::CompoundExpr, lastKind = firstKind;

    /// What finalize() found out about the type. Unknown: an operand is missing, or a function is not declared so far.
    enum class TypeState : unsigned char { NotDerived, Unknown, Known, Failed };

    /// Takes over the operands, which get this as parent. `lhs` is null for an operator of one operand.
    HDNTCompoundExpr(HDNTExpr* lhs, FOPERATOR op, HDNTExpr* rhs);
    ~HDNTCompoundExpr() override;
    /// Checks the operands.
    void check() override;
    /// Finalizes the operands and derives the type. Operands of different types, or of a type that the operator does
    /// not take, are reported once as "Invalid operands", unless an operand failed itself or has no type yet. Throws
    /// HEXAlgException "Invalid Operator" for an operator value of 15 or more.
    void finalize() override;
    void accept(HDNTVisitor& visitor) override;
    void evaluate() override;

    HDNTExpr* lhs() const { return lhs_; }
    HDNTExpr* rhs() const { return rhs_; }
    FOPERATOR op() const { return op_; }
    TypeState typeState() const { return typeState_; }

    // This operator on two values; for an operator of one operand only `b` counts. The result is the caller's. Throws
    // HEXAlgException where the operator is not defined for the type, and for a division or remainder by zero. Int
    // arithmetic wraps.
    HDNTValue* operate(int a, int b) const;
    HDNTValue* operate(double a, double b) const;
    HDNTValue* operate(bool a, bool b) const;
    HDNTValue* operate(const std::string& a, const std::string& b) const;
    HDNTValue* operate(const char* a, const char* b) const;

private:
    HDNT_LOCAL void deriveType();
    HDNT_LOCAL static void deleteAll(HDNTExpr* expr) noexcept;

    HDNTExpr* lhs_;
    HDNTExpr* rhs_;
    FOPERATOR op_;
    TypeState typeState_ = TypeState::NotDerived;
};
