#include "bindings/shared/Text.h"
#include "bindings/tcl/Subcommand.h"
#include "bindings/tcl/Values.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTCompoundExpr.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/Words.h"

#include <cstring>

namespace hdnt::tcl {

namespace {

std::string typeName(HDNTExpr& expression) {
    return HDNTProperty::getTypeName(static_cast<HATAttrTypes::AttrType>(expression.exprType()));
}
std::string_view sign(HDNTCompoundExpr& expression) { return words::operators.wordOf(expression.op()); }
Tcl_Obj* value(HDNTValue& constant) { return valueOf(constant); }
std::string text(HDNTExpr& expression) { return scripts::textOf(expression); }

Tcl_Obj* evaluate(const Call& call) {
    if (call.arguments() == 1 ||
        (call.arguments() == 2 && std::strcmp(Tcl_GetString(call.argument(0)), "-functions") != 0))
        wrongArguments(call, "?-functions dict?");
    TclFunctions functions(call.interp());
    if (call.arguments() == 2) functions.add(call.argument(1));
    auto& expression = call.as<HDNTExpr>();
    std::optional<Obj> result;
    functions.run("", LoadSection::Quiet, [&] {
        expression.evaluate();
        const HDNTExpr* const value = expression.getEvaluatedExpr();
        if (value) result.emplace(valueOf(*static_cast<const HDNTValue*>(value)));
        if (value && value != &expression) expression.setEvaluatedExpr(nullptr);
    });
    return result ? toTcl(std::move(*result)) : Tcl_NewObj();
}

} // namespace

std::vector<Subcommand> expressionSubcommands(HDNTNodeKind kind) {
    std::vector<Subcommand> all = {field<typeName>("type"), field<text>("text"),
                                   Subcommand{"evaluate", evaluate, 0, 2, "?-functions dict?", false},
                                   Subcommand{"visit", visit, 2, -1, "event prefix ?event prefix ...?", false}};
    const auto add = [&](std::initializer_list<Subcommand> more) { all.insert(all.end(), more); };
    if (kind == HDNTNodeKind::FunctionCall)
        add({field<&HDNTFunctionCall::name>("name"), field<&HDNTFunctionCall::actuals>("arguments"),
             field<&HDNTFunctionCall::isStatement>("is_statement"), field<&HDNTFunctionCall::getDecl>("declaration")});
    else if (kind == HDNTNodeKind::CompoundExpr)
        add({field<sign>("operator"), field<&HDNTCompoundExpr::lhs>("left"), field<&HDNTCompoundExpr::rhs>("right")});
    else add({field<value>("value")});
    return all;
}

} // namespace hdnt::tcl
