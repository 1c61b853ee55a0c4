#include "hdnt/loading/load.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
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
        loaded_.diagnostics.push_back(diagnosticOf(report));
        return !other_ || other_->report(report);
    }
    void notice(const HDNTNotice& notice) override {
        if (notice.kind != HDNTNotice::Kind::FileOpened) loaded_.diagnostics.push_back(diagnosticOf(notice));
        if (other_) other_->notice(notice);
    }
    bool silencesOutput() const override { return !other_ || other_->silencesOutput(); }

    /// What no report of the library says.
    void add(DiagnosticCode code, const std::string& text, const std::string& detail = {},
             const yyltype* at = nullptr) {
        const std::string message = filledIn(ruleOf(code).wording, {text});
        HDNTError::report({at, message, detail, code});
    }

private:
    Loaded& loaded_;
    HDNTErrorListener* other_;
};

bool underWay = false;

/// The process-wide state that a load uses: set as the options want it, and put back.
class Surroundings {
public:
    Surroundings(const LoadOptions& options, HDNTErrorListener& listener)
        : shared_(options.sharedIncludes), listener_(HDNTError::setListener(&listener)) {
        underWay = true;
        HDNTError::numErrors = 0;
        HDNTLibraryMgr::m_diagnostics = options.check;
        if (options.limits) HDNTLimits::set(*options.limits);
        frontend::Scanner::Files& files = scanner_.files();
        files.searchDirectories.insert(files.searchDirectories.begin(), options.searchDirectories.begin(),
                                       options.searchDirectories.end());
        if (!shared_) files.included.clear();
        diagnostics::LineStore::instance().clear();
    }
    ~Surroundings() {
        if (shared_) files_.included = std::move(scanner_.files().included);
        scanner_.files() = std::move(files_);
        HDNTLimits::set(limits_);
        HDNTLibraryMgr::m_diagnostics = diagnostics_;
        HDNTError::numErrors = errors_;
        HDNTError::setListener(listener_);
        underWay = false;
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

private:
    frontend::Scanner& scanner_ = frontend::Scanner::instance();
    frontend::Scanner::Files files_ = scanner_.files();
    HDNTLimits limits_ = HDNTLimits::get();
    int errors_ = HDNTError::numErrors;
    bool diagnostics_ = HDNTLibraryMgr::m_diagnostics;
    bool shared_;
    HDNTErrorListener* listener_;
};

/// One load, step by step. A step that throws says so and answers false.
class Load {
public:
    Load(const std::string& path, const LoadOptions& options, Recorder& recorder, Loaded& loaded)
        : path_(path), options_(options), recorder_(recorder), loaded_(loaded) {}

    void run() {
        if (!isThere()) return;
        netlist::MappingJournal journal;
        const bool done = attempt(DiagnosticCode::configuration, [&] { makeLibrary(); }) &&
                          attempt(
                              DiagnosticCode::refused, [&] { parse(); }, &HDNTParserlloc) &&
                          attempt(DiagnosticCode::configuration, [&] { finish(); });
        loaded_.files = frontend::Scanner::instance().files().opened;
        if (done && HDNTError::numErrors == 0) journal.keep();
    }

private:
    template <typename Step>
    bool attempt(DiagnosticCode code, Step&& step, const yyltype* at = nullptr) {
        try {
            step();
            return true;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            recorder_.add(code, error.what(), {}, at);
            return false;
        }
    }

    // The manager takes a path where nothing is for its parent, and fails at names that are shorter than ".btl".
    bool isThere() {
        struct stat status {};
        if (stat(path_.c_str(), &status) != 0) recorder_.add(DiagnosticCode::cannotOpen, path_, std::strerror(errno));
        else if (S_ISDIR(status.st_mode))
            attempt(DiagnosticCode::cannotOpen, [&] {
                for (const std::string& entry : loading::shortEntries(path_))
                    recorder_.add(DiagnosticCode::folderEntry, entry);
            });
        return HDNTError::numErrors == 0;
    }

    void makeLibrary() { loaded_.library = std::make_unique<HDNTLibrary>(options_.parent); }
    void parse() { parsed_ = loading::parseInput(*loaded_.library, path_); }
    void finish() {
        if (!parsed_) return;
        loaded_.library->finalize();
        if (options_.check) loaded_.library->check();
    }

    const std::string& path_;
    const LoadOptions& options_;
    Recorder& recorder_;
    Loaded& loaded_;
    bool parsed_ = false;
};

} // namespace

Loaded load(const std::string& path, const LoadOptions& options) {
    if (underWay) throw HEXAlgException("hdnt::load called while a load is under way");
    Loaded loaded;
    Recorder recorder(loaded, options.listener);
    HDNTLibrary* const target = myTopLib;
    {
        const Surroundings surroundings(options, recorder);
        Load(path, options, recorder, loaded).run();
        if (HDNTError::numErrors > 0) loaded.library.reset();
    }
    if (!loaded.library) myTopLib = target;
    return loaded;
}

} // namespace hdnt
