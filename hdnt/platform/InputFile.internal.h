#pragma once

#include "hdnt/platform/InputFile.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace hdnt::platform {

/// A folder that stays open while its files are read, for the way to it is not to be gone for each.
class OpenFolder {
public:
    OpenFolder() = default;
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    ~OpenFolder();

    /// Opens a file for reading, as open() with its path; in the folder of the one before, if it is there.
    int open(const std::string& path);

private:
    std::string way_; ///< of the folder, with the slash
    int folder_ = -1;
};

/// Where small files are to be read to, and what they are opened in.
struct TextPlace {
    OpenFolder& folder;
    std::size_t most;                       ///< bytes of a file
    std::function<char*(std::size_t)> take; ///< memory of so many bytes
};

/// As the other one, but a text that is a small file as it stands goes to the place, with bytes16Room bytes behind it
/// that are there and not set, and is `text`. Then `out` is empty; else `text` is, and what was taken is not used.
bool readInput(const std::string& path, const InputLimits& limits, const TextPlace* place, std::string& out,
               std::string_view& text, std::string& why);

} // namespace hdnt::platform
