// A host with an interpreter in it: which of library manager and interpreter ends first must not matter, nor in which
// thread the host deletes what a script holds.
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"

#include <Python.h>

#include <cstdio>
#include <cstring>
#include <thread>

static int failures = 0;

static void run(const char* script) {
    if (PyRun_SimpleString(script) != 0) ++failures;
}

static const char* const holdHandles = R"(
import hdnt
library = hdnt.common()
held = [library, library.blocks]
for block in library.blocks[:20]:
    held += [block, block.pins[0], block.buses[0], block.netlist] + block.properties[:]
nodes = [one for one in held if isinstance(one, hdnt.Node)]
assert all(node.alive for node in nodes)
)";

static const char* const useDeadHandles = R"(
for node in nodes:
    assert not node.alive
    try:
        node.location
    except hdnt.DeadObjectError:
        continue
    raise AssertionError(node)
assert hdnt.live_handles() == 0, hdnt.live_handles()
assert hdnt.common() is not library and len(hdnt.common()) == 152
)";

static void managerFirst() {
    run(holdHandles);
    HDNTLibraryMgr::releaseLibraries();
    run(useDeadHandles);
    run(holdHandles);
    std::thread([] { HDNTLibraryMgr::releaseLibraries(); }).join();
    run(useDeadHandles);
    Py_FinalizeEx();
}

// Handles are held by something that the interpreter never clears, so that some are there when it is gone.
static void interpreterFirst() {
    run(holdHandles);
    run("import sys, builtins; builtins.kept = sys.kept = held; held.append(held)");
    static PyObject* volatile leaked = nullptr; // so that it counts as reachable
    leaked = PyRun_String("hdnt.common().blocks[0]", Py_eval_input, PyModule_GetDict(PyImport_AddModule("__main__")),
                          nullptr);
    if (!leaked) ++failures;
    Py_FinalizeEx();
    if (HDNTLibraryMgr::getCommonLibrary()->getNumTypeBlocks(true) != 152) ++failures;
    HDNTLibraryMgr::releaseLibraries();
}

static void hostsCount() {
    HDNTError::numErrors = 7;
    run("import hdnt; assert hdnt.error_count() == 7 and len(hdnt.common()) == 152 and hdnt.error_count() == 7");
    if (HDNTError::numErrors != 7) ++failures;
    Py_FinalizeEx();
}

int main(int argc, char** argv) {
    Py_InitializeEx(0);
    const char* const what = argc > 1 ? argv[1] : "";
    if (std::strcmp(what, "manager") == 0) managerFirst();
    else if (std::strcmp(what, "interpreter") == 0) interpreterFirst();
    else if (std::strcmp(what, "count") == 0) hostsCount();
    else ++failures;
    if (failures > 0) std::fprintf(stderr, "%d failures\n", failures);
    return failures > 0 ? 1 : 0;
}
