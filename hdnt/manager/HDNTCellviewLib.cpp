#include "hdnt/manager/HDNTCellviewLib.h"

#include "hdnt/manager/CellviewTable.h"
#include "hdnt/platform/HEX.h"

#include <atomic>
#include <iostream>

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
    for (const auto* entry = hdnt::manager::cellviewTable; entry->name; ++entry)
        s_typeToName[entry->value] = entry->name;
    initializedValue = true;
}

HDNTCellviewLib::HDNTCellviewLib() {
    if (!initializedValue) initializeValues();
    allTesselEnums_.reserve(slots);
    nameToType_.reserve(slots);
    m_typeToNameMap.reserve(slots);
    for (int value = 0; value < slots; ++value) {
        const char* const name = s_typeToName[value];
        if (!name) continue;
        if (value != UNKNOWN) MAX = value;
        const Type type = static_cast<Type>(value);
        allTesselEnums_.push_back(type);
        nameToType_[name] = type;
        m_typeToNameMap[type] = name;
    }
    const auto unknown = nameToType_.find("UNKNOWN");
    if (unknown == nameToType_.end() || unknown->second != UNKNOWN) {
        std::cout << "Unmatched cellview type enums" << std::endl;
        throw HEXInternalException("Unmatched cellview type enums");
    }
    nameToType_.erase(unknown);
}

const std::string& HDNTCellviewLib::getName(Type type) const {
    const auto found = m_typeToNameMap.find(type);
    if (found != m_typeToNameMap.end()) return found->second;
    std::cout << "Error: HDNTCellviewLib: Not able to find the type " << type << " in m_typeToNameMap " << std::endl;
    throw HEXInternalException("HDNTCellviewLib: no cellview type of value " + std::to_string(static_cast<int>(type)));
}

HDNTCellviewLib::Type HDNTCellviewLib::getType(const std::string& name) const {
    const auto found = nameToType_.find(name);
    return found == nameToType_.end() ? UNKNOWN : found->second;
}

std::ostream& operator<<(std::ostream& out, HDNTCellviewLib::Type type) {
    const bool known = type >= 0 && type < slots && HDNTCellviewLib::s_typeToName[type];
    if (!known) {
        out.setstate(std::ios_base::badbit);
        return out;
    }
    return out << HDNTCellviewLib::s_typeToName[type];
}
