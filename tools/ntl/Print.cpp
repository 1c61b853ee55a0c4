#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <algorithm>

namespace ntl {

// A mapping by itself goes to the block it names, also to one of a parent, and leaves the library with it.
static void warnOfMappingsGivenAway(const OpenedLibrary& opened) {
    for (const HDNTBlock* block : blocksOf(*opened.library, true)) {
        const HDNTNetlist* const mapping = block->getAttachedNetlist();
        const yyltype* const location = mapping ? mapping->getLocation() : nullptr;
        if (block->getLibrary() == opened.library || !location || !location->fileName) continue;
        if (std::find(opened.files.begin(), opened.files.end(), location->fileName) != opened.files.end())
            complain("the mapping of block '" + block->getName() + "' of a parent library is not written");
    }
}

static void printSource(HDNTLibrary& library, FILE* stream) {
    std::vector<std::string> problems;
    if (library.printSource(stream, &problems)) return;
    for (const std::string& problem : problems) complain(problem);
    throw Failure(Faulty, "the text is not complete");
}

// Blocks with the test flag are part of the text; a library that was read without them would lose them here.
int runPrint(const Settings& settings) {
    if (settings.library.empty()) throw Failure(Unusable, "FILE is empty; name a file or a folder");
    enableByDefault(settings, "arch.enableTestFeatures");
    const OpenedLibrary opened = openLibrary(settings, true);
    if (settings.source) warnOfMappingsGivenAway(opened);
    else if (!loadMappings(blocksOf(*opened.library, true))) return Faulty;
    ResultStream stream;
    if (settings.source) printSource(*opened.library, stream.get());
    else opened.library->print(stream.get());
    stream.finish();
    return Fine;
}

} // namespace ntl
