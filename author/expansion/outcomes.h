#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

class HDNTBlock;
class HDNTExpansion;

namespace hdnt::author {

/// An if statement that was reached, and which way it went.
struct ReachedBranch {
    Place place;
    bool taken; ///< the condition held
};

/// One of the netlists that a mapping becomes.
struct MappingOutcome {
    std::string setting;                 ///< as SettingCover::textOf, no more than it takes; empty: the defaults
    std::string text;                    ///< as `ntl expand` writes it for that setting; empty when nothing came out
    std::vector<std::string> problems;   ///< that applying the mapping met: "file:line: what is wrong"
    std::vector<ReachedBranch> branches; ///< of the mapping itself
};

struct MappingOutcomes {
    std::vector<MappingOutcome> list; ///< empty: the block has no mapping
    bool isCut = false;               ///< there are more, or settings that were not tried
};

struct OutcomeOptions {
    std::size_t settings = 2000; ///< that are tried at most
    std::size_t most = 12;       ///< outcomes
    /// Counts places in these texts instead of the files at their paths, as LoadOptions::texts has them.
    std::map<std::string, std::string> texts = {};
    /// Finds the places, and remembers files from one block to the next, instead of the texts; null: made for the call.
    SourcePlaces* places = nullptr;
    /// Whose mapping is meant, which may have to be loaded; empty: that of HDNTBlock::getNetlist().
    std::string architecture = {};
    /// Called for each outcome with the expansion that it was written from.
    std::function<void(const HDNTExpansion&, const MappingOutcome&)> visit = {};
};

/// The different netlists that a block's mapping becomes for the settings of SettingCover: that of the defaults first,
/// the others in the order of the settings. As HDNTExpansion::expand().
HDNT_API MappingOutcomes outcomesOf(HDNTBlock& block, const OutcomeOptions& options = {});

} // namespace hdnt::author
