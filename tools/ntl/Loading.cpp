#include "tools/ntl/Loading.h"

#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"
#include "author/project/parents.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HUTFile.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <memory>
#include <set>
#include <utility>

namespace ntl {

// The data's own folders may be empty: not every family has cells for tests.
static bool hasLibraryFile(const std::string& folder) {
    for (const char* own : {"tessels", "tessels.test"})
        if (folder == ConfigBase::getDataLocation(own)) return true;
    const std::unique_ptr<HUTFileIter> entries(HUTFile(folder).createFileIter());
    while (entries->hasNext()) {
        entries->next();
        if (entries->current().ends_with(".btl")) return true;
    }
    return false;
}

// The library takes a path where nothing is for its parent, so this is found out before.
static void requireReadable(const std::string& path) {
    struct stat status {};
    bool readable = stat(path.c_str(), &status) == 0;
    if (readable && S_ISDIR(status.st_mode)) {
        const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
        readable = directory != nullptr;
    }
    if (!readable) throw Failure(Unusable, path + ": cannot be opened: " + std::strerror(errno));
    if (S_ISDIR(status.st_mode) && !hasLibraryFile(path)) throw Failure(Unusable, path + ": holds no .btl file");
}

// Commands end with their process, and libraries refer to those below them until then.
static HDNTLibrary* kept(std::unique_ptr<HDNTLibrary> library) {
    static auto* const all = new std::vector<std::unique_ptr<HDNTLibrary>>;
    all->push_back(std::move(library));
    return all->back().get();
}

static bool readsDescriptions = true;

void leaveDescriptionsOut() { readsDescriptions = false; }

const HDNTLibrary& configuredLibrary() {
    static const HDNTLibrary* const library = [] {
        HDNTLibrary* const fresh =
            kept(readsDescriptions ? std::make_unique<HDNTLibrary>(nullptr) : HDNTLibrary::withoutDescriptions());
        fresh->getDescConfig();
        return fresh;
    }();
    return *library;
}

HDNTLibrary* Loader::load(const std::string& path, HDNTLibrary* parent) {
    requireReadable(path);
    const OutputToError redirect;
    ErrorStream stream;
    stream_ = &stream;
    reports_ = 0;
    hdnt::LoadOptions options;
    options.parent = parent;
    options.configuredLike = &configuredLibrary();
    options.check = HPAParamMgr::getParamMgr()->getValueAsBool("ntl.enableDiagnostics");
    options.listener = this;
    options.texts = texts_;
    hdnt::Loaded loaded = hdnt::load(path, options);
    std::move(loaded.diagnostics.begin(), loaded.diagnostics.end(), std::back_inserter(diagnostics_));
    std::move(loaded.files.begin(), loaded.files.end(), std::back_inserter(files_));
    if (!loaded) fail(path);
    return kept(std::move(loaded.library));
}

// A text may have a fault in each of its lines. The first ones are seen also when the process does not come to its end.
bool Loader::report(const HDNTReport&) {
    constexpr size_t many = 1000;
    if (++reports_ == many) stream_->gather();
    return isQuiet_;
}

void Loader::fail(const std::string& path) const {
    using hdnt::Diagnostic;
    using hdnt::DiagnosticCode;
    std::vector<const Diagnostic*> errors;
    for (const Diagnostic& one : diagnostics_)
        if (one.severity == hdnt::Severity::error) errors.push_back(&one);
    const auto isA = [](const Diagnostic& one, DiagnosticCode code) { return one.code == hdnt::ruleOf(code).name; };
    for (const Diagnostic* one : errors) {
        if (!isA(*one, DiagnosticCode::cannotOpen)) continue;
        const std::string detail = one->detail.empty() ? "" : ": " + one->detail;
        throw Failure(Unusable, one->message.substr(one->message.find(": ") + 2) + ": cannot be opened" + detail +
                                    (errors.size() > 1 ? " (" + counted(errors.size(), "error") + ")" : ""));
    }
    const Diagnostic& first = *errors.front();
    const bool isWhole = isA(first, DiagnosticCode::refused) || isA(first, DiagnosticCode::configuration);
    throw Failure(Faulty, path + ": " + (isWhole ? textOf(first) : counted(errors.size(), "error")));
}

void Loader::forget() {
    diagnostics_.clear();
    files_.clear();
}

std::vector<std::string> commonLibraryPaths() { return parentPaths("common"); }

std::vector<std::string> parentPaths(const std::string& parent) {
    return orUnusable([&] { return hdnt::author::parentPaths(parent); });
}

std::string pathOfInput(const std::string& name) { return name == "-" ? "/dev/stdin" : name; }

static std::vector<hdnt::Diagnostic> passedOver(std::vector<hdnt::Diagnostic> warnings) {
    using hdnt::DiagnosticCode;
    std::erase_if(warnings, [](const hdnt::Diagnostic& one) {
        return one.code != hdnt::ruleOf(DiagnosticCode::includeNotFound).name &&
               one.code != hdnt::ruleOf(DiagnosticCode::includeNotOpened).name;
    });
    return warnings;
}

OpenedLibrary openLibrary(const Settings& settings, bool saysAll) {
    const bool isCommon = settings.library.empty();
    if (isCommon && !settings.parent.empty()) throw Failure(Unusable, "--parent needs --library");
    std::vector<std::string> paths = isCommon ? commonLibraryPaths() : parentPaths(settings.parent);
    if (!isCommon) paths.push_back(pathOfInput(settings.library));
    Loader loader;
    HDNTLibrary* library = nullptr;
    for (const std::string& path : paths) {
        loader.forget();
        library = loader.load(path, library);
        warn(saysAll && path == paths.back() ? loader.diagnostics() : passedOver(loader.diagnostics()));
    }
    return {library, isCommon, paths.back(), loader.diagnostics(), loader.files()};
}

HDNTBlock* findBlock(const OpenedLibrary& opened, const std::string& name) {
    if (HDNTBlock* const block = opened.library->getTypeBlockByName(name, true)) return block;
    std::vector<std::string> known;
    for (const HDNTBlock* block : blocksOf(*opened.library, true)) known.push_back(block->getName());
    complain("no block '" + name + "'" + hdnt::author::question(name, known));
    return nullptr;
}

WarningsShown::WarningsShown() : before_(HDNTError::setListener(this)) {}

WarningsShown::~WarningsShown() { HDNTError::setListener(before_); }

void WarningsShown::notice(const HDNTNotice& notice) {
    const hdnt::Diagnostic said = hdnt::diagnosticOf(notice);
    if (said.severity == hdnt::Severity::warning) writeError(warningLine(said));
}

bool loadMappings(const std::vector<HDNTBlock*>& blocks) {
    const OutputToError redirect;
    const WarningsShown shown;
    bool fine = true;
    for (HDNTBlock* block : blocks) {
        try {
            block->getNetlist(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
        } catch (const HEXAll& error) {
            flushOutput();
            complain(block->getName() + ": " + error.what());
            fine = false;
        }
    }
    return fine;
}

bool loadMapping(HDNTBlock& block) { return loadMappings({&block}); }

static std::string lineOf(const hdnt::Diagnostic& one, const std::string& severity) {
    return printable(describe(one.place)) + ": " + severity + " " + printable(textOf(one)) + " [" + one.code + "]\n";
}

std::string warningLine(const hdnt::Diagnostic& warning) {
    const Color color = warning.severity == hdnt::Severity::note ? Color::Faint : Color::Yellow;
    return lineOf(warning, colored(color, std::string(nameOf(warning.severity)) + ":", 2));
}

std::string errorLines(const hdnt::Diagnostic& error) {
    std::string lines = lineOf(error, colored(Color::Red, "error:", 2));
    for (const hdnt::RelatedPlace& related : error.related)
        lines += printable(describe(related.place)) + ": note: " + printable(related.message) + "\n";
    return lines;
}

void warn(std::vector<hdnt::Diagnostic> warnings) {
    hdnt::author::sortByPlace(warnings);
    for (const hdnt::Diagnostic& warning : warnings) writeError(warningLine(warning));
}

} // namespace ntl
