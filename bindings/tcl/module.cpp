// What Tcl calls when it loads the library of the package; hdnt.tcl does the rest.
#include "bindings/tcl/Subcommand.h"

extern "C" __attribute__((visibility("default"))) int Hdnt_Init(Tcl_Interp* interp) {
    if (!Tcl_InitStubs(interp, "8.6", 0)) return TCL_ERROR;
    hdnt::tcl::beginSession(interp);
    hdnt::tcl::addCommands(interp);
    hdnt::tcl::addAuthoringCommands(interp);
    return TCL_OK;
}
