#pragma once

#include <string>
#include <string_view>

namespace hdnt::author {

/// A text of modules in Verilog or SystemVerilog without what is inside of them, which few readers take whole: there
/// are blanks instead, so that all that is left keeps its place. Left are directives of files, macros and conditions,
/// the heads of modules, the ports and parameters that are declared behind them, and the functions and constants that
/// those mention. A kind of net or number that has an equal which more readers know is written as that.
///
/// Reads tokens, no grammar: what a macro brings into a module is not seen.
std::string moduleHeads(std::string_view text, bool isSystemVerilog);

} // namespace hdnt::author
