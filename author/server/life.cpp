// Beginning and end of a session.
#include "author/server/Workspace.internal.h"
#include "author/server/methods.internal.h"

#include <algorithm>

namespace hdnt::author::server {

static bool offersUtf8(const Json& capabilities) {
    const Json none = Json::array();
    const Json offered = capabilities.value("/general/positionEncodings"_json_pointer, none);
    return std::find(offered.begin(), offered.end(), "utf-8") != offered.end();
}

static Json serverCapabilities(Encoding encoding) {
    constexpr int incremental = 2;
    return {{"positionEncoding", encoding == Encoding::utf8 ? "utf-8" : "utf-16"},
            {"textDocumentSync", {{"openClose", true}, {"change", incremental}, {"save", true}}},
            {"callHierarchyProvider", true},
            {"codeActionProvider", {{"codeActionKinds", {"quickfix", "refactor.rewrite", "source.fixAll"}}}},
            {"codeLensProvider", Json::object()},
            {"completionProvider", {{"triggerCharacters", {"\""}}, {"resolveProvider", true}}},
            {"declarationProvider", true},
            {"definitionProvider", true},
            {"documentFormattingProvider", true},
            {"documentHighlightProvider", true},
            {"documentLinkProvider", Json::object()},
            {"documentOnTypeFormattingProvider", {{"firstTriggerCharacter", ";"}, {"moreTriggerCharacter", {"}"}}}},
            {"documentRangeFormattingProvider", true},
            {"documentSymbolProvider", true},
            {"executeCommandProvider", {{"commands", {expandCommand}}}},
            {"foldingRangeProvider", true},
            {"hoverProvider", true},
            {"inlayHintProvider", true},
            {"referencesProvider", true},
            {"renameProvider", {{"prepareProvider", true}}},
            {"selectionRangeProvider", true},
            {"semanticTokensProvider", {{"legend", semanticTokensLegend()}, {"full", true}, {"range", true}}},
            {"signatureHelpProvider", {{"triggerCharacters", {"(", ","}}, {"retriggerCharacters", {")"}}}},
            {"workspace", {{"workspaceFolders", {{"supported", true}, {"changeNotifications", true}}}}},
            {"workspaceSymbolProvider", true}};
}

// Older clients have one folder, in one of two forms.
static std::set<std::string> foldersOf(const Json& params) {
    std::set<std::string> folders;
    const Json all = params.value("workspaceFolders", Json());
    for (const Json& folder : all.is_array() ? all : Json::array()) folders.insert(pathOf(folder.at("uri")));
    const Json uri = params.value("rootUri", Json());
    const Json path = params.value("rootPath", Json());
    if (!all.is_array() && uri.is_string()) folders.insert(pathOf(uri));
    else if (!all.is_array() && path.is_string()) folders.insert(path);
    return folders;
}

Json initialize(Session& session, const Json& params) {
    if (session.life != Session::Life::fresh)
        throw RequestError(ErrorCode::invalidRequest, "initialize comes once, and first");
    const Json capabilities = params.value("capabilities", Json::object());
    if (!capabilities.is_object()) throw RequestError(ErrorCode::invalidParams, "capabilities are no object");
    session.clientCapabilities = capabilities;
    session.encoding = offersUtf8(capabilities) ? Encoding::utf8 : Encoding::utf16;
    session.folders = foldersOf(params);
    session.life = Session::Life::initialized;
    return {{"capabilities", serverCapabilities(session.encoding)},
            {"serverInfo", {{"name", "ntl"}, {"version", HDNT_VERSION}}}};
}

Json didChangeWorkspaceFolders(Session& session, const Json& params) {
    const Json& event = params.at("event");
    for (const Json& folder : event.at("removed")) session.folders.erase(pathOf(folder.at("uri")));
    for (const Json& folder : event.at("added")) session.folders.insert(pathOf(folder.at("uri")));
    return nullptr;
}

// Files that the client does not know as documents change, too.
Json initialized(Session& session, const Json&) {
    if (!session.canClient("/workspace/didChangeWatchedFiles/dynamicRegistration")) return nullptr;
    const Json watchers = {{{"globPattern", "**/*.btl"}}, {{"globPattern", "**/.ntl.cfg"}}};
    const Json registration = {
        {"id", "files"}, {"method", "workspace/didChangeWatchedFiles"}, {"registerOptions", {{"watchers", watchers}}}};
    session.ask("client/registerCapability", {{"registrations", {registration}}}, [](const Json&) {});
    return nullptr;
}

Json shutdown(Session& session, const Json&) {
    session.life = Session::Life::shutDown;
    session.libraries.clear(session);
    session.later.cancelAll(session);
    session.documents.clear();
    return nullptr;
}

Json exit(Session& session, const Json&) {
    session.hasShutDown = session.life == Session::Life::shutDown;
    session.life = Session::Life::exited;
    return nullptr;
}

} // namespace hdnt::author::server
