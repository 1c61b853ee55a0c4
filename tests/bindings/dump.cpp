// Every block, pin and property of the shipped libraries as plain text, a fact a line. dump.py and dump.tcl write the
// same through their packages.
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <cfloat>
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string text(const std::string& value) { return value; }
std::string text(const char* value) { return value ? value : ""; }
std::string text(bool value) { return value ? "1" : "0"; }
std::string text(int value) { return std::to_string(value); }
std::string text(size_t value) { return std::to_string(value); }
std::string text(double value) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.17g", value);
    return digits;
}
template <typename Item>
std::string text(const std::vector<Item>& values) {
    std::string all;
    for (const Item& value : values) all += (all.empty() ? "" : "|") + text(value);
    return all;
}

template <typename... Facts>
void line(const Facts&... facts) {
    std::string all;
    ((all += text(facts) + "\t"), ...);
    std::printf("%s\n", all.c_str());
}

const char* required(HDNT_PIN_REQUIREDVALUE value) {
    switch (value) {
    case HDNT_PIN_ACTIVE: return "active";
    case HDNT_PIN_MUST_CONNECT: return "mustConnect";
    case HDNT_PIN_TIE_LOW: return "tieLow";
    case HDNT_PIN_TIE_HIGH: return "tieHigh";
    case HDNT_PIN_TIE_SPECIAL: return "tieSpecial";
    case HDNT_PIN_UNTIE: return "untie";
    default: return "";
    }
}

template <typename PinOrBus>
std::string function(PinOrBus& pin) {
    std::string name;
    return pin.getPinFunction(name) ? name : "";
}

struct Values {
    std::string standard, minimum, maximum, listed;
};

Values valuesOf(HDNTProperty& property) {
    const bool isList = property.getAttrSpec()->isEnumerated();
    switch (property.getType()) {
    case HATAttrTypes::TypeBool: return {text(property.getDefaultBoolValue()), "", "", ""};
    case HATAttrTypes::TypeInt: {
        const int least = property.getMinIntValue(), most = property.getMaxIntValue();
        return {text(property.getDefaultIntValue()), isList || least != INT_MIN ? text(least) : "",
                isList || most != INT_MAX ? text(most) : "", text(property.getAllowedIntValues())};
    }
    case HATAttrTypes::TypeDouble: {
        const double least = property.getMinDoubleValue(), most = property.getMaxDoubleValue();
        return {text(property.getDefaultDoubleValue()), isList || least != -DBL_MAX ? text(least) : "",
                isList || most != DBL_MAX ? text(most) : "", text(property.getAllowedDoubleValues())};
    }
    case HATAttrTypes::TypeBitHex:
        return {property.getDefaultHexValue(), property.getMinHexValue(), property.getMaxHexValue(),
                text(property.getAllowedHexValues())};
    case HATAttrTypes::TypeBitBinary:
        return {property.getDefaultBinaryValue(), property.getMinBinaryValue(), property.getMaxBinaryValue(),
                text(property.getAllowedBinaryValues())};
    default: return {property.getDefaultStringValue(), "", "", text(property.getAllowedStringValues())};
    }
}

void dump(const char* owner, HDNTProperty& property) {
    const HATAttrSpec& spec = *property.getAttrSpec();
    const HATAttrTypes::AttrType type = property.getType();
    const bool isBits = type == HATAttrTypes::TypeBitHex || type == HATAttrTypes::TypeBitBinary;
    const Values values = valuesOf(property);
    line(owner, property.getName(), HDNTProperty::getTypeName(type), static_cast<int>(type), values.standard,
         values.minimum, values.maximum, values.listed, isBits ? text(property.getBitWidth()) : "",
         isBits ? text(property.getAdjustedBitWidth()) : "",
         type == HATAttrTypes::TypeDouble ? text(property.getPrecision()) : "",
         spec.hasUnit() ? spec.getUnitDefault() : "", spec.getDescription(), property.getDeclaredDescription(),
         property.getIndex(), property.isMinDeclared(), property.isMaxDeclared(), spec.isTest(), spec.isSimulation(),
         spec.isConstraintsOnly(), spec.isReadOnly(), !spec.isVisible(),
         property.getBlock()->getLibrary()->isIOPinConstr(property.getName()), property.isMuxControl(),
         property.isPinInversion(), property.isNibbleSized(), property.getLocation()->fileLine,
         property.getLocation()->first_column);
}

