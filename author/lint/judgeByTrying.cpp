// What comes out of a mapping, for settings chosen to show all of it.
#include "author/lint/Findings.internal.h"
#include "author/lint/MappingView.internal.h"
#include "author/lint/SettingCover.h"
#include "author/lint/Wiring.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/model/HDNTProperty.h"
#include "hdnt/netlist/HDNTAssignProperty.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTSignal.h"
#include "hdnt/netlist/HDNTStmt.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace hdnt::author {

namespace {

using PlaceKey = std::tuple<int, int, int>;

PlaceKey keyOf(const yyltype& at) { return {at.first_line, at.first_column, at.storeOffset}; }

/// A mapping under trial.
class Trial {
public:
    Trial(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture, std::size_t budget,
          Findings& findings, MappingGraph& graph)
        : block_(block), netlist_(netlist), architecture_(architecture), budget_(budget), findings_(findings),
          graph_(graph), view_(netlist), cover_(block, netlist) {
        for (const auto& stmt : view_.conditions())
            if (const auto at = stmt.node->copyOfLocation()) branches_[keyOf(*at)];
        for (const MappingView::Declared& signal : view_.signals())
            if (signal.name != "@0" && signal.name != "@1") single_.push_back(&signal);
        for (const HDNTBus& bus : block_.buses())
            if (isUsual(bus) && !isAskedFor(bus)) unused_.push_back(&bus);
    }

    void judge() {
        for (const SettingChoice& choice : cover_.choices(budget_)) run(choice);
        seekBranches();
        const bool isCertain = !hadProblems_ && isLeft(); // what was seen nowhere is nowhere
        if (isCertain) seekEffects();
        for (const auto& [fault, seen] : faults_) report(fault, seen);
        if (!isCertain) return;
        reportBranches();
        reportSignals();
        reportInputs();
    }

private:
    /// Where a fault was seen.
    struct Seen {
        std::size_t count = 0;
        SettingChoice smallest;
    };
    /// Which ways an if statement went.
    struct Ways {
        bool held = false;
        bool failed = false;
    };
    /// A setting, and which way each if statement went; those that were not reached are left out.
    struct Try {
        SettingChoice choice;
        std::map<PlaceKey, bool> ways;
    };

    bool isLeft() const { return tried_ < budget_; }

    static bool isUsual(const HDNTBus& bus) {
        return bus.getDirection() == HDNT_PIN_INPUT && !bus.isTest() && !bus.isAbstract();
    }

    // Whether it is connected is all that the mapping may want to know of a pin.
    bool isAskedFor(const HDNTBus& bus) const {
        return std::ranges::any_of(cover_.factors(), [&](const SettingFactor& factor) {
            return factor.kind == SettingFactor::Kind::pin && baseOf(factor.name) == bus.getBaseName();
        });
    }
    static std::string baseOf(const std::string& pin) { return pin.substr(0, pin.find('[')); }

    void run(const SettingChoice& choice) {
        if (!chosen_.insert(choice).second) return;
        const std::vector<WiringFault> faults = tryOut(choice);
        tries_.push_back({choice, std::move(ways_)});
        for (const WiringFault& fault : faults) {
            Seen& seen = faults_[fault];
            if (seen.count == 0 || sizeOf(choice) < sizeOf(seen.smallest)) seen.smallest = choice;
            ++seen.count;
        }
    }

    static std::ptrdiff_t sizeOf(const SettingChoice& choice) {
        return std::ranges::count_if(choice, [](unsigned short value) { return value != 0; });
    }

