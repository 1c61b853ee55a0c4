// What each mapping becomes, for editors that show it when it is asked for.
#include "author/server/Declarations.internal.h"
#include "author/server/NameRequest.internal.h"
#include "author/server/methods.internal.h"
#include "author/syntax/SyntaxCode.h"

#include <string>
#include <utility>

namespace hdnt::author::server {

namespace {

/// Lenses are asked for behind each change, so that many would be felt.
constexpr std::size_t most = 10000;

bool hasMapping(const Place& element) {
    bool has = element.get().part == NtlPart::mapping;
    forEachChild(element.text->tree(), element.node,
                 [&](std::uint32_t child) { has = has || element.text->node(child).part == NtlPart::section; });
    return has;
}

// The worker leaves out what is faulty, and another block of that name may stand behind it.
void refuseFaulty(const Place& element) {
    const Stretch stretch = stretchOf(element.text->tree(), element.get());
    for (const SyntaxMessage& message : element.text->tree().messages()) {
        const bool isError = syntaxRules()[static_cast<std::size_t>(message.code)].severity == Severity::error;
        if (!isError || !stretch.contains(message.offset)) continue;
        const std::size_t line = element.text->document->lines().lineAt(message.offset) + 1;
        throw RequestError(ErrorCode::requestFailed, "block '" + std::string(nameOf(element)) + "' has faults: line " +
                                                         std::to_string(line) + ": " + message.text);
    }
}

} // namespace

Json codeLenses(Session& session, const Json& params) {
    const std::string& uri = session.uriOf(params);
    Text text;
    text.document = &session.documentOf(params);
    Locations locations(session.encoding);
    Json all = Json::array();
    forEachElement(text, [&](const Place& element) {
        const std::string_view name = nameOf(element);
        if (name.empty() || all.size() > most || !hasMapping(element)) return;
        Json lens = {{"range", locations.rangeIn(text, stretchOf(text.items()[nameItemOf(element)]))}};
        lens["command"] = {{"title", "expand"},
                           {"command", expandCommand},
                           {"arguments", Json::array({{{"uri", uri}, {"block", name}}})}};
        all.push_back(std::move(lens));
    });
    return all.size() > most ? Json::array() : all;
}

Json executeCommand(Session& session, const Json& params) {
    const auto& command = params.at("command").get_ref<const std::string&>();
    if (command != expandCommand) throw RequestError(ErrorCode::invalidParams, "no command " + command);
    const Json& argument = params.at("arguments").at(0);
    BlockToExpand wanted{argument.at("uri").get<std::string>(), argument.at("block").get<std::string>(), false};
    const Libraries libraries(session, wanted.uri);
    const std::string key = keyOfBlock(wanted.block);
    for (const Text& text : libraries.texts()) {
        if (text.level != 0) continue;
        forEachElement(text, [&](const Place& element) {
            const NtlPart part = element.get().part;
            if (part == NtlPart::function || keyOfBlock(nameOf(element)) != key) return;
            refuseFaulty(element);
            wanted.isOwn = wanted.isOwn || part == NtlPart::block;
        });
    }
    session.answerLater([&session, wanted] { return expandBlock(session, wanted); },
                        "block '" + wanted.block + "' is not expanded");
    return nullptr;
}

} // namespace hdnt::author::server
