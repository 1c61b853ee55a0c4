#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>

namespace hdnt::platform {

/// What an input may grow to when it is opened.
struct InputLimits {
    std::size_t maxBytes = std::size_t{1} << 30;    ///< of text, compressed or not
    unsigned maxRatio = 200;                        ///< of text to file size, looked at only past ratioFloor
    std::size_t ratioFloor = std::size_t{64} << 20; ///< bytes of text
};

/// Reads a whole file into `out`. A gzip, bzip2, xz or zstd archive is recognised by its first bytes and expanded;
/// several members of the same kind in a row are one text; anything else is taken as it is. An empty file is an empty
/// text. False, with a short reason in `why` and `out` emptied, when the file is missing, unreadable or a directory,
/// when an archive is cut anywhere, damaged, or followed by other bytes, and when a limit is passed: expansion stops
/// there, so that memory stays within the limit's order. Pipes are read to their end. Throws std::bad_alloc, with `out`
/// emptied, so that a lack of memory is not taken for a missing file. Safe in any thread.
HDNT_API bool readInput(const std::string& path, const InputLimits& limits, std::string& out, std::string& why);

} // namespace hdnt::platform
