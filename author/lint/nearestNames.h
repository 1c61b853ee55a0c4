#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author {

/// Letters to add, drop, replace or swap with their neighbour to come from one word to the other.
HDNT_API std::size_t editDistance(std::string_view a, std::string_view b);

/// Up to three of the names that are near to the wanted one or begin with it, case aside; the nearest first, equally
/// near ones by name.
HDNT_API std::vector<std::string> nearestNames(const std::string& wanted, const std::vector<std::string>& names);

/// "; did you mean A, B?" of those of the names that are near, for the end of a line; empty when none is.
HDNT_API std::string question(const std::string& wanted, const std::vector<std::string>& names);
/// The same of names that were found near.
HDNT_API std::string questionOf(const std::vector<std::string>& near);
/// The names in such a question at the end of a line; none when there is no question.
HDNT_API std::vector<std::string> suggestionsIn(std::string_view line);

} // namespace hdnt::author
