#include "hdnt/compare/HDNTComparison.h"

#include "hdnt/compare/ComparisonRules.internal.h"
#include "hdnt/compare/EqualElements.internal.h"
#include "hdnt/compare/TreeBuilder.internal.h"

#include <algorithm>
#include <tuple>
#include <utility>

using Kind = HDNTElementKind;
using Facet = HDNTElementFacet;
using Change = HDNTDifference::Change;
using Trend = HDNTComparison::Trend;

namespace hdnt::compare {

namespace {

constexpr size_t nowhere = static_cast<size_t>(-1);

/// The elements below one element, without those below them.
struct List {
    std::vector<size_t> elements;
    std::vector<size_t> partners;     ///< positions in the other list, or nowhere
    std::vector<unsigned> occurrence; ///< from 1, among those of the same kind and name
};

/// What an element is found by.
struct Key {
    Kind kind;
    std::string_view name;
    std::string_view said; ///< of calls, connects and if statements, of which several have one name
    size_t position;

    auto identity() const { return std::tie(kind, name, said); }
};

std::string_view textOf(const HDNTModelTree& tree, size_t element, Facet facet) {
    const HDNTModelTree::Text* const text = tree.find(element, facet);
    return text ? tree.text(*text) : std::string_view();
}

std::string_view saidBy(const HDNTModelTree& tree, size_t element) {
    switch (tree.elements()[element].kind) {
    case Kind::preCall:
    case Kind::call: return textOf(tree, element, Facet::arguments);
    case Kind::connect: return textOf(tree, element, Facet::pins);
    case Kind::ifStmt: return textOf(tree, element, Facet::condition);
    default: return {};
    }
}

// The keys of the elements without partner, in order; equal ones in the order of the list.
std::vector<Key> sortedKeys(const HDNTModelTree& tree, const List& list, bool withSaid) {
    std::vector<Key> keys;
    for (size_t i = 0; i < list.elements.size(); ++i) {
        if (list.partners[i] != nowhere) continue;
        const HDNTModelTree::Element& element = tree.elements()[list.elements[i]];
        keys.push_back(
            {element.kind, tree.text(element.name), withSaid ? saidBy(tree, list.elements[i]) : std::string_view(), i});
    }
    std::stable_sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) { return a.identity() < b.identity(); });
    return keys;
}

List childrenOf(const HDNTModelTree& tree, size_t parent) {
    List list;
    const size_t end = parent + 1 + tree.elements()[parent].numDescendants;
    for (size_t i = parent + 1; i < end; i += 1 + tree.elements()[i].numDescendants) list.elements.push_back(i);
    list.partners.assign(list.elements.size(), nowhere);
    list.occurrence.assign(list.elements.size(), 1);
    const std::vector<Key> keys = sortedKeys(tree, list, false);
    for (size_t i = 1; i < keys.size(); ++i)
        if (keys[i - 1].identity() == keys[i].identity())
            list.occurrence[keys[i].position] = list.occurrence[keys[i - 1].position] + 1;
    return list;
}

class Comparison {
public:
    Comparison(const HDNTModelTree& before, const HDNTModelTree& after) : before_(before), after_(after) {}

    std::vector<HDNTDifference> run() {
        const HDNTModelTree::Element& root = before_.elements()[0];
        const bool isLibrary = root.kind == Kind::library;
        const std::string name(before_.text(root.name));
        const std::string newName(after_.text(after_.elements()[0].name));
        const std::string top = isLibrary ? "" : name;
        todo_.push_back({0, 0, top, top, Trend::other});
        if (name != newName) report(todo_.back(), Facet::name, Trend::other, name, newName);
        while (!todo_.empty()) {
            const Task task = std::move(todo_.back());
            todo_.pop_back();
            carryOut(task);
        }
        return std::move(differences_);
    }

private:
    // A pair of elements to be compared, or one that is on one side alone.
    struct Task {
        size_t before;
        size_t after;
        std::string block;
        std::string path;
        Trend trend; ///< of an element on one side
    };

    void carryOut(const Task& task) {
        if (task.before == nowhere) report(task, Facet::whole, task.trend, "", summary(after_, task.after));
        else if (task.after == nowhere) report(task, Facet::whole, task.trend, summary(before_, task.before), "");
        else {
            compareFacets(task);
            compareChildren(task);
        }
    }

