// Libraries and blocks as elements of a tree.
#include "hdnt/compare/TreeBuilder.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTFunctionDecl.h"
#include "hdnt/netlist/HDNTVisitor.h"

using Kind = HDNTElementKind;
using Facet = HDNTElementFacet;
using Type = HATAttrTypes::AttrType;
using hdnt::compare::numberText;
using hdnt::compare::pathPart;
using hdnt::compare::quoted;
using hdnt::compare::TreeBuilder;

namespace {

const char* requiredValueName(HDNT_PIN_REQUIREDVALUE value) {
    static const char* const names[] = {"none", "active", "mustConnect", "tieLow", "tieHigh", "tieSpecial", "untie"};
    const auto index = static_cast<size_t>(value);
    return index < std::size(names) ? names[index] : "unknown";
}

template <typename T, typename Text>
std::string listText(const std::vector<T>& values, Text&& text) {
    std::string list;
    for (const T& value : values) list += (list.empty() ? "" : ", ") + text(value);
    return list;
}

std::string intText(int value) { return std::to_string(value); }
std::string sameText(const std::string& value) { return value; }

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
    template <typename T, typename Text>
    void add(const std::vector<T>& listed, const T& low, const T& high, const T& byDefault, Text&& text) {
        if (property_.isMinDeclared()) builder_.facet(Facet::minimum, text(low));
        if (property_.isMaxDeclared()) builder_.facet(Facet::maximum, text(high));
        if (spec_.isEnumerated()) builder_.facet(Facet::values, listText(listed, text));
        builder_.facet(Facet::defaultValue, text(byDefault));
    }

    void describeValues() {
        switch (property_.getType()) {
        case Type::TypeBool:
            return builder_.facet(Facet::defaultValue, property_.getDefaultBoolValue() ? "true" : "false");
        case Type::TypeInt:
            return add(property_.getAllowedIntValues(), spec_.getLowIntRange(), spec_.getHighIntRange(),
                       property_.getDefaultIntValue(), intText);
        case Type::TypeDouble:
            return add(property_.getAllowedDoubleValues(), spec_.getLowDoubleRange(), spec_.getHighDoubleRange(),
                       property_.getDefaultDoubleValue(), numberText);
        case Type::TypeString:
            return add(property_.getAllowedStringValues(), {}, {}, property_.getDefaultStringValue(), quoted);
        case Type::TypeBitHex:
            return add(property_.getAllowedHexValues(), spec_.getLowHexRange(), spec_.getHighHexRange(),
                       property_.getDefaultHexValue(), sameText);
        case Type::TypeBitBinary:
            return add(property_.getAllowedBinaryValues(), spec_.getLowBinaryRange(), spec_.getHighBinaryRange(),
                       property_.getDefaultBinaryValue(), sameText);
        }
    }

    TreeBuilder& builder_;
    const HDNTProperty& property_;
    const HATAttrSpec& spec_;
};

// Buses are reached by a visit: by their index they are out of reach when they are more than the pins.
class BlockDescription : public HDNTVisitor {
public:
    explicit BlockDescription(TreeBuilder& builder) : builder_(builder) {}

    void describe(const HDNTBlock& block) {
        builder_.open(Kind::block, pathPart(block.getName()), block);
        builder_.flag(Facet::test, block.isTest());
        builder_.flag(Facet::internal, block.isInternal());
        if (block.getMaturityLevel() != 0) builder_.facet(Facet::maturity, maturityName(block.getMaturityLevel()));
        const char* const group = block.getPrimGroupType(false);
        const char* const legacyGroup = block.getPrimGroupType(true);
        addGroup(Facet::group, group);
        addGroup(Facet::subgroup, block.getPrimSubGroupType(false));
        if (legacyGroup != group) addGroup(Facet::legacyGroup, legacyGroup);
        addGroup(Facet::legacySubgroup, block.getPrimSubGroupType(true));
        const_cast<HDNTBlock&>(block).acceptOwn(*this); // only reads
        if (block.hasOwnNetlist()) describeMapping(builder_, *block.getAttachedNetlist());
        builder_.close();
    }

private:
    bool enter(HDNTNetlist*) override { return false; }

    void visit(HDNTBus* bus) override {
        builder_.open(Kind::pin, pathPart(bus->getBaseName()), *bus);
        builder_.facet(Facet::direction, HDNTPin::getDirectionName(bus->getDirection()));
        if (bus->getFirstIndex() != -1)
            builder_.facet(Facet::range, '[' + std::to_string(bus->getFirstIndex()) + ':' +
                                             std::to_string(bus->getLastIndex()) + ']');
        builder_.facet(Facet::type, HDNTPin::getTypeName(bus->getType()));
        if (bus->getRequiredValue() != HDNT_PIN_NO_VALUE)
            builder_.facet(Facet::requiredValue, requiredValueName(bus->getRequiredValue()));
        builder_.flag(Facet::test, bus->isTest());
        builder_.flag(Facet::abstract, bus->isAbstract());
    }
    void postVisit(HDNTBus*) override { builder_.close(); }
    void visit(HDNTProperty* property) override { PropertyDescription(builder_, *property).describe(); }

    static std::string maturityName(int level) {
        static const char* const names[] = {"early", "beta", "production", "deprecated"};
        const auto index = static_cast<size_t>(level);
        return index < std::size(names) ? names[index] : std::to_string(level);
    }

    void addGroup(Facet facet, const char* text) {
        if (text) builder_.facet(facet, quoted(text));
    }

    TreeBuilder& builder_;
};

} // namespace

HDNTModelTree::HDNTModelTree(const HDNTLibrary& library) {
    TreeBuilder builder(*this);
    builder.open(Kind::library, pathPart(library.getName()), library);
    for (size_t i = 0; i < library.getNumFunctionDecls(); ++i) {
        const HDNTFunctionDecl& function = *library.getFunctionDecl(i);
        std::vector<Type> formals;
        for (size_t k = 0; k < function.getNumFormals(); ++k) formals.push_back(function.getFormal(k));
        builder.open(Kind::function, pathPart(function.getName()), function);
        builder.facet(HDNTElementFacet::type, HDNTProperty::getTypeName(function.getType()));
        builder.facet(HDNTElementFacet::formals, listText(formals, HDNTProperty::getTypeName));
        builder.close();
    }
    BlockDescription blocks(builder);
    for (size_t i = 0; i < library.getNumTypeBlocks(false); ++i) blocks.describe(*library.getTypeBlock(i));
    builder.close();
}

HDNTModelTree::HDNTModelTree(const HDNTBlock& block) {
    TreeBuilder builder(*this);
    BlockDescription(builder).describe(block);
}
