#pragma once

#include "hdnt/netlist/HDNTNetlistEntity.h"
#include "hdnt/platform/HATAttrTypes.h"

#include <memory>

/// An expression of a mapping: a constant, an operation, or a function call.
///
/// Reading is safe in any thread; evaluate() stores its result and belongs to one thread at a time.
///
/// A program may derive a class of its own from this one and use it as any expression. Where its value is needed, also
/// by HDNTExpansion, its evaluate() is called, and the constant that it then holds (setEvaluatedExpr) is the value;
/// when it holds none, the evaluation throws HEXAlgException. What that evaluate() changes is up to it. Its type is not
/// known until then, so that it goes with any operand and argument. Classes derived from those of the model are
/// computed as these, without a call of their evaluate().
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

    /// Computes the value and stores it for getEvaluatedExpr(), after dropping the one before; so it is with the
    /// operations and calls in this expression. Throws HEXAlgException for what cannot be computed (a division by zero,
    /// operands of different types, a function without implementation); there is no stored value then, here and in
    /// what was not reached.
    virtual void evaluate() = 0;

    /// Type code: 0 bool, 1 int, 2 double, 3 string. Of an operation or a call it is 0 until finalize() found it out.
    unsigned exprType() const { return exprType_; }
    /// The type for comparing: 7 and 8 count as 3.
    unsigned getComparisonType() const { return comparisonType(exprType_); }
    static unsigned comparisonType(unsigned type);

    /// The constant that evaluate() stored, owned by this expression. Before, null; of a constant itself.
    HDNTExpr* getEvaluatedExpr() const;
    /// Takes over the expression (null: none) and deletes the one before, unless they are the same. This expression
    /// itself counts as none. A constant may hold another, which does not change its own value.
    void setEvaluatedExpr(HDNTExpr* expr);

    /// "+", "&&" ...; empty for the two operators of one operand and for any other value.
    static const char* getStringOperator(FOPERATOR op);

protected:
    void setExprType(unsigned type) { exprType_ = type; }

private:
    unsigned exprType_ = 0; ///< first, where the entity leaves room
    std::unique_ptr<HDNTExpr> evaluatedExpr_;
};
