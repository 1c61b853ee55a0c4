#include "author/exchange/exportBlocks.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/TextFile.h"

#include <filesystem>

namespace ntl {

namespace {

using hdnt::author::ExportedFile;

void writeFolder(const std::string& folder, const std::vector<ExportedFile>& files) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw Failure(Unusable, folder + ": cannot be made: " + error.message());
    for (const ExportedFile& file : files) writeWholeFile(folder + "/" + file.name, file.text);
}

void write(const Settings& settings, const std::vector<ExportedFile>& files) {
    if (!settings.splitFolder.empty()) writeFolder(settings.splitFolder, files);
    else if (!settings.outputFile.empty()) writeWholeFile(settings.outputFile, files.front().text);
    else writeOutput(files.front().text);
}

hdnt::author::Exported exported(const OpenedLibrary& opened, const Settings& settings,
                                const hdnt::author::ExportOptions& options) {
    const OutputToError redirect;
    const WarningsShown shown;
    return orUnusable([&] { return exportBlocks(*opened.library, settings.form, options); });
}

} // namespace

int runExport(const Settings& settings) {
    if (!settings.outputFile.empty() && !settings.splitFolder.empty())
        throw Failure(Unusable, "--output and --split exclude each other; see 'ntl export --help'");
    orUnusable([&] { return hdnt::author::exportForm(settings.form); }); // before a long load
    enableByDefault(settings, "ntl.enableMapLib");
    if (settings.form == "json" && !settings.library.empty())
        enableByDefault(settings, "arch.enableTestFeatures"); // as print and diff have it
    const OpenedLibrary opened = openLibrary(settings);
    hdnt::author::ExportOptions options;
    options.withParents = opened.withParents;
    options.isSplit = !settings.splitFolder.empty();
    int status = Fine;
    for (const std::string& name : settings.blocks) {
        if (HDNTBlock* const block = findBlock(opened, name)) options.blocks.push_back(block);
        else status = Faulty;
    }
    if (options.blocks.empty() && status == Faulty) return status;
    const hdnt::author::Exported result = exported(opened, settings, options);
    write(settings, result.files);
    for (const std::string& one : result.leftOut) complain(one);
    return result.leftOut.empty() ? status : Faulty;
}

} // namespace ntl
