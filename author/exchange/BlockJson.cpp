#include "author/exchange/BlockJson.h"

#include "author/exchange/blocks.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "hdnt/platform/ConfigBase.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace hdnt::author {

Json jsonOf(const Value& value) {
    return std::visit([](const auto& plain) { return Json(plain); }, value);
}

Json orNull(int number) { return number == 0 ? Json() : Json(number); }

Json orNull(std::string_view text) { return text.empty() ? Json() : Json(text); }

Json orNull(const char* text) { return text ? orNull(std::string_view(text)) : Json(); }

Json locationOf(const HDNTNode& node) {
    const auto location = node.copyOfLocation();
    if (!location) return nullptr;
    Json json;
    json["file"] = orNull(location->fileName);
    json["line"] = location->fileLine;
    return json;
}

namespace {

using Type = HATAttrTypes::AttrType;

Json boundOf(const std::optional<Value>& value) { return value ? jsonOf(*value) : Json(); }

// Minimum, maximum and listed values; null where there are none.
Json allowedValues(const HDNTProperty& property) {
    Json json;
    json["minimum"] = boundOf(property.getMinValue());
    json["maximum"] = boundOf(property.getMaxValue());
    json["values"] = Json::array();
    for (const Value& value : property.getAllowedValues()) json["values"].push_back(jsonOf(value));
    return json;
}

Json defaultValue(const HDNTProperty& property, bool isBits) {
    const Value value = property.getDefaultValue();
    Json json;
    json["default"] = isBits ? orNull(std::get<std::string>(value)) : jsonOf(value);
    json["defaultRefusal"] = json["default"].is_null() ? Json() : orNull(property.refusalOf(value));
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
    json["isTest"] = spec.isTest();
    json["isSimulation"] = spec.isSimulation();
    json["isConstraintsOnly"] = spec.isConstraintsOnly();
    json["isMuxControl"] = property.isMuxControl();
    json["isReadOnly"] = spec.isReadOnly();
    json["isHidden"] = !spec.isVisible();
    json["isPinInversion"] = property.isPinInversion();
    json["isNibbleSized"] = property.isNibbleSized();
    json["isPadConstraint"] = library && library->isIOPinConstr(property.getName());
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
    json["hasMinimum"] = property.isMinDeclared();
    json["hasMaximum"] = property.isMaxDeclared();
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
    json["required"] = orNull(words::requiredValues.wordOf(pin.getRequiredValue()));
    json["isTest"] = pin.isTest();
    json["isAbstract"] = pin.isAbstract();
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
    json["baseName"] = pin.getBaseName();
    json["bus"] = pin.getBus()->getName();
    json["block"] = pin.getBlock()->getName();
    json["bit"] = pin.getBitIndex() < 0 ? Json() : Json(pin.getBitIndex());
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
    json["range"] = bus.getFirstIndex() < 0 ? Json() : Json::array({bus.getFirstIndex(), bus.getLastIndex()});
    json["width"] = bus.pinCount();
    json["firstPinIndex"] = bus.getFirstPinIndex();
    json["foundByName"] = block.getBusByName(bus.getName(), true) == &bus;
    addPinFacts(json, bus);
    json["pins"] = Json::array();
    for (const HDNTPin& pin : bus.pins()) json["pins"].push_back(jsonOf(pin));
    json["properties"] = propertyList(bus);
    json["location"] = locationOf(bus);
    return json;
}

// Counts are those of the top level; what stands in the branches of ifs is not known before an expansion.
Json netlistOf(HDNTBlock& block, SourcePlaces& places) {
    const HDNTNetlist* const netlist = block.getAttachedNetlist();
    if (!netlist) return nullptr;
    const auto location = netlist->copyOfLocation();
    const Place place = location ? places.placeOf(*location) : Place();
    const unsigned short kind = block.getNetlistKind();
    const bool isForAll =
        kind == HDNTBlock::OwnNetlist || kind == HDNTBlock::OwnNetlistInChild || kind == HDNTBlock::AnyArchitecture;
    Json json;
    json["section"] = words::sections.wordOf(netlist->section());
    json["location"]["file"] = orNull(place.file);
    json["location"]["line"] = place.isKnown() ? Json(place.line) : Json();
    json["isMapLibrary"] = location && !location->fileName;
    json["architecture"] = isForAll ? Json() : orNull(HDNTLibraryMgr::getLibraryMgr()->m_architecture);
    json["instanceCount"] = netlist->instances().size();
    json["signalCount"] = netlist->signals().size();
    json["connectCount"] = netlist->connects().size();
    json["blockPropertyAssignCount"] = netlist->blockPropertyAssigns().size();
    json["pinPropertyAssignCount"] = netlist->pinPropertyAssigns().size();
    json["ifCount"] = netlist->ifStmts().size();
    json["preInstanceCallCount"] = netlist->preInstanceCalls().size();
    json["postInstanceCallCount"] = netlist->postInstanceCalls().size();
    json["referencedInstance"] = orNull(block.getReferencedInstanceName(""));
    return json;
}

// A map library that is broken was complained of already.
void addMapping(Json& json, HDNTBlock& block, SourcePlaces& places) {
    json["netlistKind"] = block.getNetlistKind();
    json["hasOwnNetlist"] = block.hasOwnNetlist();
    json["netlist"] = netlistOf(block, places);
    json["hasPseudoDifferentialExpansion"] = block.getAttachedNetlist() && block.hasPseudoDifferentialExpansion("");
}

void addConfiguration(Json& json, const HDNTBlock& block) {
    const HDNTLibrary& library = *block.getLibrary();
    const std::string& architecture = HDNTLibraryMgr::getLibraryMgr()->m_architecture;
    std::vector<std::string> masters;
    library.getMasterDriverTypes(masters);
    std::vector<std::string> shadows;
    block.getMasterShadowPins(shadows);
    json["canTiePins"] = block.canTiePins();
    json["usesNibbleSizedHex"] = block.usesNibbleSizeHexAttrs();
    json["canBePseudoDifferential"] = block.canBePseudoDifferential();
    json["architectures"] = block.getCellArchesCfg();
    json["isMasterDriver"] = std::find(masters.begin(), masters.end(), block.getName()) != masters.end();
    json["masterDriverPin"] = orNull(block.getMasterDriverPinName());
    json["shadowPins"] = shadows;
    json["architecture"] = orNull(architecture);
    json["isInArchitecture"] = architecture.empty() ? Json() : Json(isInArchitecture(block, architecture));
    json["supportsInternalPins"] = block.internalPinsSupported(nullptr);
    json["simulationDevice"] = orNull(library.getSimDeviceString(architecture));
    json["masterArchitecture"] = orNull(library.getMasterArchitecture(architecture));
}

} // namespace

