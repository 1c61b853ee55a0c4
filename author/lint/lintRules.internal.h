#pragma once

#include "author/lint/lint.h"

namespace hdnt::author {

/// A finding of a rule, its wording filled with the arguments.
Diagnostic finding(LintCode code, Place place, std::initializer_list<std::string_view> arguments);

} // namespace hdnt::author
