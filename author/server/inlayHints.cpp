// What stands unseen behind names in mappings: the ranges of buses and signals, the types of properties.
#include "author/server/Declarations.internal.h"
#include "author/server/NameRequest.internal.h"
#include "author/server/keywords.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

/// Texts by names; empty for a name that was given different ones, of which nobody knows which counts.
class Agreed {
public:
    void add(const std::string& name, const std::string& text) {
        const auto [known, isNew] = all_.emplace(name, text);
        if (!isNew && known->second != text) known->second.clear();
    }
    std::string_view at(const std::string& name) const {
        const auto found = all_.find(name);
        return found == all_.end() ? std::string_view() : found->second;
    }

private:
    std::unordered_map<std::string, std::string> all_;
};

/// What is declared of a block.
struct BlockNames {
    Agreed ranges;        ///< by base names of pins
    Agreed properties;    ///< types, by names in upper case
    Agreed pinProperties; ///< likewise, behind the base name of the pin and a zero
};

/// What is declared in a mapping.
struct MappingNames {
    Agreed ranges;                                                       ///< by base names of signals
    std::unordered_map<std::string, std::vector<std::string>> instances; ///< keys of their blocks
};

// "[7:0]" behind the base of a name.
std::string rangeOf(std::string_view name) {
    const std::string_view range = name.substr(baseOf(name).size());
    const bool isWhole = range.size() > 2 && range.ends_with(']');
    const bool isRange = isWhole && range.substr(1, range.size() - 2).find_first_not_of("0123456789:") == range.npos;
    return isRange ? std::string(range) : std::string();
}

// "int", or "int, ns" with a unit.
std::string typeAndUnitOf(const Place& property) {
    const std::uint32_t item = typeItemOf(property);
    if (item == property.get().end) return {};
    std::string type(property.text->textOf(item));
    forEachChild(property.text->tree(), property.node, [&](std::uint32_t child) {
        const SyntaxNode& option = property.text->node(child);
        if (option.part != NtlPart::option || property.text->items()[option.begin].kind != T_Units) return;
        const std::uint32_t unit = option.end - 1;
        if (property.text->items()[unit].kind == T_StringConstant)
            type.append(", ").append(contentOf(*property.text, unit));
    });
    return type;
}

// Of a pin as a mapping names it.
std::string pinKeyOf(std::string_view written) {
    if (written.starts_with('~')) written.remove_prefix(1);
    return HSTStringUtils::to_upper_copy(baseOf(written));
}

std::string pinPropertyKey(std::string_view pin, std::string_view property) {
    return std::string(pin) + '\0' + HSTStringUtils::to_upper_copy(property);
}

struct Hint {
    std::size_t offset;
    std::string label;
};

/// The hints in a stretch of a text. Blocks and mappings are read when something in it asks for them, and once.
class Hints {
public:
    Hints(const Libraries& libraries, Stretch stretch)
        : libraries_(libraries), text_(libraries.current()), stretch_(stretch), table_(libraries) {}

    /// In the order of the text.
    std::vector<Hint> list() {
        switch (text_.tree().content()) {
        case NtlList::none:
        case NtlList::elements: forEachElement(text_, [&](const Place& place) { addOfElement(place); }); break;
        case NtlList::statements: addOfFile(); break;
        default: break;
        }
        std::ranges::stable_sort(hints_, {}, &Hint::offset);
        return std::move(hints_);
    }

private:
    void addOfElement(const Place& element) {
        const Stretch all = stretchOf(text_.tree(), element.get());
        if (element.get().part == NtlPart::function || all.end < stretch_.begin || all.begin > stretch_.end) return;
        forEachChild(text_.tree(), element.node, [&](std::uint32_t child) {
            if (text_.node(child).part == NtlPart::section) addOfMapping({&text_, child}, keyOfBlock(nameOf(element)));
        });
    }

    void addOfFile() {
        NameReader reader(libraries_, text_);
        if (text_.items().size() == 0) return;
        reader.at(0);
        addOfMapping({&text_, 0}, reader.block());
    }

