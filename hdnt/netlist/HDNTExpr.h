#pragma once

#include "hdnt/netlist/HDNTNetlistEntity.h"
#include "hdnt/platform/HATAttrTypes.h"

#include <memory>

/// An expression of a mapping: a constant, an operation, or a function call.
///
/// Reading is safe in any thread; evaluate() stores its result and belongs to one thread at a time.
class HDNT_API HDNTExpr : public HDNTNetlistEntity {
public:
    static constexpr HDNTNodeKind firstKind = HDNTNodeKind::FunctionCall, lastKind = HDNTNodeKind::StringConstant;

    enum FOPERATOR : unsigned {
        ADD = 0,
        SUBTRACT = 1,
        NEGATE = 2, ///< of the right operand
        MULTIPLY = 3,
        DIVIDE = 4,
        REMAINDER = 5,
        AND = 6,
        OR = 7,
        NOT = 8, ///< of the right operand
        GREATER = 9,
        LESS = 10,
        LESS_EQUAL = 11,
        GREATER_EQUAL = 12,
        NOT_EQUAL = 13,
        EQUAL = 14,
    };

    HDNTExpr();
    ~HDNTExpr() override;

    /// Computes the value and stores it for getEvaluatedExpr(), after dropping the one before. Throws HEXAlgException
    /// for what cannot be computed (a division by zero, operands of different types, a function without
    /// implementation); there is no stored value then.
    virtual void evaluate() = 0;

    /// Type code: 0 bool, 1 int, 2 double, 3 string. Of an operation or a call it is 0 until finalize() found it out.
    unsigned exprType() const { return exprType_; }
    /// The type for comparing: 7 and 8 count as 3.
    unsigned getComparisonType() const { return comparisonType(exprType_); }
    static unsigned comparisonType(unsigned type);

    /// The constant that evaluate() stored, owned by this expression; of a constant itself. Null before.
    HDNTExpr* getEvaluatedExpr() const;
    /// Takes over the expression (null: none) and deletes the one before, unless they are the same.
    void setEvaluatedExpr(HDNTExpr* expr);

    /// "+", "&&" ...; empty for the two operators of one operand and for any other value.
    static const char* getStringOperator(FOPERATOR op);

protected:
    void setExprType(unsigned type) { exprType_ = type; }

private:
    std::unique_ptr<HDNTExpr> evaluatedExpr_;
    unsigned exprType_ = 0;
};
