#include "author/guide/guide.h"

#include "author/judge/judge.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/DiffResult.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Progress.h"

#include <filesystem>

namespace ntl {

namespace {

// Before the library itself is loaded, since its model does not outlive that of its process.
std::optional<hdnt::author::GuideChanges> changesSince(const Settings& settings) {
    if (settings.oldLibrary.empty()) return std::nullopt;
    const std::vector<std::string> parents = parentPaths(settings.parent);
    const bool isCommon = settings.library.empty();
    const std::string path = isCommon ? commonLibraryPaths().front() : settings.library;
    const auto [before, after] =
        treesOf({ComparedLibrary{settings.oldLibrary, parents, {}}, ComparedLibrary{path, parents, {}}});
    if (!before || !after) throw Failure(Unusable, "--compare: " + settings.oldLibrary + " cannot be compared");
    return hdnt::author::GuideChanges{settings.oldLibrary, HDNTComparison::compare(*before, *after)};
}

std::vector<std::string> architecturesOf(const Settings& settings) {
    if (settings.architectures.empty() && !settings.architecture.empty()) return {settings.architecture};
    for (const std::string& architecture : settings.architectures) requireKnownArchitecture(architecture);
    return settings.architectures;
}

std::vector<hdnt::Diagnostic> findingsOf(const OpenedLibrary& opened) {
    hdnt::LintOptions options;
    options.isThorough = false;
    return judgeLoaded(*opened.library, opened.warnings, opened.files, options, hdnt::author::ConfigScope::OwnCells);
}

} // namespace

int runGuide(const Settings& settings) {
    enableByDefault(settings, "ntl.enableMapLib");
    hdnt::author::GuideOptions options;
    options.architectures = architecturesOf(settings);
    options.changes = changesSince(settings);
    const OpenedLibrary opened = openLibrary(settings);
    options.withParents = opened.withParents;
    options.title = settings.title;
    options.findings = findingsOf(opened);
    Progress progress(opened.library->getNumTypeBlocks(opened.withParents));
    options.progress = [&](size_t done, size_t) { progress.show(done); };
    const hdnt::author::WrittenGuide written = orUnusable([&] {
        const OutputToError redirect;
        return writeGuide(*opened.library, settings.guideFolder, options);
    });
    progress.clear();
    if (!written.undrawn.empty()) complain("mappings are not drawn: " + written.undrawn);
    for (const std::string& problem : written.problems) complain(problem);
    if (!written.leftBehind.empty()) complain(written.leftBehind);
    const std::string start = (std::filesystem::path(settings.guideFolder) / "index.html").string();
    writeOutput(start + ": " + counted(written.pages, "page") + "\n");
    return written.problems.empty() ? Fine : Faulty;
}

} // namespace ntl
