#pragma once

#include "hdnt/netlist/HDNTExpansion.h"
#include "tools/ntl/Json.h"
#include "tools/ntl/MappingPlaces.h"

#include <string>
#include <utility>
#include <vector>

namespace ntl {

/// A block whose mapping was applied, and what it was applied to.
struct ExpandedBlock {
    const HDNTExpansion& expansion;
    std::vector<std::pair<std::string, std::string>> properties; ///< those that were given
    std::vector<std::string> connectedPins;
    MappingPlaces& places;

    Place placeOf(const HDNTExpansion::Level& level, const HDNTExpansion::Origin& origin) const {
        return places.placeOf(origin.location, level.block);
    }
    /// Problems do not say which level they are of, so those in map libraries are placed only if there is just one.
    Place placeOf(const HDNTExpansion::Problem& problem) const;
};

/// As NTL: `block "X" mapsto { ... }` for each level, with comments that say where each line comes from.
std::string expansionText(const ExpandedBlock& expanded);
/// docs/ntl.md says what each key means.
Json expansionJson(const ExpandedBlock& expanded);
/// A drawing for Graphviz.
std::string expansionDot(const ExpandedBlock& expanded);

/// The value as NTL writes it, with quotes; empty when NTL has no way to write it.
std::string ntlValue(const HDNTExpansion::Value& value);
/// `name("text", 1)`
std::string callText(const HDNTExpansion::Call& call);

} // namespace ntl
