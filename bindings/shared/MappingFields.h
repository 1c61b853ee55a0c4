#pragma once

#include "bindings/shared/Fields.h"
#include "bindings/shared/Text.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"
#include "hdnt/netlist/Words.h"

namespace hdnt::scripts {

namespace facts {

inline Word section(HDNTNetlist& netlist) { return {words::sections.wordOf(netlist.section())}; }
inline OrNone referencedInstance(HDNTNetlist& netlist) { return {netlist.getReferencedInstanceName()}; }
/// A mapping of a map library has no file: its text was put together for an architecture.
inline bool isMapLibrary(HDNTNetlist& netlist) {
    const auto location = netlist.copyOfLocation();
    return location && !location->fileName;
}
inline OrNone refInstance(HDNTBlockPinName& pin) { return {pin.instName()}; }
inline Word resultType(HDNTFunctionDecl& function) { return {words::propertyTypes.wordOf(function.getType())}; }
inline std::vector<Word> formals(HDNTFunctionDecl& function) {
    std::vector<Word> types;
    for (size_t i = 0; i < function.getNumFormals(); ++i)
        types.push_back({words::propertyTypes.wordOf(function.getFormal(i))});
    return types;
}
inline Word exprType(HDNTExpr& expression) {
    return {words::propertyTypes.wordOf(static_cast<HATAttrTypes::AttrType>(expression.exprType()))};
}
inline Word sign(HDNTCompoundExpr& expression) { return {words::operators.wordOf(expression.op())}; }
inline Value value(HDNTValue& constant) { return constant.getPlainValue(); }

} // namespace facts

inline constexpr std::tuple netlistFields{
    field<facts::section>("section", "\"mapsto\", \"expandsto\", \"modifiedby\" or \"retargetsto\"."),
    field<&HDNTNetlist::getTypeBlock>("block", "The block that is mapped."),
    field<&HDNTNetlist::signals>("signals", "Tuple of its signals."),
    field<&HDNTNetlist::connects>("connects", "Tuple of its connects, without those of signals."),
    field<&HDNTNetlist::instances>("instances", "Tuple of the instances outside statements."),
    field<&HDNTNetlist::blockPropertyAssigns>("block_property_assigns",
                                              "Tuple of the property values given to instances."),
    field<&HDNTNetlist::pinPropertyAssigns>("pin_property_assigns", "Tuple of the property values given to pins."),
    field<&HDNTNetlist::ifStmts>("ifs", "Tuple of its if statements."),
    field<&HDNTNetlist::preInstanceCalls>("pre_instance_calls", "Tuple of the calls before the first instance."),
    field<&HDNTNetlist::postInstanceCalls>("post_instance_calls", "Tuple of the calls behind it."),
    field<facts::referencedInstance>("referenced_instance",
                                     "Name of the instance that stands for it; None without one."),
    field<facts::isMapLibrary>("is_map_library", "Whether it comes from a map library.")};

inline constexpr std::tuple instanceFields{
    field<&HDNTBlockInst::instName>("name", "Name of the instance."),
    field<&HDNTBlockInst::typeName>("type_name", "Name of the block it is an instance of.")};

inline constexpr std::tuple signalFields{
    field<&HDNTSignal::name>("name", "Name of the signal."),
    field<&HDNTSignal::connect>("connect", "The pins declared with it, a Connect; None without any."),
    field<&HDNTSignal::isOne>("is_one", "Whether it is the constant 1."),
    field<&HDNTSignal::isZero>("is_zero", "Whether it is the constant 0.")};

inline constexpr std::tuple connectFields{
    field<&HDNTConnect::signalName>("signal_name", "Name of the signal."),
    field<&HDNTConnect::getSignal>("signal", "The signal; None when it is not declared."),
    field<&HDNTConnect::pins>("pins", "Tuple of the pins that it connects, each a PinRef.")};

inline constexpr std::tuple pinRefFields{
    field<facts::refInstance>("instance", "Name of the instance; None for a pin of the mapped block."),
    field<&HDNTBlockPinName::pinName>("name", "Name of the pin."),
    field<&HDNTBlockPinName::inverted>("inverted", "Whether the pin is inverted.")};

inline constexpr std::tuple blockAssignFields{
    field<&HDNTAssignBlockProperty::instName>("instance", "Name of the instance."),
    field<&HDNTAssignBlockProperty::propName>("property", "Name of the property."),
    field<&HDNTAssignBlockProperty::value>("value", "The expression that gives the value.")};

inline constexpr std::tuple pinAssignFields{
    field<&HDNTAssignPinProperty::instName>("instance", "Name of the instance."),
    field<&HDNTAssignPinProperty::pinName>("pin", "Name of the pin."),
    field<&HDNTAssignPinProperty::propName>("property", "Name of the property."),
    field<&HDNTAssignPinProperty::value>("value", "The expression that gives the value.")};

inline constexpr std::tuple ifFields{
    field<&HDNTIfStmt::condition>("condition", "The expression that decides."),
    field<&HDNTIfStmt::thenStmt>("then", "The statement for yes."),
    field<&HDNTIfStmt::elseStmt>("otherwise", "The statement for no; None without one.")};

inline constexpr std::tuple statementsFields{
    field<&HDNTStmtBlock::statements>("statements", "Tuple of what stands in the braces.")};

inline constexpr std::tuple functionFields{field<&HDNTFunctionDecl::getName>("name", "Its name."),
                                           field<facts::resultType>("type", "Type of its result."),
                                           field<facts::formals>("arguments", "Tuple of the types of its arguments.")};

/// Of every expression; those of each kind are below.
inline constexpr std::tuple expressionFields{field<facts::exprType>("type", "The type of its value.")};

inline constexpr std::tuple callFields{
    field<&HDNTFunctionCall::name>("name", "Name of the function."),
    field<&HDNTFunctionCall::actuals>("arguments", "Tuple of the expressions it is given."),
    field<&HDNTFunctionCall::isStatement>("is_statement", "Whether it stands as a statement."),
    field<&HDNTFunctionCall::getDecl>("declaration", "The declaration; None when there is none.")};

inline constexpr std::tuple operationFields{
    field<facts::sign>("operator", "As it is written: \"+\", \"&&\" and so on."),
    field<&HDNTCompoundExpr::lhs>("left", "The left operand; None for an operator of one operand."),
    field<&HDNTCompoundExpr::rhs>("right", "The right operand, or the only one.")};

inline constexpr std::tuple constantFields{field<facts::value>("value", "The value itself.")};

} // namespace hdnt::scripts
