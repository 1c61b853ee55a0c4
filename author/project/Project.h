#pragma once

#include "author/lint/RuleControl.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace hdnt::author {

/// Codes that are off in files that the pattern fits: a path below the project's folder, in which "*" is any text, also
/// across folders, "?" any character and "[...]" one of several.
struct PathException {
    std::string pattern;
    std::vector<std::string> codes;
};

/// What a file ".ntl.cfg" says of the libraries in its folder and below it. Its form is that of libconfig, without
/// @include; every key may be missing, and others are refused:
///
///     rules = {
///         only = [ "no-group", "unknown-pin" ];               // RuleControl::only
///         off = [ "no-description" ];                         // RuleControl::turnOff
///         severity = { unregistered-block = "error"; };       // RuleControl::set
///     };
///     exceptions = ( { path = "legacy/*.btl"; off = [ "pin-lower-case" ]; } );
///     budget = 500;                                           // LintOptions::budget, 0 to 1,000,000
///     architectures = [ "meadow" ];                           // LintOptions::architectures
///     parents = [ "common", "base.btl" ];                     // libraries below, the root first; "common": that one
///     include = [ "parts" ];                                  // search directories
///     cells = [ "cells.csv" ];                                // tables for registerCells
///
/// Paths in it are relative to its folder; here they are not any more.
struct Project {
    std::string path;
    std::string folder;
    RuleControl rules;
    std::vector<PathException> exceptions;
    std::optional<std::size_t> budget;
    std::optional<std::vector<std::string>> architectures;
    std::vector<std::string> parents; ///< paths, or "common"
    std::vector<std::string> searchDirectories;
    std::vector<std::string> cellTables;
};

/// The path of the nearest ".ntl.cfg" for a file or folder: in the folder, or that of the file, or in one above; empty
/// when there is none. It is absolute when the file or folder is, or when it is above the working directory.
HDNT_API std::string findProject(const std::string& path);

/// Reads such a file. Throws HEXDataException with "file:line: what is wrong and what to do".
HDNT_API Project readProject(const std::string& path);

/// Adds the project's tables of cells and search directories to the process, for good: to be called before anything is
/// loaded. Throws HEXDataException when a table is not in order, or when it is too late for one (registerCells).
HDNT_API void enterProject(const Project& project);

/// Takes out what the project's exceptions turn off, but for codes that the stronger control speaks of.
HDNT_API void applyExceptions(const Project& project, const RuleControl& stronger, std::vector<Diagnostic>& findings);

} // namespace hdnt::author
