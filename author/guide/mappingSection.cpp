// What the page of a block says of its mapping.
#include "author/expansion/outcomes.h"
#include "author/guide/Schematic.internal.h"
#include "author/guide/SourceTexts.internal.h"
#include "author/guide/pages.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author::guide {

namespace {

std::string shortPlace(const Place& place) {
    return HUTPathUtils::leafOf(place.file) + ":" + std::to_string(place.line);
}

class MappingSection {
public:
    MappingSection(const Book& book, HDNTBlock& block, const Json& sources, Progression& progression)
        : book_(book), block_(block), sources_(sources), progression_(progression) {}

    Json made() {
        for (const Book::Variant& variant : book_.relationsOf(block_).variants) addVariant(variant);
        if (outcomes_.empty()) return nullptr;
        return {{"outcomes", std::move(outcomes_)}, {"isCut", isCut_}};
    }

private:
    void addVariant(const Book::Variant& variant) {
        if (!variant.problem.empty()) return addProblem(variant);
        OutcomeOptions options;
        options.architecture = variant.architecture;
        options.places = &progression_.places;
        options.visit = [&](const HDNTExpansion& expansion, const MappingOutcome& outcome) {
            if (isKnown(variant, outcome)) return;
            if (outcomes_.size() == options.most) isCut_ = true;
            else add(variant, outcome, drawingOf(expansion));
        };
        isCut_ = outcomesOf(block_, options).isCut || isCut_;
    }

    // Architectures may have the same mapping, each in a text of its own.
    bool isKnown(const Book::Variant& variant, const MappingOutcome& outcome) {
        for (Json& known : outcomes_) {
            if (variant.architecture.empty() || known["netlist"] != outcome.text || outcome.text.empty()) continue;
            known["architecture"] = known["architecture"].get<std::string>() + ", " + variant.architecture;
            return true;
        }
        return false;
    }

    Json outcome(const Book::Variant& variant) {
        return {{"id", "outcome-" + std::to_string(outcomes_.size() + 1)},
                {"architecture", variant.architecture},
                {"setting", ""},
                {"svg", ""},
                {"reason", ""},
                {"netlist", ""},
                {"problems", Json::array()},
                {"branches", Json::array()},
                {"hasBranches", false}};
    }

    void addProblem(const Book::Variant& variant) {
        Json broken = outcome(variant);
        broken["problems"].push_back({{"text", variant.problem}});
        outcomes_.push_back(std::move(broken));
    }

    void add(const Book::Variant& variant, const MappingOutcome& from, const Json& drawing) {
        Json entry = outcome(variant);
        entry["setting"] = from.setting;
        entry["netlist"] = from.text;
        entry.update(drawing);
        for (const std::string& problem : from.problems) entry["problems"].push_back({{"text", problem}});
        for (const ReachedBranch& branch : from.branches) entry["branches"].push_back(branchOf(branch));
        entry["hasBranches"] = !from.branches.empty();
        outcomes_.push_back(std::move(entry));
    }

    Json branchOf(const ReachedBranch& branch) {
        const std::string anchor =
            lineAnchor(sources_, branch.place.file, static_cast<std::size_t>(std::max(branch.place.line, 0)));
        return {{"place", shortPlace(branch.place)},
                {"href", anchor.empty() ? Json() : Json("#" + anchor)},
                {"text", branch.place.text},
                {"taken", branch.taken}};
    }

    Json drawingOf(const HDNTExpansion& expansion) {
        const auto link = [this](const HDNTBlock& block) {
            const std::string& page = book_.pageOf(&block);
            return page.empty() ? page : "../" + page;
        };
        const Schematic drawing = schematicOf(expansion, link, "drawing-" + std::to_string(outcomes_.size() + 1));
        progression_.drawn += drawing.svg.empty() ? 0 : 1;
        if (!drawing.reason.empty()) progression_.undrawn = drawing.reason;
        return {{"svg", drawing.svg}, {"reason", drawing.reason}};
    }

    const Book& book_;
    HDNTBlock& block_;
    const Json& sources_;
    Progression& progression_;
    Json outcomes_ = Json::array();
    bool isCut_ = false;
};

} // namespace

Json mappingOf(const Book& book, HDNTBlock& block, const Json& sources, Progression& progression) {
    return MappingSection(book, block, sources, progression).made();
}

} // namespace hdnt::author::guide
