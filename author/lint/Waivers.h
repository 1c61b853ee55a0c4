#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace hdnt::author {

/// Which rules the findings come of.
enum class Judged {
    Nothing,    ///< only what a load said
    QuickRules, ///< all but thorough ones
    AllRules,
};

struct WaiverOptions {
    /// A waiver holds up to its date, that day included.
    std::chrono::year_month_day today;
    /// Of which rules it is said that a waiver has nothing to waive: those that were judged.
    Judged judged = Judged::AllRules;
    /// Texts to take instead of files, by path.
    std::map<std::string, std::string> texts = {};
};

/// Takes out the findings that comments in the files waive, and puts what is wrong with such comments behind the rest:
///
///     // ntl: allow CODE[, CODE] [until YEAR-MONTH-DAY]: reason
///
/// A comment in lines of its own waives the codes in the statement, declaration, block or file statement behind it, and
/// before the word "library" in all of the file. One that has something before it in its line waives them in the
/// smallest of these that the token before it is part of. Errors of the text cannot be waived.
///
/// Files that the findings speak of are read, too; those that cannot be read, or are no regular files and not among the
/// texts, are left out. Only files that hold "ntl: allow" are parsed. The loading thread's, outside of a load.
HDNT_API void applyWaivers(std::vector<Diagnostic>& findings, const std::vector<std::string>& files,
                           const WaiverOptions& options);

/// The day by the clock of this machine and its time zone.
HDNT_API std::chrono::year_month_day today();

} // namespace hdnt::author
