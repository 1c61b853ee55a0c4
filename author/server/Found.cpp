#include "author/server/Found.internal.h"

#include <utility>

namespace hdnt::author::server {

bool Spot::move(std::size_t offset, std::size_t oldLength, std::size_t newLength) {
    if (!bytes) return false;
    if (bytes->end < offset) return true;
    if (bytes->begin <= offset + oldLength) return false;
    bytes->begin = bytes->begin - oldLength + newLength;
    bytes->end = bytes->end - oldLength + newLength;
    return true;
}

namespace {

Json jsonOf(const Spot& spot) {
    if (!spot.bytes) return Json::array({spot.range});
    return Json::array({spot.range, spot.bytes->begin, spot.bytes->end});
}

Spot spotOf(const Json& json) {
    Spot spot{std::nullopt, json.at(0)};
    if (json.size() > 1) spot.bytes = Stretch{json.at(1).get<std::size_t>(), json.at(2).get<std::size_t>()};
    return spot;
}

Json jsonOf(const Found& found) {
    Json json = {{"spot", jsonOf(found.spot)}, {"said", found.said}, {"thorough", found.isThorough}};
    json["how"] = static_cast<int>(found.how);
    json["related"] = Json::array();
    for (const Found::Related& related : found.related)
        json["related"].push_back(Json::array({related.path, jsonOf(related.spot), related.message}));
    return json;
}

Found foundOf(const Json& json) {
    Found found{spotOf(json.at("spot")), json.at("said"), {}, json.at("thorough").get<bool>()};
    found.how = static_cast<Found::Said>(json.at("how").get<int>());
    for (const Json& related : json.at("related"))
        found.related.push_back(
            {related.at(0).get<std::string>(), spotOf(related.at(1)), related.at(2).get<std::string>()});
    return found;
}

} // namespace

std::string packed(const FoundInLibrary& found) {
    Json json = {{"thorough", found.isThorough}, {"files", found.files}, {"found", Json::array()}};
    for (const auto& [path, inFile] : found.found) {
        Json list = Json::array();
        for (const Found& one : inFile.list) list.push_back(jsonOf(one));
        json["found"].push_back(Json::array({path, std::move(list), inFile.more}));
    }
    std::string bytes;
    Json::to_cbor(json, bytes);
    return bytes;
}

FoundInLibrary unpacked(const std::string& bytes) {
    const Json json = Json::from_cbor(bytes);
    FoundInLibrary found;
    found.isThorough = json.at("thorough").get<bool>();
    found.files = json.at("files").get<std::set<std::string>>();
    for (const Json& inFile : json.at("found")) {
        FoundInFile& in = found.found[inFile.at(0).get<std::string>()];
        for (const Json& one : inFile.at(1)) in.list.push_back(foundOf(one));
        in.more = inFile.at(2).get<std::size_t>();
    }
    return found;
}

} // namespace hdnt::author::server
