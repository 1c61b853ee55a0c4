#include "author/guide/SourceTexts.internal.h"
#include "author/guide/Templates.internal.h"
#include "hdnt/platform/DataDirectory.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"

#include <kainjow/mustache.hpp>

#include <map>

namespace hdnt::author::guide {

namespace {

namespace mustache = kainjow::mustache;

constexpr const char* names[] = {"page",      "start",    "blocks",  "names", "matrix",   "mappings",
                                 "functions", "findings", "changes", "block", "property", "link"};
/// Those that others take in. A page's own value of such a name could not be shown.
constexpr const char* parts[] = {"property", "link"};

mustache::data dataOf(const Json& json) {
    if (json.is_array()) {
        mustache::data list{mustache::data::type::list};
        for (const Json& item : json) list << dataOf(item);
        return list;
    }
    if (json.is_object()) {
        mustache::data object{mustache::data::type::object};
        for (const auto& [key, value] : json.items()) object.set(key, dataOf(value));
        return object;
    }
    if (json.is_boolean()) return json.get<bool>();
    if (!json.is_string()) return json.is_null() ? mustache::data(false) : mustache::data(json.dump());
    const auto& text = json.get_ref<const std::string&>();
    return text.empty() ? mustache::data(false) : mustache::data(text);
}

} // namespace

std::string guideFile(const std::string& name) {
    const std::string path = platform::findData("guide", name);
    if (path.empty()) throw HEXDataException("the guide's template '" + name + "' is missing from the data");
    std::string text;
    std::string why;
    if (!platform::readInput(path, {}, text, why)) throw HEXDataException(path + ": cannot be read: " + why);
    return text;
}

struct Templates::Parsed {
    std::map<std::string, mustache::mustache> byName;
    std::map<std::string, std::string> texts;
};

Templates::Templates() : parsed_(std::make_unique<Parsed>()) {
    for (const char* const name : names) {
        const std::string file = std::string(name) + ".mustache";
        mustache::mustache one(parsed_->texts[name] = guideFile(file));
        if (!one.is_valid()) throw HEXDataException("the guide's template '" + file + "': " + one.error_message());
        one.set_custom_escape([](const std::string& text) { return escapedLines(text); });
        parsed_->byName.emplace(name, std::move(one));
    }
}

Templates::~Templates() = default;

std::string Templates::render(const std::string& name, const Json& page) {
    mustache::data data = dataOf(page);
    for (const char* const part : parts)
        data.set(part, mustache::partial([&text = parsed_->texts.at(part)] { return text; }));
    return parsed_->byName.at(name).render(data);
}

} // namespace hdnt::author::guide
