#pragma once

#include "hdnt/frontend/SourceItems.h"

#include <string>

/// Why a text was not formatted: the first reason, and how many there are.
using HDNTFormatProblem = hdnt::frontend::SourceProblem;

/// Lays NTL text out anew, in the one style of the library: line breaks, indents, blanks and alignment change, nothing
/// else does. Tokens, comments, INCLUDE and INLINE statements, the "#ifArch" and "#endif" lines of map libraries, and
/// the order of them all stay. Works on tokens, so a text may be a fragment, or syntactically wrong.
///
/// Uses the scanner, which is process-wide: call from the loading thread, not during a parse. No file is opened,
/// nothing is printed, HDNTError::numErrors and the stored lines stay as they are, and no listener hears of it.
class HDNT_API HDNTFormatter {
public:
    HDNTFormatter() = delete;

    /// The columns that a line is broken at, unless a single token is wider.
    static constexpr int Width = 100;
    static constexpr int Indent = 2;

    /// Puts the new text into `out`, which then ends in one newline, or is empty when there was nothing but blank
    /// space. False, with the first reason in `problem` and `out` empty, when the text holds what the scanner reports
    /// or what cannot be moved: an unrecognized character (carriage returns are), an identifier that is too long, a
    /// string or comment that does not end, a file statement without its end of line, an archive. Before it returns
    /// true, the new text was scanned again: it holds the same pieces, and laying it out once more changes nothing.
    static bool format(const std::string& text, std::string& out, HDNTFormatProblem& problem);
};
