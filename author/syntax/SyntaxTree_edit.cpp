// A tree after a change of its text: what stands outermost is read again from before the change up to where everything
// is as it was.
#include "author/syntax/Recovery.internal.h"
#include "author/syntax/SyntaxTree.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

namespace hdnt::author {

/// What the nodes from `begin` to `end`, of the old tree, are replaced by. Items of the faults and nodes of the patch
/// are of the new text.
struct SyntaxTree::Patch {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t firstItem = 0; ///< of the nodes that are replaced
    std::uint32_t oldItem = 0;   ///< the first that is as it was, in the old tree
    std::vector<SyntaxNode> nodes;
    std::vector<SyntaxMessage> faults;
    std::vector<std::uint32_t> faultItems;
    std::vector<std::uint32_t> trials;
};

namespace {

void splice(std::vector<SyntaxNode>& all, std::size_t begin, std::size_t end, const std::vector<SyntaxNode>& other) {
    const std::size_t common = std::min(end - begin, other.size());
    const auto at = std::copy_n(other.begin(), common, all.begin() + static_cast<std::ptrdiff_t>(begin));
    if (other.size() > common) all.insert(at, other.begin() + static_cast<std::ptrdiff_t>(common), other.end());
    else all.erase(at, all.begin() + static_cast<std::ptrdiff_t>(end));
}

std::uint32_t moved(std::uint32_t number, std::ptrdiff_t by) {
    return static_cast<std::uint32_t>(static_cast<std::ptrdiff_t>(number) + by);
}

} // namespace

bool SyntaxTree::isWhole(std::uint32_t node) const {
    const NtlPart part = nodes_[node].part;
    if (part != NtlPart::block && part != NtlPart::mapping && part != NtlPart::function) return false;
    return std::none_of(nodes_.begin() + node, nodes_.begin() + nodes_[node].next, std::mem_fn(&SyntaxNode::isFault));
}

// The outermost node to begin with for a change at an item: it begins before that, and behind one without faults, which
// looked no further than at its first token. 0: none.
std::uint32_t SyntaxTree::startOf(std::size_t item) const {
    std::vector<std::uint32_t> before;
    for (std::uint32_t node = 1; node < nodes_.size() && nodes_[node].begin < item; node = nodes_[node].next)
        before.push_back(node);
    // What may stand in place of a faulty first token, the element before it says.
    const auto beginsWrong = [&](std::uint32_t node) {
        return std::find(faultItems_.begin(), faultItems_.end(), nodes_[node].begin) != faultItems_.end();
    };
    while (before.size() > 1 && (!isWhole(before[before.size() - 2]) || beginsWrong(before.back()))) before.pop_back();
    const auto isElement = [&](std::uint32_t node) {
        const NtlPart part = nodes_[node].part;
        return part == NtlPart::block || part == NtlPart::mapping || part == NtlPart::function;
    };
    return before.size() > 1 && isElement(before.back()) ? before.back() : 0;
}

// Reads elements until one begins that begins so in the old tree, too, behind one without faults. From there on a judge
// of braces looks no further back than to the block itself.
bool SyntaxTree::parsePatch(Patch& patch, const frontend::SourceItems::Change& change) const {
    const auto delta = static_cast<std::ptrdiff_t>(change.newEnd) - static_cast<std::ptrdiff_t>(change.oldEnd);
    Recovery recovery(items_, patch.nodes, {patch.faults, patch.faultItems}, patch.firstItem);
    frontend::NtlGrammar grammar(recovery);
    std::uint32_t old = patch.begin;
    for (;;) {
        const std::size_t count = patch.nodes.size();
        if (!grammar.nextElement()) return false;
        const bool clean = recovery.isClean() && std::none_of(patch.nodes.begin() + static_cast<std::ptrdiff_t>(count),
                                                              patch.nodes.end(), std::mem_fn(&SyntaxNode::isFault));
        const std::size_t item = recovery.item();
        if (!clean || item < change.newEnd || item >= items_.size()) continue;
        const std::uint32_t oldItem = moved(static_cast<std::uint32_t>(item), -delta);
        std::uint32_t last = 0;
        while (old < nodes_.size() && nodes_[old].begin < oldItem) {
            last = old;
            old = nodes_[old].next;
        }
        const bool isSame = old < nodes_.size() && nodes_[old].begin == oldItem && last != 0 && isWhole(last);
        const bool isLandmark = items_[item].kind == T_Block && items_[item].startsLine && item + 1 < items_.size() &&
                                items_[item + 1].kind == T_StringConstant;
        if (!isSame || !isLandmark) continue;
        patch.end = old;
        patch.oldItem = oldItem;
        patch.trials = recovery.trials();
        recovery.layAround();
        return true;
    }
}

// What went wrong at the first item went wrong in what is replaced, since all is well before it.
void SyntaxTree::layFaults(const Patch& patch, std::ptrdiff_t items, std::ptrdiff_t bytes) {
    const auto isBefore = [&](std::uint32_t item) { return item < patch.firstItem; };
    const auto isBehind = [&](std::uint32_t item) { return item > patch.oldItem; };
    std::vector<SyntaxMessage> faults;
    std::vector<std::uint32_t> faultItems;
    const auto takeOld = [&](auto&& isKept, std::ptrdiff_t byItems, std::ptrdiff_t byBytes) {
        for (std::size_t i = 0; i < faults_.size(); ++i) {
            if (!isKept(faultItems_[i])) continue;
            SyntaxMessage& fault = faults.emplace_back(faults_[i]);
            fault.offset = moved(fault.offset, byBytes);
            if (!fault.relatedText.empty()) fault.relatedOffset = moved(fault.relatedOffset, byBytes);
            if (fault.mend) fault.mend->offset = moved(fault.mend->offset, byBytes);
            faultItems.push_back(moved(faultItems_[i], byItems));
        }
    };
    takeOld(isBefore, 0, 0);
    faults.insert(faults.end(), patch.faults.begin(), patch.faults.end());
    faultItems.insert(faultItems.end(), patch.faultItems.begin(), patch.faultItems.end());
    takeOld(isBehind, items, bytes);
    faults_ = std::move(faults);
    faultItems_ = std::move(faultItems);

    std::vector<std::uint32_t> trials;
    std::copy_if(trials_.begin(), trials_.end(), std::back_inserter(trials), isBefore);
    trials.insert(trials.end(), patch.trials.begin(), patch.trials.end());
    for (const std::uint32_t item : trials_)
        if (isBehind(item)) trials.push_back(moved(item, items));
    trials_ = std::move(trials);
}

void SyntaxTree::lay(const Patch& patch, std::ptrdiff_t items, std::ptrdiff_t bytes) {
    layFaults(patch, items, bytes);
    const auto nodes =
        static_cast<std::ptrdiff_t>(patch.nodes.size()) - static_cast<std::ptrdiff_t>(patch.end - patch.begin);
    splice(nodes_, patch.begin, patch.end, patch.nodes);
    const std::uint32_t behind = moved(patch.end, nodes);
    for (std::uint32_t node = patch.begin; node < behind; ++node) nodes_[node].next += patch.begin;
    for (std::size_t node = behind; (items != 0 || nodes != 0) && node < nodes_.size(); ++node) {
        nodes_[node].begin = moved(nodes_[node].begin, items);
        nodes_[node].end = moved(nodes_[node].end, items);
        nodes_[node].next = moved(nodes_[node].next, nodes);
    }
    nodes_.front().end = static_cast<std::uint32_t>(items_.size());
    nodes_.front().next = static_cast<std::uint32_t>(nodes_.size());
}

bool SyntaxTree::parseChanged(const frontend::SourceItems::Change& change, std::ptrdiff_t shift) {
    if (nodes_.empty()) return false;
    // In a name, a number, a comment, and the parts are the same. Not where one was mended, of which nothing need be
    // said beside characters that are no language: lines count there.
    if (change.sameKinds && faults_.empty() && trials_.empty()) {
        collectMessages();
        return true;
    }
    if (content_ != NtlList::none) return false;
    Patch patch;
    patch.begin = startOf(change.first);
    if (patch.begin == 0) return false;
    patch.firstItem = nodes_[patch.begin].begin;
    if (!parsePatch(patch, change)) return false;
    const auto isKept = [&](std::uint32_t item) { return item < patch.firstItem || item > patch.oldItem; };
    const auto kept = static_cast<std::size_t>(std::count_if(trials_.begin(), trials_.end(), isKept));
    if (kept + patch.trials.size() >= Recovery::mostTrials) return false;
    lay(patch, static_cast<std::ptrdiff_t>(change.newEnd) - static_cast<std::ptrdiff_t>(change.oldEnd), shift);
    collectMessages();
    return true;
}

bool SyntaxTree::edit(std::size_t offset, std::size_t length, std::string_view replacement) {
    const auto shift = static_cast<std::ptrdiff_t>(replacement.size()) - static_cast<std::ptrdiff_t>(length);
    if (const auto change = items_.edit(offset, length, replacement)) {
        if (parseChanged(*change, shift)) return true;
        nodes_.clear();
        faults_.clear();
        faultItems_.clear();
        parse();
        return true;
    }
    std::string text(items_.text());
    return read(text.replace(offset, length, replacement));
}

} // namespace hdnt::author
