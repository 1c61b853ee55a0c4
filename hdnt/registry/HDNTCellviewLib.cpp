#include "hdnt/registry/HDNTCellviewLib.h"

#include "hdnt/platform/HEX.h"
#include "hdnt/platform/TextHash.internal.h"
#include "hdnt/registry/CellviewTable.internal.h"
#include "hdnt/registry/registerCells.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <utility>

using hdnt::platform::textHash;

static constexpr int slots = HDNTCellviewLib::UNKNOWN + 1;

const char* HDNTCellviewLib::s_typeToName[slots];
bool HDNTCellviewLib::initializedValue = false;
int HDNTCellviewLib::MAX = 0;
HCTMutex HDNTCellviewLib::m_initializeValuesMutex;

static std::atomic<const HDNTCellviewLib*> sp_global{nullptr};

const HDNTCellviewLib* HDNTCellviewLib::getGlobal() {
    if (const HDNTCellviewLib* const built = sp_global.load(std::memory_order_acquire)) return built;
    const HCTLock lock(m_initializeValuesMutex);
    if (!sp_global.load(std::memory_order_relaxed)) sp_global.store(new HDNTCellviewLib, std::memory_order_release);
    return sp_global.load(std::memory_order_relaxed);
}

void HDNTCellviewLib::initializeValues() {
    for (const auto* entry = hdnt::registry::cellviewTable; entry->name; ++entry)
        s_typeToName[entry->value] = entry->name;
    initializedValue = true;
}

void hdnt::registerCells(const std::string& path) {
    const HCTLock lock(HDNTCellviewLib::m_initializeValuesMutex);
    if (sp_global.load(std::memory_order_relaxed))
        throw HEXDataException(path + ": too late to register cells: some have been looked up");
    if (!HDNTCellviewLib::initializedValue) HDNTCellviewLib::initializeValues();
    registry::addCells(path);
}

static void addCellsOfEnvironment() {
    const char* const paths = std::getenv("HDNT_CELLVIEWS");
    std::istringstream list(paths ? paths : "");
    list.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty()) hdnt::registry::addCells(path);
}

HDNTCellviewLib::HDNTCellviewLib() {
    if (!initializedValue) initializeValues();
    addCellsOfEnvironment();
    for (int value = 0; value < slots; ++value) {
        if (!s_typeToName[value]) continue;
        if (value != UNKNOWN) MAX = value;
        allTesselEnums_.push_back(static_cast<Type>(value));
    }
    byName_.build(allTesselEnums_.size(), [this](size_t i) { return textHash(nameAt(i)); });
    if (!s_typeToName[UNKNOWN] || nameAt(allTesselEnums_.size() - 1) != "UNKNOWN") {
        std::cout << "Unmatched cellview type enums" << std::endl;
        throw HEXInternalException("Unmatched cellview type enums");
    }
}

// Few programs ask for a name, and strings of them all take longer to make than the rest of the registry.
const std::vector<std::string>& HDNTCellviewLib::names() const {
    std::call_once(namesMade_, [this] {
        std::vector<std::string> names; // half of them are of no use to the next caller, when memory runs out
        names.reserve(allTesselEnums_.size());
        for (size_t i = 0; i < allTesselEnums_.size(); ++i) names.emplace_back(nameAt(i));
        names_ = std::move(names);
    });
    return names_;
}

const std::string& HDNTCellviewLib::getName(Type type) const {
    const auto found = std::lower_bound(allTesselEnums_.begin(), allTesselEnums_.end(), type);
    if (found != allTesselEnums_.end() && *found == type)
        return names()[static_cast<size_t>(found - allTesselEnums_.begin())];
    std::cout << "Error: HDNTCellviewLib: Not able to find the type " << type << " in m_typeToNameMap " << std::endl;
    throw HEXInternalException("HDNTCellviewLib: no cellview type of value " + std::to_string(static_cast<int>(type)));
}

HDNTCellviewLib::Type HDNTCellviewLib::getType(const std::string& name) const {
    for (const uint32_t position : byName_.find(textHash(name)))
        if (nameAt(position) == name) return allTesselEnums_[position];
    return UNKNOWN;
}

std::unordered_map<HDNTCellviewLib::Type, std::string> HDNTCellviewLib::getTypeToNameMap() const {
    std::unordered_map<Type, std::string> map(slots);
    for (const Type type : allTesselEnums_) map.emplace(type, s_typeToName[type]);
    return map;
}

std::ostream& operator<<(std::ostream& out, HDNTCellviewLib::Type type) {
    const bool known = type >= 0 && type < slots && HDNTCellviewLib::s_typeToName[type];
    if (!known) {
        out.setstate(std::ios_base::badbit);
        return out;
    }
    return out << HDNTCellviewLib::s_typeToName[type];
}
