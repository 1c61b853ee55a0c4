// What an instance of a mapping has still to be joined to.
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

constexpr std::size_t mostConnects = 1000; ///< behind the bus that reaches it, no other is looked at
constexpr std::size_t mostBits = 1000;     ///< of a bus, from its greatest index on

/// The bits of a block's pins that no statement of a mapping joins to anything, in the order of their declaration.
class OpenPins {
public:
    OpenPins(const Libraries& libraries, const Place& mapping, std::string_view instance) : libraries_(libraries) {
        forEachStatement(mapping, NtlPart::pinRef, [&](const Place& reference) {
            if (wordsOf(reference).size() != 2 || stringOf(reference, 0) != instance) return;
            std::string_view pin = stringOf(reference, 1);
            pin.remove_prefix(pin.starts_with('~') ? 1 : 0);
            joined_[HSTStringUtils::to_upper_copy(baseOf(pin))].push_back(pin);
        });
    }

    std::vector<std::string> of(const Place& block) const {
        std::vector<std::string> open;
        forEachEntity(libraries_, block, [&](const Place& pin) {
            if (pin.get().part == NtlPart::pin && open.size() < mostConnects) addOpen(nameOf(pin), open);
        });
        return open;
    }

private:
    void addOpen(std::string_view pin, std::vector<std::string>& open) const {
        const auto joined = joined_.find(std::string(baseOf(pin)));
        const auto add = [&](std::string bit) {
            const auto isIt = [&](std::string_view one) { return coversBit(one, bit); };
            const bool isOpen = joined == joined_.end() || std::ranges::none_of(joined->second, isIt);
            if (isOpen) open.push_back(std::move(bit));
        };
        const auto range = indicesOf(pin);
        if (!range) return add(std::string(pin));
        std::int64_t bit = range->second; // ranges may be as wide as numbers go
        for (std::size_t looks = 0; bit >= range->first && looks < mostBits; --bit, ++looks)
            add(std::string(baseOf(pin)) + '[' + std::to_string(bit) + ']');
    }

    const Libraries& libraries_;
    std::unordered_map<std::string, std::vector<std::string_view>> joined_; ///< pins as they are used, by base names
};

// With the comment behind the statement in its line.
std::size_t endOf(const Text& text, const SyntaxNode& statement) {
    const frontend::SourceItems& items = text.items();
    std::uint32_t last = statement.end - 1;
    const bool hasComment = last + 1 < items.size() && items[last + 1].isComment() && items[last + 1].newlines == 0;
    const bool isLast = hasComment && (last + 2 >= items.size() || items[last + 2].newlines > 0);
    return stretchOf(items[last + (isLast ? 1 : 0)]).end;
}

std::string indentOf(std::string_view text, std::size_t offset) {
    const std::size_t line = offset == 0 ? 0 : text.rfind('\n', offset - 1) + 1;
    return std::string(text.substr(line, std::min(text.find_first_not_of(" \t", line), offset) - line));
}

// The last one of the statements that an instance stands among: the signals are declared before it.
Place lastBeside(const Place& mapping, const Place& instance) {
    const SyntaxTree& tree = instance.text->tree();
    std::uint32_t around = mapping.node;
    for (std::uint32_t node = mapping.node; node < instance.node; ++node)
        if (tree.nodes()[node].next > instance.node) around = node;
    Place last = instance;
    forEachChild(tree, around, [&](std::uint32_t child) {
        const SyntaxNode& node = tree.nodes()[child];
        if (child > instance.node && !node.isFault() && node.begin < node.end) last = {instance.text, child};
    });
    return last;
}

} // namespace

std::optional<MissingConnects> missingConnects(Session& session, const Json& place) {
    const NameRequest asked(session, place);
    const Place instance = asked.reader.around({NtlPart::inst});
    const Place mapping = asked.reader.mapping();
    if (!instance || !mapping || wordsOf(instance).size() != 2) return {};
    const Place block = findBlock(asked.libraries, keyOfBlock(stringOf(instance, 1)), asked.text().level);
    if (!block) return {};
    const std::string name(nameOf(instance));
    const std::vector<std::string> open = OpenPins(asked.libraries, mapping, name).of(block);
    if (open.empty()) return {};
    const frontend::SourceItems& items = asked.text().items();
    const std::string indent = indentOf(items.text(), items[instance.get().begin].offset);
    const std::string connect = '\n' + indent + "connect \"\" : \"" + name + "\" \"";
    std::string statements;
    for (const std::string& pin : open) statements.append(connect).append(pin) += "\";";
    return MissingConnects{name, open.size(), endOf(asked.text(), lastBeside(mapping, instance).get()), statements};
}

} // namespace hdnt::author::server
