#include "bindings/tcl/Subcommand.h"

#include <cstring>
#include <map>

namespace hdnt::tcl {

namespace {

const std::vector<Subcommand>& tableOf(HDNTNodeKind kind);

Tcl_Obj* library(const Call& call) { return call.session.wrap(call.life->node(), call.life); }

Tcl_Obj* location(const Call& call) {
    const auto place = call.node.copyOfLocation();
    return place ? toTcl(*place) : Tcl_NewObj();
}

Tcl_Obj* kind(const Call& call) { return toTcl(wordOf(call.node.getKind())); }

Tcl_Obj* get(const Call& call) {
    if (call.arguments() > 0) return runSubcommand(call.of(call.node, call.life, 0));
    Dict all;
    for (const Subcommand& one : tableOf(call.node.getKind()))
        if (one.name && one.isField) all.put(one.name, one.run(call));
    return toTcl(all.obj());
}

std::vector<Subcommand> subcommandsOf(HDNTNodeKind kind) {
    switch (kind) {
    case HDNTNodeKind::Library: return librarySubcommands();
    case HDNTNodeKind::Block:
    case HDNTNodeKind::Bus:
    case HDNTNodeKind::Pin:
    case HDNTNodeKind::Property: return blockSubcommands(kind);
    case HDNTNodeKind::FunctionCall:
    case HDNTNodeKind::CompoundExpr:
    case HDNTNodeKind::IntConstant:
    case HDNTNodeKind::DoubleConstant:
    case HDNTNodeKind::BoolConstant:
    case HDNTNodeKind::StringConstant: return expressionSubcommands(kind);
    default: return netlistSubcommands(kind);
    }
}

// Tcl keeps addresses of tables in values, so they stay where they are.
const std::vector<Subcommand>& tableOf(HDNTNodeKind wanted) {
    static const auto* const tables = [] {
        auto* const all = new std::map<HDNTNodeKind, std::vector<Subcommand>>;
        for (int i = 0; i <= static_cast<int>(HDNTNodeKind::StringConstant); ++i) {
            const auto one = static_cast<HDNTNodeKind>(i);
            if (!wordOf(one)) continue;
            std::vector<Subcommand>& table = (*all)[one];
            table = subcommandsOf(one);
            table.push_back({"get", get, 0, -1, "?field?", false});
            table.push_back({"kind", kind, 0, 0, nullptr, false});
            table.push_back({"library", library, 0, 0, nullptr, false});
            table.push_back({"location", location, 0, 0, nullptr, true});
            table.push_back({nullptr, nullptr, 0, 0, nullptr, false});
        }
        return all;
    }();
    return tables->at(wanted);
}

} // namespace

void wrongArguments(const Call& call, const char* usage) {
    Tcl_WrongNumArgs(call.interp(), call.at + 1, call.words, usage);
    throw ResultIsSet();
}

Tcl_Obj* runSubcommand(const Call& call) {
    if (call.at >= call.count) {
        Tcl_WrongNumArgs(call.interp(), call.count, call.words, "subcommand ?argument ...?");
        throw ResultIsSet();
    }
    const std::vector<Subcommand>& table = tableOf(call.node.getKind());
    int index = 0;
    if (Tcl_GetIndexFromObjStruct(call.interp(), call.words[call.at], table.data(), sizeof(Subcommand), "subcommand", 0,
                                  &index) != TCL_OK)
        throw ResultIsSet();
    const Subcommand& one = table[static_cast<size_t>(index)];
    if (call.arguments() < one.least || (one.most >= 0 && call.arguments() > one.most)) wrongArguments(call, one.usage);
    return one.run(call);
}

Tcl_Obj* elements(const Call& call, const scripts::Listing& list) {
    int at = 0;
    const bool names = call.arguments() > 0 && std::strcmp(Tcl_GetString(call.argument(0)), "-names") == 0;
    if (names) ++at;
    if (call.arguments() > at + 1) wrongArguments(call, "?-names? ?pattern?");
    const char* const pattern = call.arguments() > at ? Tcl_GetString(call.argument(at)) : nullptr;
    Obj all(Tcl_NewListObj(0, nullptr));
    const size_t size = list.size(call.node);
    for (size_t i = 0; i < size; ++i) {
        HDNTNode* const node = list.at(call.node, i);
        Obj name(names || pattern ? toTcl(scripts::nameOf(*node)) : Tcl_NewObj());
        if (pattern && !Tcl_StringMatch(Tcl_GetString(name.get()), pattern)) continue;
        Tcl_ListObjAppendElement(nullptr, all.get(), names ? name.get() : call.wrap(node));
    }
    return toTcl(std::move(all));
}

Tcl_Obj* element(const Call& call, const scripts::Listing& list, HDNTNodeKind kind) {
    const std::string name = textOf(call.argument(0));
    HDNTNode* const found = list.find(call.node, name);
    if (!found)
        throw Refused({"HDNT", "LOOKUP", wordOf(kind), name}, std::string("no ") + wordOf(kind) + " \"" + name +
                                                                  "\" in " + wordOf(call.node.getKind()) + " \"" +
                                                                  scripts::nameOf(call.node) + "\"");
    if (call.arguments() == 1) return call.wrap(found);
    return runSubcommand(call.of(*found, call.life, 1));
}

Handle& handleOf(Session& session, Tcl_Obj* word, HDNTNodeKind kind) {
    Handle* const handle = handleAt(session.interp(), word);
    if (handle && handle->kind == kind) return *handle;
    const std::string name = textOf(word);
    if (!handle && session.wasHandle(name)) throw DeadHandle(wordOf(kind), name);
    throw Refused({"HDNT", "LOOKUP", "HANDLE", name}, "\"" + name + "\" is no handle of a " + wordOf(kind));
}

} // namespace hdnt::tcl
