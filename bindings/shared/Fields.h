#pragma once

#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/registry/HDNTCellviewLib.h"

#include <concepts>
#include <string>
#include <type_traits>
#include <vector>

namespace hdnt::scripts {

// Fields of handles: operations of the model's classes, or functions of an object.

template <typename>
struct Accessor;
template <typename R, typename C>
struct Accessor<R (C::*)() const> {
    using Node = C;
    using Result = R;
};
template <typename R, typename C>
struct Accessor<R (C::*)()> : Accessor<R (C::*)() const> {};
template <typename R, typename C>
struct Accessor<R (*)(C&)> : Accessor<R (C::*)() const> {};

template <typename T>
concept NodePointer = std::is_pointer_v<T> && std::derived_from<std::remove_pointer_t<T>, HDNTNode>;
template <typename T>
concept NodeList = requires(T list) {
    requires NodePointer<typename T::value_type>;
};

/// What no operation of the model answers in one word.
namespace fields {

inline int cellview(HDNTBlock& block) { return static_cast<int>(block.getType()); }
inline bool isRegistered(HDNTBlock& block) { return block.getType() < HDNTCellviewLib::UNKNOWN; }
inline const char* group(HDNTBlock& block) { return block.getPrimGroupType(false); }
inline const char* subgroup(HDNTBlock& block) { return block.getPrimSubGroupType(false); }
inline const char* legacyGroup(HDNTBlock& block) { return block.getPrimGroupType(true); }
inline const char* legacySubgroup(HDNTBlock& block) { return block.getPrimSubGroupType(true); }
inline std::vector<std::string> shadowPins(HDNTBlock& block) {
    std::vector<std::string> names;
    block.getMasterShadowPins(names);
    return names;
}
inline bool supportsInternalPins(HDNTBlock& block) { return block.internalPinsSupported(nullptr); }

/// A mapping of a map library has no file: its text was put together for an architecture.
inline bool isMapLibrary(HDNTNetlist& netlist) {
    const yyltype* const location = netlist.getLocation();
    return location && !location->fileName;
}

/// The bus for a property of pins.
inline HDNTNode* owner(HDNTProperty& property) { return property.getParent(); }
inline bool isTest(HDNTProperty& property) { return property.getAttrSpec()->isTest(); }
inline bool isSimulation(HDNTProperty& property) { return property.getAttrSpec()->isSimulation(); }
inline bool isConstraintsOnly(HDNTProperty& property) { return property.getAttrSpec()->isConstraintsOnly(); }
inline bool isReadOnly(HDNTProperty& property) { return property.getAttrSpec()->isReadOnly(); }
inline bool isHidden(HDNTProperty& property) { return !property.getAttrSpec()->isVisible(); }
bool isPadConstraint(HDNTProperty& property);

} // namespace fields

} // namespace hdnt::scripts
