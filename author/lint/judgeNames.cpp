// Names that are easily taken for each other, and groups.
#include "author/lint/Findings.internal.h"
#include "author/lint/MappingView.internal.h"
#include "author/lint/nearestNames.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/platform/BitText.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace hdnt::author {

namespace {

using platform::BitText;

constexpr int production = 2; ///< HDNTBlock::getMaturityLevel

// The name with one letter for all that look like it.
std::string lookOf(const std::string& name) {
    std::string look = name;
    for (char& c : look) {
        if (c == 'O') c = '0';
        else if (c == 'I' || c == 'l') c = '1';
    }
    return look;
}

/// Names of one kind in one block.
class NameList {
public:
    NameList(std::string kind, Findings& findings) : kind_(std::move(kind)), findings_(findings) {}

    void add(const std::string& name, const HDNTNode& node) {
        judge(bySize_, HSTStringUtils::to_upper_copy(name), "case", name, node);
        judge(byLook_, lookOf(name), "letters that look alike", name, node);
    }

private:
    struct Named {
        std::string name;
        const HDNTNode* node;
    };
    using Index = std::unordered_map<std::string, Named>;

    void judge(Index& index, const std::string& key, const char* difference, const std::string& name,
               const HDNTNode& node) {
        const auto [first, isNew] = index.emplace(key, Named{name, &node});
        if (isNew || first->second.name == name) return;
        findings_.add(LintCode::similarNames, node, {kind_, first->second.name, name, difference});
        if (first->second.node != &node) findings_.relate(*first->second.node, "the other one");
    }

    std::string kind_;
    Findings& findings_;
    Index bySize_;
    Index byLook_;
};

void judgeMappingNames(const HDNTNetlist& netlist, Findings& findings) {
    const MappingView view(netlist);
    NameList instances("instances", findings);
    NameList signals("signals", findings);
    for (const auto& inst : view.instances()) instances.add(inst.node->instName(), *inst.node);
    for (const auto& signal : view.signals()) signals.add(signal.name, *signal.node);
}

bool says(const std::optional<Value>& bound, const std::string& implied) {
    const auto number = bound ? BitText::of(textOf(*bound), true) : std::nullopt;
    const auto other = BitText::of(implied, true);
    return number && other && !(*number < *other) && !(*other < *number);
}

// The range of a hexadecimal property is completed when it is not given. A maximum that is needed needs a minimum
// before it.
void judgeNeed(const HDNTProperty& property, Findings& findings) {
    if (property.getType() != HATAttrTypes::TypeBitHex) return;
    const auto judge = [&](bool isNeedless, const char* what, const std::optional<Value>& bound) {
        if (!isNeedless) return;
        findings.add(LintCode::needlessBound, property,
                     {what, textOf(*bound), "property \"" + property.getName() + '"'});
    };
    const bool isMaxNeedless = property.isMaxDeclared() &&
                               says(property.getMaxValue(), BitText::greatest(property.getAdjustedBitWidth(), true));
    const bool isMinFree = isMaxNeedless || !property.isMaxDeclared();
    judge(property.isMinDeclared() && isMinFree && says(property.getMinValue(), "0"), "minimum",
          property.getMinValue());
    judge(isMaxNeedless, "maximum", property.getMaxValue());
}

void judgeProduction(const HDNTBlock& block, Findings& findings) {
    if (block.getMaturityLevel() != production || block.isTest()) return;
    if (!block.getPrimGroupType(false)) findings.add(LintCode::noGroup, block, {block.getName()});
    for (const HDNTProperty& property : block.properties()) {
        const HATAttrSpec& spec = *property.getAttrSpec();
        if (spec.getDescription().empty() && spec.isVisible() && !spec.isTest() && !spec.isSimulation())
            findings.add(LintCode::noDescription, property, {property.getName(), block.getName()});
    }
}

} // namespace

void judgeNames(const HDNTBlock& block, Findings& findings) {
    NameList pins("pins", findings);
    for (const HDNTBus& bus : block.buses()) pins.add(bus.getBaseName(), bus);
    NameList properties("properties", findings);
    for (const HDNTProperty& property : block.properties()) {
        properties.add(property.getName(), property);
        judgeNeed(property, findings);
        NameList values("values of \"" + property.getName() + "\",", findings);
        if (property.getType() == HATAttrTypes::TypeString)
            for (const Value& value : property.getAllowedValues()) values.add(textOf(value), property);
    }
    judgeProduction(block, findings);
    if (block.hasOwnNetlist()) judgeMappingNames(*block.getAttachedNetlist(), findings);
}

// A group that one block has, and nearly so many others.
void judgeGroups(const HDNTLibrary& library, Findings& findings) {
    std::map<std::string, std::vector<const HDNTBlock*>> blocks;
    for (std::size_t i = 0; i < library.getNumTypeBlocks(true); ++i) {
        const HDNTBlock* const block = library.getTypeBlock(i);
        if (const char* const group = block->getPrimGroupType(false)) blocks[group].push_back(block);
    }
    constexpr std::size_t shortest = 4;
    for (const auto& [group, few] : blocks) {
        const HDNTBlock& block = *few.front();
        if (few.size() > 1 || group.size() < shortest || block.getLibrary() != &library) continue;
        for (const auto& [other, many] : blocks) {
            if (many.size() < 2 || editDistance(group, other) != 1) continue;
            findings.add(LintCode::similarGroup, block,
                         {group, block.getName(), other, std::to_string(many.size()) + " blocks"});
            findings.relate(*many.front(), "such a block");
            break;
        }
    }
}

} // namespace hdnt::author
