#include "author/server/Session.internal.h"

#include <utility>

namespace hdnt::author::server {

void Session::notify(const char* method, Json params) const {
    send({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
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

} // namespace hdnt::author::server
