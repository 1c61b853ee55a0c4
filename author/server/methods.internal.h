#pragma once

#include "author/server/Session.internal.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace hdnt::author::server {

/// A method of the protocol. Handlers get the parameters, an empty object when there are none, and return the result,
/// which nobody sees of a notification, nor of a request that is answered later. They throw RequestError, or
/// Json::exception for parameters that are not as they should be.
struct Method {
    enum class Kind { request, notification };
    std::string_view name;
    Kind kind;
    Json (*handle)(Session&, const Json& params);
};

/// Null: no such method.
const Method* findMethod(std::string_view name);

// A file for each family.
// life.cpp
Json initialize(Session& session, const Json& params);
Json initialized(Session& session, const Json& params);
Json didChangeWorkspaceFolders(Session& session, const Json& params);
Json shutdown(Session& session, const Json& params);
Json exit(Session& session, const Json& params);
// documents.cpp
Json didOpen(Session& session, const Json& params);
Json didChange(Session& session, const Json& params);
Json didClose(Session& session, const Json& params);
Json didSave(Session& session, const Json& params);
Json didChangeWatchedFiles(Session& session, const Json& params);
// formatting.cpp
Json formatDocument(Session& session, const Json& params);
Json formatRange(Session& session, const Json& params);
Json formatOnType(Session& session, const Json& params);
// actions.cpp
Json codeActions(Session& session, const Json& params);
// connects.cpp
/// Statements for the open pins of an instance, in which only the names of the signals are missing.
struct MissingConnects {
    std::string instance;
    std::size_t count;
    std::size_t offset; ///< where they belong
    std::string text;
};
/// Of the instance that is declared at the "position" of the parameters. None: there is none, or nothing is open.
std::optional<MissingConnects> missingConnects(Session& session, const Json& place);
// ruleMends.cpp
/// What mends a finding of a rule in its document; none when there is more than one way to do it.
std::optional<SyntaxMend> mendOf(const Document& document, const Found& found);
// symbols.cpp
Json documentSymbols(Session& session, const Json& params);
// ranges.cpp
Json foldingRanges(Session& session, const Json& params);
Json selectionRanges(Session& session, const Json& params);
// tokens.cpp
Json semanticTokensLegend();
Json semanticTokens(Session& session, const Json& params);
Json semanticTokensInRange(Session& session, const Json& params);
// references.cpp
Json definition(Session& session, const Json& params);
Json references(Session& session, const Json& params);
Json documentHighlights(Session& session, const Json& params);
Json documentLinks(Session& session, const Json& params);
// rename.cpp
Json prepareRename(Session& session, const Json& params);
Json rename(Session& session, const Json& params);
// completion.cpp
Json completion(Session& session, const Json& params);
Json resolveCompletion(Session& session, const Json& params);
// hover.cpp
Json hover(Session& session, const Json& params);
// codeLens.cpp
inline constexpr const char* expandCommand = "ntl.expand";
Json codeLenses(Session& session, const Json& params);
Json executeCommand(Session& session, const Json& params);
// expandFolder.cpp
struct BlockToExpand {
    std::string uri; ///< of a text of the library
    std::string block;
    bool isOwn = false; ///< the library declares it itself
};
/// What its mapping becomes, as LaterAnswers has it. For a process of its own, which it changes for good.
Json expandBlock(const Session& session, const BlockToExpand& wanted);
// callHierarchy.cpp
Json prepareCallHierarchy(Session& session, const Json& params);
Json incomingCalls(Session& session, const Json& params);
Json outgoingCalls(Session& session, const Json& params);
// inlayHints.cpp
Json inlayHints(Session& session, const Json& params);
// signatureHelp.cpp
Json signatureHelp(Session& session, const Json& params);
// workspaceSymbols.cpp
Json workspaceSymbols(Session& session, const Json& params);
// Needs nothing done.
Json nothing(Session& session, const Json& params);

// diagnostics.cpp
/// Tells the client what is wrong in the document: what its tree says, and what was found when its library was judged.
void publishDiagnostics(Session& session, const std::string& uri, const Document& document);
/// The same for what changed since it was told last.
void publishChanged(Session& session);
/// What is left to tell of a document that was closed.
void publishClosed(Session& session, const std::string& uri);
/// The same for a file, open or not, when there is another thing to tell than before.
void publishFound(Session& session, const std::string& path);
/// A warning in the client's log.
void log(const Session& session, const std::string& text);

} // namespace hdnt::author::server
