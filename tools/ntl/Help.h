#pragma once

#include "tools/ntl/Options.h"

#include <string>

namespace ntl {

/// What --help prints: for a command, or for the tool when null.
std::string helpText(const CommandSpec* command);

/// The command line of a command: "ntl check [INPUT...] [-I DIR]... ", with each name and argument passed through
/// `mark`, which sees whether it is to be typed as it stands.
std::string usageLine(const CommandSpec& command, std::string (*mark)(const std::string& text, bool literal));

} // namespace ntl
