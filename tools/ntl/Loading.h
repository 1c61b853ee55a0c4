#pragma once

#include "author/exchange/blocks.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Settings.h"
#include "tools/ntl/Status.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

namespace ntl {

/// An empty library that read the configuration, once for all loads and worker processes. Throws HEXDataException when
/// the configuration is malformed.
const HDNTLibrary& configuredLibrary();

/// To be called before that: descriptions of the configuration are not read, for commands that show none.
void leaveDescriptionsOut();

/// Loads libraries and keeps what is said of them. Errors go to standard error as the library prints them, as they
/// come, unless it is quiet.
class Loader : private HDNTErrorListener {
public:
    explicit Loader(bool isQuiet = false) : isQuiet_(isQuiet) {}

    /// Never null; lives as long as the process. Whatever is printed goes to standard error. Throws Failure when the
    /// path cannot be opened (Unusable) or the text has errors (Faulty).
    HDNTLibrary* load(const std::string& path, HDNTLibrary* parent);
    /// Texts to read instead of files, by path.
    void replace(std::map<std::string, std::string> texts) { texts_ = std::move(texts); }
    const std::map<std::string, std::string>& texts() const { return texts_; }
    /// Forgets all that was said and read so far.
    void forget();

    /// In the order of saying.
    const std::vector<hdnt::Diagnostic>& diagnostics() const { return diagnostics_; }
    /// Every file opened, in order.
    const std::vector<std::string>& files() const { return files_; }

private:
    bool report(const HDNTReport&) override;
    bool silencesOutput() const override { return true; }
    [[noreturn]] void fail(const std::string& path) const;

    bool isQuiet_;
    ErrorStream* stream_ = nullptr; ///< of the load that is under way
    size_t reports_ = 0;            ///< of that load
    std::map<std::string, std::string> texts_;
    std::vector<hdnt::Diagnostic> diagnostics_;
    std::vector<std::string> files_;
};

/// While it lives, what the library notices goes to standard error as warnings, when it does.
class WarningsShown : private HDNTErrorListener {
public:
    WarningsShown();
    ~WarningsShown() override;
    WarningsShown(const WarningsShown&) = delete;
    WarningsShown& operator=(const WarningsShown&) = delete;

private:
    void notice(const HDNTNotice& notice) override;
    bool silencesOutput() const override { return true; }

    HDNTErrorListener* before_;
};

/// The path of an input as named on the command line, where "-" is standard input.
std::string pathOfInput(const std::string& name);

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
    std::vector<hdnt::Diagnostic> warnings; ///< of itself, not of its parents
    std::vector<std::string> files;         ///< likewise
};
/// Says which files were passed over, since what a command writes is less without them; or all of its own warnings.
OpenedLibrary openLibrary(const Settings& settings, bool saysAll = false);
using hdnt::author::blocksOf, hdnt::author::groupOf, hdnt::author::groupsOf;
using hdnt::author::isInArchitecture, hdnt::author::isRegistered;
/// A block of it or its parents, case aside; null when there is none, which is then said with the names near to it.
HDNTBlock* findBlock(const OpenedLibrary& opened, const std::string& name);
/// Attaches the mapping for the architecture in force, which may be in a map library. False when that library is
/// broken, which is then said.
bool loadMapping(HDNTBlock& block);
/// The same for each of them; true when all went well.
bool loadMappings(const std::vector<HDNTBlock*>& blocks);

/// "file:line:column: severity: message: detail [code]", for standard error.
std::string warningLine(const hdnt::Diagnostic& warning);
/// The same of an error, with "file:line:column: note: message" behind it for each related place.
std::string errorLines(const hdnt::Diagnostic& error);
/// Writes them to standard error, by place.
void warn(std::vector<hdnt::Diagnostic> warnings);

} // namespace ntl
