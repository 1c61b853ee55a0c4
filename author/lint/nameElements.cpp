#include "author/lint/Baseline.h"
#include "author/lint/Statements.internal.h"

#include <algorithm>

namespace hdnt::author {

namespace {

/// The words of one text for what its places are in.
class ElementNamer {
public:
    explicit ElementNamer(const SyntaxTree& tree) : tree_(tree) {}

    /// To be asked in the order of the offsets.
    std::string nameAt(std::size_t offset) {
        const auto item = static_cast<std::uint32_t>(itemAt(offset));
        const auto& nodes = tree_.nodes();
        for (; next_ < nodes.size() && nodes[next_].begin <= item; ++next_) {
            leave(nodes[next_].begin);
            open_.push_back(&nodes[next_]);
        }
        leave(item);
        std::string name;
        for (const SyntaxNode* const node : open_)
            if (isNamed(node->part)) name += (name.empty() ? "" : "/") + nameOf(*node);
        return name;
    }

private:
    // Branches and sections come and go around a statement that stays the same.
    static bool isNamed(NtlPart part) {
        return isStatement(part) && part != NtlPart::section && part != NtlPart::ifStatement;
    }

    void leave(std::uint32_t item) {
        while (!open_.empty() && open_.back()->end <= item) open_.pop_back();
    }

    // The item that the offset is in, or the one behind it.
    std::size_t itemAt(std::size_t offset) const {
        std::size_t first = 0;
        for (std::size_t last = tree_.items().size(); first < last;) {
            const std::size_t middle = first + (last - first) / 2;
            const auto& item = tree_.items()[middle];
            if (item.offset + item.length <= offset) first = middle + 1;
            else last = middle;
        }
        return first;
    }

    // Its first word, and the names behind it: that of an instance is not its type.
    std::string nameOf(const SyntaxNode& node) const {
        const auto& items = tree_.items();
        const bool isAssign = node.part == NtlPart::assignBlockProperty || node.part == NtlPart::assignPinProperty;
        std::size_t names = node.part == NtlPart::flag                ? 0
                            : node.part == NtlPart::assignPinProperty ? 3
                            : isAssign                                ? 2
                                                                      : 1;
        std::string text(items.textOf(node.begin));
        for (std::size_t i = node.begin + 1; i < node.end && names > 0; ++i) {
            const std::string_view word = items.textOf(i);
            if (word == "{" || word == ";" || word == ":") break;
            if (!word.starts_with('"') || word.size() < 2) continue;
            text.append(" ").append(word.substr(1, word.size() - 2));
            --names;
        }
        return text;
    }

    const SyntaxTree& tree_;
    std::size_t next_ = 0;
    std::vector<const SyntaxNode*> open_;
};

} // namespace

void nameElements(std::vector<Diagnostic>& findings, const std::map<std::string, std::string>& texts) {
    std::map<std::string, std::vector<Diagnostic*>> byFile;
    for (Diagnostic& one : findings)
        if (one.element.empty() && one.place.offset != Place::unknown) byFile[one.place.file].push_back(&one);
    for (auto& [file, list] : byFile) {
        SyntaxTree tree;
        std::string text = textOfFile(file, texts);
        if (text.empty() || !tree.read(std::move(text))) continue;
        std::ranges::sort(list, {}, [](const Diagnostic* one) { return one->place.offset; });
        ElementNamer namer(tree);
        for (Diagnostic* const one : list) one->element = namer.nameAt(one->place.offset);
    }
}

} // namespace hdnt::author
