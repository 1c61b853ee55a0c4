#pragma once

#include "author/lint/lint.h"
#include "author/project/Project.h"
#include "tools/ntl/Settings.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ntl {

/// How an input is judged: by the command line, and by the project file that is nearest to the input where the command
/// line says nothing.
class CheckPlan {
public:
    /// By the command line alone.
    explicit CheckPlan(const Settings& settings);
    /// Throws Failure(Unusable) for a project file that is not in order.
    CheckPlan(const Settings& settings, const std::string& input);

    /// Adds tables of cells and search directories to the process. To be called in the process of the input, before
    /// anything is loaded. Throws Failure(Unusable).
    void enter() const;

    /// The paths of the libraries that the input stands on, given those of the command line.
    std::vector<std::string> parents(const std::vector<std::string>& ofCommandLine) const;
    hdnt::LintOptions lintOptions() const;
    /// The project file, if there is one.
    std::vector<std::string> files() const;

    /// Takes out of the findings what is not to be said, and gives the rest its severity. The texts are those of files
    /// that cannot be read again.
    void control(std::vector<hdnt::Diagnostic>& findings, const std::map<std::string, std::string>& texts) const;

private:
    const Settings& settings_;
    hdnt::author::RuleControl commandLine_;
    hdnt::author::RuleControl rules_;
    std::optional<hdnt::author::Project> project_;
};

/// Whether an input of the command line has a project file.
bool haveProject(const Settings& settings);

} // namespace ntl
