#pragma once

#include "author/server/Document.internal.h"
#include "author/server/Files.internal.h"
#include "author/server/JudgedLibraries.internal.h"
#include "author/server/LaterAnswers.internal.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace hdnt::author::server {

enum class ErrorCode : int {
    parseError = -32700,
    invalidRequest = -32600,
    methodNotFound = -32601,
    invalidParams = -32602,
    internalError = -32603,
    notInitialized = -32002,
    requestCancelled = -32800,
    requestFailed = -32803,
};

/// What a request is answered with instead of a result.
class RequestError : public std::runtime_error {
public:
    RequestError(ErrorCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ErrorCode code() const { return code_; }

private:
    ErrorCode code_;
};

Json errorAnswer(const Json& id, ErrorCode code, const std::string& message);

/// What is known of a client, and the documents that it has open.
struct Session {
    enum class Life { fresh, initialized, shutDown, exited };

    std::function<void(const Json&)> send; ///< a message to the client
    Life life = Life::fresh;
    bool hasShutDown = false; ///< before it ended
    Encoding encoding = Encoding::utf16;
    Json clientCapabilities = Json::object();
    std::unordered_map<std::string, Document> documents; ///< by URI
    std::unordered_map<std::string, std::string> uris;   ///< of all that were open, by path

    std::set<std::string> folders; ///< of the workspace, as paths
    std::set<std::string> changed; ///< URIs of documents of which nothing was said since
    std::optional<Json> request;   ///< id of the one that is being handled, for who answers it when that is over
    JudgedLibraries libraries;
    LaterAnswers later;
    std::unordered_map<std::string, std::size_t> published; ///< hash of what was said last, by URI; of no empty lists
    std::map<std::string, std::function<void(const Json&)>> asked; ///< what waits for an answer, by id
    int questions = 0;                                             ///< so far
    Files files;                                                   ///< those that are not open

    /// Gives what is asked to answer later, unless the request was taken over already.
    void answerLater(std::function<Json()> work, std::string failure, std::optional<Json> otherwise = {});
    void answer(const Json& id, Json result) const;
    void answerError(const Json& id, ErrorCode code, const std::string& message) const;
    void notify(const char* method, Json params) const;
    /// Asks the client; the answer, which may never come, has a "result" or an "error".
    void ask(const char* method, Json params, std::function<void(const Json& answer)> answered);
    void takeAnswer(const Json& answer);
    /// The URI of a file, as the client writes it when it had the file open.
    std::string uriAt(const std::string& path) const;
    /// Null when it is not open.
    const Document* openAt(const std::string& path) const;
    /// Whether the client said true at this path of its capabilities.
    bool canClient(const char* path) const;
    /// The document that the parameters name. Throws RequestError when it is not open.
    Document& documentOf(const Json& params);
    const std::string& uriOf(const Json& params) const;
};

// Between JSON and texts. Those that read throw Json::exception when a value is missing or of another type.

/// Throws RequestError for what is no whole number from 0 on.
Position positionOf(const Json& json);
Json jsonOf(Position position);
/// From a byte to another one.
Json rangeOf(PositionFinder& positions, std::size_t begin, std::size_t end);

/// Edits of one text, as the protocol has them.
struct TextEdits {
    std::string uri;
    std::optional<std::int64_t> version; ///< of an open document
    Json edits;
};
/// What the client is to change, with the versions when it knows such.
Json workspaceEdit(const Session& session, std::vector<TextEdits> texts);

/// Ranges of many stretches that are marked in their first lines: what goes on behind ends there. They cost least in
/// the order of the text.
class RangeFinder {
public:
    RangeFinder(const Document& document, Encoding encoding)
        : document_(document), begins_(document, encoding), ends_(document, encoding) {}
    Json at(Stretch stretch);

private:
    const Document& document_;
    PositionFinder begins_;
    PositionFinder ends_;
};

} // namespace hdnt::author::server
