#include "hdnt/loading/load.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/diagnostics/SourceInput.internal.h"
#include "hdnt/frontend/ScannerState.internal.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/loading/ParseInput.internal.h"
#include "hdnt/netlist/MappingJournal.internal.h"
#include "hdnt/platform/HEX.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace hdnt {

namespace {

/// Keeps what is said as data.
class Recorder : public HDNTErrorListener {
public:
    Recorder(Loaded& loaded, HDNTErrorListener* other) : loaded_(loaded), other_(other) {}

    bool report(const HDNTReport& report) override {
        if (isKept(Severity::error)) loaded_.diagnostics.push_back(diagnosticOf(report));
        return !other_ || other_->report(report);
    }
    void notice(const HDNTNotice& notice) override {
        if (notice.kind != HDNTNotice::Kind::FileOpened && isKept(Severity::warning))
            loaded_.diagnostics.push_back(diagnosticOf(notice));
        if (other_) other_->notice(notice);
    }
    bool silencesOutput() const override { return !other_ || other_->silencesOutput(); }

    /// To be called behind the load.
    void sayHowManyAreNotKept() {
        if (notKept_ == 0) return;
        const DiagnosticRule& rule = ruleOf(DiagnosticCode::tooManyDiagnostics);
        Diagnostic& last = loaded_.diagnostics.emplace_back();
        last.severity = worst_;
        last.code = rule.name;
        last.message = filledIn(rule.wording, {std::to_string(notKept_)});
    }

private:
    bool isKept(Severity severity) {
        if (loaded_.diagnostics.size() < HDNTLimits::get().diagnostics) return true;
        ++notKept_;
        if (severity == Severity::error) worst_ = severity;
        return false;
    }

    Loaded& loaded_;
    HDNTErrorListener* other_;
    size_t notKept_ = 0;
    Severity worst_ = Severity::warning;
};

bool underWay = false;

/// The process-wide state that a load uses: set as the options want it, and put back.
class Surroundings {
public:
    // The destructor puts back also when something in here throws: the other constructor is done by then.
    Surroundings(const LoadOptions& options, HDNTErrorListener& listener) : Surroundings(options) {
        HDNTError::setListener(&listener);
        HDNTError::numErrors = 0;
        HDNTLibraryMgr::m_diagnostics = options.check;
        if (options.limits) limits_.emplace(*options.limits);
        frontend::Scanner::Files& files = scanner_.files();
        files.searchDirectories.insert(files.searchDirectories.begin(), options.searchDirectories.begin(),
                                       options.searchDirectories.end());
        if (!shared_) files.included.clear();
        diagnostics::LineStore::instance().clear();
    }
    ~Surroundings() {
        if (shared_) files_.included = std::move(scanner_.files().included);
        scanner_.files() = std::move(files_);
        HDNTLibraryMgr::m_diagnostics = diagnostics_;
        HDNTError::numErrors = errors_;
        HDNTError::setListener(listener_);
        underWay = false;
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

private:
    explicit Surroundings(const LoadOptions& options) : texts_(options.texts), shared_(options.sharedIncludes) {
        underWay = true;
    }

    diagnostics::TextsInPlace texts_;
    frontend::Scanner& scanner_ = frontend::Scanner::instance();
    frontend::Scanner::Files files_ = scanner_.files();
    std::optional<HDNTLimits::Scope> limits_;
    int errors_ = HDNTError::numErrors;
    bool diagnostics_ = HDNTLibraryMgr::m_diagnostics;
    bool shared_;
    HDNTErrorListener* listener_ = HDNTError::setListener(nullptr);
};

/// The library that the parser builds into, put back when nothing comes of the load.
struct Target {
    HDNTLibrary* const before = myTopLib;
    bool isReplaced = false;
    ~Target() {
        if (!isReplaced) myTopLib = before;
    }
};

void say(DiagnosticCode code, std::string_view text, std::string_view detail = {}, const yyltype* at = nullptr) {
    HDNTError::report(code, at, {text}, detail);
}

// What the step throws is said; false then.
template <typename Step>
bool attempt(DiagnosticCode code, const yyltype* at, Step&& step) {
    try {
        step();
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        say(code, error.what(), {}, at);
        return false;
    }
}

/// What is in a folder; none for a file.
using Entries = std::optional<std::vector<std::string>>;

// The manager takes a path where nothing is for its parent, and fails at names that are shorter than ".btl".
bool isThere(const std::string& path, Entries& entries) {
    struct stat status {};
    if (diagnostics::TextsInPlace::find(path)) return true;
    if (stat(path.c_str(), &status) != 0) say(DiagnosticCode::cannotOpen, path, std::strerror(errno));
    else if (S_ISDIR(status.st_mode))
        attempt(DiagnosticCode::cannotOpen, nullptr, [&] {
            entries = loading::entriesOf(path);
            for (const std::string& entry : *entries)
                if (loading::isShort(entry)) say(DiagnosticCode::folderEntry, entry);
        });
    return HDNTError::numErrors == 0;
}

std::unique_ptr<HDNTLibrary> newLibrary(const LoadOptions& options) {
    if (!options.parent && options.configuredLike) return HDNTLibrary::configuredLike(*options.configuredLike);
    return std::make_unique<HDNTLibrary>(options.parent);
}

void loadInto(Loaded& loaded, const std::string& path, const LoadOptions& options) {
    Entries entries;
    if (!isThere(path, entries)) return;
    netlist::MappingJournal journal;
    std::unique_ptr<HDNTLibrary>& library = loaded.library;
    bool parsed = false;
    const auto make = [&] { library = newLibrary(options); };
    const auto parse = [&] {
        parsed = entries ? loading::parseFolder(*library, *entries) : loading::parseInput(*library, path);
    };
    const auto finish = [&] {
        if (parsed) library->finalize();
        if (parsed && options.check) library->check();
    };
    const bool done = attempt(DiagnosticCode::configuration, nullptr, make) &&
                      attempt(DiagnosticCode::refused, &HDNTParserlloc, parse) &&
                      attempt(DiagnosticCode::configuration, nullptr, finish);
    loaded.files = frontend::Scanner::instance().files().opened;
    if (done && HDNTError::numErrors == 0) journal.keep();
}

} // namespace

Loaded load(const std::string& path, const LoadOptions& options) {
    if (underWay) throw HEXAlgException("hdnt::load called while a load is under way");
    Target target;
    Loaded loaded;
    Recorder recorder(loaded, options.listener);
    const Surroundings surroundings(options, recorder);
    loadInto(loaded, path, options);
    recorder.sayHowManyAreNotKept();
    if (HDNTError::numErrors > 0) loaded.library.reset();
    target.isReplaced = loaded.library != nullptr;
    return loaded;
}

} // namespace hdnt
