// Libraries and blocks as elements of a tree.
#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"

using Kind = HDNTElementKind;
using Facet = HDNTElementFacet;
using Type = HATAttrTypes::AttrType;
using hdnt::compare::pathPart;
using hdnt::compare::quoted;
using hdnt::compare::TreeBuilder;
namespace words = hdnt::words;

namespace {

template <typename T, typename Text>
std::string listText(const std::vector<T>& values, Text&& text) {
    std::string list;
    for (const T& value : values) list += (list.empty() ? "" : ", ") + text(value);
    return list;
}

std::string wordOr(std::string_view word, const std::string& otherwise) {
    return word.empty() ? otherwise : std::string(word);
}

class PropertyDescription {
public:
    PropertyDescription(TreeBuilder& builder, const HDNTProperty& property)
        : builder_(builder), property_(property), spec_(*property.getAttrSpec()) {}

    void describe() {
        builder_.open(Kind::property, pathPart(property_.getName()), property_);
        builder_.facet(Facet::type, HDNTProperty::getTypeName(property_.getType()));
        if (property_.getBitWidth() != 0) builder_.facet(Facet::width, std::to_string(property_.getBitWidth()));
        describeValues();
        constexpr int usualPrecision = 6;
        if (property_.getPrecision() != usualPrecision)
            builder_.facet(Facet::precision, std::to_string(property_.getPrecision()));
        if (spec_.hasUnit()) builder_.facet(Facet::units, quoted(spec_.getUnitDefault()));
        builder_.flag(Facet::test, spec_.isTest());
        builder_.flag(Facet::simulation, spec_.isSimulation());
        builder_.flag(Facet::constraintsOnly, spec_.isConstraintsOnly());
        builder_.flag(Facet::muxControl, property_.isMuxControl());
        const std::string& description = property_.getDeclaredDescription();
        if (!description.empty()) builder_.facet(Facet::description, quoted(description));
        builder_.close();
    }

private:
    void describeValues() {
        if (property_.isMinDeclared()) builder_.facet(Facet::minimum, textOf(*property_.getMinValue()));
        if (property_.isMaxDeclared()) builder_.facet(Facet::maximum, textOf(*property_.getMaxValue()));
        if (spec_.isEnumerated())
            builder_.facet(Facet::values, listText(property_.getAllowedValues(),
                                                   [this](const hdnt::Value& value) { return textOf(value); }));
        builder_.facet(Facet::defaultValue, textOf(property_.getDefaultValue()));
    }

    // Bit vectors stand without quotes.
    std::string textOf(const hdnt::Value& value) const {
        return HATAttrTypes::isBitVector(property_.getType()) ? hdnt::textOf(value) : hdnt::compare::valueText(value);
    }

    TreeBuilder& builder_;
    const HDNTProperty& property_;
    const HATAttrSpec& spec_;
};

class BlockDescription {
public:
    explicit BlockDescription(TreeBuilder& builder) : builder_(builder) {}

    void describe(const HDNTBlock& block) {
        builder_.open(Kind::block, pathPart(block.getName()), block);
        builder_.flag(Facet::test, block.isTest());
        builder_.flag(Facet::internal, block.isInternal());
        if (const int level = block.getMaturityLevel(); level != 0)
            builder_.facet(Facet::maturity, wordOr(words::maturityLevels.wordOf(level), std::to_string(level)));
        const char* const group = block.getPrimGroupType(false);
        const char* const legacyGroup = block.getPrimGroupType(true);
        addGroup(Facet::group, group);
        addGroup(Facet::subgroup, block.getPrimSubGroupType(false));
        if (legacyGroup != group) addGroup(Facet::legacyGroup, legacyGroup);
        addGroup(Facet::legacySubgroup, block.getPrimSubGroupType(true));
        for (const HDNTBus& bus : block.buses()) describe(bus);
        for (const HDNTProperty& property : block.properties()) PropertyDescription(builder_, property).describe();
        if (block.hasOwnNetlist()) describeMapping(builder_, *block.getAttachedNetlist());
        builder_.close();
    }

private:
    void describe(const HDNTBus& bus) {
        builder_.open(Kind::pin, pathPart(bus.getBaseName()), bus);
        builder_.facet(Facet::direction, HDNTPin::getDirectionName(bus.getDirection()));
        if (bus.getFirstIndex() != -1)
            builder_.facet(Facet::range,
                           '[' + std::to_string(bus.getFirstIndex()) + ':' + std::to_string(bus.getLastIndex()) + ']');
        builder_.facet(Facet::type, HDNTPin::getTypeName(bus.getType()));
        if (const HDNT_PIN_REQUIREDVALUE required = bus.getRequiredValue(); required != HDNT_PIN_NO_VALUE)
            builder_.facet(Facet::requiredValue, wordOr(words::requiredValues.wordOf(required), "unknown"));
        builder_.flag(Facet::test, bus.isTest());
        builder_.flag(Facet::abstract, bus.isAbstract());
        for (const HDNTProperty& property : bus.properties()) PropertyDescription(builder_, property).describe();
        builder_.close();
    }

    void addGroup(Facet facet, const char* text) {
        if (text) builder_.facet(facet, quoted(text));
    }

    TreeBuilder& builder_;
};

} // namespace

void hdnt::compare::describeBlock(TreeBuilder& builder, const HDNTBlock& block) {
    BlockDescription(builder).describe(block);
}

void hdnt::compare::describeLibrary(TreeBuilder& builder, const HDNTLibrary& library,
                                    const std::unordered_set<const HDNTBlock*>& namesOnly) {
    builder.open(Kind::library, pathPart(library.getName()), library);
    for (const HDNTFunctionDecl& function : library.functions()) {
        std::vector<Type> formals;
        for (size_t k = 0; k < function.getNumFormals(); ++k) formals.push_back(function.getFormal(k));
        builder.open(Kind::function, pathPart(function.getName()), function);
        builder.facet(Facet::type, HDNTProperty::getTypeName(function.getType()));
        builder.facet(Facet::formals, listText(formals, HDNTProperty::getTypeName));
        builder.close();
    }
    for (const HDNTBlock& block : library.blocks()) {
        if (!namesOnly.contains(&block)) {
            describeBlock(builder, block);
            continue;
        }
        builder.open(Kind::block, pathPart(block.getName()), block);
        builder.close();
    }
    builder.close();
}

HDNTModelTree::HDNTModelTree(const HDNTLibrary& library) {
    TreeBuilder builder(*this);
    hdnt::compare::describeLibrary(builder, library);
}

HDNTModelTree::HDNTModelTree(const HDNTBlock& block) {
    TreeBuilder builder(*this);
    hdnt::compare::describeBlock(builder, block);
}
