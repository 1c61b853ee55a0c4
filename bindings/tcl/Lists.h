#pragma once

#include "bindings/shared/Listing.h"
#include "bindings/tcl/Subcommand.h"

namespace hdnt::tcl {

using scripts::nameOf;

/// "?-names? ?pattern?": handles, or names without handles, of the elements whose names match.
Tcl_Obj* elements(const Call& call, const scripts::Listing& list);
/// "name ?subcommand ...?": an element, or what that answers; no handle is made for it then.
Tcl_Obj* element(const Call& call, const scripts::Listing& list, HDNTNodeKind kind);

template <const scripts::Listing& List>
constexpr Subcommand listOfAll(const char* name) {
    return {name, [](const Call& call) { return elements(call, List); }, 0, 2, "?-names? ?pattern?", false};
}
template <const scripts::Listing& List, HDNTNodeKind Kind>
constexpr Subcommand oneOf(const char* name) {
    return {name, [](const Call& call) { return element(call, List, Kind); }, 1, -1, "name ?subcommand ...?", false};
}

} // namespace hdnt::tcl
