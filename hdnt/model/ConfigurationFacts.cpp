#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HCTMutex.h"

#include <libconfig.h++>

namespace hdnt::model {

namespace {

using libconfig::Setting;

// Asked first: looking up what is not there costs an exception.
const Setting* memberOf(const Setting& group, const char* name) { return group.exists(name) ? &group[name] : nullptr; }

bool flagIn(const Setting& group, const char* name) {
    const Setting* const flag = memberOf(group, name);
    return flag && flag->getType() == Setting::TypeBoolean && static_cast<bool>(*flag);
}

std::string textIn(const Setting& group, const char* name) {
    const Setting* const text = memberOf(group, name);
    return text && text->getType() == Setting::TypeString ? text->c_str() : "";
}

std::vector<std::string> textsOf(const Setting* list) {
    std::vector<std::string> texts;
    if (!list || !(list->isArray() || list->isList())) return texts;
    for (int i = 0; i < list->getLength(); ++i)
        if ((*list)[i].getType() == Setting::TypeString) texts.emplace_back((*list)[i].c_str());
    return texts;
}

// Calls visit(name, setting) for each member of a group; of anything else for none.
template <typename Visit>
void forEachMember(const Setting* group, Visit&& visit) {
    if (!group || !group->isGroup()) return;
    for (int i = 0; i < group->getLength(); ++i) {
        const Setting& member = (*group)[i];
        visit(member.getName(), member);
    }
}

CellFacts cellOf(const Setting& group) {
    CellFacts cell;
    cell.architectures = textsOf(memberOf(group, "architectures"));
    cell.shadowPins = textsOf(memberOf(group, "shadowPins"));
    cell.masterDriverPin = textIn(group, "masterDriverPin");
    cell.canTiePins = flagIn(group, "canTiePins");
    cell.nibbleSizedHex = flagIn(group, "nibbleSizedHex");
    cell.pseudoDifferential = flagIn(group, "pseudoDifferential");
    forEachMember(memberOf(group, "pinFunctions"), [&](const std::string& pin, const Setting& function) {
        if (function.getType() == Setting::TypeString) cell.pinFunctions[pin] = function.c_str();
    });
    return cell;
}

ConfigurationFacts factsOf(ConfigBase& config) {
    const HCTLock lock(config.mutex());
    ConfigurationFacts tables;
    std::map<std::string, AttributeFacts> attributes;
    forEachMember(config.lookup("READ_ONLY_ATTRIBUTES"),
                  [&](const std::string& name, const Setting&) { attributes[name].readOnly = true; });
    forEachMember(config.lookup("IO_PIN_CONSTRAINTS"), [&](const std::string& name, const Setting& on) {
        if (on.getType() == Setting::TypeBoolean && static_cast<bool>(on)) attributes[name].ioPinConstraint = true;
    });
    tables.attributes = AttributeTable(attributes);
    forEachMember(config.lookup("ARCHITECTURES"), [&](const std::string& name, const Setting& entry) {
        if (entry.isGroup())
            tables.architectures[name] = {textIn(entry, "simDevice"), textIn(entry, "master"),
                                          flagIn(entry, "internalPins")};
    });
    forEachMember(config.lookup("CELLS"), [&](const std::string& name, const Setting& entry) {
        if (entry.isGroup()) tables.cells[name] = cellOf(entry);
    });
    tables.masterDriverTypes = textsOf(config.lookup("MASTER_DRIVER_TYPES"));
    tables.pseudoDifferentialFunctions = textsOf(config.lookup("PSEUDO_DIFFERENTIAL_FUNCTIONS"));
    return tables;
}

} // namespace

Configuration::Configuration(Descriptions descriptions) : wanted_(descriptions) {
    application_.readFile("HDNTApplicationData.cfg", "");
    facts_ = factsOf(application_);
}

ConfigBase& Configuration::descriptions() {
    const std::lock_guard lock(mutex_);
    if (descriptions_) return *descriptions_;
    auto fresh = std::make_unique<ConfigBase>();
    if (wanted_ == Descriptions::Read) fresh->readFile("tessel.desc.cfg", "");
    table_ = DescriptionTable(*fresh);
    tableGeneration_ = fresh->generation();
    descriptions_ = std::move(fresh);
    return *descriptions_;
}

const DescriptionTable& Configuration::descriptionTable() {
    if (tableGeneration_ != descriptions_->generation()) { // a host has read another file
        table_ = DescriptionTable(*descriptions_);
        tableGeneration_ = descriptions_->generation();
    }
    return table_;
}

DescriptionTable::DescriptionTable(const ConfigBase& config) {
    forEachMember(config.root(), [&](std::string_view block, const Setting& group) {
        const std::size_t begin = texts_.size();
        forEachMember(&group, [&](std::string_view name, const Setting& text) {
            if (text.getType() == Setting::TypeString) texts_.push_back({name, text.c_str()});
        });
        if (texts_.size() > begin) blocks_[block] = {begin, texts_.size() - begin};
    });
}

std::span<const DescriptionTable::Text> DescriptionTable::of(std::string_view block) const {
    const auto found = blocks_.find(block);
    if (found == blocks_.end()) return {};
    return std::span(texts_).subspan(found->second.begin, found->second.count);
}

const CellFacts* cellFacts(const HDNTBlock& block) {
    const HDNTLibrary* const library = block.getLibrary();
    if (!library) return nullptr;
    const auto& cells = library->getConfigurationFacts().cells;
    const auto found = cells.find(block.getName());
    return found == cells.end() ? nullptr : &found->second;
}

PropertyContext propertyContext(const HDNTBlock* block) {
    const HDNTLibrary* const library = block ? block->getLibrary() : nullptr;
    if (!library) return {};
    const CellFacts* const facts = cellFacts(*block);
    return {library, facts && facts->nibbleSizedHex};
}

void forEachDescription(const HDNTLibrary& library, const std::string& block,
                        const std::function<void(std::string_view, std::string_view)>& visit) {
    const HCTLock lock(library.getDescConfig()->mutex());
    for (const DescriptionTable::Text& text : library.getConfiguration().descriptionTable().of(block))
        visit(text.name, text.text);
}

std::optional<std::string> describedText(const HDNTLibrary& library, std::initializer_list<std::string_view> names) {
    ConfigBase& config = *library.getDescConfig();
    const HCTLock lock(config.mutex());
    const Setting* const text = config.find(names);
    if (!text || text->getType() != Setting::TypeString) return std::nullopt;
    return text->c_str();
}

} // namespace hdnt::model
