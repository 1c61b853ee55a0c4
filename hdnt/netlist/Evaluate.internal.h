#pragma once

#include "hdnt/netlist/HDNTCompoundExpr.h"

#include <memory>

class HDNTValue;

// Types and values of expressions. Internal.
namespace hdnt::netlist {

struct DerivedType {
    HDNTCompoundExpr::TypeState state = HDNTCompoundExpr::TypeState::Unknown;
    unsigned code = 0;        ///< when Known
    bool faultIsHere = false; ///< when Failed: the operands are fine by themselves and do not go together
};

/// The type of an operation; of operands that were not finalized, the type they would get.
DerivedType typeOfOperation(const HDNTCompoundExpr& expr);
DerivedType typeOf(const HDNTExpr& expr);

/// The value of an expression, with functions from the table in force. Throws HEXAlgException for what cannot be
/// computed. Null only for a call that is a statement. Changes nothing, but for what evaluate() of a host's own class
/// does.
std::unique_ptr<HDNTValue> evaluate(const HDNTExpr& expr);
/// The same where a value is needed: never null, but throws.
std::unique_ptr<HDNTValue> valueOf(const HDNTExpr& expr);
/// The same for an operation or a call, which then holds the result, as do all operations and calls in it. When this
/// throws, those that were not computed hold none.
void evaluateAndStore(HDNTExpr& expr);

/// What a value means as a condition.
bool isTrue(const HDNTValue& value);

} // namespace hdnt::netlist
