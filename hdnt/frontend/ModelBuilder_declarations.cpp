#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/frontend/Losses.internal.h"
#include "hdnt/frontend/ModelBuilder.internal.h"
#include "hdnt/frontend/PropertyOptions.internal.h"
#include "hdnt/model/HDNTBus.h"
#include "hdnt/model/HDNTFlags.h"
#include "hdnt/model/HDNTPrimGroup.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/platform/AttrSpecDraft.internal.h"

#include <algorithm>
#include <charconv>
#include <memory>

namespace hdnt::frontend::build {

namespace {

// A number of the text that has to stay within 0 and a limit: one report when it does not, then the nearest bound.
int limited(long value, int limit, DiagnosticCode code, const yyltype& place) {
    if (value >= 0 && value <= limit) return static_cast<int>(value);
    HDNTError::report(code, &place, {std::to_string(value), std::to_string(limit)});
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

template <typename Number>
void draftNumbers(HATAttrSpec::Draft& draft, const NumberOptions<Number>& said) {
    draft.setDefault(said.byDefault.value_or(said.values.empty() ? Number() : said.values.front()));
    if (said.values.empty()) draft.setRange(said.min, said.max);
    for (const Number value : said.values) draft.list(value);
}

void draftTexts(HATAttrSpec::Draft& draft, HATAttrTypes::AttrType type, const PropertyOptions& options) {
    const bool fromList = !options.textDefault && !options.texts.empty();
    draft.setTextDefault(type, fromList ? *options.texts.front() : textOf(options.textDefault));
    if (type != HATAttrTypes::TypeString && options.texts.empty())
        draft.setTextRange(type, textOf(options.textMin), textOf(options.textMax));
    for (const TokenText& value : options.texts) draft.listText(type, *value);
}

HDNTProperty* makeProperty(HATAttrTypes::AttrType type, int bitWidth, const std::string& name,
                           const PropertyOptions& options, const yyltype& place) {
    static const std::string* const noUnits = new std::string;
    static auto* const draft = new HATAttrSpec::Draft;
    tellOfOptions(options, place);
    draft->clear(); // a property that could not be made may have left something
    auto property = std::make_unique<HDNTProperty>(name, type, options.test, options.simulation,
                                                   options.constraintsOnly, options.muxControl, *noUnits);
    property->setLocation(place);
    HATAttrSpec& spec = *property->getAttrSpec();
    // Nothing was said of the other types, which leaves their facets as they are.
    spec.setBoolDefault(options.boolDefault);
    draftNumbers(*draft, options.ints);
    draftNumbers(*draft, options.doubles);
    draftTexts(*draft, type, options);
    if (type == HATAttrTypes::TypeDouble)
        draft->setPrecision(limited(options.precision, HDNTLimits::get().precision, DiagnosticCode::precision, place));
    spec.setDiscreteInt(!options.ints.values.empty());
    spec.setDiscreteDouble(!options.doubles.values.empty());
    draft->setBitWidth(bitWidth);
    if (options.description) draft->setDescription(*options.description);
    if (const std::string& unit = textOf(options.units); !unit.empty()) {
        spec.setHasUnit(true);
        draft->setUnit(unit);
    }
    draft->giveTo(spec);
    return property.release();
}

} // namespace

std::vector<HATAttrTypes::AttrType>* append(std::vector<HATAttrTypes::AttrType>* list, int type) {
    std::unique_ptr<std::vector<HATAttrTypes::AttrType>> owned(list);
    if (!owned) owned.reset(emptyList<HATAttrTypes::AttrType>());
    owned->push_back(static_cast<HATAttrTypes::AttrType>(type));
    return owned.release();
}

// One record serves one property after the other, so that its lists keep their room.
static constinit PropertyOptions* spareOptions = nullptr;

PropertyOptions* options() { return spareOptions ? std::exchange(spareOptions, nullptr) : new PropertyOptions; }

PropertyOptions* options(Option said) {
    PropertyOptions* const record = options();
    record->said = PropertyOptions::bitOf(said);
    return record;
}

// Not inline: the parser's loop takes one instruction in a hundred more with it.
PropertyOptions* say(PropertyOptions* record, Option option, const yyltype& place) noexcept {
    if (record->hasSaid(option)) noteRepeat(*record, option, place);
    record->said |= PropertyOptions::bitOf(option);
    return record;
}

void deleteOptions(PropertyOptions* record) noexcept {
    if (!record || spareOptions) {
        delete record;
    } else {
        record->reset();
        spareOptions = record;
    }
}

struct DeleteOptions {
    void operator()(PropertyOptions* record) const noexcept { deleteOptions(record); }
};
using OptionsOwner = std::unique_ptr<PropertyOptions, DeleteOptions>;

template <typename Add>
static PropertyOptions* withRecord(PropertyOptions* record, Add&& add) {
    OptionsOwner owned(record ? record : options());
    add(*owned);
    return owned.release();
}

PropertyOptions* value(PropertyOptions* record, int allowed) {
    return withRecord(record, [=](PropertyOptions& said) { said.ints.values.push_back(allowed); });
}

PropertyOptions* value(PropertyOptions* record, double allowed) {
    return withRecord(record, [=](PropertyOptions& said) { said.doubles.values.push_back(allowed); });
}

PropertyOptions* value(PropertyOptions* record, std::string* allowed) {
    TokenText text = take(allowed);
    return withRecord(record, [&](PropertyOptions& said) { said.texts.push_back(std::move(text)); });
}

HDNTProperty* property(HATAttrTypes::AttrType type, std::string* name, PropertyOptions* record, const yyltype& place) {
    const OptionsOwner options(record);
    return makeProperty(type, 0, *take(name), *options, place);
}

HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string* width, std::string* name, PropertyOptions* record,
                          const yyltype& place) {
    const OptionsOwner options(record);
    const TokenText nameText = take(name);
    const int limit = HDNTLimits::get().bitWidth;
    return makeProperty(type, limited(widthOf(*take(width)), limit, DiagnosticCode::bitWidth, place), *nameText,
                        *options, place);
}

HDNTProperty* shortBoolProperty(std::string* name, bool value, const yyltype& place) {
    const TokenText text = take(name);
    PropertyOptions options;
    options.boolDefault = value;
    return makeProperty(HATAttrTypes::TypeBool, 0, *text, options, place);
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

HDNTBlockEntity* internalFlag(bool value, const yyltype& place) {
    noteAttribute(Attribute::Internal, place);
    return placed(new HDNTInternalFlag(value), place);
}
HDNTBlockEntity* testFlag(bool value, const yyltype& place) {
    noteAttribute(Attribute::Test, place);
    return placed(new HDNTTestFlag(value), place);
}
HDNTBlockEntity* maturityLevel(int level, const yyltype& place) {
    noteAttribute(Attribute::MaturityLevel, place);
    return placed(new HDNTMaturityLevel(level), place);
}
HDNTBlockEntity* primGroup(std::string* text, const yyltype& place) {
    const TokenText group = take(text);
    noteAttribute(Attribute::PrimGroup, place);
    return placed(new HDNTPrimGroup(*group), place);
}

HDNTFunctionDecl* function(int type, std::string* name, std::vector<HATAttrTypes::AttrType>* formals,
                           const yyltype& place) {
    const std::unique_ptr<std::vector<HATAttrTypes::AttrType>> owned(formals);
    return placed(new HDNTFunctionDecl(*take(name), static_cast<HATAttrTypes::AttrType>(type), formals), place);
}

} // namespace hdnt::frontend::build
