#include "bindings/shared/LoadSection.h"

#include "bindings/shared/Places.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HPAParamMgr.h"

#include <dlfcn.h>

#include <filesystem>

namespace hdnt::scripts {

static thread_local int depth = 0;
static int changing = 0; // with the script lock

bool LoadSection::isFree() {
    const std::unique_lock lock(HDNTLibraryMgr::loadMutex(), std::try_to_lock);
    return lock.owns_lock();
}

LoadSection::LoadSection(Kind kind, ScriptLock& lock) : kind_(kind), lock_(lock) {
    if (depth++ == 0) {
        outermost_ = true;
        if (kind_ == Changes) ++changing;
        given_ = lock_.giveUp();
        HDNTLibraryMgr::loadMutex().lock();
    }
    countBefore_ = HDNTError::numErrors;
    HDNTError::numErrors = 0;
    listenerBefore_ = HDNTError::setListener(this);
}

LoadSection::~LoadSection() {
    HDNTError::setListener(listenerBefore_);
    HDNTError::numErrors = countBefore_;
    --depth;
    if (!outermost_) return;
    HDNTLibraryMgr::loadMutex().unlock();
    lock_.takeBack(given_);
    forgetFiles();
    if (kind_ == Changes) --changing;
}

void LoadSection::waitForChanges(ScriptLock& lock) {
    while (changing > 0 && depth == 0) {
        void* const given = lock.giveUp();
        HDNTLibraryMgr::loadMutex().lock();
        HDNTLibraryMgr::loadMutex().unlock();
        lock.takeBack(given);
    }
}

bool LoadSection::report(const HDNTReport& report) {
    diagnostics_.push_back(diagnosticOf(report));
    return true;
}

void LoadSection::notice(const HDNTNotice& notice) {
    if (notice.kind != HDNTNotice::Kind::FileOpened) diagnostics_.push_back(diagnosticOf(notice));
}

static thread_local int readers = 0;

Reading::Reading() { ++readers; }
Reading::~Reading() { --readers; }
void Reading::mustNotBe(const std::string& of, const char* what) {
    if (readers > 0) throw std::runtime_error(of + ": " + what + " from a visitor or a function");
}

void Reading::mustNotAskMapLibrary(const HDNTBlock& block) {
    if (readers > 0 && HDNTLibrary::usesMapLibraries())
        throw std::runtime_error(block.getName() +
                                 ": no mapping of a map library is asked for from a visitor or a function; ask before");
}

HDNTNetlist* netlistOf(ScriptLock& lock, HDNTBlock& block, const std::string* architecture) {
    const auto ask = [&] { return architecture ? block.getNetlist(*architecture) : block.getNetlist(); };
    LoadSection::waitForChanges(lock);
    const bool attached = block.hasOwnNetlist() || (!architecture && block.getAttachedNetlist());
    if (!attached) Reading::mustNotAskMapLibrary(block);
    if (HDNTLibrary::usesMapLibraries() && !attached) inSection(lock, LoadSection::Changes, block.getName(), ask);
    return ask();
}

std::unique_ptr<HDNTLibrary> loadFrom(const std::string& path, const LoadRequest& request,
                                      std::vector<Diagnostic>& warnings) {
    if (request.parent) Reading::mustNotBe(path, "no library is loaded over another one");
    LoadOptions options;
    options.parent = request.parent;
    if (request.untrusted) options.limits = HDNTLimits::forUntrusted();
    options.check = request.check || HPAParamMgr::getParamMgr()->getValueAsBool("ntl.enableDiagnostics");
    Loaded loaded = hdnt::load(path, options);
    if (!loaded) throw LoadFailure(path, "the library has errors", std::move(loaded.diagnostics));
    warnings = std::move(loaded.diagnostics);
    return std::move(loaded.library);
}

// Seen from the library, since the package may stand elsewhere.
std::string toolPath() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(&HDNTLibraryMgr::getLibraryMgr), &info) || !info.dli_fname) return "";
    const std::filesystem::path library = std::filesystem::absolute(info.dli_fname);
    return (library.parent_path() / HDNT_BIN_RELDIR / "ntl").lexically_normal().string();
}

} // namespace hdnt::scripts
