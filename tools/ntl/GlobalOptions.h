#pragma once

#include "tools/ntl/Settings.h"

#include <string>
#include <utility>

namespace ntl {

/// Carries out the options of all commands: tables of cells, data directory, parameters, architecture, limits, search
/// directories. Then reads the configuration files once, so that a broken one is told apart from a broken library.
/// Throws Failure(Unusable). The table of cells is not asked for when project files may add to it: those of the inputs,
/// or any that are found later.
void applyGlobalSettings(const Settings& settings, bool findsProjects = false);

/// From here the process ends with a line and Unusable when the limit "seconds" is over. applyGlobalSettings begins it;
/// a process that is forked begins its own.
void beginTimeLimit();
void endTimeLimit();

/// Throws Failure(Unusable) when the configuration lists architectures, and not this one.
void requireKnownArchitecture(const std::string& architecture);

/// The two sides of NAME=VALUE, given to an option. Throws Failure(Unusable) when there is no name or no "=".
std::pair<std::string, std::string> splitAssignment(const std::string& option, const std::string& text);

/// Switches a parameter on, unless the command line sets it.
void enableByDefault(const Settings& settings, const std::string& parameter);

} // namespace ntl
