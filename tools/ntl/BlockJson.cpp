#include "tools/ntl/BlockJson.h"

#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/ConfigBase.h"
#include "tools/ntl/Model.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ntl {

namespace {

using Type = HATAttrTypes::AttrType;

Json locationOf(const HDNTNode& node) {
    const yyltype* const location = node.getLocation();
    if (!location) return nullptr;
    Json json;
    json["file"] = orNull(location->fileName);
    json["line"] = location->fileLine;
    return json;
}

Json boundOf(const std::optional<hdnt::Value>& value) { return value ? jsonOf(*value) : Json(); }

// Minimum, maximum and listed values; null where there are none.
Json allowedValues(const HDNTProperty& property) {
    Json json;
    json["minimum"] = boundOf(property.getMinValue());
    json["maximum"] = boundOf(property.getMaxValue());
    json["values"] = Json::array();
    for (const hdnt::Value& value : property.getAllowedValues()) json["values"].push_back(jsonOf(value));
    return json;
}

Json defaultValue(const HDNTProperty& property, bool isBits) {
    const hdnt::Value value = property.getDefaultValue();
    std::string reason;
    Json json;
    json["default"] = isBits ? orNull(std::get<std::string>(value)) : jsonOf(value);
    json["defaultIsValid"] = property.isValid(value, reason);
    json["defaultReason"] = orNull(reason);
    return json;
}

Json refusedSourceTypes(const HATAttrSpec& spec) {
    Json types = Json::array();
    for (int type = 0; type < HATSrcInfo::NumSourceTypes; ++type)
        if (!spec.isAllowedSourceType(type)) types.push_back(type);
    return types;
}

bool isDescribedByConfiguration(const HDNTProperty& property) {
    const HDNTBlock* const block = property.getBlock();
    ConfigBase* const config = property.getDescConfig();
    if (!block || !config || !ConfigBase::isValidName(property.getName())) return false;
    const HCTLock lock(config->mutex());
    return !config->findValidPartPath(block->getName() + "." + property.getName(), nullptr).empty();
}

void addFlags(Json& json, const HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    const HDNTBlock* const block = property.getBlock();
    const HDNTLibrary* const library = block ? block->getLibrary() : nullptr;
    json["test"] = spec.isTest();
    json["simulation"] = spec.isSimulation();
    json["constraintsOnly"] = spec.isConstraintsOnly();
    json["muxControl"] = property.isMuxControl();
    json["readOnly"] = spec.isReadOnly();
    json["hidden"] = !spec.isVisible();
    json["pinInversion"] = property.isPinInversion();
    json["nibbleSized"] = property.isNibbleSized();
    json["padConstraint"] = library && library->isIOPinConstr(property.getName());
    json["refusedSourceTypes"] = refusedSourceTypes(spec);
}

Json jsonOf(const HDNTProperty& property) {
    const bool isBits = property.getType() == Type::TypeBitHex || property.getType() == Type::TypeBitBinary;
    const HATAttrSpec& spec = *property.getAttrSpec();
    const HDNTBlock* const block = property.getBlock();
    Json json;
    json["name"] = property.getName();
    json["block"] = block ? Json(block->getName()) : Json();
    json["index"] = property.getIndex();
    json["foundByName"] = block && block->getPropertyByName(property.getName()) == &property;
    json["type"] = HDNTProperty::getTypeName(property.getType());
    json["typeNumber"] = static_cast<int>(property.getType());
    json["bitWidth"] = isBits ? Json(property.getBitWidth()) : Json();
    json["adjustedBitWidth"] = isBits ? Json(property.getAdjustedBitWidth()) : Json();
    json["precision"] = property.getType() == Type::TypeDouble ? Json(property.getPrecision()) : Json();
    json.update(allowedValues(property));
    json.update(defaultValue(property, isBits));
    json["defaultDigits"] = isBits && json["default"].is_string()
                                ? Json(property.formatValue(json["default"].get<std::string>(), true))
                                : Json();
    json["units"] = spec.hasUnit() ? Json(spec.getUnitDefault()) : Json();
    json["minimumDeclared"] = property.isMinDeclared();
    json["maximumDeclared"] = property.isMaxDeclared();
    json["description"] = orNull(spec.getDescription());
    json["declaredDescription"] = orNull(property.getDeclaredDescription());
    json["describedByConfiguration"] = isDescribedByConfiguration(property);
    addFlags(json, property);
    json["location"] = locationOf(property);
    return json;
}

template <typename Owner>
Json propertyList(const Owner& owner) {
    Json list = Json::array();
    for (const HDNTProperty& property : owner.properties()) list.push_back(jsonOf(property));
    return list;
}

// What a pin has in common with its bus.
template <typename PinOrBus>
void addPinFacts(Json& json, const PinOrBus& pin) {
    std::string function;
    pin.getPinFunction(function);
    json["direction"] = HDNTPin::getDirectionName(pin.getDirection());
    json["type"] = HDNTPin::getTypeName(pin.getType());
    json["required"] = orNull(requiredValueName(pin.getRequiredValue()));
    json["test"] = pin.isTest();
    json["abstract"] = pin.isAbstract();
    json["function"] = orNull(function);
}

Json propertyNames(const HDNTPin& pin) {
    Json names = Json::array();
    for (const HDNTProperty& property : pin.properties()) names.push_back(property.getName());
    return names;
}

Json jsonOf(const HDNTPin& pin) {
    Json json;
    json["name"] = pin.getName(false);
    json["plainName"] = pin.getName(true);
    json["bus"] = pin.getBaseName();
    json["block"] = pin.getBlock()->getName();
    json["bit"] = pin.getBitIndex();
    json["index"] = pin.getPinIndex();
    json["foundByName"] = pin.getBlock()->getPinByName(pin.getName(false)) == &pin;
    addPinFacts(json, pin);
    json["properties"] = propertyNames(pin);
    return json;
}

Json jsonOf(const HDNTBus& bus) {
    const HDNTBlock& block = *bus.getBlock();
    Json json;
    json["name"] = bus.getName();
    json["baseName"] = bus.getBaseName();
    json["block"] = block.getName();
    json["firstIndex"] = bus.getFirstIndex();
    json["lastIndex"] = bus.getLastIndex();
    json["firstPin"] = bus.getFirstPinIndex();
    json["foundByName"] = block.getBusByName(bus.getName(), true) == &bus;
    addPinFacts(json, bus);
    json["pins"] = Json::array();
    for (const HDNTPin& pin : bus.pins()) json["pins"].push_back(jsonOf(pin));
    json["propertyCount"] = bus.getNumProperties();
    json["properties"] = propertyList(bus);
    json["location"] = locationOf(bus);
    return json;
}

// Counts are those of the top level; what stands in the branches of ifs is not known before an expansion.
Json netlistOf(const HDNTBlock& block) {
    const HDNTNetlist* const netlist = block.getAttachedNetlist();
    if (!netlist) return nullptr;
    hdnt::SourcePlaces places;
    const yyltype* const location = netlist->getLocation();
    const hdnt::Place place = location ? places.placeOf(*location) : hdnt::Place();
    const bool isMapLibrary = location && !location->fileName;
    const unsigned short kind = block.getNetlistKind();
    const bool isForAll =
        kind == HDNTBlock::OwnNetlist || kind == HDNTBlock::OwnNetlistInChild || kind == HDNTBlock::AnyArchitecture;
    Json json;
    json["section"] = hdnt::words::sections.wordOf(netlist->section());
    json["location"]["file"] = orNull(place.file);
    json["location"]["line"] = place.isKnown() ? Json(place.line) : Json();
    json["mapLibrary"] = isMapLibrary;
    json["architecture"] = isForAll ? Json() : orNull(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
    json["instances"] = netlist->instances().size();
    json["signals"] = netlist->signals().size();
    json["connects"] = netlist->connects().size();
    json["blockPropertyAssigns"] = netlist->blockPropertyAssigns().size();
    json["pinPropertyAssigns"] = netlist->pinPropertyAssigns().size();
    json["ifs"] = netlist->ifStmts().size();
    json["calls"] = netlist->preInstanceCalls().size() + netlist->postInstanceCalls().size();
    return json;
}

// A map library that is broken was complained of already.
void addMapping(Json& json, HDNTBlock& block) {
    const bool hasMapping = block.getAttachedNetlist() != nullptr;
    json["netlistKind"] = block.getNetlistKind();
    json["ownNetlist"] = block.hasOwnNetlist();
    json["netlist"] = netlistOf(block);
    json["referencedInstance"] = hasMapping ? orNull(block.getReferencedInstanceName("")) : Json();
    json["pseudoDifferentialExpansion"] = hasMapping && block.hasPseudoDifferentialExpansion("");
}

void addConfiguration(Json& json, const HDNTBlock& block) {
    const HDNTLibrary& library = *block.getLibrary();
    const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
    std::vector<std::string> masters;
    library.getMasterDriverTypes(masters);
    std::vector<std::string> shadows;
    block.getMasterShadowPins(shadows);
    json["canTiePins"] = block.canTiePins();
    json["nibbleSizedHex"] = block.usesNibbleSizeHexAttrs();
    json["canBePseudoDifferential"] = block.canBePseudoDifferential();
    json["architectures"] = block.getCellArchesCfg();
    json["isMasterDriver"] = std::find(masters.begin(), masters.end(), block.getName()) != masters.end();
    json["masterDriverPin"] = orNull(block.getMasterDriverPinName());
    json["shadowPins"] = shadows;
    json["architecture"] = orNull(architecture);
    json["inArchitecture"] = architecture.empty() ? Json() : Json(isInArchitecture(block, architecture));
    json["internalPinsSupported"] = block.internalPinsSupported(nullptr);
    json["simulationDevice"] = orNull(library.getSimDeviceString(architecture));
    json["masterArchitecture"] = orNull(library.getMasterArchitecture(architecture));
}

Json jsonOfGroup(const HDNTBlock& block, bool legacy) {
    Json json;
    json["group"] = orNull(block.getPrimGroupType(legacy));
    json["subgroup"] = orNull(block.getPrimSubGroupType(legacy));
    return json;
}

} // namespace

Json jsonOf(HDNTBlock& block) {
    Json json;
    json["name"] = block.getName();
    json["library"] = block.getLibrary()->getName();
    json["location"] = locationOf(block);
    json["type"] = static_cast<int>(block.getType());
    json["registered"] = isRegistered(block);
    json["maturity"] = maturityName(block.getMaturityLevel());
    json["test"] = block.isTest();
    json["internal"] = block.isInternal();
    json["tieCapable"] = block.getCanTiePins();
    json["group"] = jsonOfGroup(block, false);
    json["legacyGroup"] = jsonOfGroup(block, true);
    addMapping(json, block);
    json["pinCount"] = block.getNumPins();
    json["busCount"] = block.getNumBuses();
    json["propertyCount"] = block.getNumProperties();
    json["buses"] = Json::array();
    for (const HDNTBus& bus : std::as_const(block).buses()) json["buses"].push_back(jsonOf(bus));
    json["properties"] = propertyList(block);
    addConfiguration(json["configuration"], block);
    return json;
}

} // namespace ntl
