#pragma once

#include "hdnt/platform/Export.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt {

enum class Severity : unsigned char {
    error,   ///< the text is refused
    warning, ///< accepted, and hardly meant
    note,    ///< nothing to mend
};

/// "error", "warning" or "note".
HDNT_API std::string_view nameOf(Severity severity);

/// What can be said of a text. The names of the codes (DiagnosticRule) never change and are never used again for
/// something else; the numbers may.
enum class DiagnosticCode : unsigned char {
    other,
    // Reports of the library
    syntaxError,
    parserDepth,
    unrecognizedCharacter,
    longIdentifier,
    emptyName,
    invalidName,
    arrayName,
    invalidArrayName,
    rangeElements,
    pinBit,
    pinCount,
    pinRedefined,
    propertyRedefined,
    blockRedefined,
    tieOfOutput,
    defaultNotInList,
    defaultNotInRange,
    bitWidth,
    precision,
    connectWithoutSignal,
    invalidOperands,
    functionMissing,
    functionArgumentCount,
    functionArgumentType,
    cannotOpen,
    missingLibraries,
    blockWithoutPins,
    invalidNetlistEntity,
    stringUnterminated,
    commentUnterminated,
    // What ends a load without a report of the library
    folderEntry,
    configuration,
    refused,
    tooManyDiagnostics,
    // Notices of the library
    includeSkipped,
    includeNotFound,
    includeNotOpened,
    includeText,
    unterminatedString,
    unterminatedComment,
    droppedMapping,
    mapLibraryRefused,
    includeTrailingText,
    numberOverflow,
    repeatedOption,
    ignoredOption,
    functionRedeclared,
    mappingReplaced,
    statementDropped,
    inversionDropped,
    fileOpened,
};

/// A row of a table of codes. All texts live as long as the process.
struct DiagnosticRule {
    std::string_view name; ///< what users see, such as "pin-redefined"
    Severity severity;
    std::string_view wording;     ///< the message, with a "%" for each thing it is about
    std::string_view explanation; ///< what it means and what to do, in a sentence or two
    std::string_view bad = {};    ///< a text of which it is said, and nothing else; empty for none
    std::string_view mended = {}; ///< the same text as it is meant, of which nothing is said
};

/// In the order of the enumeration.
HDNT_API const std::vector<DiagnosticRule>& diagnosticRules();
HDNT_API const DiagnosticRule& ruleOf(DiagnosticCode code);
/// The wording with its places filled, in order.
HDNT_API std::string filledIn(std::string_view wording, std::initializer_list<std::string_view> arguments);

} // namespace hdnt
