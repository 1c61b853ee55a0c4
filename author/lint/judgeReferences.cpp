// Names in mappings that stand for nothing, or for something of another kind.
#include "author/lint/Findings.internal.h"
#include "author/lint/MappingView.internal.h"
#include "author/lint/nearestNames.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/model/HDNTPin.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/model/Words.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTBlockInst.h"
#include "hdnt/netlist/HDNTConnect.h"
#include "hdnt/netlist/HDNTFunctionCall.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"
#include "hdnt/netlist/HDNTValue.h"

#include <algorithm>
#include <memory_resource>
#include <unordered_map>
#include <vector>

namespace hdnt::author {

namespace {

using Names = std::vector<std::string>;

std::string quoted(const std::string& text) { return '"' + text + '"'; }

Names pinNamesOf(const HDNTBlock& block) {
    Names names;
    for (const HDNTBus& bus : block.buses()) {
        names.push_back(bus.getBaseName());
        if (bus.getFirstIndex() < 0) continue;
        for (const HDNTPin& pin : bus.pins()) names.push_back(pin.getName(false));
    }
    return names;
}

Names propertyNamesOf(const auto& owner) {
    Names names;
    for (const HDNTProperty& property : owner.properties()) names.push_back(property.getName());
    return names;
}

class ReferenceJudge {
public:
    ReferenceJudge(HDNTBlock& block, const HDNTNetlist& netlist, std::string architecture, BlockFinder& finder,
                   Findings& findings)
        : block_(block), view_(netlist), architecture_(std::move(architecture)), finder_(finder), findings_(findings) {}

    void judge() {
        for (const auto& inst : view_.instances()) judgeInstance(inst);
        judgeSignals();
        for (const auto& connect : view_.connects()) judgeConnect(connect);
        for (const auto& assign : view_.assigns()) judgeAssign(assign);
        for (const auto& stmt : view_.conditions()) judgeExpr(stmt.node->condition(), *stmt.node);
        for (const auto& call : view_.calls()) judgeExpr(call.node, *call.node);
    }

private:
    using Instance = MappingView::In<HDNTBlockInst>;

    void judgeInstance(const Instance& inst) {
        auto& named = instances_[&inst.node->instName()];
        for (const Instance& other : named) {
            if (!isAlways(inst.scope, other.scope)) continue;
            findings_.add(LintCode::duplicateInstance, *inst.node, {inst.node->instName()});
            findings_.relate(*other.node, "first declared here");
            break;
        }
        named.push_back(inst);
        if (const HDNTBlock* const type = finder_.blockOf(*inst.node)) return judgeType(inst, *type);
        Names known;
        for (const HDNTLibrary* library = block_.getLibrary(); library; library = library->getParentLibrary())
            for (const HDNTBlock& block : library->blocks()) known.push_back(block.getName());
        findings_.add(LintCode::unknownBlock, *inst.node,
                      {inst.node->typeName(), inst.node->instName(), question(inst.node->typeName(), known)});
    }

    // Whether the two are there together whenever one of them is.
    bool isAlways(std::size_t a, std::size_t b) const { return view_.isWithin(a, b) || view_.isWithin(b, a); }

    void judgeType(const Instance& inst, const HDNTBlock& type) {
        const auto add = [&](LintCode code, const std::string& what) {
            findings_.add(code, *inst.node, {inst.node->instName(), type.getName(), what, block_.getName()});
            findings_.relate(type, "declared here");
        };
        const auto levelOf = [](const HDNTBlock& block) {
            return std::string(words::maturityLevels.wordOf(block.getMaturityLevel()));
        };
        constexpr int deprecated = 3;
        const bool isOld = type.getMaturityLevel() == deprecated;
        if (isOld && block_.getMaturityLevel() != deprecated) add(LintCode::deprecatedBlock, "deprecated");
        else if (block_.getMaturityLevel() != deprecated && type.getMaturityLevel() < block_.getMaturityLevel())
            add(LintCode::lowerMaturity, levelOf(type));
        if (type.isTest() && !block_.isTest()) add(LintCode::testBlock, "a test block");
        Names missing = missingArchitectures(type);
        if (missing.empty()) return;
        std::string list;
        for (const std::string& one : missing) list += (list.empty() ? "" : ", ") + one;
        add(LintCode::otherArchitecture, list);
    }

