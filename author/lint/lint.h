#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <vector>

class HDNTLibrary;

// What the library accepts though hardly anybody means it.
namespace hdnt::author {

/// The names of the rules never change and are never used again for something else; the numbers may.
enum class LintCode : unsigned char {
    defaultOutside,
    minAboveMax,
    textTooWide,
    pinLowerCase,
    pinPropertyCase,
    unregisteredBlock,
    configUnknownKey,
    configWrongType,
    configUnknownCell,
    configUnknownPin,
    configUnknownProperty,
    configUnknownArchitecture,
    configUnknownFunction,
    configUnknownPinType,
    configNoEffect,
    bitTextForm,
};

/// In the order of the enumeration.
HDNT_API const std::vector<DiagnosticRule>& lintRules();

/// What is doubtful in a library's own blocks, in the order of the text. Reads their files again for the places; loads
/// nothing. As the model's queries, but for SourcePlaces.
HDNT_API std::vector<Diagnostic> lintLibrary(const HDNTLibrary& library);

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

/// By place, then by code: for what different judges said of one text.
HDNT_API void sortByPlace(std::vector<Diagnostic>& diagnostics);

} // namespace hdnt::author
