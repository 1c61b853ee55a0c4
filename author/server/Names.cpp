#include "author/server/Declarations.internal.h"
#include "author/server/Names.internal.h"
#include "author/server/keywords.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

using frontend::SourceItem;
using frontend::SourceItems;

std::string_view baseOf(std::string_view name) { return name.substr(0, name.find('[')); }

Stretch insideOf(const SourceItems& items, std::uint32_t item) {
    Stretch stretch = stretchOf(items[item]);
    const std::string_view text = items.textOf(item);
    if (text.starts_with('"')) {
        ++stretch.begin;
        if (text.size() > 1 && text.ends_with('"')) --stretch.end;
    }
    return stretch;
}

std::string_view contentOf(const Text& text, std::uint32_t item) {
    const Stretch inside = insideOf(text.items(), item);
    return text.items().text().substr(inside.begin, inside.end - inside.begin);
}

std::vector<std::uint32_t> wordsOf(const Place& place, int kind) {
    std::vector<std::uint32_t> found;
    const SyntaxNode& node = place.get();
    const SyntaxTree& tree = place.text->tree();
    std::uint32_t child = place.node + 1;
    for (std::uint32_t item = node.begin; item < node.end;) {
        while (child < node.next && tree.nodes()[child].end <= item) child = tree.nodes()[child].next;
        if (child < node.next && tree.nodes()[child].begin <= item) {
            item = tree.nodes()[child].end;
            continue;
        }
        const int here = tree.items()[item].kind;
        if (here == '{') break;
        if (here == kind) found.push_back(item);
        ++item;
    }
    return found;
}

std::string_view stringOf(const Place& place, std::size_t which) {
    const std::vector<std::uint32_t> strings = wordsOf(place);
    return which < strings.size() ? contentOf(*place.text, strings[which]) : std::string_view();
}

const std::vector<std::uint32_t>& NodeChain::around(std::uint32_t item) {
    const std::vector<SyntaxNode>& nodes = text_.tree().nodes();
    chain_.assign(nodes.empty() ? 0 : 1, 0);
    if (nodes.size() < 2) return chain_;
    const auto childWith = [&](std::uint32_t child, std::uint32_t end) {
        while (child < end && nodes[child].end <= item) child = nodes[child].next;
        return child;
    };
    if (outermost_ >= nodes.size() || item < nodes[outermost_].begin) outermost_ = 1;
    outermost_ = childWith(outermost_, nodes.front().next);
    std::uint32_t child = outermost_;
    for (std::uint32_t end = nodes.front().next; child < end && nodes[child].begin <= item;) {
        chain_.push_back(child);
        end = nodes[child].next;
        child = childWith(child + 1, end);
    }
    return chain_;
}

std::uint32_t itemAt(const SourceItems& items, std::size_t offset) {
    const auto at = static_cast<std::uint32_t>(itemBehind(items, offset));
    const auto isWord = [&](std::uint32_t item) { return items[item].kind >= T_Library; };
    if (at == 0 || stretchOf(items[at - 1]).end < offset) return static_cast<std::uint32_t>(items.size());
    const bool touches = items[at - 1].offset == offset && at > 1 && stretchOf(items[at - 2]).end == offset;
    return touches && !isWord(at - 1) && isWord(at - 2) ? at - 2 : at - 1;
}

std::optional<Name> NameReader::atOffset(std::size_t offset) {
    const std::uint32_t item = itemAt(text_.items(), offset);
    if (item >= text_.items().size()) return {};
    return at(item);
}

std::optional<Name> NameReader::at(std::uint32_t item) {
    item_ = item;
    nodes_ = &chain_.around(item);
    if (nodes_->empty()) return {};
    switch (text_.items()[item].kind) {
    case SourceItem::FileStatement: return named(Name::Kind::file);
    case T_StringConstant: return string(innermost());
    case T_Identifier: {
        const NtlPart part = innermost().get().part;
        if (part != NtlPart::function && part != NtlPart::call) return {};
        std::optional<Name> name = named(Kind::function);
        name->declares = part == NtlPart::function;
        return name;
    }
    default: return {};
    }
}

std::optional<Name> NameReader::named(Kind kind, std::string owner, std::string pin) {
    Name name{{kind, std::move(owner), std::move(pin), {}}, innermost(), item_, insideOf(text_.items(), item_)};
    if (kind == Kind::file) {
        const Libraries::Inclusion inclusion = libraries_.inclusionOf(text_, item_);
        name.stretch = {inclusion.begin, inclusion.end};
        name.key.text = inclusion.path;
        return name;
    }
    if (kind == Kind::pin && name.written().starts_with('~')) ++name.stretch.begin;
    const std::string_view written = name.written();
    switch (kind) {
    case Kind::block:
    case Kind::property: name.key.text = HSTStringUtils::to_upper_copy(written); break;
    case Kind::pin: name.key.text = HSTStringUtils::to_upper_copy(baseOf(written)); break;
    case Kind::signal: name.key.text = baseOf(written); break;
    default: name.key.text = written;
    }
    return name;
}

std::size_t NameReader::position(const Place& place) const {
    const std::vector<std::uint32_t> strings = wordsOf(place);
    return static_cast<std::size_t>(std::ranges::find(strings, item_) - strings.begin());
}

