#pragma once

#include "author/exchange/BlockJson.h"
#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

// Parts of what jsonOf(HDNTBlock&, ...) says, in the words of data sheets.
namespace hdnt::author::words {

/// A value as a cell: null is empty, a double stays as short as JSON writes it.
HDNT_API std::string cell(const Json& value);
HDNT_API std::vector<std::string> cells(const Json& list);

/// "file:line"; empty for null.
HDNT_API std::string placeOf(const Json& location);
/// "GROUP:SUBGROUP", "GROUP" or "-".
HDNT_API std::string groupText(const Json& group, const Json& subgroup);
/// What kind of mapping a block has.
HDNT_API std::string netlistText(const Json& block);

// The flags that are set.
HDNT_API std::vector<std::string> blockFlags(const Json& block);
HDNT_API std::vector<std::string> pinFlags(const Json& bus);
HDNT_API std::vector<std::string> propertyFlags(const Json& property);

/// The listed values, "1 to 5", or "any".
HDNT_API std::string rangeText(const Json& property);
/// Bits as declared, and behind them in parentheses as used, where that is not the same; empty without bits.
HDNT_API std::string widthText(const Json& property);
/// Texts in quotes; "-" when there is none.
HDNT_API std::string defaultText(const Json& property);
/// The types of the bits of a mixed bus: "clock 7, data 6 5 4".
HDNT_API std::string bitTypes(const Json& bus);

} // namespace hdnt::author::words
