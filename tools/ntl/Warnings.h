#pragma once

#include "hdnt/diagnostics/HDNTError.h"
#include "tools/ntl/Place.h"

#include <string>
#include <string_view>
#include <vector>

class HDNTLibrary;

namespace ntl {

/// What the tool warns about though the library accepts it.
enum class Warning {
    DefaultOutside,
    MinAboveMax,
    TextTooWide,
    PinLowerCase,
    PinPropertyCase,
    UnregisteredBlock,
    IncludeSkipped,
    IncludeNotFound,
    IncludeNotOpened,
    UnterminatedString,
    UnterminatedComment,
    DroppedMapping,
    ConfigUnknownKey,
    ConfigWrongType,
    ConfigUnknownCell,
    ConfigUnknownPin,
    ConfigUnknownProperty,
    ConfigUnknownArchitecture,
    ConfigUnknownFunction,
    ConfigUnknownPinType,
    ConfigNoEffect,
};

/// The codes never change and are never used again for something else; docs/ntl.md explains each.
struct WarningRule {
    Warning warning;
    std::string_view code;
    std::string_view summary; ///< one sentence
};

/// In the order of the enumeration.
const std::vector<WarningRule>& warningRules();

struct Finding {
    Warning warning;
    Place place;
    std::string text;
};

/// What is doubtful in a library's own blocks. The library must be the one loaded last.
std::vector<Finding> judge(const HDNTLibrary& library);
Finding findingOf(const HDNTNotice& notice);

/// By place, then by code.
void sortFindings(std::vector<Finding>& findings);
/// "file:line:column: warning: text [code]", for standard error.
std::string warningLine(const Finding& finding);
/// Writes them to standard error, sorted.
void warn(std::vector<Finding> findings);

} // namespace ntl