    std::vector<WiringFault> tryOut(const SettingChoice& choice) {
        ++tried_;
        ways_.clear();
        HDNTExpansion expansion(block_, architecture_);
        cover_.apply(choice, expansion);
        HDNTFunctionTable functions;
        cover_.addFunctions(choice, functions);
        const HDNTFunctionTable::Scope scope(functions);
        expansion.expand();
        std::vector<WiringFault> faults;
        for (const HDNTExpansion::Problem& problem : expansion.problems())
            faults.push_back({LintCode::mappingProblem, problem.location, {problem.message}});
        hadProblems_ = hadProblems_ || !faults.empty();
        if (expansion.levels().empty()) return faults;
        const HDNTExpansion::Level& level = expansion.levels().front();
        note(level);
        const Wiring wiring(level);
        std::erase_if(unused_, [&](const HDNTBus* bus) { return wiring.uses(*bus); });
        std::erase_if(single_, [&](const MappingView::Declared* signal) { return wiring.joins(signal->name); });
        for (WiringFault& fault : wiring.faults(openPinsOf(choice))) faults.push_back(std::move(fault));
        return faults;
    }

    void note(const HDNTExpansion::Level& level) {
        for (const HDNTExpansion::Branch& branch : level.branches) {
            Ways& ways = branches_[keyOf(branch.origin.location)];
            (branch.taken ? ways.held : ways.failed) = true;
            ways_.emplace(keyOf(branch.origin.location), branch.taken);
        }
        for (const HDNTExpansion::Instance& instance : level.instances)
            if (instance.block) graph_.add(block_, *instance.block, instance.origin.location);
        if (wantsOutcome_) outcome_ = outcomeOf(level);
    }

    std::set<std::string> openPinsOf(const SettingChoice& choice) const {
        std::set<std::string> open;
        for (std::size_t i = 0; i < choice.size(); ++i) {
            const SettingFactor& factor = cover_.factors()[i];
            if (factor.kind == SettingFactor::Kind::pin && choice[i] == 0) open.insert(baseOf(factor.name));
        }
        return open;
    }

    // Pairs of values may miss a branch that takes three: its own factors are tried in all combinations.
    void seekBranches() {
        for (std::size_t i = 0; i < view_.conditions().size(); ++i) {
            const auto at = view_.conditions()[i].node->copyOfLocation();
            if (!at) continue;
            const Ways& ways = branches_[keyOf(*at)];
            for (const SettingChoice& choice :
                 cover_.combinations(cover_.deciders()[i], SettingChoice(cover_.factors().size()),
                                     budget_ - std::min(budget_, tried_))) {
                if ((ways.held && ways.failed) || !isLeft()) break;
                run(choice);
            }
        }
    }

    // Each property alone, from several settings on, until the outcome is another one; but for those of which it is
    // known that they turn a condition.
    void seekEffects() {
        wantsOutcome_ = true;
        std::vector<SettingChoice> bases = cover_.choices(16);
        for (std::size_t i = 0; i < cover_.factors().size(); ++i) {
            const SettingFactor& factor = cover_.factors()[i];
            if (factor.kind != SettingFactor::Kind::property || factor.values.size() < 2) continue;
            const bool hasEffect = turnsCondition(i) || std::ranges::any_of(bases, [&](const SettingChoice& base) {
                                       return tells(base, i);
                                   });
            if (!hasEffect && isLeft()) withoutEffect_.push_back(factor.name);
        }
    }

    // Whether an if statement went both ways while all else that decides about it was the same.
    bool turnsCondition(std::size_t factor) const {
        for (std::size_t i = 0; i < view_.conditions().size(); ++i) {
            const std::vector<std::size_t>& deciders = cover_.deciders()[i];
            const auto at = view_.conditions()[i].node->copyOfLocation();
            if (!at || std::ranges::find(deciders, factor) == deciders.end()) continue;
            std::map<SettingChoice, bool> waysByOthers;
            for (const Try& one : tries_) {
                const auto way = one.ways.find(keyOf(*at));
                if (way == one.ways.end()) continue;
                SettingChoice others;
                for (const std::size_t other : deciders)
                    if (other != factor) others.push_back(one.choice[other]);
                if (waysByOthers.emplace(std::move(others), way->second).first->second != way->second) return true;
            }
        }
        return false;
    }

