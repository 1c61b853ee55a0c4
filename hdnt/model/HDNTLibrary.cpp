#include "hdnt/model/HDNTLibrary.h"

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "hdnt/platform/HSTStringUtils.h"
#include "hdnt/platform/HUTMemWatcher.h"

#include <algorithm>
#include <new>
#include <numeric>

HDNTLibrary::HDNTLibrary(HDNTLibrary* parent)
    : HDNTLibrary(parent, parent ? nullptr : std::make_shared<hdnt::model::Configuration>()) {}

HDNTLibrary::HDNTLibrary(HDNTLibrary* parent, std::shared_ptr<hdnt::model::Configuration> configuration)
    : configuration_(std::move(configuration)), parentLibrary_(parent) {
    setKind(HDNTNodeKind::Library);
    enterParser();
}

std::unique_ptr<HDNTLibrary> HDNTLibrary::configuredLike(const HDNTLibrary& other) {
    return std::unique_ptr<HDNTLibrary>(new HDNTLibrary(nullptr, other.root().configuration_));
}

std::unique_ptr<HDNTLibrary> HDNTLibrary::withoutDescriptions() {
    using hdnt::model::Configuration;
    return std::unique_ptr<HDNTLibrary>(
        new HDNTLibrary(nullptr, std::make_shared<Configuration>(Configuration::Descriptions::None)));
}

HDNTLibrary::~HDNTLibrary() {
    for (const HDNTBlock* block : blocks_) delete block;
    deleteFunctions();
    leaveParser();
}

void HDNTLibrary::init(const std::string& name, std::vector<HDNTDecl*>* decls) {
    name_ = name;
    const bool testFeatures = HPAParamMgr::getParamMgr()->getValueAsBool("arch.enableTestFeatures");
    if (!decls) return;
    const auto take = [&](HDNTDecl* decl) {
        if (!decl) return;
        decl->setParent(this);
        if (auto* const block = nodeCast<HDNTBlock>(decl)) {
            if (block->isTest() && !testFeatures) delete block;
            else adopt(block);
        } else if (!adoptFunction(decl)) {
            throw HEXAlgException("Invalid library declaration type");
        }
    };
    auto next = decls->begin();
    try {
        for (; next != decls->end(); ++next) take(*next);
    } catch (const std::bad_alloc&) {
        std::fill(decls->begin(), next, nullptr);
        throw;
    }
}

void HDNTLibrary::adopt(HDNTBlock* block) {
    blocks_.push_back(block);
    try {
        adopted_.add(block);
    } catch (...) {
        blocks_.pop_back();
        throw;
    }
}

HDNTBlock* HDNTLibrary::getDeclaredBlock(const std::string& name) const {
    HDNTBlock* const block = getTypeBlockByName(name, false);
    return block ? block : adopted_.find(name);
}

void HDNTLibrary::addDroppedMapping(DroppedMapping mapping) {
    const yyltype& at = mapping.location;
    if (droppedPlaces_.emplace(mapping.blockName, at.fileName, at.first_line, at.first_column).second)
        droppedMappings_.push_back(std::move(mapping));
}

void HDNTLibrary::forgetDroppedMappings(size_t firstForgotten) {
    for (size_t i = firstForgotten; i < droppedMappings_.size(); ++i) {
        const yyltype& at = droppedMappings_[i].location;
        droppedPlaces_.erase({droppedMappings_[i].blockName, at.fileName, at.first_line, at.first_column});
    }
    droppedMappings_.resize(std::min(firstForgotten, droppedMappings_.size()));
}

void HDNTLibrary::finalize() {
    if (isIndexed()) return;
    // A file that is malformed throws here, before anything is done that the next call would not do again.
    if (std::any_of(blocks_.begin(), blocks_.end(), [](const HDNTBlock* b) { return b->getNumProperties() > 0; }))
        getDescConfig();
    const HUTMemWatcher watcher("HDNTLibrary::finalize", name_);
    names_.reserve(blocks_.size());
    for (HDNTBlock* block : blocks_) index(block);
    adopted_.clear();
}

void HDNTLibrary::index(HDNTBlock* block) {
    if (names_.add(block)) return block->finalize();
    const HDNTBlock* const earlier = names_.find(block->getName()).block;
    HDNTError::BlockRedefinitionError(block->getLocation(), earlier->getLocation(), block->getName().c_str());
}

// A name's position counts indexed names, not blocks: after a redefinition, names lead one block back.
HDNTBlock* HDNTLibrary::answerOf(const hdnt::model::BlockNames::Entry& name) const {
    return name.block && names_.blocks().size() != blocks_.size() ? blocks_[name.position] : name.block;
}

// In the order of the names in upper case, byte by byte.
static bool precedes(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(HSTStringUtils::to_upper(x)) <
               static_cast<unsigned char>(HSTStringUtils::to_upper(y));
    });
}

