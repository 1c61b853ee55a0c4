#pragma once

#include "hdnt/compare/HDNTComparison.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace ntl {

/// One of two libraries that are compared.
struct ComparedLibrary {
    std::string path;
    std::vector<std::string> parents;
    std::vector<std::string> searchDirectories;
};
/// Read in processes of their own. None where a library could not be read, which is then said.
std::array<std::optional<HDNTModelTree>, 2> treesOf(const std::array<ComparedLibrary, 2>& sides);

/// What became of a comparison of two libraries.
struct DiffResult {
    std::array<std::string, 2> paths; ///< old and new, as named on the command line
    std::array<std::string, 2> libraries;
    std::vector<HDNTDifference> differences;

    size_t count(HDNTDifference::Effect effect) const;
};

// The forms of standard output.
/// Grouped by block, a line a change.
std::string diffText(const DiffResult& result);
std::string diffJson(const DiffResult& result, int exitStatus);
/// Release notes.
std::string diffMarkdown(const DiffResult& result);

} // namespace ntl
