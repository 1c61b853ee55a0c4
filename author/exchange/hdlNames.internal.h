#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

// Names of a library in hardware description languages. What no identifier of theirs holds, such as a control character
// or a byte beyond ASCII, is written "\xNN"; an empty name is "unnamed".
namespace hdnt::author {

/// A plain identifier, or an escaped one with the blank that ends it; blanks and backquotes are "\xNN". The words that
/// SystemVerilog keeps for itself are escaped, too: few tools read one language without the other.
std::string verilogName(std::string_view name);

/// Those of one module, each once.
class VerilogNames {
public:
    /// False when it is another's.
    bool take(const std::string& shown) { return taken_.insert(shown).second; }
    /// The name, with a number behind it if it is another's.
    std::string add(const std::string& name);

private:
    std::set<std::string> taken_;
    std::map<std::string, int> numbers_; ///< the last one behind a name
};

/// A plain identifier, or an extended one, which names of types that declarations need are, too. Plain ones that differ
/// in case alone are the same to VHDL.
std::string vhdlName(std::string_view name);
/// An extended identifier in any case. An empty name is "unnamed", too.
std::string vhdlExtendedName(std::string_view name);
/// Printed ASCII without quotes, backslashes, brackets, "*" and what Verilog escapes, which is "_xNN_"; so is a "$"
/// that begins a name.
std::string libertyName(std::string_view name);
/// What is no printed ASCII, or one of the others, as "\xNN", for comments.
std::string asciiOf(std::string_view text, std::string_view others = "");

/// A name of Verilog as its readers know it: without the escape.
std::string unescapedVerilogName(std::string_view name);

} // namespace hdnt::author
