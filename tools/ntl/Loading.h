#pragma once

#include "hdnt/diagnostics/HDNTError.h"
#include "tools/ntl/Place.h"
#include "tools/ntl/Settings.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/Warnings.h"

#include <string>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

namespace ntl {

/// One report of the library, as data. Its printed form has gone to standard error.
struct Report {
    Place place;
    std::string message;
    std::string detail;
};

/// Loads libraries and keeps what is said meanwhile. There is one at a time, since it listens to the library.
class Loader : private HDNTErrorListener {
public:
    /// Reports are counted in any case; they are kept only when asked for.
    explicit Loader(bool keepReports);
    ~Loader() override;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    /// Never null; owned by the library manager. Whatever the library prints goes to standard error. Throws Failure
    /// when the path cannot be opened (Unusable) or the text has errors (Faulty).
    HDNTLibrary* load(const std::string& path, HDNTLibrary* parent);
    /// Forgets all notices and files so far.
    void forget();

    size_t errorCount() const { return errorCount_; }
    const std::vector<Report>& reports() const { return reports_; }
    const std::vector<Finding>& notices() const { return notices_; }
    /// Every file opened, in order.
    const std::vector<std::string>& files() const { return files_; }

private:
    bool report(const HDNTReport& report) override;
    void notice(const HDNTNotice& notice) override;
    void addOpenedFiles(const std::vector<std::string>& before);
    [[noreturn]] void fail(const std::string& path, const std::string& reason);

    bool keepReports_;
    size_t errorCount_ = 0;
    std::string openFailure_; ///< the first one, with its reason
    std::vector<Report> reports_;
    std::vector<Finding> notices_;
    std::vector<std::string> files_;
};

/// Where the common library is: its data and, when test features are on, the extension over it.
std::vector<std::string> commonLibraryPaths();
/// The paths behind --parent, the root first: empty, one or two.
std::vector<std::string> parentPaths(const std::string& parent);

/// The library of `list`, `show`, `expand` and `print`. Its blocks are its own, or for the common library all up to the
/// root.
struct OpenedLibrary {
    HDNTLibrary* library = nullptr;
    bool withParents = false;
    std::string path;
    std::vector<Finding> notices;   ///< of itself, not of its parents
    std::vector<std::string> files; ///< likewise
};
OpenedLibrary openLibrary(const Settings& settings);
/// A block of it or its parents, case aside; null when there is none, which is then said with the names near to it.
HDNTBlock* findBlock(const OpenedLibrary& opened, const std::string& name);
/// Attaches the mapping for the architecture in force, which may be in a map library. False when that library is
/// broken, which is then said.
bool loadMapping(HDNTBlock& block);
/// The same for each of them; true when all went well.
bool loadMappings(const std::vector<HDNTBlock*>& blocks);

} // namespace ntl
