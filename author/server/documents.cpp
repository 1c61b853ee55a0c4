// Documents that are opened, changed and closed.
#include "author/server/Workspace.internal.h"
#include "author/server/methods.internal.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/platform/InputFile.h"

#include <utility>

namespace hdnt::author::server {

static void setVersion(Document& document, const Json& identifier) {
    const auto version = identifier.find("version");
    if (version != identifier.end() && version->is_number_integer()) document.version = version->get<std::int64_t>();
    else document.version.reset();
}

static bool isOnDisk(const std::string& path, std::string_view text) {
    const HDNTLimits& limits = HDNTLimits::get();
    std::string there;
    std::string reason;
    return !path.empty() &&
           platform::readInput(path, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, there,
                               reason) &&
           there == text;
}

Json didOpen(Session& session, const Json& params) {
    const Json& identifier = params.at("textDocument");
    const std::string& uri = session.uriOf(params);
    std::string text = identifier.at("text").get<std::string>();
    const std::string path = pathOf(uri);
    if (!isOnDisk(path, text)) session.libraries.drop(path);
    Document& document = session.documents[uri];
    setVersion(document, identifier);
    document.read(std::move(text));
    if (!path.empty()) session.uris[path] = uri;
    session.libraries.touch(session, path);
    publishDiagnostics(session, uri, document);
    return nullptr;
}

// Ends that stand before beginnings are taken the other way round.
static void change(Session& session, const std::string& path, Document& document, const Json& change) {
    const auto& text = change.at("text").get_ref<const std::string&>();
    if (!change.contains("range")) {
        session.libraries.drop(path);
        return document.read(text);
    }
    const Json& range = change["range"];
    std::size_t begin = document.offsetAt(positionOf(range.at("start")), session.encoding);
    std::size_t end = document.offsetAt(positionOf(range.at("end")), session.encoding);
    if (end < begin) std::swap(begin, end);
    session.libraries.move(path, begin, end - begin, text.size());
    document.edit(begin, end - begin, text);
}

Json didChange(Session& session, const Json& params) {
    Document& document = session.documentOf(params);
    const std::string& uri = session.uriOf(params);
    const std::string path = pathOf(uri);
    session.libraries.touch(session, path);
    for (const Json& each : params.at("contentChanges")) change(session, path, document, each);
    setVersion(document, params["textDocument"]);
    session.changed.insert(uri);
    return nullptr;
}

// The file counts from here on, which may be another text.
Json didClose(Session& session, const Json& params) {
    const Document& document = session.documentOf(params);
    const std::string& uri = session.uriOf(params);
    const std::string path = pathOf(uri);
    if (isOnDisk(path, document.text())) session.libraries.settle(path, document, session.encoding);
    else session.libraries.drop(path);
    session.documents.erase(uri);
    session.libraries.touch(session, path);
    publishClosed(session, uri);
    return nullptr;
}

Json didSave(Session& session, const Json& params) {
    session.documentOf(params);
    session.libraries.touch(session, pathOf(session.uriOf(params)));
    return nullptr;
}

Json didChangeWatchedFiles(Session& session, const Json& params) {
    for (const Json& each : params.at("changes")) {
        const std::string path = pathOf(each.at("uri").get_ref<const std::string&>());
        if (path.empty()) continue;
        if (!session.openAt(path)) {
            session.libraries.drop(path);
            publishFound(session, path);
        }
        session.libraries.touchFile(session, path);
    }
    return nullptr;
}

} // namespace hdnt::author::server
