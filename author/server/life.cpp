// Beginning and end of a session.
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
            {"workspaceSymbolProvider", true}};
}

Json initialize(Session& session, const Json& params) {
    if (session.life != Session::Life::fresh)
        throw RequestError(ErrorCode::invalidRequest, "initialize comes once, and first");
    const Json capabilities = params.value("capabilities", Json::object());
    if (!capabilities.is_object()) throw RequestError(ErrorCode::invalidParams, "capabilities are no object");
    session.clientCapabilities = capabilities;
    session.encoding = offersUtf8(capabilities) ? Encoding::utf8 : Encoding::utf16;
    session.life = Session::Life::initialized;
    return {{"capabilities", serverCapabilities(session.encoding)},
            {"serverInfo", {{"name", "ntl"}, {"version", HDNT_VERSION}}}};
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
