#include "bindings/shared/LoadSection.h"

#include "hdnt/loading/HDNTLibraryMgr.h"
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
    said_.push_back(saidBy(report));
    return true;
}

void LoadSection::notice(const HDNTNotice& notice) { said_.push_back(saidBy(notice)); }

namespace {

/// The parameter that makes a load check what it loaded, on for as long as the object lives.
class Diagnostics {
public:
    explicit Diagnostics(bool wanted) : turnedOn_(wanted && !parameters().getValueAsBool(name)) {
        if (turnedOn_) parameters().setValueAsBool(name, true);
    }
    // The parameter may be off because the host says so, or because nobody says anything.
    ~Diagnostics() {
        if (!turnedOn_) return;
        HDNTLibraryMgr::m_diagnostics = false;
        parameters().unset(name);
        if (parameters().getValueAsBool(name)) parameters().setValueAsBool(name, false);
    }
    Diagnostics(const Diagnostics&) = delete;

private:
    static constexpr const char* name = "ntl.enableDiagnostics";
    static HPAParamMgr& parameters() { return *HPAParamMgr::getParamMgr(); }

    bool turnedOn_;
};

} // namespace

static thread_local int readers = 0;

Reading::Reading() { ++readers; }
Reading::~Reading() { --readers; }
void Reading::mustNotBe(const std::string& path) {
    if (readers > 0)
        throw std::runtime_error(path + ": no library is loaded over another one from a visitor or a function");
}

void Reading::mustNotAskMapLibrary(const HDNTBlock& block) {
    if (readers > 0 && HDNTLibrary::usesMapLibraries())
        throw std::runtime_error(block.getName() +
                                 ": no mapping of a map library is asked for from a visitor or a function; ask before");
}

std::unique_ptr<HDNTLibrary> loadFrom(const std::string& path, HDNTLibrary* parent, bool check) {
    if (parent) Reading::mustNotBe(path);
    const Diagnostics diagnostics(check);
    HDNTLibraryMgr& manager = *HDNTLibraryMgr::getLibraryMgr();
    return manager.giveAway(manager.loadLibrary(path, parent));
}

// Seen from the library, since the package may stand elsewhere.
std::string toolPath() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(&HDNTLibraryMgr::getLibraryMgr), &info) || !info.dli_fname) return "";
    const std::filesystem::path library = std::filesystem::absolute(info.dli_fname);
    return (library.parent_path() / HDNT_BIN_RELDIR / "ntl").lexically_normal().string();
}

} // namespace hdnt::scripts