    // Architectures in which the mapping holds and the block is not there.
    Names missingArchitectures(const HDNTBlock& type) const {
        const Names there = type.getCellArchesCfg();
        if (there.empty()) return {};
        Names wanted = architecture_.empty() ? block_.getCellArchesCfg() : Names{architecture_};
        std::erase_if(wanted, [&](const std::string& one) { return std::ranges::find(there, one) != there.end(); });
        return wanted;
    }

    void judgeSignals() {
        std::vector<const MappingView::Declared*> sorted;
        for (const auto& signal : view_.signals()) sorted.push_back(&signal);
        std::ranges::stable_sort(sorted, {}, [](const auto* signal) -> const std::string& { return signal->name; });
        const HDNTSignal* last = nullptr;
        for (std::size_t i = 1; i < sorted.size(); ++i) {
            for (std::size_t other = i; other-- > 0 && sorted[other]->name == sorted[i]->name;) {
                if (!isAlways(sorted[i]->scope, sorted[other]->scope) || sorted[i]->node == last) continue;
                findings_.add(LintCode::duplicateSignal, *sorted[i]->node, {sorted[i]->name});
                findings_.relate(*sorted[other]->node, "first declared here");
                last = sorted[i]->node;
                break;
            }
        }
    }

    /// The blocks that a reference may mean: those of the instances of that name in branches that can be taken
    /// together with its own. None when the instance is unknown, which is said, or its block is.
    std::pmr::vector<const HDNTBlock*> targetsOf(const HDNTNode& at, const std::string& instance, std::size_t scope) {
        std::pmr::vector<const HDNTBlock*> targets(&memory_);
        if (instance.empty()) targets.push_back(&block_);
        if (instance.empty()) return targets;
        const auto found = instances_.find(&instance);
        bool isHere = false;
        for (std::size_t i = 0; found != instances_.end() && i < found->second.size(); ++i) {
            const Instance& inst = found->second[i];
            if (view_.areExclusive(inst.scope, scope)) continue;
            isHere = true;
            if (const HDNTBlock* const type = finder_.blockOf(*inst.node)) targets.push_back(type);
        }
        if (isHere) return targets;
        Names known;
        for (const auto& inst : view_.instances()) known.push_back(inst.node->instName());
        const bool isElsewhere = found != instances_.end();
        findings_.add(LintCode::unknownInstance, at,
                      {instance, isElsewhere ? " in this branch: it is in another one" : question(instance, known)});
        return {};
    }

    void judgeConnect(const MappingView::In<HDNTConnect>& connect) {
        std::vector<WholeBus> buses;
        for (const HDNTPinInst* reference : connect.node->pins()) {
            const auto* const pin = nodeCast<HDNTBlockPinName>(reference);
            if (!pin) continue;
            const HDNTNode& at = pin->hasLocation() ? static_cast<const HDNTNode&>(*pin) : *connect.node;
            const NamedPins named = pinsOf(at, pin->instName(), pin->pinName(), connect.scope);
            for (std::size_t i = 0; i < named.count(); ++i) noteUse(at, *pin, named, i, connect);
            if (named.isWholeBus()) buses.push_back({&at, named.declaration()});
        }
        judgeWidths(*connect.node, buses);
    }

    // The pins of the first target that has them; when none has, that is said.
    NamedPins pinsOf(const HDNTNode& at, const std::string& instance, const std::string& pin, std::size_t scope) {
        const auto targets = targetsOf(at, instance, scope);
        for (const HDNTBlock* target : targets)
            if (const NamedPins pins(*target, pin); pins) return pins;
        if (!targets.empty()) reportPin(at, *targets.front(), pin);
        return {};
    }

