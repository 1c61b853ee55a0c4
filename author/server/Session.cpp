#include "author/server/Session.internal.h"
#include "author/server/Workspace.internal.h"

#include <algorithm>
#include <utility>

namespace hdnt::author::server {

Json errorAnswer(const Json& id, ErrorCode code, const std::string& message) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", static_cast<int>(code)}, {"message", message}}}};
}

void Session::answerLater(std::function<Json()> work, std::string failure, std::optional<Json> otherwise) {
    const std::optional<Json> id = std::exchange(request, std::nullopt);
    if (id) later.begin(*this, {*id, std::move(work), std::move(failure), std::move(otherwise)});
}

void Session::answer(const Json& id, Json result) const {
    send({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

void Session::answerError(const Json& id, ErrorCode code, const std::string& message) const {
    send(errorAnswer(id, code, message));
}

void Session::notify(const char* method, Json params) const {
    send({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
}

void Session::ask(const char* method, Json params, std::function<void(const Json&)> answered) {
    const std::string id = "ntl-" + std::to_string(++questions);
    asked.emplace(id, std::move(answered));
    send({{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", std::move(params)}});
}

void Session::takeAnswer(const Json& answer) {
    const Json id = answer.value("id", Json());
    const auto found = id.is_string() ? asked.find(id.get<std::string>()) : asked.end();
    if (found == asked.end()) return;
    const auto answered = std::move(found->second);
    asked.erase(found);
    answered(answer);
}

std::string Session::uriAt(const std::string& path) const {
    const auto known = uris.find(path);
    return known == uris.end() ? server::uriOf(path) : known->second;
}

const Document* Session::openAt(const std::string& path) const {
    const auto open = documents.find(uriAt(path));
    return open == documents.end() ? nullptr : &open->second;
}

bool Session::canClient(const char* path) const {
    const Json::json_pointer pointer(path);
    return clientCapabilities.contains(pointer) && clientCapabilities[pointer] == true;
}

const std::string& Session::uriOf(const Json& params) const {
    return params.at("textDocument").at("uri").get_ref<const std::string&>();
}

Document& Session::documentOf(const Json& params) {
    const std::string& uri = uriOf(params);
    const auto found = documents.find(uri);
    if (found == documents.end()) throw RequestError(ErrorCode::invalidParams, uri + " is not open");
    return found->second;
}

static std::size_t numberOf(const Json& json) {
    if (!json.is_number_unsigned()) throw RequestError(ErrorCode::invalidParams, "a position is no whole number");
    return json.get<std::size_t>();
}

Position positionOf(const Json& json) { return {numberOf(json.at("line")), numberOf(json.at("character"))}; }

Json jsonOf(Position position) { return {{"line", position.line}, {"character", position.character}}; }

Json rangeOf(PositionFinder& positions, std::size_t begin, std::size_t end) {
    Json range = Json::object();
    range["start"] = jsonOf(positions.at(begin));
    range["end"] = jsonOf(positions.at(end));
    return range;
}

Json workspaceEdit(const Session& session, std::vector<TextEdits> texts) {
    const bool knowsVersions = session.canClient("/workspace/workspaceEdit/documentChanges");
    Json changes = knowsVersions ? Json::array() : Json::object();
    for (TextEdits& text : texts) {
        if (!knowsVersions) {
            changes[text.uri] = std::move(text.edits);
            continue;
        }
        Json identifier = {{"uri", text.uri}, {"version", nullptr}};
        if (text.version) identifier["version"] = *text.version;
        changes.push_back({{"textDocument", std::move(identifier)}, {"edits", std::move(text.edits)}});
    }
    return {{knowsVersions ? "documentChanges" : "changes", std::move(changes)}};
}

Json RangeFinder::at(Stretch stretch) {
    const LineIndex& lines = document_.lines();
    const std::size_t lineEnd = lines.end(document_.text(), lines.lineAt(stretch.begin));
    const Position end = ends_.at(std::min(stretch.end, std::max(lineEnd, stretch.begin)));
    return {{"start", jsonOf(begins_.at(stretch.begin))}, {"end", jsonOf(end)}};
}

} // namespace hdnt::author::server
