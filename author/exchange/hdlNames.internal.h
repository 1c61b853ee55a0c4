#pragma once

#include <string>
#include <string_view>

// Names of a library in hardware description languages. What no identifier of theirs holds, such as a control character
// or a byte beyond ASCII, is written "\xNN"; an empty name is "unnamed".
namespace hdnt::author {

/// A plain identifier, or an escaped one with the blank that ends it; blanks and backquotes are "\xNN". The words that
/// SystemVerilog keeps for itself are escaped, too: few tools read one language without the other.
std::string verilogName(std::string_view name);
/// A plain identifier, or an extended one. Plain ones that differ in case alone are the same to VHDL.
std::string vhdlName(std::string_view name);
/// An extended identifier in any case.
std::string vhdlExtendedName(std::string_view name);

/// A name of Verilog as its readers know it: without the escape.
std::string unescapedVerilogName(std::string_view name);

} // namespace hdnt::author
