#include "hdnt/registry/HDNTCellviewLib.h"

#include "hdnt/platform/HEX.h"
#include "hdnt/platform/TextHash.internal.h"
#include "hdnt/registry/CellviewTable.internal.h"
#include "hdnt/registry/registerCells.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <sstream>

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
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty()) hdnt::registry::addCells(path);
}

HDNTCellviewLib::HDNTCellviewLib() {
    if (!initializedValue) initializeValues();
    addCellsOfEnvironment();
    allTesselEnums_.reserve(slots);
    names_.resize(slots);
    for (int value = 0; value < slots; ++value) {
        const char* const name = s_typeToName[value];
        if (!name) continue;
        if (value != UNKNOWN) MAX = value;
        const Type type = static_cast<Type>(value);
        allTesselEnums_.push_back(type);
        names_[static_cast<size_t>(value)] = name;
    }
    byName_.build(allTesselEnums_.size(), [this](size_t i) { return textHash(nameAt(i)); });
    if (names_[UNKNOWN] != "UNKNOWN") {
        std::cout << "Unmatched cellview type enums" << std::endl;
        throw HEXInternalException("Unmatched cellview type enums");
    }
}

const std::string& HDNTCellviewLib::getName(Type type) const {
    if (type >= 0 && type < slots && !names_[static_cast<size_t>(type)].empty())
        return names_[static_cast<size_t>(type)];
    std::cout << "Error: HDNTCellviewLib: Not able to find the type " << type << " in m_typeToNameMap " << std::endl;
    throw HEXInternalException("HDNTCellviewLib: no cellview type of value " + std::to_string(static_cast<int>(type)));
}

HDNTCellviewLib::Type HDNTCellviewLib::getType(const std::string& name) const {
    for (const auto& entry : byName_.find(textHash(name)))
        if (nameAt(entry.position) == name) return allTesselEnums_[entry.position];
    return UNKNOWN;
}

std::unordered_map<HDNTCellviewLib::Type, std::string> HDNTCellviewLib::getTypeToNameMap() const {
    std::unordered_map<Type, std::string> map(slots);
    for (const Type type : allTesselEnums_) map.emplace(type, names_[static_cast<size_t>(type)]);
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
