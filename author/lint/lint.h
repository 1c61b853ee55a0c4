#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class ConfigBase;
class HDNTLibrary;

// What the library accepts though hardly anybody means it.
namespace hdnt {

struct LintOptions {
    /// Whether mappings are tried, those of map libraries judged, and names compared, too. Without it, a judgement
    /// takes a fraction of the time of the load.
    bool isThorough = true;
    /// Expansions of one mapping.
    std::size_t budget = 2000;
    /// Architectures whose map libraries are judged, when the parameter "ntl.enableMapLib" is on; those of the
    /// configuration when not given.
    std::optional<std::vector<std::string>> architectures;
    /// What the library was read from instead of files, as LoadOptions::texts; for the places of what is found.
    std::map<std::string, std::string> texts;
    /// Called now and then, with the number of blocks that are done, and that of all.
    std::function<void(std::size_t done, std::size_t all)> progress;
};

/// What is wrong or doubtful in a finished library's own blocks and their mappings, in the order of the text; see
/// lintRules(). Reads the library's files again for the places and waivers, but for those among the texts; throws
/// HEXDataException when one is there and cannot be read.
///
/// An instance whose block is nowhere else is sought in the common library, which is loaded for that; map libraries are
/// loaded, and leave the mapping for the last architecture attached. What they report is among the findings, and
/// HDNTError::numErrors is afterwards as before. The loading thread's, outside of a load.
HDNT_API std::vector<Diagnostic> lint(const HDNTLibrary& library, const LintOptions& options = {});

namespace author {

/// The names of the rules never change and are never used again for something else; the numbers may.
enum class LintCode : unsigned char {
    // Declarations
    defaultOutside,
    minAboveMax,
    textTooWide,
    bitTextForm,
    needlessBound,
    pinLowerCase,
    pinPropertyCase,
    similarNames,
    unregisteredBlock,
    noGroup,
    noDescription,
    similarGroup,
    // References of mappings
    unknownBlock,
    unknownInstance,
    unknownPin,
    unknownProperty,
    propertyType,
    valueRefused,
    duplicateInstance,
    duplicateSignal,
    pinOnTwoSignals,
    widthMismatch,
    oppositeOrder,
    lowerMaturity,
    deprecatedBlock,
    testBlock,
    otherArchitecture,
    brokenMapLibrary,
    // By trying mappings
    mappingProblem,
    twoDrivers,
    undrivenSignal,
    singlePinSignal,
    openInput,
    undrivenOutput,
    unusedInput,
    branchNeverTaken,
    conditionAlwaysTrue,
    propertyWithoutEffect,
    mappingCircle,
    // Configuration
    configUnknownKey,
    configWrongType,
    configUnknownCell,
    configUnknownPin,
    configUnknownProperty,
    configUnknownArchitecture,
    configUnknownFunction,
    configUnknownPinType,
    configNoEffect,
    // Comments that waive findings
    waiverForm,
    waiverExpired,
    waiverUnused,
};

/// In the order of the enumeration. The examples of rules about the configuration are texts of such files, whose name
/// stands in a comment in their first line.
HDNT_API const std::vector<DiagnosticRule>& lintRules();

/// Codes of one subject, in the order of their tables.
struct RuleGroup {
    std::string_view title;
    bool isOfRules; ///< what is accepted, and can be turned off; else what the library or its grammar refuses
    std::vector<const DiagnosticRule*> rules;
};
/// All codes there are: of the library, of syntax, of lint.
HDNT_API std::vector<RuleGroup> ruleGroups();
HDNT_API std::vector<std::string> allCodes();
/// The rule or message of that code; null when there is none.
HDNT_API const DiagnosticRule* findRule(std::string_view code);
/// What it means, with its examples, as Markdown that reads as plain text, too.
HDNT_API std::string explanationOf(const DiagnosticRule& rule);

/// Whether a rule, or a warning of the library, comes of a thorough judgement only (LintOptions::isThorough).
HDNT_API bool isThoroughRule(std::string_view code);

/// Which entries of the configuration are judged.
enum class ConfigScope {
    None,
    OwnCells, ///< those about blocks of the library itself
    Whole,    ///< all; the library and its parents have to be all that the configuration speaks of. Of files that came
              ///< with the library, while the common library did not: only those about blocks that are there
};

/// What is doubtful in the two configuration files that the library answers from, in the order of the files. Locks each
/// while it is read. Places have no column.
HDNT_API std::vector<Diagnostic> lintConfiguration(const HDNTLibrary& library, ConfigScope scope);

/// The architectures that an application configuration lists, in its order. Locks it.
HDNT_API std::vector<std::string> architecturesIn(ConfigBase& config);

/// By place, then by code: for what different judges said of one text.
HDNT_API void sortByPlace(std::vector<Diagnostic>& diagnostics);

} // namespace author
} // namespace hdnt
