// A host with Tcl interpreters in it: which of library manager and interpreter ends first must not matter, nor in which
// thread the host deletes what a script holds, nor how many threads have interpreters.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"

#include <tcl.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

static std::atomic<int> failures = 0;

static void run(Tcl_Interp* interp, const char* script) {
    if (Tcl_Eval(interp, script) == TCL_OK) return;
    ++failures;
    std::fprintf(stderr, "%s\n", Tcl_GetVar(interp, "errorInfo", TCL_GLOBAL_ONLY));
}

static Tcl_Interp* begin() {
    Tcl_Interp* const interp = Tcl_CreateInterp();
    if (Tcl_Init(interp) != TCL_OK) ++failures;
    run(interp, "package require hdnt");
    return interp;
}

static const char* const holdHandles = R"(
    set library [hdnt::common]
    set held [list $library]
    foreach block [lrange [$library blocks] 0 19] {
        lappend held $block {*}[$block pins] {*}[$block buses] {*}[$block properties]
        if {[$block netlist] ne ""} {
            lappend held [$block netlist] {*}[[$block netlist] instances] {*}[[$block netlist] signals]
        }
    }
    foreach one $held {
        if {![hdnt alive $one]} {error "$one is dead"}
    }
    set own [hdnt::load [dict get [$block location] file]]
)";

static const char* const useDeadHandles = R"(
    foreach one $held {
        if {[hdnt alive $one]} {error "$one is alive"}
        if {[catch {$one location} message options] != 1} {error "$one: $message"}
        if {[lrange [dict get $options -errorcode] 0 1] ne {HDNT DEAD}} {error "$one: $options"}
    }
    if {![hdnt alive $own]} {error "$own is dead"}
    $own close
    if {[hdnt live_handles] != 0} {error "[hdnt live_handles] handles are left"}
    if {[llength [[hdnt common] blocks]] != 152} {error "[hdnt common]"}
    if {[hdnt common] eq $library} {error "a name is used twice"}
)";

static void managerFirst() {
    Tcl_Interp* const interp = begin();
    run(interp, holdHandles);
    HDNTLibraryMgr::releaseLibraries();
    run(interp, useDeadHandles);
    run(interp, holdHandles);
    std::thread([] { HDNTLibraryMgr::releaseLibraries(); }).join();
    run(interp, useDeadHandles);
    Tcl_DeleteInterp(interp);
}

static void interpreterFirst() {
    for (int i = 0; i < 3; ++i) {
        Tcl_Interp* const interp = begin();
        run(interp, holdHandles);
        Tcl_DeleteInterp(interp);
        if (HDNTLibraryMgr::getCommonLibrary()->getNumTypeBlocks(true) != 152) ++failures;
    }
    HDNTLibraryMgr::releaseLibraries();
}

// The process ends with an interpreter that nobody deletes; what the manager has goes after that.
static void processEnds() { run(begin(), holdHandles); }

static void hostsCount() {
    HDNTError::numErrors = 7;
    Tcl_Interp* const interp = begin();
    run(interp, "if {[hdnt error_count] != 7 || [llength [[hdnt common] blocks]] != 152 || [hdnt error_count] != 7} "
                "{error {the count is another one}}");
    run(interp, "catch {hdnt::load [file join $::env(NTL_SOURCE_DIR) data examples three_faults.btl] -check 1} m o;"
                "if {[dict get $o -errorcode] ne {HDNT LOAD 3}} {error $m}");
    if (HDNTError::numErrors != 7) ++failures;
    Tcl_DeleteInterp(interp);
}

// Every thread has interpreters of its own and the common library with the others, which some of them release.
static void threads() {
    std::vector<std::thread> all;
    all.reserve(4);
    for (int number = 0; number < 4; ++number)
        all.emplace_back([number] {
            Tcl_Interp* const interp = begin();
            run(interp, ("expr {srand(" + std::to_string(number + 1) + ")}").c_str());
            run(interp, R"(
                set path [file join $::env(NTL_SOURCE_DIR) data examples first.btl]
                set bad [file join $::env(NTL_SOURCE_DIR) data examples three_faults.btl]
                for {set i 0} {$i < 60} {incr i} {
                    set status [catch {
                        set library [hdnt::common]
                        set block [$library block ADD_CHAIN_8]
                        set held [list $block {*}[$block pins] {*}[[$block netlist] instances]]
                        foreach one $held {$one get}
                        $block expand -deep 1
                        set own [hdnt::load $path -parent $library]
                        $own source
                        $own visit visit_block {apply {b {$b property_dict}}}
                        if {[catch {hdnt::load $bad -check 1} m o] != 1} {error "a bad file is good"}
                        if {[dict get $o -errorcode] ne "HDNT LOAD 3"} {error "$m $o"}
                        $own diff $own
                        if {rand() < 0.2} {hdnt::release}
                        $own close
                    } message options]
                    if {$status && [lrange [dict get $options -errorcode] 0 1] ni {{HDNT DEAD} {HDNT BUSY}}} {
                        return -options $options $message
                    }
                }
            )");
            Tcl_DeleteInterp(interp);
            Tcl_FinalizeThread();
        });
    for (std::thread& one : all) one.join();
    if (HDNTError::numErrors != 0) ++failures;
}

int main(int argc, char** argv) {
    Tcl_FindExecutable(argv[0]);
    const char* const what = argc > 1 ? argv[1] : "";
    if (std::strcmp(what, "manager") == 0) managerFirst();
    else if (std::strcmp(what, "interpreter") == 0) interpreterFirst();
    else if (std::strcmp(what, "exit") == 0) processEnds();
    else if (std::strcmp(what, "count") == 0) hostsCount();
    else if (std::strcmp(what, "threads") == 0) threads();
    else ++failures;
    if (failures > 0) std::fprintf(stderr, "%d failures\n", failures.load());
    Tcl_Exit(failures > 0 ? 1 : 0);
}
