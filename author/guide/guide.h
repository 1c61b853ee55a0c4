#pragma once

#include "hdnt/compare/HDNTComparison.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/platform/Export.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class HDNTLibrary;

namespace hdnt::author {

/// What changed since an older release.
struct GuideChanges {
    std::string since; ///< what the older one is called
    std::vector<HDNTDifference> differences;
};

struct GuideOptions {
    bool withParents = false;                    ///< blocks of the parents have pages, too
    std::string title = {};                      ///< empty: the name of the library
    std::vector<std::string> architectures = {}; ///< that the pages speak of; empty: all of the configuration
    /// What was said of the library; when not given, what the rules say that try no mapping.
    std::optional<std::vector<Diagnostic>> findings = {};
    std::optional<GuideChanges> changes = {};
    /// Called now and then, with the number of pages that are done, and that of all.
    std::function<void(std::size_t done, std::size_t all)> progress = {};
};

struct WrittenGuide {
    std::size_t pages = 0;
    std::size_t drawings = 0; ///< of mappings
    std::string undrawn = {}; ///< why there are none, when none can be drawn here; else empty
    /// Mappings that could not be had, as on the pages of their blocks: "GATE: mapping for river: ...".
    std::vector<std::string> problems = {};
    std::string leftBehind = {}; ///< beside the folder, and why, when what was replaced cannot be removed; else empty
};

/// Writes a library as pages for a browser, which need no server and no network: a page for each block with its symbol,
/// pins, properties and mapping, and pages that find them. The same library gives the same bytes.
///
/// The folder is replaced as a whole. Throws HEXDataException, and the folder is as it was: when it holds anything that
/// no guide wrote, when it cannot be written, when a template is missing ("guide/" in the data directories). Loads map
/// libraries, whose mapping for the last architecture stays attached. The loading thread's, outside of a load.
HDNT_API WrittenGuide writeGuide(const HDNTLibrary& library, const std::string& folder,
                                 const GuideOptions& options = {});

} // namespace hdnt::author
