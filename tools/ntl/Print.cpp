#include "hdnt/model/HDNTLibrary.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Setup.h"
#include "tools/ntl/Status.h"

namespace ntl {

static void printSource(HDNTLibrary& library, FILE* stream) {
    std::vector<std::string> problems;
    if (library.printSource(stream, &problems)) return;
    for (const std::string& problem : problems) complain(problem);
    throw Failure(Faulty, "the text is not complete");
}

// Blocks with the test flag are part of the text; a library that was read without them would lose them here.
int runPrint(const Settings& settings) {
    enableByDefault(settings, "arch.enableTestFeatures");
    const OpenedLibrary opened = openLibrary(settings);
    ResultStream stream;
    if (settings.source) printSource(*opened.library, stream.get());
    else opened.library->print(stream.get());
    stream.finish();
    return Fine;
}

} // namespace ntl
