#pragma once

#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

// Differences of two models in the words of release notes.
namespace hdnt::author {

/// What a difference says behind the name of its block: "pin D: required value tieLow -> tieHigh". Names and values are
/// passed through `mark`, long values cut.
HDNT_API std::string changeText(const HDNTDifference& difference, std::string (*mark)(const std::string& text),
                                const std::string& arrow);

/// A chapter of release notes. Each difference is in one of them.
struct ReleaseChapter {
    const char* title;
    bool (*holds)(const HDNTDifference&);
};
HDNT_API const std::vector<ReleaseChapter>& releaseChapters();

} // namespace hdnt::author
