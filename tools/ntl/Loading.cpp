#include "tools/ntl/Loading.h"

#include "hdnt/frontend/Scanner.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "tools/ntl/Model.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Suggest.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace ntl {

static const std::string openFailureText = "Could not open file: ";

Loader::Loader(bool keepReports) : keepReports_(keepReports) { HDNTError::setListener(this); }

Loader::~Loader() { HDNTError::setListener(nullptr); }

bool Loader::report(const HDNTReport& report) {
    ++errorCount_;
    const std::string message(report.message);
    const std::string detail(report.detail);
    if (!report.location && openFailure_.empty() && message.compare(0, openFailureText.size(), openFailureText) == 0)
        openFailure_ =
            message.substr(openFailureText.size()) + ": cannot be opened" + (detail.empty() ? "" : ": " + detail);
    if (keepReports_) reports_.push_back({report.location ? placeOf(*report.location) : Place(), message, detail});
    return false;
}

void Loader::notice(const HDNTNotice& notice) { notices_.push_back(findingOf(notice)); }

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

HDNTLibrary* Loader::load(const std::string& path, HDNTLibrary* parent) {
    requireReadable(path);
    forgetLines();
    const OutputToError redirect;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the load changes the list
    const std::vector<std::string> before = NtlOpenedFiles();
    HDNTLibrary* library = nullptr;
    std::string reason;
    try {
        library = HDNTLibraryMgr::getLibraryMgr()->loadLibrary(path, parent);
    } catch (const HEXAll& error) {
        reason = error.what();
    }
    addOpenedFiles(before);
    if (!library) fail(path, reason);
    return library;
}

// The files of a folder are appended to those of the load before, the ones of a single file replace them.
void Loader::addOpenedFiles(const std::vector<std::string>& before) {
    const std::vector<std::string>& opened = NtlOpenedFiles();
    const bool appended = opened.size() >= before.size() && std::equal(before.begin(), before.end(), opened.begin());
    files_.insert(files_.end(), opened.begin() + (appended ? static_cast<long>(before.size()) : 0), opened.end());
}

void Loader::fail(const std::string& path, const std::string& reason) {
    if (!openFailure_.empty())
        throw Failure(Unusable, openFailure_ + (errorCount_ > 1 ? " (" + counted(errorCount_, "error") + ")" : ""));
    if (errorCount_ > 0) throw Failure(Faulty, path + ": " + counted(errorCount_, "error"));
    ++errorCount_;
    if (keepReports_) reports_.push_back({Place(), reason, ""});
    throw Failure(Faulty, path + ": " + reason);
}

void Loader::forget() {
    notices_.clear();
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
    Loader loader(false);
    HDNTLibrary* library = nullptr;
    for (const std::string& path : paths) {
        loader.forget();
        library = loader.load(path, library);
    }
    return {library, isCommon, paths.back(), loader.notices(), loader.files()};
}

HDNTBlock* findBlock(const OpenedLibrary& opened, const std::string& name) {
    if (HDNTBlock* const block = opened.library->getTypeBlockByName(name, true)) return block;
    std::vector<std::string> known;
    for (const HDNTBlock* block : blocksOf(*opened.library, true)) known.push_back(block->getName());
    const std::vector<std::string> near = nearestNames(name, known);
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

} // namespace ntl