    void report(const Task& task, Facet facet, Trend trend, std::string oldValue, std::string newValue) {
        HDNTDifference difference{};
        difference.element =
            task.before != nowhere ? before_.elements()[task.before].kind : after_.elements()[task.after].kind;
        difference.facet = facet;
        difference.effect = effectOf(difference.element, facet, trend);
        difference.change = task.before == nowhere  ? Change::added
                            : task.after == nowhere ? Change::removed
                                                    : Change::changed;
        difference.block = task.block;
        difference.path = task.path;
        difference.oldValue = std::move(oldValue);
        difference.newValue = std::move(newValue);
        difference.oldPlace = placeOf(before_, task.before);
        difference.newPlace = placeOf(after_, task.after);
        differences_.push_back(std::move(difference));
    }

    static HDNTDifference::Place placeOf(const HDNTModelTree& tree, size_t index) {
        if (index == nowhere) return {};
        const HDNTModelTree::Element& element = tree.elements()[index];
        return {std::string(tree.text(element.file)), element.line, element.column};
    }

    static std::string summary(const HDNTModelTree& tree, size_t index) {
        const HDNTModelTree::Element& element = tree.elements()[index];
        std::string text;
        for (size_t i = element.firstFacet; i < element.firstFacet + element.numFacets; ++i) {
            const HDNTModelTree::Facet& facet = tree.facets()[i];
            text += (text.empty() ? "" : ", ") + std::string(HDNTComparison::nameOf(facet.facet)) + ' ';
            text += tree.text(facet.text);
        }
        return text;
    }

    void compareFacets(const Task& task) {
        for (unsigned i = 0; i <= static_cast<unsigned>(Facet::disabled); ++i) {
            const auto facet = static_cast<Facet>(i);
            const HDNTModelTree::Text* const oldPiece = before_.find(task.before, facet);
            const HDNTModelTree::Text* const newPiece = after_.find(task.after, facet);
            if (!oldPiece && !newPiece) continue;
            const std::string_view oldText = oldPiece ? before_.text(*oldPiece) : absentText(facet);
            const std::string_view newText = newPiece ? after_.text(*newPiece) : absentText(facet);
            if (oldPiece && newPiece && oldText == newText) continue;
            const Trend trend = trendOf(facet, oldPiece ? &oldText : nullptr, newPiece ? &newText : nullptr);
            report(task, facet, trend, std::string(oldText), std::string(newText));
        }
    }

    bool areEqual(size_t before, size_t after) const { return compare::areEqual(before_, before, after_, after); }

    void match(List& old, List& now, bool withSaid) const {
        const std::vector<Key> oldKeys = sortedKeys(before_, old, withSaid);
        const std::vector<Key> newKeys = sortedKeys(after_, now, withSaid);
        for (size_t i = 0, k = 0; i < oldKeys.size() && k < newKeys.size();) {
            if (oldKeys[i].identity() < newKeys[k].identity()) ++i;
            else if (newKeys[k].identity() < oldKeys[i].identity()) ++k;
            else {
                old.partners[oldKeys[i].position] = newKeys[k].position;
                now.partners[newKeys[k++].position] = oldKeys[i++].position;
            }
        }
    }

    static std::string partOf(const HDNTModelTree& tree, const List& list, size_t position) {
        std::string part(tree.text(tree.elements()[list.elements[position]].name));
        if (list.occurrence[position] > 1) part += '#' + std::to_string(list.occurrence[position]);
        return part;
    }

    void compareChildren(const Task& task) {
        if (areEqual(task.before, task.after)) return;
        List old = childrenOf(before_, task.before);
        List now = childrenOf(after_, task.after);
        match(old, now, true);
        match(old, now, false);
        compareOrder(task, old, now);
        const size_t firstTask = todo_.size();
        for (size_t i = 0; i < old.elements.size(); ++i) {
            const size_t partner = old.partners[i];
            const size_t newElement = partner == nowhere ? nowhere : now.elements[partner];
            if (newElement != nowhere && areEqual(old.elements[i], newElement)) continue;
            child(task, before_, old, i, old.elements[i], newElement, Trend::less);
        }
        const size_t endOfKept = endOfKeptPins(now);
        for (size_t i = 0; i < now.elements.size(); ++i)
            if (now.partners[i] == nowhere)
                child(task, after_, now, i, nowhere, now.elements[i], trendOfAdded(now, i, endOfKept));
        std::reverse(todo_.begin() + static_cast<std::ptrdiff_t>(firstTask), todo_.end());
    }

