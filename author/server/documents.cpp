// Documents that are opened, changed and closed.
#include "author/server/methods.internal.h"

#include <utility>

namespace hdnt::author::server {

static void setVersion(Document& document, const Json& identifier) {
    const auto version = identifier.find("version");
    if (version != identifier.end() && version->is_number_integer()) document.version = version->get<std::int64_t>();
    else document.version.reset();
}

Json didOpen(Session& session, const Json& params) {
    const Json& identifier = params.at("textDocument");
    const std::string& uri = session.uriOf(params);
    std::string text = identifier.at("text").get<std::string>();
    Document& document = session.documents[uri];
    setVersion(document, identifier);
    document.read(std::move(text));
    publishDiagnostics(session, uri, document);
    return nullptr;
}

// Ends that stand before beginnings are taken the other way round.
static void change(Document& document, Encoding encoding, const Json& change) {
    const auto& text = change.at("text").get_ref<const std::string&>();
    if (!change.contains("range")) return document.read(text);
    const Json& range = change["range"];
    std::size_t begin = document.offsetAt(positionOf(range.at("start")), encoding);
    std::size_t end = document.offsetAt(positionOf(range.at("end")), encoding);
    if (end < begin) std::swap(begin, end);
    document.edit(begin, end - begin, text);
}

Json didChange(Session& session, const Json& params) {
    Document& document = session.documentOf(params);
    for (const Json& each : params.at("contentChanges")) change(document, session.encoding, each);
    setVersion(document, params["textDocument"]);
    publishDiagnostics(session, session.uriOf(params), document);
    return nullptr;
}

Json didClose(Session& session, const Json& params) {
    session.documentOf(params);
    const std::string& uri = session.uriOf(params);
    session.documents.erase(uri);
    session.notify("textDocument/publishDiagnostics", {{"uri", uri}, {"diagnostics", Json::array()}});
    return nullptr;
}

} // namespace hdnt::author::server
