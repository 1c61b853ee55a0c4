#include "hdnt/model/HDNTBlock.h"

#include "hdnt/model/ConfigurationFacts.internal.h"
#include "hdnt/model/HDNTFlags.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTPrimGroup.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/ManagerState.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/PartSpec.h"
#include "hdnt/platform/SlabMemory.internal.h"

#include <algorithm>
#include <iostream>
#include <mutex>

// There before any initialiser runs, for blocks that initialisers make.
constinit std::vector<std::string> HDNTBlock::s_unregisteredNames;

// What is made later goes earlier: this tells blocks that are made while the process exits that the names are gone.
static constinit bool namesAreGone = false;
static const struct NamesEnd {
    ~NamesEnd() { namesAreGone = true; }
} namesEnd;

static unsigned short typeOf(const std::string& name) {
    const HDNTCellviewLib::Type type = HDNTCellviewLib::getGlobal()->getType(name);
    if (type != HDNTCellviewLib::UNKNOWN) return static_cast<unsigned short>(type);
    if (namesAreGone) return UINT16_MAX;
    HDNTBlock::s_unregisteredNames.push_back(name);
    return static_cast<unsigned short>(
        std::min<size_t>(HDNTCellviewLib::UNKNOWN + HDNTBlock::s_unregisteredNames.size(), UINT16_MAX));
}

HDNTBlock::HDNTBlock(const std::string& name, std::vector<HDNTBlockEntity*>* entities, HDNTNetlist* netlist,
                     HDNTLibrary* library)
    : name_(name), netlist_(netlist) {
    setKind(HDNTNodeKind::Block);
    setParent(library);
    bool adopting = false;
    try {
        type_ = typeOf(name);
        if (netlist) noteNetlist();
        adopting = true;
        if (entities) adopt(*entities);
    } catch (...) {
        if (!adopting && entities)
            for (const HDNTBlockEntity* entity : *entities) delete entity;
        deleteOwned();
        throw;
    }
}

HDNTBlock::~HDNTBlock() { deleteOwned(); }

void HDNTBlock::deleteOwned() {
    for (const HDNTPin* pin : pins_) delete pin;
    for (const HDNTBus* bus : buses_) delete bus;
    for (const HDNTProperty* property : properties_) delete property;
}

template <typename Class>
static size_t countOf(const std::vector<HDNTBlockEntity*>& entities) {
    const auto isOne = [](const HDNTBlockEntity* entity) { return nodeCast<Class>(entity) != nullptr; };
    return static_cast<size_t>(std::count_if(entities.begin(), entities.end(), isOne));
}

// When an entity throws, the block deletes what it has adopted and this deletes the rest.
void HDNTBlock::adopt(std::vector<HDNTBlockEntity*>& entities) {
    buses_.reserve(countOf<HDNTBus>(entities));
    properties_.reserve(countOf<HDNTProperty>(entities));
    auto entity = entities.begin();
    try {
        while (entity != entities.end()) adoptEntity(*entity++);
    } catch (...) {
        for (; entity != entities.end(); ++entity) delete *entity;
        throw;
    }
    // By base name and bit, so one entry a bus, not one a bit; here, while the buses are in the caches.
    busesByName_.build(buses_.size(), [this](size_t i) { return buses_[i]->getBaseNameHash(); });
}

void HDNTBlock::adoptEntity(HDNTBlockEntity* entity) {
    if (!entity) return;
    if (applyAttribute(*entity)) {
        delete entity;
        return;
    }
    entity->setParent(this); // one of no known kind stays with whoever made it
    if (auto* const property = nodeCast<HDNTProperty>(entity)) properties_.push_back(property);
    if (auto* const bus = nodeCast<HDNTBus>(entity)) {
        buses_.push_back(bus);
        adoptBus(*bus);
    }
}

void HDNTBlock::adoptBus(HDNTBus& bus) {
    bus.placePins(pinCount_);
    pinCount_ += static_cast<uint32_t>(bus.pinCount());
    if (bus.getDirection() == HDNT_PIN_INTERNAL) {
        ++internalBusCount_;
        internalPinCount_ += static_cast<uint32_t>(bus.pinCount());
    } else if (internalBusCount_ > 0) {
        throw HEXDataException("Internal pins must be last in list, in tessel " + name_);
    }
    if (bus.getRequiredValue() != HDNT_PIN_NO_VALUE) canTiePins_ = true;
}

bool HDNTBlock::applyAttribute(const HDNTBlockEntity& entity) {
    if (const auto* const flag = nodeCast<HDNTInternalFlag>(&entity)) internal_ = flag->getValue();
    else if (const auto* const level = nodeCast<HDNTMaturityLevel>(&entity)) maturityLevel_ = level->getValue();
    else if (const auto* const test = nodeCast<HDNTTestFlag>(&entity)) test_ = test->getValue();
    else if (const auto* const group = nodeCast<HDNTPrimGroup>(&entity)) applyGroup(*group);
    else return false;
    return true;
}

void HDNTBlock::applyGroup(const HDNTPrimGroup& group) {
    setPrimGroupType(group.getPrimGroupAbbrev());
    if (const std::string text = group.getPrimSubGroupAbbrev(); !text.empty()) setPrimSubGroupType(text);
    if (const std::string text = group.getLegacyPrimGroupAbbrev(); !text.empty()) setLegacyPrimGroupType(text);
    else legacyGroup_ = group_;
    if (const std::string text = group.getLegacyPrimSubGroupAbbrev(); !text.empty()) setLegacyPrimSubGroupType(text);
}

