#pragma once

#include "bindings/tcl/Convert.h"
#include "bindings/tcl/Handle.h"
#include "bindings/tcl/Lock.h"

#include <tcl.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

// Commands of the package: what the words behind the name ask for.
namespace hdnt::tcl {

struct Command {
    Session& session;
    Tcl_Interp* interp;
    int count;
    Tcl_Obj* const* words;

    int arguments() const { return count - 1; }
    Tcl_Obj* argument(int index) const { return words[index + 1]; }
    /// Throws ResultIsSet, with the usage, for another number of arguments.
    void check(int least, int most, const char* usage) const {
        if (arguments() >= least && arguments() <= most) return;
        Tcl_WrongNumArgs(interp, 1, words, usage);
        throw ResultIsSet();
    }
    /// Calls `take(index of the name, value)` for each option behind so many arguments. `names` ends with a null.
    template <std::size_t Size, typename Take>
    void options(int first, const std::array<const char*, Size>& names, const char* usage, Take&& take) const {
        check(first, first + 2 * static_cast<int>(Size - 1), usage);
        if ((arguments() - first) % 2 != 0) check(-1, -1, usage);
        for (int i = first; i < arguments(); i += 2) {
            int which = 0;
            if (Tcl_GetIndexFromObj(interp, argument(i), names.data(), "option", TCL_EXACT, &which) != TCL_OK)
                throw ResultIsSet();
            take(which, argument(i + 1));
        }
    }
};

template <Tcl_Obj* (*Run)(const Command&)>
int runCommand(ClientData, Tcl_Interp* interp, int count, Tcl_Obj* const words[]) {
    Session* const found = Session::of(interp);
    if (!found) return TCL_ERROR;
    const std::shared_ptr<Session> session = found->shared_from_this();
    Tcl_Preserve(interp);
    const int status = guarded(interp, [&] {
        const Locked lock;
        return Run({*session, interp, count, words});
    });
    session->sweep();
    Tcl_Release(interp);
    return status;
}

inline void addCommand(Tcl_Interp* interp, const char* name, Tcl_ObjCmdProc* run) {
    Tcl_CreateObjCommand(interp, (std::string("::hdnt::") + name).c_str(), run, nullptr, nullptr);
}

} // namespace hdnt::tcl
