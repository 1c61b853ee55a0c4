#include "author/server/Declarations.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace hdnt::author::server {

namespace {

constexpr int mostIncluded = 8; ///< files in each other

void forEachInside(const Libraries& libraries, const Place& place, const Visit& visit, int depth);

// What the files hold that are included right inside of a node.
void forEachIncluded(const Libraries& libraries, const Place& place, const Visit& visit, int depth) {
    const auto& statements = place.text->document->fileStatements();
    const SyntaxNode& node = place.get();
    const auto end = std::ranges::lower_bound(statements, node.end);
    for (auto item = std::ranges::lower_bound(statements, node.begin); item != end && depth < mostIncluded; ++item) {
        const Text* const file = libraries.textAt(libraries.inclusionOf(*place.text, *item).path);
        const bool isEntities = file && (file->tree().content() == NtlList::entities);
        if (isEntities) forEachInside(libraries, {file, 0}, visit, depth + 1);
    }
}

void forEachInside(const Libraries& libraries, const Place& place, const Visit& visit, int depth) {
    forEachChild(place.text->tree(), place.node, [&](std::uint32_t child) { visit({place.text, child}); });
    forEachIncluded(libraries, place, visit, depth);
}

// The first one in the nearest library.
Place findElement(const Libraries& libraries, std::size_t level, NtlPart part, auto&& fits) {
    Place found;
    for (const Text& text : libraries.texts()) {
        if (text.level < level || (found && text.level >= found.text->level)) continue;
        const SyntaxTree& tree = text.tree();
        for (std::uint32_t node = 1; node < tree.nodes().size(); node = tree.nodes()[node].next) {
            if (tree.nodes()[node].part != part || !fits(Place{&text, node})) continue;
            found = {&text, node};
            break;
        }
    }
    return found;
}

// Those that have the bit, or all when none has.
std::vector<Place> thoseWith(std::string_view used, std::vector<Place> all) {
    std::vector<Place> some;
    std::ranges::copy_if(all, std::back_inserter(some), [&](const Place& one) { return coversBit(nameOf(one), used); });
    return some.empty() ? all : some;
}

} // namespace

std::optional<std::pair<int, int>> indicesOf(std::string_view name) {
    const std::size_t bracket = name.find('[');
    if (bracket == name.npos) return {};
    std::pair<int, int> range;
    const char* const end = name.data() + name.size();
    const auto first = std::from_chars(name.data() + bracket + 1, end, range.first);
    if (first.ec != std::errc()) return {};
    range.second = range.first;
    if (first.ptr != end && *first.ptr == ':') std::from_chars(first.ptr + 1, end, range.second);
    return std::minmax(range.first, range.second);
}

bool coversBit(std::string_view declared, std::string_view used) {
    const auto all = indicesOf(declared);
    const auto some = indicesOf(used);
    return !all || !some || (all->first <= some->second && some->first <= all->second);
}

std::uint32_t nameItemOf(const Place& declaration) {
    const SyntaxNode& node = declaration.get();
    const frontend::SourceItems& items = declaration.text->items();
    const int kind = node.part == NtlPart::function ? T_Identifier : T_StringConstant;
    for (std::uint32_t item = node.begin; item < node.end; ++item) {
        if (items[item].kind == kind) return item;
        if (items[item].kind == '{' || items[item].kind == ';') break;
    }
    return node.end;
}

std::uint32_t typeItemOf(const Place& declaration) {
    const SyntaxNode& node = declaration.get();
    std::uint32_t item = node.begin;
    while (item < node.end && !frontend::types.contains(declaration.text->items()[item].kind)) ++item;
    return item;
}

std::string_view nameOf(const Place& declaration) {
    const std::uint32_t item = nameItemOf(declaration);
    return item == declaration.get().end ? std::string_view() : contentOf(*declaration.text, item);
}

std::string keyOfBlock(std::string_view written) { return HSTStringUtils::to_upper_copy(written); }

void forEachElement(const Text& text, const Visit& visit) {
    const SyntaxTree& tree = text.tree();
    for (std::uint32_t node = 1; node < tree.nodes().size(); node = tree.nodes()[node].next)
        switch (tree.nodes()[node].part) {
        case NtlPart::block:
        case NtlPart::mapping:
        case NtlPart::function: visit({&text, node}); break;
        default: break;
        }
}

void forEachEntity(const Libraries& libraries, const Place& block, const Visit& visit) {
    forEachInside(libraries, block, visit, 0);
}

