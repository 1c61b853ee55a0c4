// What names fit in a place.
#include "author/server/completion.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <optional>

namespace hdnt::author::server {

using Kind = Proposal::Kind;

constexpr std::size_t ranksBeforeLibraries = 2;

// Of a library, a part and what goes with it up to the next one; else the whole text.
static Stretch partAround(const Document& document, std::size_t offset) {
    const SyntaxTree& tree = document.tree();
    const std::uint32_t element = tree.content() == NtlList::none ? tree.elementBefore(offset) : 0;
    if (element == 0) return {0, document.text().size()};
    const auto beginOf = [&](std::uint32_t node) -> std::size_t {
        return tree.items()[tree.nodes()[node].begin].offset;
    };
    std::uint32_t next = element;
    do next = tree.nodes()[next].next;
    while (next < tree.nodes().size() && tree.nodes()[next].isFault());
    return {beginOf(element), next < tree.nodes().size() ? beginOf(next) : document.text().size()};
}

// A library of that part alone, since reading all of a large text again would be felt.
ConstantRole::Changed ConstantRole::with(std::string_view constant, const Document& document, const Stretch& word) {
    const Stretch element = partAround(document, word.begin);
    const std::string_view text = document.text();
    std::string changed = element.begin > 0 ? "library \"\" {\n" : "";
    changed += text.substr(element.begin, word.begin - element.begin);
    const std::size_t at = changed.size();
    changed.append(constant).append(text.substr(word.end, std::max(element.end, word.end) - word.end));
    Changed result{{}, at};
    result.document.read(std::move(changed));
    return result;
}

static Text textOf(const Text& text, const Document& document) {
    Text other = text;
    other.document = &document;
    return other;
}

ConstantRole::ConstantRole(const Libraries& libraries, const Stretch& word, std::string_view constant)
    : libraries_(libraries), changed_(with(constant, *libraries.current().document, word)),
      text_(textOf(libraries.current(), changed_.document)), reader_(libraries, text_),
      item_(itemAt(text_.items(), changed_.at + 1)) {}

void ConstantRole::proposeNames(Proposals& to) {
    if (item_ >= text_.items().size()) return;
    const std::optional<Name> name = reader_.at(item_);
    if (!name) return;
    if (name->declares) return name->key.kind == Name::Kind::signal ? proposeConnected(to) : void();
    switch (name->key.kind) {
    case Name::Kind::block: return proposeBlocks(to);
    case Name::Kind::instance: return proposeInstances(to);
    case Name::Kind::signal: return proposeSignals(to);
    case Name::Kind::property: return proposeProperties(*name, to);
    case Name::Kind::pin:
        if (name->at.get().part == NtlPart::pinRef && wordsOf(name->at).size() == 1) proposeInstances(to);
        return proposePins(findBlock(libraries_, name->key.owner, text_.level), to);
    default: return;
    }
}

// Of the library's own elements first, and none that a nearer one hides.
static void forEachVisible(const Libraries& libraries, NtlPart part, auto&& visit) {
    for (std::size_t level = libraries.current().level; level < libraries.levels(); ++level)
        for (const Text& text : libraries.texts()) {
            if (text.level != level) continue;
            forEachElement(text, [&](const Place& place) {
                if (place.get().part == part) visit(place, ranksBeforeLibraries + level);
            });
        }
}

void ConstantRole::proposeBlocks(Proposals& to) const {
    std::set<std::string> known;
    forEachVisible(libraries_, NtlPart::block, [&](const Place& place, std::size_t rank) {
        if (known.insert(keyOfBlock(nameOf(place))).second)
            to.add({std::string(nameOf(place)), Kind::block, "", true, rank});
    });
}

void proposeFunctions(const Libraries& libraries, Proposals& to) {
    forEachVisible(libraries, NtlPart::function, [&](const Place& place, std::size_t rank) {
        to.add({std::string(nameOf(place)), Kind::function, lineOfDeclaration(place), false, rank});
    });
}

void ConstantRole::proposeInstances(Proposals& to) const {
    const Place mapping = reader_.mapping();
    if (!mapping) return;
    forEachStatement(mapping, NtlPart::inst, [&](const Place& place) {
        to.add({std::string(nameOf(place)), Kind::instance, std::string(stringOf(place, 1)), true, 0});
    });
}

static std::string rangeOfBus(std::string_view name) { return std::string(name.substr(baseOf(name).size())); }

void ConstantRole::proposePins(const Place& block, Proposals& to) const {
    if (!block) return;
    forEachEntity(libraries_, block, [&](const Place& place) {
        if (place.get().part != NtlPart::pin) return;
        const std::string_view name = nameOf(place);
        std::string detail = rangeOfBus(name);
        for (std::uint32_t item = nameItemOf(place) + 1; item < place.get().end; ++item) {
            const int kind = place.text->items()[item].kind;
            if (kind == '{' || kind == ';') break;
            if (kind > 0) detail.append(detail.empty() ? "" : " ").append(place.text->textOf(item));
        }
        to.add({std::string(baseOf(name)), Kind::pin, std::move(detail), true, 1});
    });
}

void ConstantRole::proposeSignals(Proposals& to) const {
    const Place mapping = reader_.mapping();
    if (!mapping) return;
    forEachStatement(mapping, NtlPart::signal, [&](const Place& place) {
        const std::string_view name = nameOf(place);
        to.add({std::string(baseOf(name)), Kind::signal, rangeOfBus(name), true, 0});
    });
}

// Signals that are connected and not declared.
void ConstantRole::proposeConnected(Proposals& to) const {
    const Place mapping = reader_.mapping();
    if (!mapping) return;
    std::set<std::string_view> declared;
    forEachStatement(mapping, NtlPart::signal, [&](const Place& place) { declared.insert(baseOf(nameOf(place))); });
    forEachStatement(mapping, NtlPart::connect, [&](const Place& place) {
        const std::string_view name = baseOf(nameOf(place));
        if (!declared.contains(name)) to.add({std::string(name), Kind::signal, "", true, 0});
    });
}

void ConstantRole::proposeProperties(const Name& name, Proposals& to) const {
    const Place block = findBlock(libraries_, name.key.owner, text_.level);
    const Place owner = block && !name.key.pin.empty() ? findPin(libraries_, block, name.key.pin) : block;
    if (!owner) return;
    forEachProperty(libraries_, owner, [&](const Place& place) {
        to.add({std::string(nameOf(place)), Kind::property, typeOf(place), true, 1});
    });
}

} // namespace hdnt::author::server
