#pragma once

#include "author/lint/RuleControl.h"
#include "tools/ntl/Options.h"
#include "tools/ntl/Settings.h"

#include <string>
#include <vector>

namespace ntl {

/// The options that say by code what is said, and how severely.
std::vector<OptionSpec> severityOptions();
/// The options of check and lint that say which findings count, and how much.
std::vector<OptionSpec> ruleOptions();
/// What --rule, --no-rule, --severity and --werror with codes say. Throws Failure(Unusable) for what is refused.
hdnt::author::RuleControl rulesOf(const Settings& settings);
/// Whether --werror stands without codes.
bool allWarningsAreErrors(const Settings& settings);

} // namespace ntl