void forEachProperty(const Libraries& libraries, const Place& pin, const Visit& visit) {
    forEachInside(
        libraries, pin,
        [&](const Place& place) {
            if (place.get().part == NtlPart::property) visit(place);
        },
        0);
}

void forEachStatement(const Place& mapping, NtlPart part, const Visit& visit) {
    for (std::uint32_t node = mapping.node + 1; node < mapping.get().next; ++node)
        if (mapping.text->node(node).part == part) visit({mapping.text, node});
}

Place findBlock(const Libraries& libraries, std::string_view name, std::size_t level) {
    if (name.empty()) return {};
    return findElement(libraries, level, NtlPart::block,
                       [&](const Place& place) { return HSTStringUtils::iequals(nameOf(place), name); });
}

Place BlockTable::find(const std::string& key, std::size_t level) {
    for (; level < levels_.size(); ++level)
        if (const auto found = blocksOf(level).find(key); found != blocksOf(level).end()) return found->second;
    return {};
}

const BlockTable::Blocks& BlockTable::blocksOf(std::size_t level) {
    std::optional<Blocks>& blocks = levels_[level];
    if (blocks) return *blocks;
    blocks.emplace();
    for (const Text& text : libraries_.texts()) {
        if (text.level != level) continue;
        forEachElement(text, [&](const Place& place) {
            if (place.get().part == NtlPart::block) blocks->emplace(keyOfBlock(nameOf(place)), place);
        });
    }
    blocks->erase("");
    return *blocks;
}

Place findFunction(const Libraries& libraries, std::string_view name, std::size_t level) {
    return findElement(libraries, level, NtlPart::function, [&](const Place& place) { return nameOf(place) == name; });
}

Place findPin(const Libraries& libraries, const Place& block, std::string_view key) {
    Place found;
    forEachEntity(libraries, block, [&](const Place& place) {
        if (!found && place.get().part == NtlPart::pin && baseOf(nameOf(place)) == key) found = place;
    });
    return found;
}

Place findProperty(const Libraries& libraries, const Place& owner, std::string_view name) {
    Place found;
    forEachProperty(libraries, owner, [&](const Place& place) {
        if (!found && HSTStringUtils::iequals(nameOf(place), name)) found = place;
    });
    return found;
}

std::vector<Place> instancesOf(const Place& mapping, std::string_view name) {
    std::vector<Place> found;
    forEachStatement(mapping, NtlPart::inst, [&](const Place& place) {
        if (nameOf(place) == name) found.push_back(place);
    });
    return found;
}

static std::vector<Place> signalsOf(const Place& mapping, std::string_view key) {
    std::vector<Place> found;
    forEachStatement(mapping, NtlPart::signal, [&](const Place& place) {
        if (baseOf(nameOf(place)) == key) found.push_back(place);
    });
    return found;
}

static std::vector<Place> pinsOf(const Libraries& libraries, const Place& block, std::string_view key) {
    std::vector<Place> found;
    forEachEntity(libraries, block, [&](const Place& place) {
        if (place.get().part == NtlPart::pin && baseOf(nameOf(place)) == key) found.push_back(place);
    });
    return found;
}

std::vector<Place> declarationsOf(const Libraries& libraries, const Name& name, const Place& mapping) {
    const Name::Key& key = name.key;
    const auto one = [](const Place& place) { return place ? std::vector{place} : std::vector<Place>(); };
    const std::size_t level = name.at.text->level;
    switch (key.kind) {
    case Name::Kind::block: return one(findBlock(libraries, key.text, level));
    case Name::Kind::function: return one(findFunction(libraries, key.text, level));
    case Name::Kind::instance: return mapping ? instancesOf(mapping, key.text) : std::vector<Place>();
    case Name::Kind::signal:
        return mapping ? thoseWith(name.written(), signalsOf(mapping, key.text)) : std::vector<Place>();
    case Name::Kind::file: return {};
    default: break;
    }
    const Place block = findBlock(libraries, key.owner, level);
    if (!block) return {};
    if (key.kind == Name::Kind::pin) return thoseWith(name.written(), pinsOf(libraries, block, key.text));
    const Place owner = key.pin.empty() ? block : findPin(libraries, block, key.pin);
    return owner ? one(findProperty(libraries, owner, key.text)) : std::vector<Place>();
}

} // namespace hdnt::author::server
