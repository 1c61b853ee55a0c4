#pragma once

/// Where a token or a model node stands in NTL text. A plain value; copies are independent of each other.
///
/// Lines and columns count from 1; 0 means "not known". Columns are those of the scanner, which moves a tab to the
/// next of the columns 9, 17, 25, ...; they are not display columns of an editor with another tab width.
struct yyltype {
    /// Name of the file the text came from; null for text that was parsed from memory. Not owned: the scanner hands
    /// out interned names that live as long as the process, so a location may be kept and printed at any time.
    const char* fileName;
    /// Line within that file.
    int fileLine;
    /// Line within the whole scanned text, over all files that were spliced into it. The key into the line store.
    int first_line;
    /// Column of the first character.
    int first_column;
    /// Not set by the scanner and not read by the diagnostics.
    int last_line;
    /// Column of the last character; below first_column for an empty range.
    int last_column;
    /// Lines that stood in the line store before this text, when one library is read from many files; else 0.
    /// A report quotes line first_line + storeOffset of the store.
    int storeOffset = 0;
};
