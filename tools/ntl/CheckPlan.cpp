#include "tools/ntl/CheckPlan.h"

#include "author/lint/Baseline.h"
#include "author/project/parents.h"
#include "hdnt/platform/HEX.h"
#include "tools/ntl/BaselineOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/RuleOptions.h"
#include "tools/ntl/Status.h"

#include <algorithm>

namespace ntl {

// That of standard input is sought from the working directory.
static std::string projectOf(const Settings& settings, const std::string& input) {
    return settings.noProject || settings.untrusted ? "" : hdnt::author::findProject(input == "-" ? "." : input);
}

bool haveProject(const Settings& settings) {
    const auto hasOne = [&](const std::string& input) { return !projectOf(settings, input).empty(); };
    return std::any_of(settings.inputs.begin(), settings.inputs.end(), hasOne);
}

CheckPlan::CheckPlan(const Settings& settings)
    : settings_(settings), commandLine_(rulesOf(settings)), rules_(commandLine_) {}

CheckPlan::CheckPlan(const Settings& settings, const std::string& input) : CheckPlan(settings) {
    const std::string path = projectOf(settings, input);
    if (path.empty()) return;
    project_ = orUnusable([&] { return hdnt::author::readProject(path); });
    rules_ = project_->rules;
    rules_.add(commandLine_);
}

void CheckPlan::enter() const {
    if (!project_) return;
    orUnusable([&] { hdnt::author::enterProject(*project_); });
}

std::vector<std::string> CheckPlan::parents(const std::vector<std::string>& ofCommandLine) const {
    if (!project_ || !ofCommandLine.empty()) return ofCommandLine;
    return orUnusable([&] { return hdnt::author::parentPaths(*project_); });
}

hdnt::LintOptions CheckPlan::lintOptions() const {
    hdnt::LintOptions options;
    options.isThorough = settings_.isThorough;
    if (project_ && project_->budget) options.budget = *project_->budget;
    if (settings_.budget >= 0) options.budget = static_cast<size_t>(settings_.budget);
    if (project_) options.architectures = project_->architectures;
    return options;
}

std::vector<std::string> CheckPlan::files() const {
    return project_ ? std::vector{project_->path} : std::vector<std::string>();
}

void CheckPlan::control(std::vector<hdnt::Diagnostic>& findings,
                        const std::map<std::string, std::string>& texts) const {
    if (project_) applyExceptions(*project_, commandLine_, findings);
    rules_.apply(findings);
    if (usesBaseline(settings_)) hdnt::author::nameElements(findings, texts);
}

} // namespace ntl
