#include "hdnt/frontend/BuilderSupport.h"
#include "hdnt/frontend/HDNTError.h"
#include "hdnt/frontend/HDNTLimits.h"
#include "hdnt/frontend/PropertyOptions.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTFlags.h"
#include "hdnt/model/HDNTPrimGroup.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"

#include <algorithm>
#include <charconv>
#include <memory>

namespace hdnt::frontend::build {

namespace {

// A number of the text that has to stay within 0 and a limit: one report when it does not, then the nearest bound.
int limited(long value, int limit, const char* what, const char* limitName, const yyltype& place) {
    if (value >= 0 && value <= limit) return static_cast<int>(value);
    yyltype location = place;
    HDNTError::Formatted(&location, "%s %ld is not within 0 and %d (limit %s).", what, value, limit, limitName);
    return value < 0 ? 0 : limit;
}

const std::string& textOf(const TokenText& text) {
    static const auto* const none = new std::string;
    return text ? *text : *none;
}

long widthOf(const std::string& constant) {
    long width = 0;
    const std::from_chars_result result = std::from_chars(constant.data(), constant.data() + constant.size(), width);
    return result.ec == std::errc::result_out_of_range ? LONG_MAX : width;
}

void applyInts(HATAttrSpec& spec, const PropertyOptions& options) {
    spec.setIntDefault(options.intDefault.value_or(options.ints.empty() ? 0 : options.ints.front()));
    if (options.ints.empty()) {
        spec.setIntRange(options.intMin, options.intMax);
    } else {
        spec.setDiscreteInt(true);
        for (const int value : options.ints) spec.addDiscreteIntRange(value);
    }
}

void applyDoubles(HATAttrSpec& spec, const PropertyOptions& options) {
    spec.setDoubleDefault(options.doubleDefault.value_or(options.doubles.empty() ? 0.0 : options.doubles.front()));
    if (options.doubles.empty()) {
        spec.setDoubleRange(options.doubleMin, options.doubleMax);
    } else {
        spec.setDiscreteDouble(true);
        for (const double value : options.doubles) spec.addDiscreteDoubleRange(value);
    }
}

void applyTexts(HATAttrSpec& spec, HATAttrTypes::AttrType type, const PropertyOptions& options) {
    const bool hex = type == HATAttrTypes::TypeBitHex;
    const bool listed = !options.textDefault && !options.texts.empty();
    const std::string& chosen = listed ? *options.texts.front() : textOf(options.textDefault);
    if (type == HATAttrTypes::TypeString) {
        spec.setStringDefault(chosen);
        for (const TokenText& value : options.texts) spec.addStringRange(*value);
        return;
    }
    hex ? spec.setHexDefault(chosen) : spec.setBinaryDefault(chosen);
    if (options.texts.empty())
        hex ? spec.setHexRange(textOf(options.textMin), textOf(options.textMax))
            : spec.setBinaryRange(textOf(options.textMin), textOf(options.textMax));
    for (const TokenText& value : options.texts) hex ? spec.addDiscreteHex(*value) : spec.addDiscreteBinary(*value);
}

HDNTProperty* makeProperty(HATAttrTypes::AttrType type, const std::string& name, const PropertyOptions& options,
                           const yyltype& place) {
    auto property = std::make_unique<HDNTProperty>(name, type, options.test, options.simulation,
                                                   options.constraintsOnly, options.muxControl, textOf(options.units));
    property->setLocation(place);
    HATAttrSpec& spec = *property->getAttrSpec();
    switch (type) {
    case HATAttrTypes::TypeInt: applyInts(spec, options); break;
    case HATAttrTypes::TypeDouble: {
        applyDoubles(spec, options);
        const int limit = HDNTLimits::get().precision;
        property->setPrecision(limited(options.precision, limit, "Precision", "precision", place));
        break;
    }
    case HATAttrTypes::TypeBool: spec.setBoolDefault(options.boolDefault); break;
    default: applyTexts(spec, type, options); break;
    }
    if (options.description) spec.setDescription(*options.description);
    return property.release();
}

} // namespace

template <typename T>
void deleteList(std::vector<T*>* list) noexcept {
    if (!list) return;
    for (const T* item : *list) delete item;
    delete list;
}

template <typename T>
std::vector<T*>* append(std::type_identity_t<std::vector<T*>>* list, T* item) {
    std::unique_ptr<T> ownedItem(item);
    OwnedList<T> ownedList(list ? list : emptyList<T*>());
    ownedList.get()->push_back(nullptr);
    ownedList.get()->back() = ownedItem.release();
    return ownedList.release();
}

template std::vector<HDNTDecl*>* append(std::vector<HDNTDecl*>*, HDNTDecl*);
template std::vector<HDNTBlockEntity*>* append(std::vector<HDNTBlockEntity*>*, HDNTBlockEntity*);
template std::vector<HDNTProperty*>* append(std::vector<HDNTProperty*>*, HDNTProperty*);
template std::vector<HDNTNetlistEntity*>* append(std::vector<HDNTNetlistEntity*>*, HDNTNetlistEntity*);
template std::vector<HDNTExpr*>* append(std::vector<HDNTExpr*>*, HDNTExpr*);
template std::vector<HDNTPinInst*>* append(std::vector<HDNTPinInst*>*, HDNTPinInst*);
template void deleteList(std::vector<HDNTDecl*>*) noexcept;
template void deleteList(std::vector<HDNTBlockEntity*>*) noexcept;
template void deleteList(std::vector<HDNTProperty*>*) noexcept;
template void deleteList(std::vector<HDNTNetlistEntity*>*) noexcept;
template void deleteList(std::vector<HDNTExpr*>*) noexcept;
template void deleteList(std::vector<HDNTPinInst*>*) noexcept;

std::vector<HATAttrTypes::AttrType>* append(std::vector<HATAttrTypes::AttrType>* list, int type) {
    std::unique_ptr<std::vector<HATAttrTypes::AttrType>> owned(list);
    if (!owned) owned.reset(emptyList<HATAttrTypes::AttrType>());
    owned->push_back(static_cast<HATAttrTypes::AttrType>(type));
    return owned.release();
}

PropertyOptions* options() { return new PropertyOptions; }

void deleteOptions(PropertyOptions* record) noexcept { delete record; }

template <typename Value>
static PropertyOptions* addValue(PropertyOptions* record, std::vector<Value> PropertyOptions::*list, Value value) {
    std::unique_ptr<PropertyOptions> owned(record ? record : options());
    (owned.get()->*list).push_back(std::move(value));
    return owned.release();
}

PropertyOptions* value(PropertyOptions* record, int allowed) {
    return addValue(record, &PropertyOptions::ints, allowed);
}

PropertyOptions* value(PropertyOptions* record, double allowed) {
    return addValue(record, &PropertyOptions::doubles, allowed);
}

PropertyOptions* value(PropertyOptions* record, std::string* allowed) {
    return addValue(record, &PropertyOptions::texts, take(allowed));
}

HDNTProperty* property(HATAttrTypes::AttrType type, std::string* name, PropertyOptions* record, const yyltype& place) {
    const std::unique_ptr<PropertyOptions> options(record);
    return makeProperty(type, *take(name), *options, place);
}

HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string* width, std::string* name, PropertyOptions* record,
                          const yyltype& place) {
    const long bits = widthOf(*take(width));
    std::unique_ptr<HDNTProperty> result(property(type, name, record, place));
    result->setBitWidth(limited(bits, HDNTLimits::get().bitWidth, "Bit width", "bitWidth", place));
    return result.release();
}