const std::vector<uint32_t>& HDNTLibrary::sortedNames() const {
    const std::lock_guard lock(sortedNamesMutex_);
    if (sortedNames_.size() == names_.blocks().size()) return sortedNames_;
    std::vector<uint32_t> sorted(names_.blocks().size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    std::sort(sorted.begin(), sorted.end(), [this](uint32_t a, uint32_t b) {
        return precedes(names_.blocks()[a]->getName(), names_.blocks()[b]->getName());
    });
    sortedNames_ = std::move(sorted);
    return sortedNames_;
}

void HDNTLibrary::check() {
    for (HDNTBlock* block : blocks_) block->check();
}

size_t HDNTLibrary::getNumTypeBlocks(bool withParents) const {
    return blocks_.size() + (withParents && parentLibrary_ ? parentLibrary_->getNumTypeBlocks(true) : 0);
}

HDNTBlock* HDNTLibrary::getTypeBlock(size_t index) const {
    if (index < blocks_.size()) return blocks_[index];
    if (parentLibrary_) return parentLibrary_->getTypeBlock(index - blocks_.size());
    throw HEXAlgException("HDNTLibrary::getTypeBlock call is invalid");
}

HDNTBlock* HDNTLibrary::getTypeBlockByName(const std::string& name, bool searchParents) const {
    return lookUpBlock(name, searchParents);
}

const HDNTBlock* HDNTLibrary::findBlock(std::string_view name) const { return lookUpBlock(name, true); }
HDNTBlock* HDNTLibrary::findBlock(std::string_view name) { return lookUpBlock(name, true); }

HDNTBlock* HDNTLibrary::lookUpBlock(std::string_view name, bool searchParents) const {
    for (const HDNTLibrary* library = this; library; library = searchParents ? library->parentLibrary_ : nullptr)
        if (HDNTBlock* const block = library->answerOf(library->names_.find(name))) return block;
    return nullptr;
}

bool HDNTLibrary::getTypeBlocksBeginWith(const std::string& prefix, std::vector<HDNTBlock*>& out,
                                         bool searchParents) const {
    if (prefix.empty()) return false;
    const std::vector<uint32_t>& names = sortedNames();
    auto name = std::lower_bound(names.begin(), names.end(), prefix, [this](uint32_t entry, const std::string& wanted) {
        return precedes(names_.blocks()[entry]->getName(), wanted);
    });
    bool any = false;
    for (; name != names.end(); ++name) {
        HDNTBlock* const named = names_.blocks()[*name];
        if (!HSTStringUtils::istarts_with(named->getName(), prefix)) break;
        out.push_back(answerOf({named, *name}));
        any = true;
    }
    if (searchParents && parentLibrary_) any |= parentLibrary_->getTypeBlocksBeginWith(prefix, out, true);
    return any;
}

const char* HDNTLibrary::getGroupAbbrev(size_t index) const {
    if (index >= groupAbbrevs_.size()) throw HEXAlgException("Prim group name index out of bounds");
    return groupAbbrevs_[index].c_str();
}

size_t HDNTLibrary::getGroupAbbrevIdx(std::string abbrev) {
    if (const auto found = groupIndexes_.find(abbrev); found != groupIndexes_.end()) return found->second;
    groupAbbrevs_.push_back(std::move(abbrev));
    groupIndexes_.emplace(groupAbbrevs_.back(), groupAbbrevs_.size() - 1);
    return groupAbbrevs_.size() - 1;
}

static std::string textOrEmpty(const char* text) { return text ? text : ""; }

std::string HDNTLibrary::getPrimGroupType(const std::string& blockName, bool legacy) const {
    const HDNTBlock* const block = getTypeBlockByName(blockName, true);
    return block ? textOrEmpty(block->getPrimGroupType(legacy)) : std::string();
}

std::string HDNTLibrary::getPrimSubGroupType(const std::string& blockName, bool legacy) const {
    const HDNTBlock* const block = getTypeBlockByName(blockName, true);
    return block ? textOrEmpty(block->getPrimSubGroupType(legacy)) : std::string();
}

const HDNTLibrary& HDNTLibrary::root() const {
    const HDNTLibrary* library = this;
    while (library->parentLibrary_) library = library->parentLibrary_;
    return *library;
}

ConfigBase* HDNTLibrary::getConfig() const { return &root().configuration_->application(); }
ConfigBase* HDNTLibrary::getDescConfig() const { return &root().configuration_->descriptions(); }
hdnt::model::Configuration& HDNTLibrary::getConfiguration() const { return *root().configuration_; }
const hdnt::model::ConfigurationFacts& HDNTLibrary::getConfigurationFacts() const {
    return root().configuration_->facts();
}

static const hdnt::model::ArchFacts& archFacts(const HDNTLibrary& library, const std::string& arch) {
    static const auto* const none = new hdnt::model::ArchFacts;
    const auto& architectures = library.getConfigurationFacts().architectures;
    const auto found = architectures.find(arch);
    return found == architectures.end() ? *none : found->second;
}

std::string HDNTLibrary::getSimDeviceString(const std::string& arch) const { return archFacts(*this, arch).simDevice; }
std::string HDNTLibrary::getMasterArchitecture(const std::string& arch) const { return archFacts(*this, arch).master; }
bool HDNTLibrary::isIOPinConstr(const std::string& name) const {
    return getConfigurationFacts().attributes.find(name).ioPinConstraint;
}
bool HDNTLibrary::isReadOnlyAttribute(const std::string& name) const {
    return getConfigurationFacts().attributes.find(name).readOnly;
}
void HDNTLibrary::getMasterDriverTypes(std::vector<std::string>& out) const {
    out = getConfigurationFacts().masterDriverTypes;
}
