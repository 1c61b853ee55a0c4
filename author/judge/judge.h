#pragma once

#include "author/lint/lint.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/loading/load.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

class HDNTLibrary;

// Everything that is said of one library: by its load, by the trees of its texts, by the rules.
namespace hdnt::author {

/// What was found out about a library.
struct Judgement {
    std::vector<Diagnostic> errors;      ///< the library's own reports
    std::vector<std::size_t> saidBetter; ///< indices of those that are among the faults in other words, in order
    std::vector<Diagnostic> faults;      ///< errors that the library does not report, or not so well
    std::vector<Diagnostic> warnings;    ///< and notes
    std::vector<std::string> files;      ///< that were read
};

/// What is wrong or doubtful in a library that was loaded, of which its load said and read so much: by place, without
/// what comments in the files waive; then what is doubtful in the configuration. The texts of the options are those of
/// the load. As lint().
HDNT_API std::vector<Diagnostic> judgeLoaded(const HDNTLibrary& library, std::vector<Diagnostic> said,
                                             const std::vector<std::string>& files, const LintOptions& options,
                                             ConfigScope configuration);

/// A library that did not load, and what was kept of that load alone.
struct FailedLoad {
    std::string path;
    HDNTLibrary* parent = nullptr;
    const std::map<std::string, std::string>& texts; ///< instead of files, as LoadOptions::texts
    const std::vector<std::string>& files;           ///< that were read, in order
    ConfigScope configuration = ConfigScope::None;
    const LintOptions& options;
    bool isChecked = true; ///< as LoadOptions::check
};

/// Completes the judgement, which has the errors and warnings of the load: when they are about syntax, it says every
/// fault of syntax in the files that were read, loads what is left without the faulty blocks, and judges that. False,
/// and nothing is changed, when they are not. Prints nothing. Waivers count in applyWaivers().
///
/// The loading thread's, outside of a load.
HDNT_API bool judgeSyntax(const FailedLoad& failed, Judgement& judgement);

/// What is left of such a library without its faulty blocks. Nothing when that does not load either, or when what the
/// load said is not about syntax. As judgeSyntax().
HDNT_API Loaded loadSound(const FailedLoad& failed, std::vector<Diagnostic> said);

} // namespace hdnt::author
