#include "hdnt/loading/HDNTLibraryMgr.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/LineStore.internal.h"
#include "hdnt/loading/ParseInput.internal.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/netlist/MappingJournal.internal.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/HUTMemWatcher.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <memory>

bool HDNTLibraryMgr::m_diagnostics = false;
bool HDNTLibraryMgr::m_retargetEvalMode = false;
unsigned short HDNTLibraryMgr::m_archEnumInfo = 0;

static const std::string commonKey = "common";
static const std::string simulationKey = "simulation";

HDNTLibraryMgr* HDNTLibraryMgr::getLibraryMgr() {
    static HDNTLibraryMgr manager;
    return &manager;
}

HDNTLibraryMgr::~HDNTLibraryMgr() { deleteLibraries(); }

std::mutex& HDNTLibraryMgr::loadMutex() {
    static std::mutex* const mutex = new std::mutex;
    return *mutex;
}

static bool parameter(const std::string& name) { return HPAParamMgr::getParamMgr()->getValueAsBool(name); }

std::string HDNTLibraryMgr::getDataFileName(bool simulation) {
    const std::string name = simulation ? "simulation.btl" : "tessels";
    std::string path = ConfigBase::getDataLocation(name);
    if (path.empty()) throw HEXDataException("HDNTLibraryMgr - Missing data file: " + name);
    return path;
}

std::string HDNTLibraryMgr::getTestDataFileName() { return ConfigBase::getDataLocation("tessels.test"); }

bool HDNTLibraryMgr::isPrimitive(const std::string& cellName) {
    return HDNTCellviewLib::getGlobal()->getType(cellName) != HDNTCellviewLib::UNKNOWN;
}

HDNTLibrary* HDNTLibraryMgr::createLibrary(HDNTLibrary* parent) {
    m_diagnostics = parameter("ntl.enableDiagnostics");
    m_retargetEvalMode = parameter("ntl.retargetAllCells");
    auto library = std::make_unique<HDNTLibrary>(parent);
    m_ownedLibraries.push_back(library.get());
    return library.release();
}

void HDNTLibraryMgr::discard(HDNTLibrary* library) {
    std::erase(m_ownedLibraries, library);
    delete library;
}

// The interface passes it by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
HDNTLibrary* HDNTLibraryMgr::loadLibrary(std::string path, HDNTLibrary* parent) {
    const HUTFile file(path);
    if (!file.exists()) {
        if (parent) return parent;
        throw HEXDataException("No such ntl library file: " + path);
    }
    const HUTMemWatcher watcher("HDNTLibraryMgr::loadLibrary", "");
    hdnt::diagnostics::LineStore::instance().clear();
    HDNTLibrary* const library = createLibrary(parent);
    try {
        hdnt::netlist::MappingJournal journal;
        if (hdnt::loading::parseInput(*library, path)) {
            library->finalize();
            if (m_diagnostics) library->check();
        }
        if (HDNTError::numErrors >= 1) throw HEXDataException("Invalid ntl library file: " + path);
        journal.keep();
    } catch (...) {
        discard(library);
        throw;
    }
    return library;
}

HDNTLibrary* HDNTLibraryMgr::getLibrary(const std::string& name, HDNTLibrary* parent) {
    HDNTLibraryMgr& manager = *getLibraryMgr();
    const std::string key = name.empty() ? getDataFileName(false) : name;
    HDNTLibrary*& cached = manager.m_libraries[key];
    if (cached) return cached;
    HDNTLibrary* library = manager.loadLibrary(key, parent);
    if (!library && parent) library = manager.createLibrary(parent);
    if (library) manager.m_libraries[key] = library;
    return library;
}

HDNTLibrary* HDNTLibraryMgr::getCommonLibrary() {
    HDNTLibraryMgr& manager = *getLibraryMgr();
    if (HDNTLibrary* const cached = manager.m_libraries[commonKey]) return cached;
    HDNTLibrary* library = manager.loadLibrary(getDataFileName(false), nullptr);
    try {
        if (parameter("arch.enableTestFeatures")) library = manager.loadLibrary(getTestDataFileName(), library);
    } catch (...) { // nobody could reach it, and every further try would leave one more
        manager.discard(library);
        throw;
    }
    return manager.m_libraries[commonKey] = library;
}

HDNTLibrary* HDNTLibraryMgr::getLoadedCommonLibrary() {
    const auto& libraries = getLibraryMgr()->m_libraries;
    const auto cached = libraries.find(commonKey);
    return cached == libraries.end() ? nullptr : cached->second;
}

HDNTLibrary* HDNTLibraryMgr::getSimulationLibrary() {
    HDNTLibraryMgr& manager = *getLibraryMgr();
    if (HDNTLibrary* const cached = manager.m_libraries[simulationKey]) return cached;
    HDNTLibrary* const common = getCommonLibrary();
    HDNTLibrary* const library = manager.loadLibrary(getDataFileName(true), common);
    return manager.m_libraries[simulationKey] = library;
}

std::unique_ptr<HDNTLibrary> HDNTLibraryMgr::giveAway(HDNTLibrary* library) {
    if (std::erase(m_ownedLibraries, library) == 0) return nullptr;
    std::erase_if(m_libraries, [&](const auto& entry) { return entry.second == library; });
    return std::unique_ptr<HDNTLibrary>(library);
}

// The library may be cached under other keys too, as when a missing file gave its parent.
void HDNTLibraryMgr::deleteSimulationLibrary() {
    HDNTLibrary* const library = m_libraries[simulationKey];
    if (!library) return;
    std::erase_if(m_libraries, [&](const auto& entry) { return entry.second == library; });
    discard(library);
}

void HDNTLibraryMgr::releaseSimulationLibrary() { getLibraryMgr()->deleteSimulationLibrary(); }

void HDNTLibraryMgr::deleteLibraries() {
    while (!m_ownedLibraries.empty()) {
        HDNTLibrary* const library = m_ownedLibraries.back();
        m_ownedLibraries.pop_back();
        delete library;
    }
    m_libraries.clear();
}

void HDNTLibraryMgr::releaseLibraries() { getLibraryMgr()->deleteLibraries(); }
