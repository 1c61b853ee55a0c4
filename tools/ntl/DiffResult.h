#pragma once

#include "hdnt/compare/HDNTComparison.h"

#include <array>
#include <string>
#include <vector>

namespace ntl {

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
