#include "author/exchange/importBlocks.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/TextFile.h"

namespace ntl {

int runImport(const Settings& settings) {
    std::vector<std::string> files;
    for (const std::string& name : settings.files) files.push_back(pathOfInput(name));
    const hdnt::author::Imported imported =
        orUnusable([&] { return hdnt::author::importBlocks(settings.form, files); });
    if (settings.outputFile.empty()) writeOutput(imported.text);
    else writeWholeFile(settings.outputFile, imported.text);
    for (const std::string& one : imported.leftOut) complain(one);
    return imported.leftOut.empty() ? Fine : Faulty;
}

} // namespace ntl
