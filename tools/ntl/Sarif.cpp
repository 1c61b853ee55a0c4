// Results of a check as a SARIF 2.1.0 log.
#include "author/lint/lint.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Json.h"

#include <algorithm>
#include <utility>

namespace ntl {

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

static Json ruleOf(const hdnt::DiagnosticRule& rule) {
    Json json;
    json["id"] = rule.name;
    json["shortDescription"]["text"] = rule.explanation;
    json["defaultConfiguration"]["level"] = nameOf(rule.severity);
    return json;
}

// Notes of the library are no findings.
static Json rules() {
    Json list = Json::array();
    list.push_back(
        ruleOf({unusableRule, hdnt::Severity::error, "", "The input cannot be opened, or its check was broken off."}));
    for (const auto* table : {&hdnt::diagnosticRules(), &hdnt::author::lintRules()})
        for (const hdnt::DiagnosticRule& rule : *table)
            if (table == &hdnt::author::lintRules() || rule.severity != hdnt::Severity::note)
                list.push_back(ruleOf(rule));
    return list;
}

static Json physical(const hdnt::Place& place, const std::string& input) {
    Json location;
    location["artifactLocation"]["uri"] = uriOf(place.file.empty() ? input : place.file);
    if (place.isKnown()) {
        Json& region = location["region"];
        region["startLine"] = place.line;
        if (place.column > 0) {
            region["startColumn"] = place.column;
            region["endColumn"] = place.endColumn;
        }
    }
    return location;
}

static Json result(const Json& ruleList, const hdnt::Diagnostic& diagnostic, const std::string& input) {
    const auto isRule = [&](const Json& entry) { return entry["id"] == diagnostic.code; };
    Json json;
    json["ruleId"] = diagnostic.code;
    json["ruleIndex"] = std::find_if(ruleList.begin(), ruleList.end(), isRule) - ruleList.begin();
    json["level"] = nameOf(diagnostic.severity);
    json["message"]["text"] = diagnostic.message;
    json["locations"] = Json::array({Json{{"physicalLocation", physical(diagnostic.place, input)}}});
    for (const hdnt::RelatedPlace& related : diagnostic.related)
        json["relatedLocations"].push_back(
            {{"physicalLocation", physical(related.place, input)}, {"message", {{"text", related.message}}}});
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
        for (const hdnt::Diagnostic& error : input.errors) list.push_back(result(ruleList, error, input.input));
        if (input.status != Fine && (input.errors.empty() || input.status == Unusable)) {
            hdnt::Diagnostic unusable;
            unusable.code = unusableRule;
            unusable.message = input.reason;
            list.push_back(result(ruleList, unusable, input.input));
        }
        for (const hdnt::Diagnostic& warning : input.warnings) list.push_back(result(ruleList, warning, input.input));
    }
    Json log;
    log["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    log["version"] = "2.1.0";
    log["runs"] = Json::array({std::move(run)});
    return jsonText(log);
}

} // namespace ntl
