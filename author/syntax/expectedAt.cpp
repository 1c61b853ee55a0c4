#include "author/syntax/expectedAt.h"

#include "author/syntax/Recovery.internal.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace hdnt::author {

using Grammar = frontend::NtlGrammar<Recovery>;

static bool hasTokens(const SourceItems& items) {
    std::size_t item = 0;
    while (item < items.size() && !items[item].isToken()) ++item;
    return item < items.size();
}

TokenSet expectedAt(const SyntaxTree& tree, std::size_t offset) {
    if (tree.nodes().empty()) return {};
    const std::uint32_t element = tree.elementBefore(offset);
    const std::size_t begin = element == 0 ? 0 : tree.items()[tree.nodes()[element].begin].offset;
    const bool isLibrary = tree.content() == NtlList::none;
    std::string text = isLibrary && begin > 0 ? "library \"\" {\n" : "";
    text += tree.items().text().substr(begin, offset - begin);
    SourceItems items;
    frontend::SourceProblem problem;
    items.read(std::move(text), problem);
    if (!hasTokens(items))
        return Grammar::firstOf(NtlList::elements) | Grammar::firstOf(NtlList::entities) |
               Grammar::firstOf(NtlList::statements) | TokenSet{0, T_Library};
    std::vector<SyntaxNode> nodes;
    std::vector<SyntaxMessage> messages;
    std::vector<std::uint32_t> faults;
    Recovery recovery(items, nodes, {messages, faults});
    recovery.askAtEnd();
    Grammar grammar(recovery);
    if (isLibrary) grammar.file();
    else grammar.fragment(tree.content());
    return recovery.expectedAtEnd();
}

} // namespace hdnt::author