    void reportPin(const HDNTNode& at, const HDNTBlock& block, const std::string& pin) {
        const std::size_t bracket = pin.find('[');
        const HDNTBus* const bus = bracket == pin.npos ? nullptr : block.findBus(pin.substr(0, bracket));
        const std::string hint = bus ? "; it has " + quoted(bus->getName()) : question(pin, pinNamesOf(block));
        findings_.add(LintCode::unknownPin, at, {block.getName(), pin, hint});
        findings_.relate(block, "declared here");
    }

    // A pin on two signals joins them, which a signal says better.
    void noteUse(const HDNTNode& at, const HDNTBlockPinName& reference, const NamedPins& pins, std::size_t index,
                 const MappingView::In<HDNTConnect>& connect) {
        const PinOfInstance pin(&reference.instName(), pins.first() + index);
        const std::string& signal = connect.node->signalName();
        std::pmr::vector<Use>& uses = uses_[pin];
        const auto other = std::find_if(uses.begin(), uses.end(), [&](const Use& use) {
            return *use.signal != signal && isAlways(use.scope, connect.scope);
        });
        if (other != uses.end()) {
            const std::string instance = reference.instName().empty() ? "" : quoted(reference.instName()) + ' ';
            const HDNTBus& bus = *pins.declaration();
            const std::size_t bit = pin.second - static_cast<std::size_t>(bus.getFirstPinIndex());
            findings_.add(LintCode::pinOnTwoSignals, at,
                          {instance + quoted(bus.pins()[bit].getName(false)), *other->signal, signal});
            findings_.relate(*other->at, "first connected here");
        } else if (std::any_of(uses.begin(), uses.end(),
                               [&](const Use& use) { return *use.signal == signal && use.scope == connect.scope; })) {
            return; // one of many is enough to find another signal by
        }
        uses.push_back({&signal, connect.scope, &at});
    }

    static std::string rangeText(const HDNTBus& bus) {
        return quoted(bus.getName()) + " of " + std::to_string(bus.pinCount());
    }

    struct WholeBus {
        const HDNTNode* at;
        const HDNTBus* bus;
    };

    // Buses that are joined whole go bit by bit, in the order of their declarations.
    void judgeWidths(const HDNTConnect& connect, const std::vector<WholeBus>& buses) {
        const auto descends = [](const HDNTBus& bus) { return bus.getFirstIndex() > bus.getLastIndex(); };
        for (std::size_t i = 1; i < buses.size(); ++i) {
            const HDNTBus& first = *buses.front().bus;
            const HDNTBus& other = *buses[i].bus;
            if (first.pinCount() != other.pinCount())
                findings_.add(LintCode::widthMismatch, *buses[i].at,
                              {rangeText(other), connect.signalName(), rangeText(first)});
            else if (first.pinCount() > 1 && descends(first) != descends(other))
                findings_.add(LintCode::oppositeOrder, *buses[i].at,
                              {quoted(other.getName()), connect.signalName(), quoted(first.getName())});
        }
    }

    void judgeAssign(const MappingView::In<HDNTAssignProperty>& assign) {
        judgeExpr(assign.node->value(), *assign.node);
        const auto* const pinAssign = nodeCast<HDNTAssignPinProperty>(assign.node);
        const auto targets = targetsOf(*assign.node, assign.node->instName(), assign.scope);
        const std::string pin = pinAssign ? pinAssign->pinName() : std::string();
        for (const HDNTBlock* target : targets) {
            const NamedPins pins = pinAssign ? NamedPins(*target, pin) : NamedPins();
            if (pinAssign && !pins) return reportPin(*assign.node, *target, pin);
            const HDNTProperty* const property = pins ? pins.declaration()->findProperty(assign.node->propName())
                                                      : target->findProperty(assign.node->propName());
            if (property) return judgeValue(*assign.node, *property);
        }
        if (targets.empty()) return;
        const HDNTBlock& block = *targets.front();
        const Names known = pinAssign ? propertyNamesOf(*NamedPins(block, pin).declaration()) : propertyNamesOf(block);
        reportProperty(*assign.node, block, pin, assign.node->propName(), known);
    }