    bool tells(SettingChoice choice, std::size_t factor) {
        std::string first;
        for (std::size_t value = 0; value < cover_.factors()[factor].values.size() && isLeft(); ++value) {
            choice[factor] = static_cast<unsigned short>(value);
            tryOut(choice);
            if (value == 0) first = outcome_;
            else if (outcome_ != first) return true;
        }
        return false;
    }

    std::string settingText(const Seen& seen) const {
        if (tries_.size() == 1) return {};
        if (seen.count == tries_.size()) return "; in every setting";
        const std::string text = cover_.textOf(seen.smallest);
        return "; with " + (text.empty() ? "the defaults" : text) + " (" + std::to_string(seen.count) + " of " +
               std::to_string(tries_.size()) + " settings)";
    }

    std::string settingsText(const std::string& which) const {
        return tries_.size() == 1 ? "the only setting" : which + " of " + std::to_string(tries_.size()) + " settings";
    }

    void report(const WiringFault& fault, Seen seen) {
        if (fault.code == LintCode::mappingProblem && findings_.speakOf(fault.at)) return;
        shrink(fault, seen.smallest);
        std::vector<std::string> arguments = fault.arguments;
        arguments.push_back(settingText(seen));
        findings_.add(fault.code, fault.at, arguments);
    }

    // Leaves out of a setting what the fault does not need.
    void shrink(const WiringFault& fault, SettingChoice& choice) {
        for (std::size_t i = 0; i < choice.size(); ++i) {
            if (choice[i] == 0) continue;
            SettingChoice less = choice;
            less[i] = 0;
            const std::vector<WiringFault> faults = tryOut(less);
            const auto isSame = [&](const WiringFault& one) { return !(one < fault) && !(fault < one); };
            if (std::ranges::any_of(faults, isSame)) choice = std::move(less);
        }
    }

    void reportBranches() {
        std::set<std::string> excused;
        for (std::size_t i = 0; i < view_.conditions().size(); ++i) {
            const HDNTIfStmt& stmt = *view_.conditions()[i].node;
            const auto at = stmt.copyOfLocation();
            if (!at) continue;
            const Ways ways = branches_[keyOf(*at)];
            if (ways.held == ways.failed) continue; // both, or in a branch that is not taken itself
            excuse(stmt, i, excused);
            if (ways.failed)
                findings_.add(LintCode::branchNeverTaken, *at, {"the branch", "holds", settingsText("any")});
            else if (stmt.elseStmt())
                findings_.add(LintCode::branchNeverTaken, *at, {"the else branch", "fails", settingsText("any")});
            else findings_.add(LintCode::conditionAlwaysTrue, *at, {settingsText("each")});
        }
        for (const std::string& name : withoutEffect_)
            if (const HDNTProperty* const property = block_.findProperty(name); property && !excused.contains(name))
                findings_.add(LintCode::propertyWithoutEffect, *property, {name, block_.getName()});
    }

    // That a property has no effect follows from a condition that never changes, which is said.
    void excuse(const HDNTIfStmt& stmt, std::size_t condition, std::set<std::string>& names) const {
        for (const std::size_t factor : cover_.deciders()[condition]) names.insert(cover_.factors()[factor].name);
        const auto addThose = [&](const HDNTExpr* expr, std::size_t scope) {
            for (; scope != 0 && view_.scopes()[scope].stmt != &stmt;) scope = view_.scopes()[scope].outer;
            if (scope == 0) return;
            forEachExpr(expr, [&](const HDNTExpr& one) {
                const Question asked = questionOf(one);
                const HDNTProperty* const property =
                    asked.of == Question::Of::property ? block_.findProperty(asked.name) : nullptr;
                if (property) names.insert(property->getName());
            });
        };
        for (const auto& assign : view_.assigns()) addThose(assign.node->value(), assign.scope);
        for (const auto& inner : view_.conditions()) addThose(inner.node->condition(), inner.scope);
    }

