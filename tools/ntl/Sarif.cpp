// Results of a check as a SARIF 2.1.0 log.
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Json.h"

#include <algorithm>

namespace ntl {

static const char* const errorRule = "error";
static const char* const unusableRule = "unusable-input";

// A path as a URI reference: relative as it stands, absolute with its scheme.
static std::string uriOf(const std::string& path) {
    static const char* const digits = "0123456789ABCDEF";
    static const std::string plain = "/-._~!$&'()*+,;=@";
    std::string uri = path.compare(0, 1, "/") == 0 ? "file://" : "";
    for (const char c : path) {
        const bool kept =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || plain.find(c) != plain.npos;
        const auto byte = static_cast<unsigned char>(c);
        if (kept) uri += c;
        else uri += std::string("%") + digits[byte >> 4U] + digits[byte & 15U];
    }
    return uri;
}

static Json rule(const std::string& id, const std::string& text, const char* level) {
    Json json;
    json["id"] = id;
    json["shortDescription"]["text"] = text;
    json["defaultConfiguration"]["level"] = level;
    return json;
}

static Json rules() {
    Json list = Json::array();
    list.push_back(rule(errorRule, "The library reports an error in the text.", "error"));
    list.push_back(rule(unusableRule, "The input cannot be opened, or its check was broken off.", "error"));
    for (const WarningRule& warning : warningRules())
        list.push_back(rule(std::string(warning.code), std::string(warning.summary), "warning"));
    return list;
}

static Json result(const Json& ruleList, const std::string& ruleId, const char* level, const std::string& text,
                   const Place& place, const std::string& input) {
    const auto isRule = [&](const Json& entry) { return entry["id"] == ruleId; };
    Json json;
    json["ruleId"] = ruleId;
    json["ruleIndex"] = std::find_if(ruleList.begin(), ruleList.end(), isRule) - ruleList.begin();
    json["level"] = level;
    json["message"]["text"] = text;
    Json location;
    location["artifactLocation"]["uri"] = uriOf(place.file.empty() ? input : place.file);
    if (place.isKnown()) {
        Json& region = location["region"];
        region["startLine"] = place.line;
        if (place.column > 0) {
            region["startColumn"] = place.column;
            region["endColumn"] = std::max(place.lastColumn + 1, place.column);
        }
    }
    Json wrapped;
    wrapped["physicalLocation"] = std::move(location);
    json["locations"] = Json::array({std::move(wrapped)});
    return json;
}

std::string sarifDocument(const std::vector<CheckResult>& results) {
    Json run;
    run["tool"]["driver"]["name"] = "ntl";
    run["tool"]["driver"]["version"] = NTL_VERSION;
    run["tool"]["driver"]["rules"] = rules();
    const Json ruleList = run["tool"]["driver"]["rules"];
    run["columnKind"] = "unicodeCodePoints";
    run["results"] = Json::array();
    for (const CheckResult& input : results) {
        Json& list = run["results"];
        for (const Report& report : input.reports)
            list.push_back(result(ruleList, errorRule, "error", report.message, report.place, input.input));
        if (input.status != Fine && (input.reports.empty() || input.status == Unusable))
            list.push_back(result(ruleList, unusableRule, "error", input.reason, Place(), input.input));
        for (const Finding& finding : input.warnings)
            list.push_back(result(ruleList, std::string(warningRules()[static_cast<size_t>(finding.warning)].code),
                                  "warning", finding.text, finding.place, input.input));
    }
    Json log;
    log["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    log["version"] = "2.1.0";
    log["runs"] = Json::array({std::move(run)});
    return jsonText(log);
}

} // namespace ntl
