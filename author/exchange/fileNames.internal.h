#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

// Names of files and addresses for what bears any name.
namespace hdnt::author {

/// Names for files of one folder. No two differ in case alone, and none is a name that some system keeps for itself.
class FileNames {
public:
    /// Letters, digits, "-" and "_" of the name, and when that is not all, or taken, a sum of the whole.
    std::string add(std::string_view name);

private:
    bool isTaken(const std::string& wanted);

    std::set<std::string> taken_;
};

/// FNV-1a: the same in every process, and no help against those who mean it.
std::uint64_t sumOf(std::string_view bytes);
/// Eight digits of it.
std::string shortSumOf(std::string_view bytes);

/// "pin-D", "property-INIT": other names have other anchors. All other characters are as ".3C".
std::string anchorOf(std::string_view kind, std::string_view name);

} // namespace hdnt::author