    void reportProperty(const HDNTNode& at, const HDNTBlock& block, const std::string& pin, const std::string& name,
                        const Names& known) {
        const std::string where = pin.empty() ? "" : ", pin " + quoted(pin) + ",";
        findings_.add(LintCode::unknownProperty, at, {block.getName(), where, name, question(name, known)});
        findings_.relate(block, "declared here");
    }

    // Of what is computed, only the type is known here.
    void judgeValue(const HDNTAssignProperty& assign, const HDNTProperty& property) {
        const HDNTExpr* const value = assign.value();
        if (const auto* const constant = nodeCast<HDNTValue>(value)) {
            const std::string refusal = property.refusalOf(constant->getPlainValue());
            if (refusal.empty()) return;
            findings_.add(LintCode::valueRefused, assign, {refusal});
        } else if (value && value->exprType() != 0 &&
                   value->getComparisonType() != HDNTExpr::comparisonType(property.getType())) {
            const auto typeName = [](unsigned type) {
                return HDNTProperty::getTypeName(static_cast<HATAttrTypes::AttrType>(type));
            };
            findings_.add(LintCode::valueRefused, assign,
                          {property.getName() + ": the value is of type " + typeName(value->exprType()) +
                           ", the property of type " + typeName(property.getType())});
        } else {
            return;
        }
        findings_.relate(property, "declared here");
    }

    // What is said of an expression is said of its statement.
    void judgeExpr(const HDNTExpr* outermost, const HDNTNode& statement) {
        const std::size_t before = findings_.list.size();
        forEachExpr(outermost, [this](const HDNTExpr& expr) {
            const Question asked = questionOf(expr);
            if (asked.of == Question::Of::connection && !NamedPins(block_, asked.name))
                reportPin(expr, block_, asked.name);
            if (asked.of == Question::Of::property) judgeQuestion(expr, asked);
        });
        if (findings_.list.size() > before) findings_.note(statement);
    }

    void judgeQuestion(const HDNTExpr& expr, const Question& asked) {
        const HDNTProperty* const property = block_.findProperty(asked.name);
        if (!property) return reportProperty(expr, block_, "", asked.name, propertyNamesOf(block_));
        if (HDNTExpr::comparisonType(property->getType()) == asked.type) return;
        findings_.add(
            LintCode::propertyType, expr,
            {asked.name, HDNTProperty::getTypeName(property->getType()), nodeCast<HDNTFunctionCall>(&expr)->name()});
        findings_.relate(*property, "declared here");
    }

    struct Use {
        const std::string* signal;
        std::size_t scope;
        const HDNTNode* at;
    };
    /// Equal names are one text in the pool of names, so that their addresses tell them apart.
    using Name = const std::string*;
    using PinOfInstance = std::pair<Name, std::size_t>; ///< and its position in the block
    struct PinHash {
        std::size_t operator()(const PinOfInstance& pin) const {
            return std::hash<Name>()(pin.first) * 31 + pin.second;
        }
    };

    HDNTBlock& block_;
    MappingView view_;
    std::string architecture_;
    BlockFinder& finder_;
    Findings& findings_;
    std::pmr::monotonic_buffer_resource memory_; ///< of the many small lists, which all go at once
    std::pmr::unordered_map<Name, std::pmr::vector<Instance>> instances_{&memory_};
    std::pmr::unordered_map<PinOfInstance, std::pmr::vector<Use>, PinHash> uses_{&memory_};
};

} // namespace

void judgeReferences(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture, BlockFinder& finder,
                     Findings& findings) {
    ReferenceJudge(block, netlist, architecture, finder, findings).judge();
}

} // namespace hdnt::author
