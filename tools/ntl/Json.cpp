#include "tools/ntl/Json.h"

namespace ntl {

Json jsonHead(const std::string& command) {
    Json json;
    json["version"] = jsonVersion;
    json["command"] = command;
    return json;
}

std::string jsonText(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

Json jsonOf(const hdnt::Place& place) {
    if (!place.isKnown()) return nullptr;
    Json json;
    json["file"] = orNull(place.file);
    json["line"] = place.line;
    json["column"] = orNull(place.column);
    json["endColumn"] = orNull(place.endColumn);
    json["offset"] = place.offset == hdnt::Place::unknown ? Json() : Json(place.offset);
    json["endOffset"] = place.endOffset == hdnt::Place::unknown ? Json() : Json(place.endOffset);
    json["textLine"] = orNull(place.textLine);
    return json;
}

Json jsonOf(const hdnt::Diagnostic& diagnostic) {
    Json json;
    json["severity"] = nameOf(diagnostic.severity);
    json["code"] = diagnostic.code;
    json["message"] = diagnostic.message;
    json["detail"] = orNull(diagnostic.detail);
    json["location"] = jsonOf(diagnostic.place);
    json["text"] = orNull(diagnostic.place.text);
    json["related"] = Json::array();
    for (const hdnt::RelatedPlace& related : diagnostic.related)
        json["related"].push_back({{"message", related.message}, {"location", jsonOf(related.place)}});
    return json;
}

} // namespace ntl
