#pragma once

namespace ntl {

/// "ntl --complete -- WORD...", for the completions of shells; false when the arguments are others. Writes what may
/// stand for the last of the words, which is still being written and may be empty: a candidate a line, for an option or
/// a command with a tab and what it does behind it. ":files" and ":directories" are not meant literally; the shell
/// offers those itself.
///
/// Writes nothing else, and no candidates where something is wrong. What the line names is read as the command would
/// read it, but nothing that can be read once only.
bool complete(int argc, char** argv);

} // namespace ntl
