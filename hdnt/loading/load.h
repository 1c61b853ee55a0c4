#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/Export.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class HDNTErrorListener;

namespace hdnt {

struct LoadOptions {
    /// The library to build over; not owned, must outlive the result. Null: none.
    HDNTLibrary* parent = nullptr;
    /// For a library without parent: whose configuration it shares (HDNTLibrary::configuredLike). Null: it is read.
    const HDNTLibrary* configuredLike = nullptr;
    /// Whether the finished library is checked and declared names are judged, as with "ntl.enableDiagnostics".
    bool check = true;
    /// Where INCLUDE and INLINE files are sought, before the directories of NtlAddSearchDirectory; for this load alone.
    std::vector<std::string> searchDirectories;
    /// What files hold, by their paths, instead of what is on disk, which may lack them: texts that an editor has not
    /// saved. For INCLUDE and INLINE files, too; not for the names in a folder. "a/../b" is "b", links are not
    /// followed.
    std::map<std::string, std::string> texts;
    /// For this load alone; those in force when not given.
    std::optional<HDNTLimits> limits;
    /// With false an INCLUDE brings a file in once a load; with true, once for all loads of the process that share, and
    /// for the required entries of HDNTLibrary, which always do.
    bool sharedIncludes = false;
    /// Hears each report and notice when it is said, beside the result; false from its report() prints the report.
    /// Null: nobody, and nothing is printed.
    HDNTErrorListener* listener = nullptr;
};

/// What came of a load.
struct Loaded {
    std::unique_ptr<HDNTLibrary> library; ///< null when there was an error
    std::vector<Diagnostic> diagnostics;  ///< errors and warnings, in the order they were said
    std::vector<std::string> files;       ///< every file that was read, in order

    explicit operator bool() const { return library != nullptr; }
};

/// Loads a file, or all .btl files of a folder in name order into one library, finalizes and checks it. Files may be
/// compressed.
///
/// Whatever is wrong comes back as diagnostics: a path where nothing is, a broken configuration, errors in the text.
/// One load leaves nothing to the next: HDNTError::numErrors, the listener, the limits, the search directories and
/// (unless they are shared) the included names are afterwards as before, and so are mappings of the parent's blocks
/// when it fails. So the same file loads twice to the same library, also after a broken one. On success the library is
/// the one that HDNTLibrary::parseString builds into.
///
/// The library belongs to the caller, who deletes it on the loading thread and before its parent. The loading thread's,
/// as the parser is; hosts that load from several threads hold HDNTLibraryMgr::loadMutex(). Throws std::bad_alloc, and
/// HEXAlgException when called while a load is under way.
HDNT_API Loaded load(const std::string& path, const LoadOptions& options = {});

} // namespace hdnt