void dump(HDNTPin& pin) {
    line("pin", pin.getName(false), pin.getName(true), pin.getBaseName(),
         pin.getBitIndex() < 0 ? "" : text(static_cast<int>(pin.getBitIndex())), static_cast<int>(pin.getPinIndex()),
         pin.getBus()->getName(), HDNTPin::getDirectionName(pin.getDirection()), HDNTPin::getTypeName(pin.getType()),
         required(pin.getRequiredValue()), function(pin), pin.isTest(), pin.isAbstract(), pin.getNumProperties());
}

void dump(HDNTBus& bus) {
    line("bus", bus.getName(), bus.getBaseName(),
         bus.getFirstIndex() < 0 ? "" : text(bus.getFirstIndex()) + "|" + text(bus.getLastIndex()), bus.pinCount(),
         HDNTPin::getDirectionName(bus.getDirection()), HDNTPin::getTypeName(bus.getType()),
         required(bus.getRequiredValue()), function(bus), bus.isTest(), bus.isAbstract());
    for (size_t i = 0; i < bus.getNumProperties(); ++i)
        dump("pinproperty", *bus.getProperty(static_cast<unsigned short>(i)));
}

void dump(HDNTBlock& block) {
    static const char* const maturities[] = {"early", "beta", "production", "deprecated"};
    static const char* const sections[] = {"mapsto", "expandsto", "modifiedby", "retargetsto"};
    std::vector<std::string> shadows;
    block.getMasterShadowPins(shadows);
    line("block", block.getName(), block.hasOwnNetlist(), static_cast<int>(block.getNetlistKind()),
         static_cast<int>(block.getType()), block.getType() < HDNTCellviewLib::UNKNOWN,
         maturities[block.getMaturityLevel()], block.isTest(), block.isInternal(), block.getCanTiePins(),
         block.getPrimGroupType(false), block.getPrimSubGroupType(false), block.getPrimGroupType(true),
         block.getPrimSubGroupType(true), block.canTiePins(), block.usesNibbleSizeHexAttrs(),
         block.canBePseudoDifferential(), block.getCellArchesCfg(), block.getMasterDriverPinName(), shadows,
         block.internalPinsSupported(nullptr), block.getLocation()->fileLine);
    for (size_t i = 0; i < block.getNumBuses(); ++i) dump(*block.getBus(i));
    for (size_t i = 0; i < block.getNumPins(); ++i) dump(*block.getPin(i));
    for (size_t i = 0; i < block.getNumProperties(); ++i) dump("property", *block.getProperty(i));
    if (HDNTNetlist* const netlist = block.getNetlist()) {
        line("netlist", sections[static_cast<size_t>(netlist->section())], netlist->signals().size(),
             netlist->connects().size(), netlist->ifStmts().size(), netlist->getReferencedInstanceName());
        for (const HDNTBlockInst* inst : netlist->instances()) line("instance", inst->instName(), inst->typeName());
    }
}

} // namespace

int main() {
    for (HDNTLibrary* library : {HDNTLibraryMgr::getCommonLibrary(), HDNTLibraryMgr::getSimulationLibrary()}) {
        line("library", library->getName(), library->getNumTypeBlocks(false), library->getNumTypeBlocks(true));
        for (size_t i = 0; i < library->getNumTypeBlocks(false); ++i) dump(*library->getTypeBlock(i));
    }
}