HDNTProperty* shortBoolProperty(std::string* name, bool value, const yyltype& place) {
    const TokenText text = take(name);
    PropertyOptions options;
    options.boolDefault = value;
    return makeProperty(HATAttrTypes::TypeBool, *text, options, place);
}

HDNTBus* bus(std::string* name, int direction, bool test, bool abstract, int type, int required,
             std::vector<HDNTProperty*>* properties, const yyltype& place) {
    OwnedList<HDNTProperty> owned(properties);
    const TokenText text = take(name);
    auto* const result =
        new HDNTBus(*text, static_cast<HDNT_PIN_DIRECTION>(direction), test, abstract, static_cast<HDNT_PIN_TYPE>(type),
                    static_cast<HDNT_PIN_REQUIREDVALUE>(required), properties);
    owned.releaseItems();
    return placed(result, place);
}

HDNTBlockEntity* internalFlag(bool value, const yyltype& place) { return placed(new HDNTInternalFlag(value), place); }
HDNTBlockEntity* testFlag(bool value, const yyltype& place) { return placed(new HDNTTestFlag(value), place); }
HDNTBlockEntity* maturityLevel(int level, const yyltype& place) { return placed(new HDNTMaturityLevel(level), place); }

HDNTBlockEntity* primGroup(std::string* text, const yyltype& place) {
    return placed(new HDNTPrimGroup(*take(text)), place);
}

HDNTFunctionDecl* function(int type, const char* name, std::vector<HATAttrTypes::AttrType>* formals,
                           const yyltype& place) {
    const std::unique_ptr<std::vector<HATAttrTypes::AttrType>> owned(formals);
    return placed(new HDNTFunctionDecl(name, static_cast<HATAttrTypes::AttrType>(type), formals), place);
}

} // namespace hdnt::frontend::build
