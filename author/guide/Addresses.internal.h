#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class HDNTBlock;

namespace hdnt::author::guide {

/// Where the pages of blocks are, below the guide's folder. No two differ in case alone, and none is a name that some
/// system keeps for itself.
class Addresses {
public:
    explicit Addresses(const std::vector<HDNTBlock*>& blocks);

    /// "blocks/NAME.html"; empty when the block has no page here.
    const std::string& pageOf(const HDNTBlock* block) const;

private:
    std::unordered_map<const HDNTBlock*, std::string> pages_;
    std::set<std::string> taken_;
};

/// A name for files and addresses: letters, digits, "-" and "_" of it, and when that is not all, a sum of the whole.
std::string fileNameOf(std::string_view name);

/// "pin-D", "property-INIT": other names have other anchors. All other characters are as ".3C".
std::string anchorOf(std::string_view kind, std::string_view name);

} // namespace hdnt::author::guide
