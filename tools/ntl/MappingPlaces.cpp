#include "tools/ntl/MappingPlaces.h"

#include "hdnt/frontend/MaplibFilter.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HUTFile.h"

#include <fstream>
#include <numeric>
#include <sstream>

namespace ntl {

static std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// Which lines of a map library hold for an architecture; none when that is not what the library came to.
static std::vector<int> keptLines(const std::string& file, const std::string& architecture,
                                  const std::vector<std::string>& filtered) {
    std::vector<int> numbers;
    std::ifstream stream(file, std::ios::binary);
    bool keep = true;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        const bool opens = line.compare(0, 7, "#ifArch") == 0;
        if (line.compare(0, 6, "#endif") == 0) keep = true;
        else if (opens && keep) keep = !architecture.empty() && line.find('"' + architecture + '"') != line.npos;
        else if (keep && numbers.size() < filtered.size() && filtered[numbers.size()] == line)
            numbers.push_back(number);
        else if (keep) return {};
    }
    return numbers.size() == filtered.size() ? numbers : std::vector<int>();
}

std::string MappingPlaces::mapLibraryOf(const HDNTBlock& block) {
    const std::string directory = ConfigBase::getDataLocation("maplib");
    if (directory.empty()) return {};
    return HUTPathUtils::replaceExtension(HUTPathUtils::join(directory, block.getName()), "btl");
}

const MappingPlaces::Source& MappingPlaces::sourceOf(const std::string& file, bool isMapLibrary) {
    const auto [found, isNew] = sources_.try_emplace(file);
    Source& source = found->second;
    if (!isNew) return source;
    const std::string architecture = isMapLibrary ? HDNTLibraryMgr::getLibraryMgr()->m_architecture : "";
    std::string text;
    try {
        slurpAndFilterFile(file, architecture, text);
    } catch (const HEXAll&) {
        return source;
    }
    source.lines = linesOf(text);
    if (isMapLibrary) {
        source.numbers = keptLines(file, architecture, source.lines);
    } else {
        source.numbers.resize(source.lines.size());
        std::iota(source.numbers.begin(), source.numbers.end(), 1);
    }
    return source;
}

Place MappingPlaces::placeOf(const yyltype& location, const HDNTBlock* block) {
    Place place;
    const bool isMapLibrary = !location.fileName && block;
    if (location.fileName) place.file = location.fileName;
    else if (block) place.file = mapLibraryOf(*block);
    if (place.file.empty() || location.fileLine <= 0) return place;
    const Source& source = sourceOf(place.file, isMapLibrary);
    const auto index = static_cast<size_t>(location.fileLine) - 1;
    place.line = isMapLibrary ? 0 : location.fileLine;
    place.column = location.first_column;
    place.lastColumn = location.last_column;
    place.textLine = location.first_line;
    if (index >= source.numbers.size()) return place;
    place.line = source.numbers[index];
    place.column = columnIn(source.lines[index], location.first_column);
    place.lastColumn = columnIn(source.lines[index], location.last_column);
    return place;
}

std::string MappingPlaces::brief(const Place& place) {
    if (place.file.empty()) return "(unknown place)";
    const std::string name = place.file.substr(place.file.rfind('/') + 1);
    const std::string& first = fileByName_.emplace(name, place.file).first->second;
    const std::string& shown = first == place.file ? name : place.file;
    return place.isKnown() ? shown + ":" + std::to_string(place.line) : shown;
}

} // namespace ntl
