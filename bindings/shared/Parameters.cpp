#include "bindings/shared/Parameters.h"

#include <algorithm>
#include <array>

namespace hdnt::scripts {

std::string unknownParameter(const std::string& name) {
    static constexpr std::array<const char*, 4> known = {"arch.enableTestFeatures", "ntl.enableDiagnostics",
                                                         "ntl.enableMapLib", "ntl.retargetAllCells"};
    if (std::ranges::find(known, name) != known.end()) return "";
    std::string reason = "no parameter \"" + name + "\": must be one of ";
    for (const char* one : known) reason += (one == known.front() ? "" : ", ") + std::string(one);
    return reason;
}

} // namespace hdnt::scripts