    void addOfMapping(const Place& mapping, std::string block) {
        mapping_ = mapping;
        block_ = std::move(block);
        names_.reset();
        for (std::uint32_t node = firstOf(mapping); node < mapping.get().next; ++node) {
            const std::uint32_t begin = text_.node(node).begin;
            if (begin < text_.items().size() && text_.items()[begin].offset > stretch_.end) break;
            add({&text_, node});
        }
    }

    // From the statement on that reaches into the stretch.
    std::uint32_t firstOf(const Place& mapping) const {
        const auto& nodes = text_.tree().nodes();
        const auto item = static_cast<std::uint32_t>(itemBehind(text_.items(), stretch_.begin));
        const auto begin = nodes.begin() + mapping.node + 1;
        auto node = std::partition_point(begin, nodes.begin() + mapping.get().next,
                                         [&](const SyntaxNode& one) { return one.begin < item; });
        while (node > begin && !isStatement((--node)->part)) {
        }
        return static_cast<std::uint32_t>(node - nodes.begin());
    }
    static bool isStatement(NtlPart part) {
        return part == NtlPart::inst || part == NtlPart::connect || part == NtlPart::signal ||
               part == NtlPart::assignBlockProperty || part == NtlPart::assignPinProperty;
    }

    void add(const Place& place) {
        switch (place.get().part) {
        case NtlPart::connect: return addOfSignal(place);
        case NtlPart::pinRef: return addOfPin(place);
        case NtlPart::assignBlockProperty: return addOfProperty(place);
        case NtlPart::assignPinProperty: return addOfPinProperty(place);
        case NtlPart::call: return addOfCall(place);
        default: break;
        }
    }

    void addOfSignal(const Place& connect) {
        const std::vector<std::uint32_t> strings = wordsOf(connect);
        if (strings.size() == 1)
            addRange(strings[0], [&](std::string_view name) { return names().ranges.at(std::string(name)); });
    }

    void addOfPin(const Place& reference) {
        const std::vector<std::uint32_t> strings = wordsOf(reference);
        if (strings.empty() || strings.size() > 2) return;
        const std::string_view instance = strings.size() == 2 ? contentOf(text_, strings[0]) : std::string_view();
        addRange(strings.back(),
                 [&](std::string_view pin) { return ofTargets(instance, &BlockNames::ranges, pinKeyOf(pin)); });
    }

    void addOfProperty(const Place& assign) {
        const std::vector<std::uint32_t> strings = wordsOf(assign);
        if (strings.size() != 2) return;
        const std::string key = HSTStringUtils::to_upper_copy(contentOf(text_, strings[1]));
        addType(strings[1], ofTargets(contentOf(text_, strings[0]), &BlockNames::properties, key));
    }

    void addOfPinProperty(const Place& assign) {
        const std::vector<std::uint32_t> property = wordsOf(assign);
        std::vector<std::uint32_t> pin;
        forEachChild(text_.tree(), assign.node, [&](std::uint32_t child) {
            if (pin.empty() && text_.node(child).part == NtlPart::pinRef) pin = wordsOf({&text_, child});
        });
        if (property.size() != 1 || pin.empty() || pin.size() > 2) return;
        const std::string_view instance = pin.size() == 2 ? contentOf(text_, pin[0]) : std::string_view();
        const std::string key = pinPropertyKey(pinKeyOf(contentOf(text_, pin.back())), contentOf(text_, property[0]));
        addType(property[0], ofTargets(instance, &BlockNames::pinProperties, key));
    }

    void addOfCall(const Place& call) {
        const SyntaxNode& node = call.get();
        if (node.begin == node.end) return;
        const StandardFunction* const function = findStandardFunction(text_.textOf(node.begin));
        const std::uint32_t argument = node.begin + 2;
        const bool isOfPin = function && function->isOfPin && argument < node.end;
        if (!isOfPin || text_.items()[argument].kind != T_StringConstant) return;
        addRange(argument, [&](std::string_view pin) {
            return ofTargets({}, &BlockNames::ranges, HSTStringUtils::to_upper_copy(pin));
        });
    }

