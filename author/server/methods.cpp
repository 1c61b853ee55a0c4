#include "author/server/methods.internal.h"

#include <algorithm>
#include <iterator>

namespace hdnt::author::server {

const Method* findMethod(std::string_view name) {
    constexpr auto request = Method::Kind::request;
    constexpr auto notification = Method::Kind::notification;
    static constexpr Method methods[] = {
        {"$/setTrace", notification, nothing}, // traces nothing
        {"callHierarchy/incomingCalls", request, incomingCalls},
        {"callHierarchy/outgoingCalls", request, outgoingCalls},
        {"completionItem/resolve", request, resolveCompletion},
        {"exit", notification, exit},
        {"initialize", request, initialize},
        {"initialized", notification, initialized},
        {"shutdown", request, shutdown},
        {"textDocument/codeAction", request, codeActions},
        {"textDocument/codeLens", request, codeLenses},
        {"textDocument/completion", request, completion},
        {"textDocument/declaration", request, definition},
        {"textDocument/definition", request, definition},
        {"textDocument/didChange", notification, didChange},
        {"textDocument/didClose", notification, didClose},
        {"textDocument/didOpen", notification, didOpen},
        {"textDocument/didSave", notification, didSave},
        {"textDocument/documentHighlight", request, documentHighlights},
        {"textDocument/documentLink", request, documentLinks},
        {"textDocument/documentSymbol", request, documentSymbols},
        {"textDocument/foldingRange", request, foldingRanges},
        {"textDocument/formatting", request, formatDocument},
        {"textDocument/hover", request, hover},
        {"textDocument/inlayHint", request, inlayHints},
        {"textDocument/onTypeFormatting", request, formatOnType},
        {"textDocument/prepareCallHierarchy", request, prepareCallHierarchy},
        {"textDocument/prepareRename", request, prepareRename},
        {"textDocument/rangeFormatting", request, formatRange},
        {"textDocument/references", request, references},
        {"textDocument/rename", request, rename},
        {"textDocument/selectionRange", request, selectionRanges},
        {"textDocument/semanticTokens/full", request, semanticTokens},
        {"textDocument/semanticTokens/range", request, semanticTokensInRange},
        {"textDocument/signatureHelp", request, signatureHelp},
        {"workspace/didChangeWatchedFiles", notification, didChangeWatchedFiles},
        {"workspace/didChangeWorkspaceFolders", notification, didChangeWorkspaceFolders},
        {"workspace/executeCommand", request, executeCommand},
        {"workspace/symbol", request, workspaceSymbols},
    };
    const auto found =
        std::find_if(std::begin(methods), std::end(methods), [&](const Method& method) { return method.name == name; });
    return found == std::end(methods) ? nullptr : found;
}

Json nothing(Session&, const Json&) { return nullptr; }

} // namespace hdnt::author::server
