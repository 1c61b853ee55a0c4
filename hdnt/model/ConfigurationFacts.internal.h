#pragma once

#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/NameIndex.h"
#include "hdnt/platform/TextHash.internal.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

class HDNTBlock;
class HDNTLibrary;

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

/// What is said of the properties of one name.
struct AttributeFacts {
    bool readOnly = false;
    bool ioPinConstraint = false;
};

/// Each property of each block is looked up.
class AttributeTable {
public:
    AttributeTable() = default;
    explicit AttributeTable(const std::map<std::string, AttributeFacts>& facts) : facts_(facts.begin(), facts.end()) {
        byName_.build(facts_.size(), [this](std::size_t i) { return platform::textHash(facts_[i].first); });
    }
    /// Neutral for a name of which nothing is said. The hash is the name's platform::textHash().
    AttributeFacts find(std::string_view name, std::uint64_t hash) const {
        for (const std::uint32_t position : byName_.find(hash))
            if (facts_[position].first == name) return facts_[position].second;
        return {};
    }
    AttributeFacts find(std::string_view name) const { return find(name, platform::textHash(name)); }

private:
    std::vector<std::pair<std::string, AttributeFacts>> facts_;
    platform::NameIndex byName_;
};

/// The application configuration, translated once so that queries need neither a lock nor libconfig. An entry of
/// another type than expected counts as absent.
struct ConfigurationFacts {
    std::map<std::string, CellFacts, std::less<>> cells;
    std::map<std::string, ArchFacts, std::less<>> architectures;
    AttributeTable attributes;
    std::vector<std::string> masterDriverTypes;
    std::vector<std::string> pseudoDifferentialFunctions;
};

/// The description configuration by blocks: each finalized block asks for all of its texts, and in libconfig's tree
/// each costs a wrapper and stands wherever the file was read to.
class DescriptionTable {
public:
    struct Text {
        std::string_view name;
        std::string_view text;
    };
    DescriptionTable() = default;
    /// Views of the configuration, until that is read again.
    explicit DescriptionTable(const ConfigBase& config);
    /// In the order of the file.
    std::span<const Text> of(std::string_view block) const;

private:
    struct Stretch {
        std::size_t begin = 0;
        std::size_t count = 0;
    };
    std::vector<Text> texts_;
    std::unordered_map<std::string_view, Stretch> blocks_;
};

/// What a root library reads. Any thread, where ConfigBase says nothing else.
class Configuration {
public:
    enum class Descriptions { Read, None };
    /// Reads the application configuration. A malformed file throws HEXDataException.
    explicit Configuration(Descriptions descriptions = Descriptions::Read);

    ConfigBase& application() { return application_; }
    const ConfigurationFacts& facts() const { return facts_; }
    /// Read on first use, or empty. A malformed file throws HEXDataException, and the next call reads it again.
    ConfigBase& descriptions();
    /// To be asked for with the mutex of descriptions() locked, and held while it is used.
    const DescriptionTable& descriptionTable();

private:
    ConfigBase application_;
    ConfigurationFacts facts_;
    Descriptions wanted_;
    std::unique_ptr<ConfigBase> descriptions_;
    DescriptionTable table_; ///< of what descriptions_ was in this generation
    std::size_t tableGeneration_ = 0;
    std::mutex mutex_; ///< not std::call_once, which a throw must not use up
};

/// Null when the configuration has no entry for the block, or the block no library.
const CellFacts* cellFacts(const HDNTBlock& block);

/// What a property needs to know of the block that it is finalized in; the same for all its properties.
struct PropertyContext {
    const HDNTLibrary* library = nullptr;
    bool nibbleSizedHex = false;
};
/// The block may be null.
PropertyContext propertyContext(const HDNTBlock* block);

/// Calls visit(name, text) for each text that the library's description configuration has of a block, with the
/// configuration locked. As describedText() otherwise.
void forEachDescription(const HDNTLibrary& library, const std::string& block,
                        const std::function<void(std::string_view, std::string_view)>& visit);

/// The text that the library's description configuration has under a name within a name, and so on. Locks the
/// configuration while it looks; may read the file on first use and then throw HEXDataException.
std::optional<std::string> describedText(const HDNTLibrary& library, std::initializer_list<std::string_view> names);

} // namespace hdnt::model
