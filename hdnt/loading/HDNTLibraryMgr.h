#pragma once

#include "hdnt/platform/Export.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class HDNTLibrary;

namespace CommonPart {
struct PartSpec;
}

/// Finds, loads, keeps and deletes libraries: one instance a process.
///
/// A load fails when HDNTError::numErrors is above 0 at its end. The counter is never lowered, so after one report
/// anywhere every later load of the process fails. Everything here but getLibraryMgr() is for one thread at a time, as
/// the parser is; hosts that load from several threads hold loadMutex().
class HDNT_API HDNTLibraryMgr {
public:
    /// Never null. Created on first use, from any thread; destroyed, with its libraries, when the process exits.
    static HDNTLibraryMgr* getLibraryMgr();

    virtual ~HDNTLibraryMgr();
    HDNTLibraryMgr(const HDNTLibraryMgr&) = delete;
    HDNTLibraryMgr& operator=(const HDNTLibraryMgr&) = delete;

    /// Where the common ("tessels") or the simulation library's data ("simulation.btl") is. Throws HEXDataException
    /// "HDNTLibraryMgr - Missing data file: " + name.
    static std::string getDataFileName(bool simulation);
    /// Where the test extension of the common library ("tessels.test") is; empty when there is none.
    static std::string getTestDataFileName();
    /// Whether the cellview registry knows the name (case matters).
    static bool isPrimitive(const std::string& cellName);

    /// An empty library over `parent` (null: none), owned by the manager, not in the cache. Reads the parameters
    /// "ntl.enableDiagnostics" and "ntl.retargetAllCells" into the switches below.
    HDNTLibrary* createLibrary(HDNTLibrary* parent);
    /// Loads a file, or all .btl files of a folder in name order into one library, finalizes it, and checks it when
    /// diagnostics are on. Nothing at `path`: the parent itself, or HEXDataException "No such ntl library file: " +
    /// path without one. Any report, now or before: HEXDataException "Invalid ntl library file: " + path, and the
    /// library is gone. Exceptions of the parse and of configuration files pass through, likewise. Not cached.
    HDNTLibrary* loadLibrary(std::string path, HDNTLibrary* parent);

    /// Loads once by path, the located common data when empty. With a parent, a path where nothing is gives the parent.
    static HDNTLibrary* getLibrary(const std::string& name, HDNTLibrary* parent);
    /// The common library, or its test extension when the parameter "arch.enableTestFeatures" is on and there is one.
    static HDNTLibrary* getCommonLibrary();
    /// The same if it was loaded before; else null.
    static HDNTLibrary* getLoadedCommonLibrary();
    /// The simulation library, over the common one.
    static HDNTLibrary* getSimulationLibrary();

    /// Gives a library away: it belongs to the caller, who deletes it on the loading thread and before its parent, and
    /// the manager forgets it. Null when it is not the manager's.
    std::unique_ptr<HDNTLibrary> giveAway(HDNTLibrary* library);

    void deleteSimulationLibrary();
    static void releaseSimulationLibrary();
    /// Deletes all libraries, the last created first, and forgets the cache. The next query loads afresh.
    void deleteLibraries();
    static void releaseLibraries();

    /// For hosts and bindings that load from several threads; the manager itself never locks it.
    static std::mutex& loadMutex();

    /// The host's current part (not owned, may be null) and architecture; what blocks use when a caller names none.
    const CommonPart::PartSpec* m_partSpec = nullptr;
    std::string m_architecture;

    /// Whether loaded libraries are checked and declared names are judged.
    static bool m_diagnostics;
    /// Kept for the host.
    static bool m_retargetEvalMode;
    /// The host's number for the current architecture.
    static unsigned short m_archEnumInfo;

private:
    HDNTLibraryMgr() = default;

    HDNT_LOCAL void discard(HDNTLibrary* library);

    std::map<std::string, HDNTLibrary*> m_libraries;
    std::vector<HDNTLibrary*> m_ownedLibraries;
};