void HDNTBlock::check() {
    hdnt::platform::fetch(buses_);
    hdnt::platform::fetch(properties_);
    checkNames(name_, false);
    checkNetlist();
    for (HDNTBus* bus : buses_) {
        if (bus->pinsAreFaultless()) continue;
        for (HDNTPin& pin : bus->pins()) pin.check();
    }
    for (HDNTProperty* property : properties_) property->check();
}

HDNTLibrary* HDNTBlock::getLibrary() const { return static_cast<HDNTLibrary*>(getParent()); }

size_t HDNTBlock::getNumPins() const {
    const bool hidden = internalBusCount_ > 0 && !internalPinsSupported(nullptr);
    return hidden ? pinCount_ - internalPinCount_ : pinCount_;
}

const std::vector<HDNTPin*>& HDNTBlock::allPins() const {
    if (!pinsMade_.load(std::memory_order_acquire)) makePins();
    return pins_;
}

// Most blocks of a library are never asked for their pins, which are most of its objects.
void HDNTBlock::makePins() const {
    static std::mutex making;
    const std::lock_guard lock(making);
    if (pinsMade_.load(std::memory_order_relaxed)) return;
    std::vector<HDNTPin*> pins;
    pins.reserve(pinCount_);
    try {
        for (HDNTBus* bus : buses_) bus->makePins(pins);
    } catch (...) {
        for (const HDNTPin* pin : pins) delete pin;
        throw;
    }
    pins_ = std::move(pins);
    pinsMade_.store(true, std::memory_order_release);
}

hdnt::Nodes<const HDNTPin> HDNTBlock::pins() const { return hdnt::Nodes<const HDNTPin>(allPins()); }
hdnt::Nodes<HDNTPin> HDNTBlock::pins() { return hdnt::Nodes<HDNTPin>(allPins()); }

HDNTPin* HDNTBlock::getPin(size_t i) const {
    if (i < pinCount_) return allPins()[i];
    std::cerr << i << " >= " << pinCount_ << std::endl;
    throw HEXAlgException("Pin index out of range for tessel " + name_);
}

HDNTBus* HDNTBlock::getBus(size_t i) const {
    if (i < buses_.size() && i < pinCount_) return buses_[i];
    if (i < pinCount_) return nullptr;
    throw HEXAlgException("Bus index out of range for tessel " + name_);
}

HDNTProperty* HDNTBlock::getProperty(size_t i) const {
    if (i >= properties_.size()) throw HEXAlgException("Property index out of range");
    return properties_[i];
}

void HDNTBlock::getBusPins(const std::string& baseName, std::vector<HDNTPin*>& out) const {
    const auto matches = [&](const HDNTPin* pin) { return pin->getBaseName() == baseName; };
    const auto first = std::find_if(allPins().begin(), allPins().end(), matches);
    out.insert(out.end(), first, std::find_if_not(first, allPins().end(), matches));
}

const char* HDNTBlock::groupText(int index) const {
    const HDNTLibrary* const library = getLibrary();
    return index == -1 || !library ? nullptr : library->getGroupAbbrev(static_cast<size_t>(index));
}

int HDNTBlock::groupIndex(std::string abbrev) const {
    HDNTLibrary* const library = getLibrary();
    return library ? static_cast<int>(library->getGroupAbbrevIdx(std::move(abbrev))) : -1;
}

const char* HDNTBlock::getPrimGroupType(bool legacy) const { return groupText(legacy ? legacyGroup_ : group_); }
const char* HDNTBlock::getPrimSubGroupType(bool legacy) const {
    return groupText(legacy ? legacySubGroup_ : subGroup_);
}
void HDNTBlock::setPrimGroupType(std::string abbrev) { group_ = groupIndex(std::move(abbrev)); }
void HDNTBlock::setPrimSubGroupType(std::string abbrev) { subGroup_ = groupIndex(std::move(abbrev)); }
void HDNTBlock::setLegacyPrimGroupType(std::string abbrev) { legacyGroup_ = groupIndex(std::move(abbrev)); }
void HDNTBlock::setLegacyPrimSubGroupType(std::string abbrev) { legacySubGroup_ = groupIndex(std::move(abbrev)); }

static const hdnt::model::CellFacts& factsOf(const HDNTBlock& block) {
    static const auto* const none = new hdnt::model::CellFacts;
    const hdnt::model::CellFacts* const facts = hdnt::model::cellFacts(block);
    return facts ? *facts : *none;
}

bool HDNTBlock::canTiePins() const { return factsOf(*this).canTiePins; }
bool HDNTBlock::usesNibbleSizeHexAttrs() const { return factsOf(*this).nibbleSizedHex; }
bool HDNTBlock::canBePseudoDifferential() const { return factsOf(*this).pseudoDifferential; }
std::vector<std::string> HDNTBlock::getCellArchesCfg() const { return factsOf(*this).architectures; }
std::string HDNTBlock::getMasterDriverPinName() const { return factsOf(*this).masterDriverPin; }
void HDNTBlock::getMasterShadowPins(std::vector<std::string>& out) const { out = factsOf(*this).shadowPins; }

bool HDNTBlock::internalPinsSupported(const CommonPart::PartSpec* part) const {
    if (!part) part = hdnt::model::currentPart();
    const HDNTLibrary* const library = getLibrary();
    if (!part || !library) return false;
    const auto& architectures = library->getConfigurationFacts().architectures;
    const auto found = architectures.find(part->architecture);
    return found != architectures.end() && found->second.internalPins;
}