    void reportSignals() {
        std::set<const HDNTSignal*> reported;
        for (const MappingView::Declared* signal : single_)
            if (!isAtFault(signal->name) && reported.insert(signal->node).second)
                findings_.add(LintCode::singlePinSignal, *signal->node, {signal->name});
    }

    // A signal that is spoken of already.
    bool isAtFault(const std::string& signal) const {
        return std::ranges::any_of(faults_, [&](const auto& one) {
            const bool isOfSignal =
                one.first.code == LintCode::undrivenSignal || one.first.code == LintCode::twoDrivers;
            return isOfSignal && one.first.arguments.front() == signal;
        });
    }

    void reportInputs() {
        if (netlist_.section() == HDNTNetlist::Section::modifiedby) return;
        for (const HDNTBus* bus : unused_)
            findings_.add(LintCode::unusedInput, netlist_, {bus->getName(), block_.getName()});
    }

    HDNTBlock& block_;
    const HDNTNetlist& netlist_;
    const std::string& architecture_;
    std::size_t budget_;
    Findings& findings_;
    MappingGraph& graph_;
    MappingView view_;
    SettingCover cover_;

    std::size_t tried_ = 0; ///< expansions
    std::set<SettingChoice> chosen_;
    std::vector<Try> tries_;
    std::map<PlaceKey, bool> ways_; ///< of the last expansion
    bool wantsOutcome_ = false;
    std::string outcome_; ///< of the last expansion
    bool hadProblems_ = false;
    std::map<WiringFault, Seen> faults_;
    std::map<PlaceKey, Ways> branches_;
    std::vector<const HDNTBus*> unused_;               ///< inputs of the block, in each try
    std::vector<const MappingView::Declared*> single_; ///< signals that join nothing, likewise
    std::vector<std::string> withoutEffect_;
};

} // namespace

void judgeByTrying(HDNTBlock& block, const HDNTNetlist& netlist, const std::string& architecture, std::size_t budget,
                   Findings& findings, MappingGraph& graph) {
    // Something to come: there is nothing in it to be judged.
    if (netlist.instances().empty() && netlist.connects().empty() && netlist.ifStmts().empty()) return;
    Trial(block, netlist, architecture, std::max<std::size_t>(budget, 1), findings, graph).judge();
}

bool MappingGraph::ByName::operator()(const HDNTBlock* a, const HDNTBlock* b) const {
    const int order = a->getName().compare(b->getName());
    return order != 0 ? order < 0 : std::less<>()(a, b);
}

void MappingGraph::add(const HDNTBlock& from, const HDNTBlock& to, const yyltype& at) {
    edges_[&from].emplace(&to, at);
}

// Depth first; a way back to a block that is on the way is a circle. Each block is gone through once.
void MappingGraph::reportCircles(Findings& findings) const {
    std::set<const HDNTBlock*> done;
    for (const auto& [start, ignored] : edges_) {
        std::vector<std::pair<const HDNTBlock*, Edges::const_iterator>> way;
        const auto enter = [&](const HDNTBlock* block) {
            const auto found = edges_.find(block);
            if (done.insert(block).second && found != edges_.end()) way.emplace_back(block, found->second.begin());
        };
        enter(start);
        while (!way.empty()) {
            auto& [block, next] = way.back();
            if (next == edges_.at(block).end()) {
                way.pop_back();
                continue;
            }
            const auto [to, at] = *next++;
            const auto onWay = std::ranges::find(way, to, [](const auto& step) { return step.first; });
            if (onWay == way.end()) {
                enter(to);
                continue;
            }
            std::string circle;
            for (auto step = onWay; step != way.end(); ++step) circle += step->first->getName() + " -> ";
            findings.add(LintCode::mappingCircle, at, {circle + to->getName()});
        }
    }
}

} // namespace hdnt::author