    // Within the quotes, where it could be written.
    template <typename Find>
    void addRange(std::uint32_t item, Find&& find) {
        const Stretch inside = insideOf(text_.items(), item);
        const std::string_view name = contentOf(text_, item);
        if (name.find('[') != name.npos || !stretch_.contains(inside.end)) return;
        if (const std::string_view range = find(name); !range.empty())
            hints_.push_back({inside.end, std::string(range)});
    }

    void addType(std::uint32_t item, std::string_view type) {
        const std::size_t end = stretchOf(text_.items()[item]).end;
        if (!type.empty() && stretch_.contains(end)) hints_.push_back({end, ": " + std::string(type)});
    }

    // In branches, instances of one name may be of several blocks. Without an instance it is the block itself.
    std::string_view ofTargets(std::string_view instance, Agreed BlockNames::*table, const std::string& name) {
        if (instance.empty()) return (namesOf(block_).*table).at(name);
        const auto found = names().instances.find(std::string(instance));
        if (found == names().instances.end()) return {};
        const std::string_view first = (namesOf(found->second.front()).*table).at(name);
        const auto isSame = [&](const std::string& block) { return (namesOf(block).*table).at(name) == first; };
        return std::ranges::all_of(found->second, isSame) ? first : std::string_view();
    }

    const MappingNames& names() {
        if (names_) return *names_;
        names_.emplace();
        forEachStatement(mapping_, NtlPart::signal, [&](const Place& place) {
            names_->ranges.add(std::string(baseOf(nameOf(place))), rangeOf(nameOf(place)));
        });
        forEachStatement(mapping_, NtlPart::inst, [&](const Place& place) {
            std::vector<std::string>& blocks = names_->instances[std::string(nameOf(place))];
            const std::string block = keyOfBlock(stringOf(place, 1));
            if (std::ranges::find(blocks, block) == blocks.end()) blocks.push_back(block);
        });
        return *names_;
    }

    const BlockNames& namesOf(const std::string& key) {
        const auto [known, isNew] = blocks_.try_emplace(key);
        const Place block = isNew ? table_.find(key, text_.level) : Place();
        if (!block) return known->second;
        BlockNames& names = known->second;
        forEachEntity(libraries_, block, [&](const Place& place) {
            const std::string_view name = nameOf(place);
            if (place.get().part == NtlPart::property)
                names.properties.add(HSTStringUtils::to_upper_copy(name), typeAndUnitOf(place));
            if (place.get().part != NtlPart::pin) return;
            names.ranges.add(std::string(baseOf(name)), rangeOf(name));
            forEachProperty(libraries_, place, [&](const Place& property) {
                names.pinProperties.add(pinPropertyKey(baseOf(name), nameOf(property)), typeAndUnitOf(property));
            });
        });
        return names;
    }

    const Libraries& libraries_;
    const Text& text_;
    Stretch stretch_;
    BlockTable table_;
    std::unordered_map<std::string, BlockNames> blocks_;
    Place mapping_; ///< the one at hand
    std::string block_;
    std::optional<MappingNames> names_; ///< of it
    std::vector<Hint> hints_;
};

} // namespace

Json inlayHints(Session& session, const Json& params) {
    constexpr int type = 1;
    const Libraries libraries(session, session.uriOf(params));
    const Document& document = *libraries.current().document;
    const Json& range = params.at("range");
    const Stretch stretch = {document.offsetAt(positionOf(range.at("start")), session.encoding),
                             document.offsetAt(positionOf(range.at("end")), session.encoding)};
    PositionFinder positions(document, session.encoding);
    Json all = Json::array();
    for (Hint& hint : Hints(libraries, stretch).list())
        all.push_back(
            {{"position", jsonOf(positions.at(hint.offset))}, {"label", std::move(hint.label)}, {"kind", type}});
    return all;
}

} // namespace hdnt::author::server
