#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/platform/Export.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace hdnt::author {

/// Places as comments have them: "file:line", the file without its directory, unless another one of that name came
/// first.
class HDNT_API BriefPlaces {
public:
    std::string brief(const Place& place);

private:
    std::map<std::string, std::string> fileByName_;
};

/// A block whose mapping was applied, and what it was applied to.
struct ExpandedBlock {
    const HDNTExpansion& expansion;
    std::vector<std::pair<std::string, std::string>> properties; ///< those that were given
    std::vector<std::string> connectedPins;
    SourcePlaces& places;
    BriefPlaces& briefPlaces;

    /// "file:line"
    std::string brief(const yyltype& location) const { return briefPlaces.brief(places.placeOf(location)); }
};

/// As NTL: `block "X" mapsto { ... }` for each level, with comments that say where each line comes from.
HDNT_API std::string expansionText(const ExpandedBlock& expanded);
/// As a drawing for Graphviz: its ExpansionGraph, an expanded instance as a frame around what it became. There must be
/// a level.
HDNT_API std::string expansionDot(const HDNTExpansion& expansion);

/// The value as NTL writes it, with quotes; empty when NTL has no way to write it.
HDNT_API std::string ntlValue(const HDNTExpansion::Value& value);
/// `name("text", 1)`
HDNT_API std::string callText(const HDNTExpansion::Call& call);

} // namespace hdnt::author
