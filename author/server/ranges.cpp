// What of a document can be folded, and what is selected from the inside to the outside.
#include "author/server/Stretch.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

bool folds(NtlPart part) {
    switch (part) {
    case NtlPart::block:
    case NtlPart::mapping:
    case NtlPart::section:
    case NtlPart::pin:
    case NtlPart::property:
    case NtlPart::statements: return true;
    default: return false;
    }
}

class Folds {
public:
    explicit Folds(const Document& document) : document_(document) {}

    Json list() {
        const SyntaxTree& tree = document_.tree();
        for (const SyntaxNode& node : tree.nodes())
            if (folds(node.part) && node.begin < node.end)
                add(stretchOf(tree, node), tree.items()[node.end - 1].kind == '}', nullptr);
        addComments();
        return std::move(all_);
    }

private:
    // A closing brace stays to be seen.
    void add(const Stretch& stretch, bool endsInBrace, const char* kind) {
        const std::size_t first = document_.lines().lineAt(stretch.begin);
        const std::size_t last = document_.lines().lineAt(stretch.end) - (endsInBrace ? 1 : 0);
        if (last == noLine || last <= first) return;
        Json fold = {{"startLine", first}, {"endLine", last}};
        if (kind) fold["kind"] = kind;
        all_.push_back(std::move(fold));
    }

    // Those in lines of their own, one below the other, are one.
    void addComments() {
        const frontend::SourceItems& items = document_.tree().items();
        for (std::size_t item = 0; item < items.size(); ++item) {
            if (!items[item].isComment() || !items[item].startsLine) continue;
            const std::size_t first = item;
            while (item + 1 < items.size() && items[item + 1].isComment() && items[item + 1].startsLine &&
                   items[item + 1].newlines < 2)
                ++item;
            add({items[first].offset, stretchOf(items[item]).end}, false, "comment");
        }
    }

    static constexpr std::size_t noLine = static_cast<std::size_t>(-1);
    const Document& document_;
    Json all_ = Json::array();
};

/// From the whole text to the token or comment at an offset. Between two that touch, the second one is at it.
class Surroundings {
public:
    Surroundings(const Document& document, std::size_t offset) : tree_(document.tree()), offset_(offset) {
        add({0, document.text().size()});
        if (tree_.nodes().empty()) return;
        for (std::uint32_t node = hasOffset(0) ? 0 : none; node != none; node = childOf(node))
            add(stretchOf(tree_, tree_.nodes()[node]));
        addItem();
    }
    const std::vector<Stretch>& stretches() const { return stretches_; }

private:
    static constexpr std::uint32_t none = static_cast<std::uint32_t>(-1);

    void add(const Stretch& stretch) {
        if (stretches_.empty() || stretch != stretches_.back()) stretches_.push_back(stretch);
    }

    bool hasOffset(std::uint32_t node) const {
        const SyntaxNode& each = tree_.nodes()[node];
        return each.begin < each.end && stretchOf(tree_, each).contains(offset_);
    }

    std::uint32_t childOf(std::uint32_t node) const {
        std::uint32_t found = none;
        for (std::uint32_t child = node + 1; child < tree_.nodes()[node].next; child = tree_.nodes()[child].next)
            if (hasOffset(child)) found = child;
        return found;
    }

    void addItem() {
        const frontend::SourceItems& items = tree_.items();
        const std::size_t at = itemBehind(items, offset_);
        for (std::size_t item = at; item-- > 0 && item + 2 >= at;) {
            const Stretch stretch = stretchOf(items[item]);
            const bool isInside = stretch.begin >= stretches_.back().begin && stretch.end <= stretches_.back().end;
            if (isInside && stretch.contains(offset_)) return add(stretch);
        }
    }

    const SyntaxTree& tree_;
    std::size_t offset_;
    std::vector<Stretch> stretches_;
};

} // namespace

Json foldingRanges(Session& session, const Json& params) { return Folds(session.documentOf(params)).list(); }

Json selectionRanges(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    Json all = Json::array();
    for (const Json& position : params.at("positions")) {
        const std::size_t offset = document.offsetAt(positionOf(position), session.encoding);
        Json chain;
        const Surroundings surroundings(document, offset);
        for (const Stretch& stretch : surroundings.stretches()) {
            PositionFinder positions(document, session.encoding);
            Json range = {{"range", rangeOf(positions, stretch.begin, stretch.end)}};
            if (!chain.is_null()) range["parent"] = std::move(chain);
            chain = std::move(range);
        }
        all.push_back(std::move(chain));
    }
    return all;
}

} // namespace hdnt::author::server
