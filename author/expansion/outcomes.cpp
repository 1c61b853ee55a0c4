#include "author/expansion/outcomes.h"

#include "author/exchange/blocks.h"
#include "author/expansion/ExpansionText.h"
#include "author/lint/SettingCover.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/netlist/HDNTNetlist.h"

#include <algorithm>
#include <set>
#include <utility>

namespace hdnt::author {

namespace {

class OutcomeFinder {
public:
    OutcomeFinder(HDNTBlock& block, const HDNTNetlist& netlist, const OutcomeOptions& options)
        : block_(block), options_(options), cover_(block, netlist), ownPlaces_(options.texts),
          places_(options.places ? *options.places : ownPlaces_) {}

    MappingOutcomes find() {
        MappingOutcomes found;
        std::set<std::string> known;
        const std::size_t most = std::max<std::size_t>(options_.settings, 1);
        std::vector<SettingChoice> choices = cover_.choices(most + 1);
        found.isCut = choices.size() > most;
        if (found.isCut) choices.pop_back();
        for (const SettingChoice& choice : choices) {
            std::string outcome = outcomeOf(choice);
            if (!known.insert(outcome).second) continue;
            if (found.list.size() == options_.most) {
                found.isCut = true;
                break;
            }
            found.list.push_back(written(shrunk(choice, outcome)));
        }
        return found;
    }

private:
    template <typename Visit>
    void expand(const SettingChoice& choice, Visit&& visit) const {
        HDNTExpansion expansion(block_, options_.architecture);
        cover_.apply(choice, expansion);
        HDNTFunctionTable functions;
        cover_.addFunctions(choice, functions);
        const HDNTFunctionTable::Scope scope(functions);
        expansion.expand();
        visit(expansion);
    }

    std::string outcomeOf(const SettingChoice& choice) const {
        std::string outcome;
        expand(choice, [&](const HDNTExpansion& expansion) {
            if (!expansion.levels().empty()) outcome = author::outcomeOf(expansion.levels().front());
            for (const HDNTExpansion::Problem& problem : expansion.problems()) outcome += problem.message + '\n';
        });
        return outcome;
    }

    // Leaves out what the outcome does not take.
    SettingChoice shrunk(SettingChoice choice, const std::string& outcome) const {
        for (unsigned short& value : choice) {
            const unsigned short before = std::exchange(value, 0);
            if (before != 0 && outcomeOf(choice) != outcome) value = before;
        }
        return choice;
    }

    MappingOutcome written(const SettingChoice& choice) {
        MappingOutcome outcome{cover_.textOf(choice), {}, {}, {}};
        expand(choice, [&](const HDNTExpansion& expansion) {
            outcome.text = expansionText(given(expansion, choice));
            for (const HDNTExpansion::Problem& problem : expansion.problems())
                outcome.problems.push_back(describe(places_.placeOf(problem.location)) + ": " + problem.message);
            if (!expansion.levels().empty())
                for (const HDNTExpansion::Branch& branch : expansion.levels().front().branches)
                    outcome.branches.push_back({places_.placeOf(branch.origin.location), branch.taken});
            if (options_.visit) options_.visit(expansion, outcome);
        });
        return outcome;
    }

    ExpandedBlock given(const HDNTExpansion& expansion, const SettingChoice& choice) {
        ExpandedBlock expanded{expansion, {}, {}, places_, briefPlaces_};
        for (std::size_t i = 0; i < choice.size(); ++i) {
            const SettingFactor& factor = cover_.factors()[i];
            if (choice[i] == 0) continue;
            if (factor.kind == SettingFactor::Kind::property)
                expanded.properties.emplace_back(factor.name, textOf(factor.values[choice[i]]));
            if (factor.kind == SettingFactor::Kind::pin) expanded.connectedPins.push_back(factor.name);
        }
        return expanded;
    }

    HDNTBlock& block_;
    const OutcomeOptions& options_;
    SettingCover cover_;
    SourcePlaces ownPlaces_;
    SourcePlaces& places_;
    BriefPlaces briefPlaces_;
};

} // namespace

MappingOutcomes outcomesOf(HDNTBlock& block, const OutcomeOptions& options) {
    const HDNTNetlist* const netlist = mappingFor(block, options.architecture);
    return netlist ? OutcomeFinder(block, *netlist, options).find() : MappingOutcomes();
}

} // namespace hdnt::author