    void child(const Task& parent, const HDNTModelTree& tree, const List& list, size_t position, size_t before,
               size_t after, Trend trend) {
        const std::string path = (parent.path.empty() ? "" : parent.path + '/') + partOf(tree, list, position);
        const bool isBlock = tree.elements()[list.elements[position]].kind == Kind::block;
        todo_.push_back({before, after, isBlock ? path : parent.block, path, trend});
    }

    // Behind the last of the pins that were there and have a position that counts.
    size_t endOfKeptPins(const List& now) const {
        for (size_t i = now.elements.size(); i-- > 0;)
            if (after_.elements()[now.elements[i]].kind == Kind::pin && now.partners[i] != nowhere &&
                textOf(after_, now.elements[i], Facet::direction) != "internal")
                return i + 1;
        return 0;
    }

    Trend trendOfAdded(const List& now, size_t position, size_t endOfKept) const {
        const size_t element = now.elements[position];
        if (after_.elements()[element].kind != Kind::pin) return Trend::more;
        if (!mayStayOpen(after_, element)) return Trend::less;
        const bool isInternal = textOf(after_, element, Facet::direction) == "internal";
        return isInternal || position >= endOfKept ? Trend::more : Trend::less;
    }

    // Statements in braces are one list, elsewhere those of each kind are.
    void compareOrder(const Task& task, const List& old, const List& now) {
        const bool isOneList = before_.elements()[task.before].kind == Kind::statements;
        for (size_t begin = 0, end = 0; begin < old.elements.size(); begin = end) {
            const Kind kind = before_.elements()[old.elements[begin]].kind;
            std::vector<size_t> kept;
            for (end = begin; end < old.elements.size(); ++end) {
                if (!isOneList && before_.elements()[old.elements[end]].kind != kind) break;
                if (old.partners[end] != nowhere) kept.push_back(end);
            }
            const auto byPartner = [&](size_t a, size_t b) { return old.partners[a] < old.partners[b]; };
            if (std::is_sorted(kept.begin(), kept.end(), byPartner)) continue;
            std::vector<size_t> sorted = kept;
            std::sort(sorted.begin(), sorted.end(), byPartner);
            const auto first = std::mismatch(kept.begin(), kept.end(), sorted.begin()).first - kept.begin();
            const auto last = kept.rend() - std::mismatch(kept.rbegin(), kept.rend(), sorted.rbegin()).first;
            const auto moved = [&](const std::vector<size_t>& order) {
                return std::vector<size_t>(order.begin() + first, order.begin() + last);
            };
            std::vector<size_t> arrived = moved(sorted);
            for (size_t& position : arrived) position = old.partners[position];
            report(task, Facet::order, Trend::other, names(before_, old, moved(kept)), names(after_, now, arrived));
            HDNTDifference& difference = differences_.back();
            if (isOneList) continue;
            difference.element = kind;
            difference.effect = effectOf(kind, Facet::order, Trend::other);
        }
    }

    static std::string names(const HDNTModelTree& tree, const List& list, const std::vector<size_t>& positions) {
        constexpr size_t most = 8;
        std::string text;
        for (size_t i = 0; i < std::min(positions.size(), most); ++i)
            text += (i > 0 ? ", " : "") + partOf(tree, list, positions[i]);
        return positions.size() > most ? text + ", ..." : text;
    }

    const HDNTModelTree& before_;
    const HDNTModelTree& after_;
    std::vector<Task> todo_;
    std::vector<HDNTDifference> differences_;
};

} // namespace

} // namespace hdnt::compare

std::vector<HDNTDifference> HDNTComparison::compare(const HDNTModelTree& before, const HDNTModelTree& after) {
    return hdnt::compare::Comparison(before, after).run();
}

std::vector<HDNTDifference> HDNTComparison::compare(const HDNTLibrary& before, const HDNTLibrary& after) {
    using hdnt::compare::TreeBuilder;
    const auto equal = hdnt::compare::equalBlocks(before, after);
    HDNTModelTree old = TreeBuilder::emptyTree();
    HDNTModelTree now = TreeBuilder::emptyTree();
    TreeBuilder oldBuilder(old);
    TreeBuilder newBuilder(now);
    hdnt::compare::describeLibrary(oldBuilder, before, equal);
    hdnt::compare::describeLibrary(newBuilder, after, equal);
    return compare(old, now);
}

std::vector<HDNTDifference> HDNTComparison::compare(const HDNTBlock& before, const HDNTBlock& after) {
    return compare(HDNTModelTree(before), HDNTModelTree(after));
}
