// A text from scanner to checked model, expanded mappings and text again: any bytes give a result or a report, and what
// gives a library can be written and read back to an equal one.
#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/HDNTVisitor.h"
#include "hdnt/platform/HEX.h"
#include "tests/fuzz/quiet.h"
#include "tests/support/Written.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

/// Once a process: no output, all checks, and a root library, so that the configuration is not read in every run.
HDNTLibrary* prepare() {
    HDNTLibraryMgr::m_diagnostics = true;
    HDNTLimits limits;
    limits.expansionInstances = 1000;
    fuzz::beQuiet(limits);
    static HDNTLibrary root(nullptr);
    return &root;
}

/// Faulty libraries too: what could be read can be written.
void writeAndReadBack(HDNTLibrary& library, HDNTLibrary* root) {
    const std::string text = support::source(library);
    HDNTLibrary again(root);
    if (again.parseString(text) != 0) std::abort();
    again.finalize();
    if (!HDNTComparison::compare(library, again).empty()) std::abort();
    if (support::source(again) != text) std::abort();
    if (support::printed(again) != support::printed(library)) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static HDNTLibrary* const root = prepare();
    HDNTError::numErrors = 0;
    NtlFreeScannerMem();
    HDNTLibrary library(root);
    try {
        if (library.parseString(std::string(reinterpret_cast<const char*>(data), size)) != 0) {
            if (HDNTError::numErrors == 0) std::abort(); // refused without a word
            return 0;
        }
    } catch (const HEXDataException&) { // a fault of the text as well: internal pins before others
        return 0;
    }
    library.finalize();
    library.check();
    HDNTVisitor visitor;
    for (size_t i = 0; i < library.getNumTypeBlocks(false); ++i) {
        HDNTBlock& block = *library.getTypeBlock(i);
        block.accept(visitor);
        block.getReferencedInstanceName("");
        HDNTExpansion expansion(block);
        if (!expansion.expand(true) && block.getAttachedNetlist() && expansion.problems().empty()) std::abort();
    }
    writeAndReadBack(library, root);
    return 0;
}
