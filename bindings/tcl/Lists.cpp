#include "bindings/tcl/Lists.h"

#include <cstring>

namespace hdnt::tcl {

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
        Obj name(names || pattern ? toTcl(nameOf(*node)) : Tcl_NewObj());
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
                                                                  nameOf(call.node) + "\"");
    if (call.arguments() == 1) return call.wrap(found);
    return runSubcommand(call.of(*found, call.life, 1));
}

} // namespace hdnt::tcl
