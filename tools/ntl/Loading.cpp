#include "tools/ntl/Loading.h"

#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "tools/ntl/Model.h"
#include "tools/ntl/Output.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

namespace ntl {

// The library takes a path where nothing is for its parent, so this is found out before.
static void requireReadable(const std::string& path) {
    struct stat status {};
    bool readable = stat(path.c_str(), &status) == 0;
    if (readable && S_ISDIR(status.st_mode)) {
        const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
        readable = directory != nullptr;
    }
    if (!readable) throw Failure(Unusable, path + ": cannot be opened: " + std::strerror(errno));
}

// Commands end with their process, and libraries refer to those below them until then.
static HDNTLibrary* kept(std::unique_ptr<HDNTLibrary> library) {
    static auto* const all = new std::vector<std::unique_ptr<HDNTLibrary>>;
    all->push_back(std::move(library));
    return all->back().get();
}

HDNTLibrary* Loader::load(const std::string& path, HDNTLibrary* parent) {
    requireReadable(path);
    const OutputToError redirect;
    hdnt::LoadOptions options;
    options.parent = parent;
    options.check = HPAParamMgr::getParamMgr()->getValueAsBool("ntl.enableDiagnostics");
    options.listener = this;
    hdnt::Loaded loaded = hdnt::load(path, options);
    std::move(loaded.diagnostics.begin(), loaded.diagnostics.end(), std::back_inserter(diagnostics_));
    std::move(loaded.files.begin(), loaded.files.end(), std::back_inserter(files_));
    if (!loaded) fail(path);
    return kept(std::move(loaded.library));
}

void Loader::fail(const std::string& path) const {
    const auto isError = [](const hdnt::Diagnostic& one) { return one.severity == hdnt::Severity::error; };
    const auto cannotOpen = [](const hdnt::Diagnostic& one) {
        return one.code == hdnt::ruleOf(hdnt::DiagnosticCode::cannotOpen).name;
    };
    const auto errors = static_cast<size_t>(std::count_if(diagnostics_.begin(), diagnostics_.end(), isError));
    const auto unopened = std::find_if(diagnostics_.begin(), diagnostics_.end(), cannotOpen);
    if (unopened == diagnostics_.end()) throw Failure(Faulty, path + ": " + counted(errors, "error"));
    throw Failure(Unusable, textOf(*unopened) + (errors > 1 ? " (" + counted(errors, "error") + ")" : ""));
}

void Loader::forget() {
    diagnostics_.clear();
    files_.clear();
}

std::vector<std::string> commonLibraryPaths() {
    try {
        std::vector<std::string> paths = {HDNTLibraryMgr::getDataFileName(false)};
        const std::string test = HDNTLibraryMgr::getTestDataFileName();
        if (!test.empty() && HPAParamMgr::getParamMgr()->getValueAsBool("arch.enableTestFeatures"))
            paths.push_back(test);
        return paths;
    } catch (const HEXDataException& error) {
        throw Failure(Unusable, error.what());
    }
}

std::vector<std::string> parentPaths(const std::string& parent) {
    if (parent.empty()) return {};
    return parent == "common" ? commonLibraryPaths() : std::vector<std::string>{parent};
}

OpenedLibrary openLibrary(const Settings& settings) {
    const bool isCommon = settings.library.empty();
    if (isCommon && !settings.parent.empty()) throw Failure(Unusable, "--parent needs --library");
    std::vector<std::string> paths = isCommon ? commonLibraryPaths() : parentPaths(settings.parent);
    if (!isCommon) paths.push_back(settings.library);
    Loader loader;
    HDNTLibrary* library = nullptr;
    for (const std::string& path : paths) {
        loader.forget();
        library = loader.load(path, library);
    }
    return {library, isCommon, paths.back(), loader.diagnostics(), loader.files()};
}

HDNTBlock* findBlock(const OpenedLibrary& opened, const std::string& name) {
    if (HDNTBlock* const block = opened.library->getTypeBlockByName(name, true)) return block;
    std::vector<std::string> known;
    for (const HDNTBlock* block : blocksOf(*opened.library, true)) known.push_back(block->getName());
    const std::vector<std::string> near = hdnt::author::nearestNames(name, known);
    complain("no block '" + name + "'" + (near.empty() ? "" : "; did you mean " + joined(near, ", ") + "?"));
    return nullptr;
}

bool loadMapping(HDNTBlock& block) {
    try {
        const OutputToError redirect;
        block.getNetlist(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
        return true;
    } catch (const HEXAll& error) {
        complain(block.getName() + ": " + error.what());
        return false;
    }
}

bool loadMappings(const std::vector<HDNTBlock*>& blocks) {
    bool fine = true;
    for (HDNTBlock* block : blocks) fine = loadMapping(*block) && fine;
    return fine;
}

std::string warningLine(const hdnt::Diagnostic& warning) {
    return printable(describe(warning.place)) + ": " + colored(Color::Yellow, "warning:", 2) + " " +
           printable(textOf(warning)) + " [" + warning.code + "]\n";
}

void warn(std::vector<hdnt::Diagnostic> warnings) {
    hdnt::author::sortByPlace(warnings);
    for (const hdnt::Diagnostic& warning : warnings) writeError(warningLine(warning));
}

} // namespace ntl
