#include "bindings/shared/MappingFields.h"
#include "bindings/tcl/Subcommand.h"
#include "bindings/tcl/Values.h"

#include <cstring>

namespace hdnt::tcl {

namespace {

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
    std::vector<Subcommand> all = kind == HDNTNodeKind::FunctionCall   ? subcommands(scripts::callFields)
                                  : kind == HDNTNodeKind::CompoundExpr ? subcommands(scripts::operationFields)
                                                                       : subcommands(scripts::constantFields);
    const std::vector<Subcommand> common =
        subcommands(std::tuple_cat(scripts::expressionFields, std::tuple{scripts::field<text>("text", "")}),
                    {{"evaluate", evaluate, 0, 2, "?-functions dict?", false},
                     {"visit", visit, 2, -1, "event prefix ?event prefix ...?", false}});
    all.insert(all.end(), common.begin(), common.end());
    return all;
}

} // namespace hdnt::tcl
