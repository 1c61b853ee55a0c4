#pragma once

#include "hdnt/platform/TextHash.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

class ConfigBase;
class HDNTBlock;
class HDNTLibrary;

namespace libconfig {
class Setting;
}

// What the configuration files say, as the model's queries use it. Internal.
namespace hdnt::model {

struct CellFacts {
    std::vector<std::string> architectures;
    std::vector<std::string> shadowPins;
    std::map<std::string, std::string, std::less<>> pinFunctions;
    std::string masterDriverPin;
    bool canTiePins = false;
    bool nibbleSizedHex = false;
    bool pseudoDifferential = false;
};

struct ArchFacts {
    std::string simDevice;
    std::string master;
    bool internalPins = false;
};

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return platform::textHash(text); }
};
using NameSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

/// The application configuration, translated once so that queries need neither a lock nor libconfig. An entry of
/// another type than expected counts as absent.
struct ArchTables {
    std::map<std::string, CellFacts, std::less<>> cells;
    std::map<std::string, ArchFacts, std::less<>> architectures;
    NameSet readOnlyAttributes;
    NameSet ioPinConstraints;
    std::vector<std::string> masterDriverTypes;
    std::vector<std::string> pseudoDifferentialFunctions;
};

/// Takes the configuration's lock.
std::unique_ptr<const ArchTables> readArchTables(ConfigBase& config);

/// Null when the configuration has no entry for the block, or the block no library.
const CellFacts* cellFacts(const HDNTBlock& block);

/// What a property needs to know of the block that it is finalized in; the same for all its properties.
struct PropertyContext {
    const HDNTLibrary* library = nullptr;
    const libconfig::Setting* descriptions = nullptr; ///< of the block; null when there are none
    bool nibbleSizedHex = false;
};
/// The block may be null. As describedText(), if it has a library.
PropertyContext propertyContext(const HDNTBlock* block);

/// What the descriptions of a block say of a property; empty when nothing. Locks the configuration while it looks.
std::string describedText(const HDNTLibrary& library, const libconfig::Setting& descriptions, const std::string& name);

/// The text that the library's description configuration has under a name within a name, and so on; empty when there is
/// none. Locks the configuration while it looks; may read the file on first use and then throw HEXDataException.
std::string describedText(const HDNTLibrary& library, std::initializer_list<std::string_view> names);

} // namespace hdnt::model
