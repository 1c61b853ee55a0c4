#include "hdnt/model/HDNTBlock.h"
#include "hdnt/netlist/HDNTNetlist.h"
#include "hdnt/netlist/Words.h"
#include "tools/ntl/Expansion.h"

#include <set>

namespace ntl {

namespace {

using Expansion = HDNTExpansion;

Json indexOrNull(size_t index) { return index == Expansion::none ? Json() : Json(index); }

/// One level. What it holds bears its origin: its place, and the index of the branch it stands in.
class LevelJson {
public:
    LevelJson(const ExpandedBlock& expanded, const Expansion::Level& level) : expanded_(expanded), level_(level) {}

    Json json() const {
        Json json;
        json["path"] = level_.path;
        json["outer"] = indexOrNull(level_.outer);
        json["type"] = level_.block->getName();
        json["section"] = hdnt::words::sections.wordOf(level_.section);
        json["location"] = jsonOf(expanded_.places.placeOf(level_.location));
        json["isMapLibrary"] = !level_.location.fileName;
        json["branches"] = branches();
        json["instances"] = instances();
        json["signals"] = signals();
        json["connections"] = connections();
        json["pinProperties"] = properties(level_.pinProperties);
        json["calls"] = calls();
        return json;
    }

private:
    void addOrigin(Json& json, const Expansion::Origin& origin) const {
        json["origin"]["location"] = jsonOf(expanded_.places.placeOf(origin.location));
        json["origin"]["branch"] = indexOrNull(origin.branch);
    }

    Json branches() const {
        Json list = Json::array();
        for (const Expansion::Branch& branch : level_.branches) {
            Json& item = list.emplace_back();
            item["taken"] = branch.taken;
            addOrigin(item, branch.origin);
        }
        return list;
    }

    Json properties(const std::vector<Expansion::PropertyValue>& values) const {
        Json list = Json::array();
        for (const Expansion::PropertyValue& property : values) {
            Json& item = list.emplace_back();
            item["pin"] = orNull(property.pin);
            item["name"] = property.name;
            item["value"] = jsonOf(property.value);
            addOrigin(item, property.origin);
        }
        return list;
    }

    Json instances() const {
        Json list = Json::array();
        for (const Expansion::Instance& instance : level_.instances) {
            Json& item = list.emplace_back();
            item["name"] = instance.name;
            item["type"] = instance.type;
            item["exists"] = instance.block != nullptr;
            item["level"] = indexOrNull(instance.level);
            item["properties"] = properties(instance.properties);
            addOrigin(item, instance.origin);
        }
        return list;
    }

    Json signals() const {
        Json list = Json::array();
        for (const Expansion::Signal& signal : level_.signals) {
            Json& item = list.emplace_back();
            item["name"] = signal.name;
            addOrigin(item, signal.origin);
        }
        return list;
    }

    Json connections() const {
        Json list = Json::array();
        for (const Expansion::Connection& connection : level_.connections) {
            Json& item = list.emplace_back();
            item["signal"] = connection.signal;
            item["instance"] = orNull(connection.instance);
            item["pin"] = connection.pin;
            item["inverted"] = connection.inverted;
            addOrigin(item, connection.origin);
        }
        return list;
    }

    Json calls() const {
        Json list = Json::array();
        for (const Expansion::Call& call : level_.calls) {
            Json& item = list.emplace_back();
            item["name"] = call.name;
            item["arguments"] = Json::array();
            for (const Expansion::Value& value : call.arguments) item["arguments"].push_back(jsonOf(value));
            item["made"] = call.made;
            addOrigin(item, call.origin);
        }
        return list;
    }

    const ExpandedBlock& expanded_;
    const Expansion::Level& level_;
};

} // namespace

Json expansionJson(const ExpandedBlock& expanded) {
    Json json;
    json["block"] = expanded.expansion.levels().front().block->getName();
    json["values"] = Json::object();
    for (const auto& [name, value] : expanded.properties) json["values"][name] = value;
    json["connected"] = expanded.connectedPins;
    json["problems"] = Json::array();
    for (const Expansion::Problem& problem : expanded.expansion.problems()) {
        Json& item = json["problems"].emplace_back();
        item["level"] = problem.level;
        item["message"] = problem.message;
        item["location"] = jsonOf(expanded.places.placeOf(problem.location));
    }
    json["levels"] = Json::array();
    for (const Expansion::Level& level : expanded.expansion.levels())
        json["levels"].push_back(LevelJson(expanded, level).json());
    return json;
}

} // namespace ntl
