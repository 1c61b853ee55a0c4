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

long widthOf(std::string_view constant) {
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
    const bool fromList = !options.textDefault.data() && !options.texts.empty();
    draft.setTextDefault(type, fromList ? options.texts.front() : options.textDefault);
    if (type != HATAttrTypes::TypeString && options.texts.empty())
        draft.setTextRange(type, options.textMin, options.textMax);
    for (const std::string_view value : options.texts) draft.listText(type, value);
}

HDNTProperty* makeProperty(HATAttrTypes::AttrType type, int bitWidth, std::string_view name,
                           const PropertyOptions& options, const yyltype& place) {
    static auto* const draft = new HATAttrSpec::Draft;
    tellOfOptions(options, place);
    draft->begin();
    auto property = std::make_unique<HDNTProperty>(name, type, options.test, options.simulation,
                                                   options.constraintsOnly, options.muxControl, std::string_view());
    property->setLocation(place);
    HATAttrSpec& spec = *property->getAttrSpec();
    // Nothing was said of the other types.
    if (type == HATAttrTypes::TypeInt) {
        draftNumbers(*draft, options.ints);
        spec.setDiscreteInt(!options.ints.values.empty());
    } else if (type == HATAttrTypes::TypeDouble) {
        draftNumbers(*draft, options.doubles);
        spec.setDiscreteDouble(!options.doubles.values.empty());
        draft->setPrecision(limited(options.precision, HDNTLimits::get().precision, DiagnosticCode::precision, place));
    } else if (type == HATAttrTypes::TypeBool) {
        spec.setBoolDefault(options.boolDefault);
    } else {
        draftTexts(*draft, type, options);
        draft->setBitWidth(bitWidth);
    }
    if (options.description.data()) draft->setDescription(options.description);
    if (!options.units.empty()) {
        spec.setHasUnit(true);
        draft->setUnit(options.units);
    }
    draft->giveTo(spec);
    return property.release();
}

} // namespace

HDNTProperty* property(HATAttrTypes::AttrType type, std::string_view name, const PropertyOptions& said,
                       const yyltype& place) {
    return makeProperty(type, 0, name, said, place);
}

HDNTProperty* bitProperty(HATAttrTypes::AttrType type, std::string_view width, std::string_view name,
                          const PropertyOptions& said, const yyltype& place) {
    const int limit = HDNTLimits::get().bitWidth;
    return makeProperty(type, limited(widthOf(width), limit, DiagnosticCode::bitWidth, place), name, said, place);
}

HDNTProperty* shortBoolProperty(std::string_view name, bool value, const yyltype& place) {
    PropertyOptions options;
    options.boolDefault = value;
    return makeProperty(HATAttrTypes::TypeBool, 0, name, options, place);
}

HDNTBus* bus(std::string_view name, int direction, bool test, bool abstract, int type, int required,
             std::vector<HDNTProperty*>& properties, const yyltype& place) {
    auto* const result =
        HDNTBus::declared(name, static_cast<HDNT_PIN_DIRECTION>(direction), test, abstract,
                          static_cast<HDNT_PIN_TYPE>(type), static_cast<HDNT_PIN_REQUIREDVALUE>(required), &properties);
    properties.clear();
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
HDNTBlockEntity* primGroup(std::string_view text, const yyltype& place) {
    noteAttribute(Attribute::PrimGroup, place);
    return placed(new HDNTPrimGroup(std::string(text)), place);
}

HDNTFunctionDecl* function(int type, std::string_view name, const std::vector<HATAttrTypes::AttrType>& formals,
                           const yyltype& place) {
    return placed(new HDNTFunctionDecl(std::string(name), static_cast<HATAttrTypes::AttrType>(type), &formals), place);
}

} // namespace hdnt::frontend::build
