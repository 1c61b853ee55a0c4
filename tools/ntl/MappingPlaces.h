#pragma once

#include "tools/ntl/Place.h"

#include <map>
#include <string>
#include <vector>

class HDNTBlock;

namespace ntl {

/// Finds the places of what mappings hold, in libraries and in map libraries. Reads the files again, since the lines
/// that a load kept are gone when the next library or map library is loaded.
class MappingPlaces {
public:
    /// The block is the one whose mapping the location stands in; null when that is not known. For the architecture
    /// in force. A map library's lines are counted as they stand in its file.
    Place placeOf(const yyltype& location, const HDNTBlock* block);
    /// "file:line", the file without its directory, unless another file of that name came first.
    std::string brief(const Place& place);

    /// The file of the block's map library, whether it exists or not; empty when there is no place for them.
    static std::string mapLibraryOf(const HDNTBlock& block);

private:
    /// A text as it was parsed: its lines, and their numbers in the file.
    struct Source {
        std::vector<std::string> lines;
        std::vector<int> numbers;
    };
    const Source& sourceOf(const std::string& file, bool isMapLibrary);

    std::map<std::string, Source> sources_;
    std::map<std::string, std::string> fileByName_;
};

} // namespace ntl