Json jsonOf(HDNTBlock& block, SourcePlaces& places) {
    Json json;
    json["name"] = block.getName();
    json["library"] = block.getLibrary()->getName();
    json["location"] = locationOf(block);
    json["cellview"] = static_cast<int>(block.getType());
    json["isRegistered"] = isRegistered(block);
    json["maturity"] = orNull(words::maturityLevels.wordOf(block.getMaturityLevel()));
    json["isTest"] = block.isTest();
    json["isInternal"] = block.isInternal();
    json["isTieCapable"] = block.getCanTiePins();
    json["group"] = orNull(block.getPrimGroupType(false));
    json["subgroup"] = orNull(block.getPrimSubGroupType(false));
    json["legacyGroup"] = orNull(block.getPrimGroupType(true));
    json["legacySubgroup"] = orNull(block.getPrimSubGroupType(true));
    addMapping(json, block, places);
    json["pinCount"] = block.getNumPins();
    json["busCount"] = block.getNumBuses();
    json["propertyCount"] = block.getNumProperties();
    json["buses"] = Json::array();
    for (const HDNTBus& bus : std::as_const(block).buses()) json["buses"].push_back(jsonOf(bus));
    json["properties"] = propertyList(block);
    addConfiguration(json, block);
    return json;
}

} // namespace hdnt::author
