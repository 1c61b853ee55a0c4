#include "author/judge/judge.h"
#include "author/lint/Waivers.h"

#include <iterator>
#include <utility>

namespace hdnt::author {

std::vector<Diagnostic> judgeLoaded(const HDNTLibrary& library, std::vector<Diagnostic> said,
                                    const std::vector<std::string>& files, const LintOptions& options,
                                    ConfigScope configuration) {
    std::vector<Diagnostic> findings = lint(library, options);
    std::move(said.begin(), said.end(), std::back_inserter(findings));
    sortByPlace(findings);
    applyWaivers(findings, files, {today(), options.isThorough ? Judged::AllRules : Judged::QuickRules, options.texts});
    std::vector<Diagnostic> more = lintConfiguration(library, configuration);
    std::move(more.begin(), more.end(), std::back_inserter(findings));
    return findings;
}

} // namespace hdnt::author
