#pragma once

#include "author/server/Stretch.internal.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace hdnt::author::server {

using Json = nlohmann::json;

/// A place that findings speak of: in the file as it was judged, and in the document while that changes.
struct Spot {
    std::optional<Stretch> bytes; ///< none: not known
    Json range;                   ///< of the file

    /// Moves it along with a change of its text. False when what it speaks of was touched, or may have been.
    bool move(std::size_t offset, std::size_t oldLength, std::size_t newLength);
};

/// What was found in a file when its library was judged.
struct Found {
    /// Whether the tree of an open document has a say in it.
    enum class Said { byRules, byReader, byTree };

    struct Related {
        std::string path;
        Spot spot;
        std::string message;
    };

    Spot spot;
    Json said; ///< as the protocol has it, without places
    std::vector<Related> related;
    bool isThorough = false; ///< only comes of trying mappings
    Said how = Said::byRules;
};

struct FoundInFile {
    std::vector<Found> list;
    std::size_t more = 0; ///< that are left out
};

/// What one judgement of a library found.
struct FoundInLibrary {
    bool isThorough = false;                  ///< mappings were tried, or there are none to try
    std::set<std::string> files;              ///< paths of what was read
    std::map<std::string, FoundInFile> found; ///< by path
};

// Between the process that judges and the one that speaks with the client.
std::string packed(const FoundInLibrary& found);
/// Throws Json::exception for other bytes.
FoundInLibrary unpacked(const std::string& bytes);

} // namespace hdnt::author::server
