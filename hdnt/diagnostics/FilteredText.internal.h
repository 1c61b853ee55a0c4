#pragma once

#include "hdnt/diagnostics/yyltype.h"

#include <cstddef>
#include <string>
#include <vector>

namespace hdnt::diagnostics {

/// A text that is a file without some of its lines, as map libraries are scanned: which line and byte of the file each
/// run of lines comes from. Locations in such a text have no file name; they lead back here by their storeOffset, which
/// is below 0.
struct FilteredText {
    struct Run {
        int line;           ///< of the text, from 1
        int fileLine;       ///< the same line in the file
        std::size_t offset; ///< where the line begins in the text
        std::size_t fileOffset;
        bool operator==(const Run&) const = default;
    };
    std::string file;
    std::vector<Run> runs; ///< ascending; none for an empty text

    /// The run that holds the line; null when there is none.
    const Run* runOf(int line) const;

    /// Keeps the text's origin as long as the process, as locations need it, the same one once. The result is what its
    /// locations bear as storeOffset. Loading thread only.
    static int keep(FilteredText text);
    /// Null for a location that is in no such text.
    static const FilteredText* of(const yyltype& location);
};

} // namespace hdnt::diagnostics
