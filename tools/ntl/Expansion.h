#pragma once

#include "hdnt/netlist/HDNTExpansion.h"
#include "tools/ntl/Json.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ntl {

/// Places as comments have them: "file:line", the file without its directory, unless another one of that name came
/// first.
class BriefPlaces {
public:
    std::string brief(const hdnt::Place& place);

private:
    std::map<std::string, std::string> fileByName_;
};

/// A block whose mapping was applied, and what it was applied to.
struct ExpandedBlock {
    const HDNTExpansion& expansion;
    std::vector<std::pair<std::string, std::string>> properties; ///< those that were given
    std::vector<std::string> connectedPins;
    hdnt::SourcePlaces& places;
    BriefPlaces& briefPlaces;

    /// "file:line"
    std::string brief(const yyltype& location) const { return briefPlaces.brief(places.placeOf(location)); }
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
