// Where names are declared, and where they are used.
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"

#include <utility>

namespace hdnt::author::server {

NameRequest::NameRequest(Session& session, const Json& params)
    : libraries(session, session.uriOf(params)),
      offset(text().document->offsetAt(positionOf(params.at("position")), session.encoding)), reader(libraries, text()),
      name(reader.atOffset(offset)) {
    if (name) mapping = reader.mapping();
}

Json Locations::rangeIn(const Text& text, const Stretch& stretch) {
    if (text_ != &text) positions_.emplace(*text.document, encoding_);
    text_ = &text;
    return rangeOf(*positions_, stretch.begin, stretch.end);
}

namespace {

struct Target {
    const Text* text;
    Stretch whole;
    Stretch named;
};

std::vector<Target> targetsOf(const NameRequest& asked) {
    std::vector<Target> targets;
    if (asked.name->key.kind == Name::Kind::file)
        if (const Text* file = asked.libraries.textAt(asked.name->key.text)) targets.push_back({file, {}, {}});
    for (const Place& place : declarationsOf(asked.libraries, *asked.name, asked.mapping))
        targets.push_back(
            {place.text, stretchOf(place.text->tree(), place.get()), insideOf(place.text->items(), nameItemOf(place))});
    return targets;
}

Json linkOf(Locations& locations, const Target& target, const Json& origin) {
    Json link = {{"targetUri", target.text->uri}, {"originSelectionRange", origin}};
    link["targetRange"] = locations.rangeIn(*target.text, target.whole);
    link["targetSelectionRange"] = locations.rangeIn(*target.text, target.named);
    return link;
}

} // namespace

Json definition(Session& session, const Json& params) {
    const NameRequest asked(session, params);
    Json all = Json::array();
    if (!asked.name) return all;
    Locations locations(session.encoding);
    const Json origin = locations.rangeIn(asked.text(), asked.name->stretch);
    const bool wantsLinks = session.canClient("/textDocument/definition/linkSupport");
    for (const Target& target : targetsOf(asked))
        all.push_back(wantsLinks ? linkOf(locations, target, origin)
                                 : locations.locationIn(*target.text, target.named));
    return all;
}

Json references(Session& session, const Json& params) {
    const NameRequest asked(session, params);
    Json all = Json::array();
    if (!asked.name) return all;
    const bool withDeclaration = params.at("context").at("includeDeclaration").get<bool>();
    const auto token = params.find("partialResultToken");
    Locations locations(session.encoding);
    const Text* text = nullptr;
    const auto sendPart = [&] {
        if (token == params.end() || all.empty()) return;
        session.notify("$/progress", {{"token", *token}, {"value", std::exchange(all, Json::array())}});
    };
    Mentions(asked.libraries, *asked.name, asked.mapping).forEach([&](const Name& name) {
        if (name.at.text != text) sendPart();
        text = name.at.text;
        if (withDeclaration || !name.declares) all.push_back(locations.locationIn(*text, name.stretch));
    });
    sendPart();
    return all;
}

Json documentHighlights(Session& session, const Json& params) {
    constexpr int read = 2, write = 3;
    const NameRequest asked(session, params);
    Json all = Json::array();
    if (!asked.name) return all;
    Locations locations(session.encoding);
    const auto add = [&](const Name& name) {
        all.push_back(
            {{"range", locations.rangeIn(*name.at.text, name.stretch)}, {"kind", name.declares ? write : read}});
    };
    Mentions(asked.libraries, *asked.name, asked.mapping).forEach(add, &asked.text());
    return all;
}

Json documentLinks(Session& session, const Json& params) {
    const Libraries libraries(session, session.uriOf(params));
    const Text& text = libraries.current();
    Locations locations(session.encoding);
    Json all = Json::array();
    for (const std::uint32_t item : text.document->fileStatements()) {
        const Libraries::Inclusion inclusion = libraries.inclusionOf(text, item);
        const Text* const file = libraries.textAt(inclusion.path);
        if (!file) continue;
        Json link = {{"target", file->uri}};
        link["range"] = locations.rangeIn(text, {inclusion.begin, inclusion.end});
        all.push_back(std::move(link));
    }
    return all;
}

} // namespace hdnt::author::server