std::optional<Name> NameReader::string(const Place& place) {
    const auto declared = [](std::optional<Name> name) {
        if (name) name->declares = true;
        return name;
    };
    const std::size_t which = position(place);
    switch (place.get().part) {
    case NtlPart::block: return which == 0 ? declared(named(Kind::block)) : std::nullopt;
    case NtlPart::mapping: return which == 0 ? named(Kind::block) : std::nullopt;
    case NtlPart::pin: {
        std::optional<Name> name = declared(named(Kind::pin, block()));
        name->key.text = baseOf(name->written());
        return name;
    }
    case NtlPart::inst: return which == 0 ? declared(named(Kind::instance, block())) : named(Kind::block);
    case NtlPart::signal: return declared(named(Kind::signal, block()));
    case NtlPart::connect: return named(Kind::signal, block());
    case NtlPart::pinRef: return pinOf(place);
    case NtlPart::property:
    case NtlPart::assignBlockProperty:
    case NtlPart::assignPinProperty: return property(place);
    case NtlPart::constant: return argument();
    default: return {};
    }
}

std::optional<Name> NameReader::pinOf(const Place& reference) {
    const std::vector<std::uint32_t> strings = wordsOf(reference);
    if (strings.size() > 1 && item_ == strings.front()) return named(Kind::instance, block());
    return named(Kind::pin, targetOfPin(reference));
}

std::optional<Name> NameReader::property(const Place& place) {
    if (place.get().part == NtlPart::property) {
        const Place pin = around({NtlPart::pin});
        std::optional<Name> name = named(Kind::property, block(), pin ? std::string(baseOf(nameOf(pin))) : "");
        name->declares = true;
        return name;
    }
    if (place.get().part == NtlPart::assignBlockProperty) {
        if (position(place) == 0) return named(Kind::instance, block());
        return named(Kind::property, targetOf(stringOf(place, 0), {}));
    }
    std::optional<Name> name;
    forEachChild(text_.tree(), place.node, [&](std::uint32_t child) {
        const Place reference{&text_, child};
        if (name || reference.get().part != NtlPart::pinRef) return;
        name = named(Kind::property, targetOfPin(reference), pinKeyOf(reference));
    });
    return name;
}

// What standard functions ask of the mapped block.
std::optional<Name> NameReader::argument() {
    const Place call{&text_, nodes_->size() > 1 ? (*nodes_)[nodes_->size() - 2] : 0};
    if (call.get().part != NtlPart::call || call.get().begin + 2 != item_) return {};
    const StandardFunction* const function = findStandardFunction(text_.textOf(call.get().begin));
    if (!function) return {};
    return named(function->isOfPin ? Kind::pin : Kind::property, block());
}

std::string NameReader::pinKeyOf(const Place& reference) const {
    const std::vector<std::uint32_t> strings = wordsOf(reference);
    if (strings.empty()) return {};
    std::string_view pin = contentOf(text_, strings.back());
    if (pin.starts_with('~')) pin.remove_prefix(1);
    return HSTStringUtils::to_upper_copy(baseOf(pin));
}

std::string NameReader::targetOfPin(const Place& reference) const {
    const std::vector<std::uint32_t> strings = wordsOf(reference);
    const std::string_view instance = strings.size() > 1 ? contentOf(text_, strings.front()) : std::string_view();
    return targetOf(instance, strings.size() > 1 || !instance.empty() ? pinKeyOf(reference) : std::string());
}

// Of several instances of a name, in branches, the first whose block has the pin.
std::string NameReader::targetOf(std::string_view instance, std::string_view pin) const {
    if (instance.empty()) return block();
    const Place section = mapping();
    if (!section) return {};
    const std::vector<Place> instances = instancesOf(section, instance);
    for (const Place& one : instances) {
        std::string type = keyOfBlock(stringOf(one, 1));
        if (instances.size() == 1 || pin.empty()) return type;
        const Place declaration = findBlock(libraries_, type, text_.level);
        if (declaration && findPin(libraries_, declaration, pin)) return type;
    }
    return instances.empty() ? std::string() : keyOfBlock(stringOf(instances.front(), 1));
}

Place NameReader::around(std::initializer_list<NtlPart> parts) const {
    if (!nodes_) return {};
    for (auto node = nodes_->rbegin(); node != nodes_->rend(); ++node)
        if (std::ranges::find(parts, text_.node(*node).part) != parts.end()) return {&text_, *node};
    return {};
}

Place NameReader::mapping() const {
    if (text_.tree().content() == NtlList::statements) return {&text_, 0};
    return around({NtlPart::section});
}

std::string NameReader::block() const {
    const Place inside = around({NtlPart::block, NtlPart::mapping});
    if (inside) return keyOfBlock(nameOf(inside));
    const NtlList content = text_.tree().content();
    if (content == NtlList::none || content == NtlList::elements) return {};
    for (const Text& other : libraries_.texts()) {
        for (const std::uint32_t item : other.document->fileStatements()) {
            if (libraries_.inclusionOf(other, item).path != text_.path) continue;
            NameReader reader(libraries_, other);
            reader.at(item);
            if (const Place includer = reader.around({NtlPart::block, NtlPart::mapping}))
                return keyOfBlock(nameOf(includer));
        }
    }
    return {};
}

} // namespace hdnt::author::server
