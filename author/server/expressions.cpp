// What an expression of a mapping is while the properties of its block have their defaults.
#include "author/project/Project.h"
#include "author/server/NameRequest.internal.h"
#include "author/server/Workspace.internal.h"
#include "hdnt/loading/load.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTExpansion.h"
#include "hdnt/platform/HEX.h"

#include <array>
#include <set>
#include <utility>

namespace hdnt::author::server {

namespace {

constexpr const char* probe = "expressionThatIsAsked";

std::string_view textBetween(const Text& text, std::size_t begin, std::size_t end) {
    return text.items().text().substr(begin, end - begin);
}

// An operation, a call or parentheses of whose own the item is.
Place expressionWith(const Text& text, std::uint32_t item) {
    NodeChain chain(text);
    const std::vector<std::uint32_t>& nodes = chain.around(item);
    if (nodes.empty()) return {};
    const NtlPart part = text.node(nodes.back()).part;
    const bool isOne = part == NtlPart::operation || part == NtlPart::call || part == NtlPart::parentheses;
    return isOne ? Place{&text, nodes.back()} : Place();
}

// Without its mapping.
std::string declarationOf(const Place& block) {
    std::size_t end = stretchOf(block.text->tree(), block.get()).end;
    forEachChild(block.text->tree(), block.node, [&](std::uint32_t child) {
        const SyntaxNode& node = block.text->node(child);
        if (node.part == NtlPart::section) end = block.text->items()[node.begin].offset;
    });
    return std::string(textBetween(*block.text, block.text->items()[block.get().begin].offset, end));
}

// The first ones of their names, as calls find them.
std::string functionsOf(const Libraries& libraries) {
    std::set<std::string_view> known;
    std::string all;
    for (std::size_t level = 0; level < libraries.levels(); ++level)
        for (const Text& text : libraries.texts())
            if (text.level == level)
                forEachElement(text, [&](const Place& place) {
                    const Stretch stretch = stretchOf(text.tree(), place.get());
                    if (place.get().part == NtlPart::function && known.insert(nameOf(place)).second)
                        all.append(textBetween(text, stretch.begin, stretch.end)) += '\n';
                });
    return all;
}

} // namespace

std::optional<Expression> expressionAt(const NameRequest& asked) {
    const Text& text = asked.text();
    const std::uint32_t item = itemAt(text.items(), asked.offset);
    const Place place = item < text.items().size() ? expressionWith(text, item) : Place();
    if (!place || text.path.empty()) return {};
    const Place block = findBlock(asked.libraries, asked.reader.block(), text.level);
    if (!block) return {};
    Expression one{stretchOf(text.tree(), place.get()),
                   text.path,
                   std::string(nameOf(block)),
                   asked.libraries.searchDirectories(),
                   {}};
    one.library =
        "library \"\" {\n" + functionsOf(asked.libraries) + declarationOf(block) + "\nmapsto {\n" + probe + '(';
    one.library.append(textBetween(text, one.stretch.begin, one.stretch.end)).append(");\n}\n}\n");
    return one;
}

std::string valueOf(const Expression& expression, std::map<std::string, std::string> texts) {
    LoadOptions options;
    options.check = false;
    options.searchDirectories = expression.searchDirectories;
    options.texts = std::move(texts);
    options.texts[expression.path] = expression.library;
    const Loaded loaded = hdnt::load(expression.path, options);
    HDNTBlock* const block = loaded ? loaded.library->getTypeBlockByName(expression.block, true) : nullptr;
    if (!block) return {};
    HDNTExpansion expansion(*block);
    expansion.expand();
    if (!expansion.problems().empty()) return "With the defaults: " + expansion.problems().front().message;
    const HDNTExpansion::Level& level = expansion.levels().front();
    if (level.calls.size() != 1 || level.calls[0].arguments.size() != 1) return {};
    static constexpr std::array<const char*, std::variant_size_v<Value>> types = {"bool", "int", "double", "string"};
    const Value& value = level.calls[0].arguments[0];
    const bool isText = std::holds_alternative<std::string>(value);
    return std::string("With the defaults: ") + types[value.index()] + ' ' +
           (isText ? '"' + textOf(value) + '"' : textOf(value));
}

} // namespace hdnt::author::server
