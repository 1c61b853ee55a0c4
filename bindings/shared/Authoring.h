#pragma once

#include "author/exchange/compareModels.h"
#include "author/exchange/importBlocks.h"
#include "author/guide/guide.h"
#include "author/lint/lint.h"
#include "bindings/shared/LoadSection.h"

#include <string>
#include <vector>

// What the tools for authors do with whole libraries. Each is in a section, and throws runtime_error while the thread
// is Reading, since map libraries may replace mappings.
namespace hdnt::scripts {

/// What hdnt::lint says of a library, without what its text waives.
std::vector<Diagnostic> lintOf(ScriptLock& lock, const HDNTLibrary& library, const LintOptions& options);

/// As author::writeGuide. A broken map library is a LoadFailure, behind the pages.
author::WrittenGuide writeGuide(ScriptLock& lock, const HDNTLibrary& library, const std::string& folder,
                                const author::GuideOptions& options);

struct ExportRequest {
    std::string form;
    std::vector<std::string> blocks = {}; ///< names, case aside
    bool withParents = false;
    bool isSplit = false;
};
/// As author::exportBlocks. Throws HEXDataException for a form or block that does not exist.
author::Exported exportBlocks(ScriptLock& lock, const HDNTLibrary& library, const ExportRequest& request);

/// As author::compareModels: what was found in the files, in their order, then blocks that have no model.
std::vector<Diagnostic> compareModels(ScriptLock& lock, const HDNTLibrary& library,
                                      const std::vector<std::string>& files, const author::ModelOptions& options);

/// As author::importBlocks.
author::Imported importBlocks(ScriptLock& lock, const std::string& form, const std::vector<std::string>& files);

} // namespace hdnt::scripts
