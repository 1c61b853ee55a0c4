#pragma once

#include "author/exchange/BlockJson.h"

#include <string>

// Defaults of properties, as jsonOf(HDNTBlock&) has them, in hardware description languages.
namespace hdnt::author {

/// Whether there is a default that the property allows, and that can be written.
bool hasHdlDefault(const Json& property);
/// Whether the property declares its "Minimum" or "Maximum", and it can be written.
bool hasHdlBound(const Json& property, const std::string& which);

/// The default, as the listed value that it is: of texts, case does not count.
const Json& listedDefault(const Json& property);

// Of one with such a default.
/// Bit vectors as 8'h48, truth as 1'b1, texts with escapes for what is not printed ASCII.
std::string verilogDefault(const Json& property);
/// The same of any value that the property's range names.
std::string verilogValue(const Json& property, const Json& value);
/// A value of no bit vector.
std::string verilogPlain(const Json& value);
/// "parameter integer NAME = 5": `integer`, `real`, as wide as bit vectors and truth values are, or without type.
std::string verilogParameter(const Json& property, const std::string& name);
/// What holds for the values of `name` that the property allows; empty when it allows all of its type.
std::string verilogCondition(const Json& property, const std::string& name);
/// A text in quotes.
std::string verilogString(const std::string& text);
/// Bit vectors as X"48" where their width is a multiple of four, else as B"1"; texts with character'val(N) for what is
/// not printed ASCII.
std::string vhdlDefault(const Json& property);
/// A number or truth.
std::string vhdlValue(const Json& value);

} // namespace hdnt::author
