// Which blocks the mappings of a block are made of and what functions they call, and where a block or function is used.
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace hdnt::author::server {

namespace {

using Kind = Name::Kind;

/// The statements of a mapping: those of its section, or of a file that this includes.
struct Netlist {
    Place element; ///< the block or mapping around it
    Place body;
    Place block; ///< that is mapped; the element when it is declared nowhere

    bool isIncluded() const { return body.text != element.text; }
    /// Ranges of calls are in the text of the item that calls, so a file of statements is one of its own.
    Place home() const { return isIncluded() ? body : element; }
};

/// A block or function.
struct Callee {
    Kind kind = Kind::block;
    Place declaration;

    bool operator==(const Callee&) const = default;
};

struct ByPlace {
    bool operator()(const Place& a, const Place& b) const {
        return std::pair(a.text, a.node) < std::pair(b.text, b.node);
    }
};

class Hierarchy {
public:
    Hierarchy(Session& session, const std::string& uri)
        : uri_(uri), libraries_(session, uri), table_(libraries_), locations_(session.encoding) {
        for (const Text& text : libraries_.texts()) {
            const NtlList content = text.tree().content();
            if (content != NtlList::none && content != NtlList::elements) continue;
            forEachElement(text, [&](const Place& element) { addNetlists(element); });
        }
    }

    Callee find(Kind kind, const std::string& name, std::size_t level) {
        if (kind == Kind::block) return {kind, table_.find(keyOfBlock(name), level)};
        const auto [known, isNew] = functions_.try_emplace({level, name});
        if (isNew) known->second = findFunction(libraries_, name, level);
        return {kind, known->second};
    }

    /// One for each text with a netlist of the block; else its declaration.
    Json itemsOf(const Callee& callee) {
        Json items = Json::array();
        std::set<const Text*> texts;
        for (const Netlist& netlist : netlists_)
            if (netlist.block == callee.declaration && texts.insert(netlist.body.text).second)
                items.push_back(itemOf(callee, netlist.home()));
        if (items.empty() && callee.declaration) items.push_back(itemOf(callee, callee.declaration));
        return items;
    }

    /// Of the netlists that the item's text has of the block.
    Json outgoing(const Callee& callee, const std::string& uri) {
        std::vector<Callee> order;
        std::map<Place, Json, ByPlace> ranges;
        for (const Netlist& netlist : netlists_) {
            if (!callee.declaration || netlist.block != callee.declaration || netlist.body.text->uri != uri) continue;
            forEachCall(netlist, {}, [&](const Callee& called, const Place& statement) {
                Json& list = ranges[called.declaration];
                if (list.empty()) order.push_back(called);
                list.push_back(rangeOf(statement));
            });
        }
        Json calls = Json::array();
        for (const Callee& called : order)
            calls.push_back(
                {{"to", itemOf(called, homeOf(called))}, {"fromRanges", std::move(ranges[called.declaration])}});
        return calls;
    }

    Json incoming(const Callee& callee) {
        Json calls = Json::array();
        if (!callee.declaration) return calls;
        const std::string name(nameOf(callee.declaration));
        for (const Netlist& netlist : netlists_) {
            Json ranges = Json::array();
            forEachCall(netlist, name, [&](const Callee& called, const Place& statement) {
                if (called == callee) ranges.push_back(rangeOf(statement));
            });
            if (!ranges.empty())
                calls.push_back({{"from", itemOf({Kind::block, netlist.block}, netlist.home())},
                                 {"fromRanges", std::move(ranges)}});
        }
        return calls;
    }

private:
    void addNetlists(const Place& element) {
        if (element.get().part == NtlPart::function) return;
        const Place declared = table_.find(keyOfBlock(nameOf(element)), element.text->level);
        forEachChild(element.text->tree(), element.node, [&](std::uint32_t child) {
            if (element.text->node(child).part == NtlPart::section)
                addNetlist({element, {element.text, child}, declared ? declared : element});
        });
    }

    // With the files that it includes, each of them once.
    void addNetlist(const Netlist& netlist) {
        const std::size_t first = netlists_.size();
        netlists_.push_back(netlist);
        for (std::size_t at = first; at < netlists_.size(); ++at) {
            const Place body = netlists_[at].body;
            const auto& statements = body.text->document->fileStatements();
            for (auto item = std::ranges::lower_bound(statements, body.get().begin);
                 item != statements.end() && *item < body.get().end; ++item) {
                const Text* const file = libraries_.textAt(libraries_.inclusionOf(*body.text, *item).path);
                if (!file || file->tree().content() != NtlList::statements) continue;
                const auto isIt = [&](const Netlist& one) { return one.body.text == file; };
                if (std::none_of(netlists_.begin() + static_cast<std::ptrdiff_t>(first), netlists_.end(), isIt))
                    netlists_.push_back({netlist.element, {file, 0}, netlist.block});
            }
        }
    }

    /// Those of that name; without one, all that are declared.
    template <typename Visit>
    void forEachCall(const Netlist& netlist, const std::string& name, Visit&& visit) {
        const std::size_t level = netlist.body.text->level;
        const auto visitOne = [&](Kind kind, std::string_view called, const Place& statement) {
            if (!name.empty() && !HSTStringUtils::iequals(called, name)) return;
            const Callee callee = find(kind, std::string(called), level);
            if (callee.declaration) visit(callee, statement);
        };
        for (std::uint32_t node = netlist.body.node + 1; node < netlist.body.get().next; ++node) {
            const Place statement{netlist.body.text, node};
            if (statement.get().part == NtlPart::inst) visitOne(Kind::block, stringOf(statement, 1), statement);
            if (statement.get().part == NtlPart::call && statement.get().begin < statement.get().end)
                visitOne(Kind::function, statement.text->textOf(statement.get().begin), statement);
        }
    }

    /// Where a block is made of others, as seen from the library, so that an editor can ask on; else its declaration.
    Place homeOf(const Callee& callee) {
        if (homes_.empty())
            for (const Netlist& netlist : netlists_) {
                if (netlist.isIncluded()) continue;
                const auto [known, isNew] = homes_.try_emplace(netlist.block, netlist.element);
                if (!isNew && netlist.element.text->level <= known->second.text->level) known->second = netlist.element;
            }
        const auto found = homes_.find(callee.declaration);
        return found == homes_.end() ? callee.declaration : found->second;
    }

    Json rangeOf(const Place& place) {
        return locations_.rangeIn(*place.text, stretchOf(place.text->tree(), place.get()));
    }

    // The name goes there and back as bytes, since not all are characters.
    Json itemOf(const Callee& callee, const Place& home) {
        constexpr int cell = 5, function = 12;
        const std::string_view name = nameOf(callee.declaration);
        const frontend::SourceItems& items = home.text->items();
        Stretch whole = {0, items.text().size()};
        if (home.node != 0) whole = stretchOf(home.text->tree(), home.get());
        const std::uint32_t nameItem = home.node == 0 ? home.get().end : nameItemOf(home);
        const Stretch named =
            nameItem == home.get().end ? Stretch{whole.begin, whole.begin} : insideOf(items, nameItem);
        Json item = {{"name", name}, {"kind", callee.kind == Kind::block ? cell : function}, {"uri", home.text->uri}};
        item["selectionRange"] = locations_.rangeIn(*home.text, named);
        item["range"] = locations_.rangeIn(*home.text, whole);
        item["data"] = {{"uri", uri_},
                        {"isBlock", callee.kind == Kind::block},
                        {"name", std::vector<std::uint8_t>(name.begin(), name.end())},
                        {"level", home.text->level}};
        return item;
    }

    std::string uri_;
    Libraries libraries_;
    BlockTable table_;
    Locations locations_;
    std::vector<Netlist> netlists_;
    std::map<std::pair<std::size_t, std::string>, Place> functions_;
    std::map<Place, Place, ByPlace> homes_; ///< by declaration
};

/// What an item stands for now, if its document is still open.
struct Asked {
    Asked(Session& session, const Json& item) : uri(item.at("uri").get<std::string>()) {
        const Json& data = item.at("data");
        const auto& document = data.at("uri").get_ref<const std::string&>();
        if (!session.documents.contains(document)) return;
        hierarchy.emplace(session, document);
        const auto name = data.at("name").get<std::vector<std::uint8_t>>();
        callee = hierarchy->find(data.at("isBlock").get<bool>() ? Kind::block : Kind::function,
                                 std::string(name.begin(), name.end()), data.at("level").get<std::size_t>());
    }

    std::string uri;
    std::optional<Hierarchy> hierarchy;
    Callee callee;
};

} // namespace

Json prepareCallHierarchy(Session& session, const Json& params) {
    const NameRequest asked(session, params);
    const bool isCallable =
        asked.name && (asked.name->key.kind == Kind::block || asked.name->key.kind == Kind::function);
    if (!isCallable) return nullptr;
    Hierarchy hierarchy(session, asked.text().uri);
    const Name::Key& key = asked.name->key;
    Json items = hierarchy.itemsOf(hierarchy.find(key.kind, key.text, asked.text().level));
    return items.empty() ? Json() : items;
}

Json incomingCalls(Session& session, const Json& params) {
    Asked asked(session, params.at("item"));
    return asked.hierarchy ? asked.hierarchy->incoming(asked.callee) : Json();
}

Json outgoingCalls(Session& session, const Json& params) {
    Asked asked(session, params.at("item"));
    return asked.hierarchy ? asked.hierarchy->outgoing(asked.callee, asked.uri) : Json();
}

} // namespace hdnt::author::server
