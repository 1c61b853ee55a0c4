#pragma once

#include "hdnt/compare/HDNTComparison.h"

#include <string_view>

namespace hdnt::compare {

/// What a facet that is not there means, in a word.
std::string_view absentText(HDNTElementFacet facet);

/// Where the change of a facet leads; null: the facet is not there.
HDNTComparison::Trend trendOf(HDNTElementFacet facet, const std::string_view* before, const std::string_view* after);
/// Whether designs that do not know the pin may leave it open.
bool mayStayOpen(const HDNTModelTree& tree, size_t pin);

HDNTDifference::Effect effectOf(HDNTElementKind element, HDNTElementFacet facet, HDNTComparison::Trend trend);

} // namespace hdnt::compare
