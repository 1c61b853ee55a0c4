#include "tools/ntl/CheckResult.h"

#include "tools/ntl/Json.h"
#include "tools/ntl/Output.h"

#include <set>

namespace ntl {

static Json packedPlace(const Place& place) {
    return Json::array({place.file, place.line, place.column, place.lastColumn, place.textLine, place.order});
}

static Place unpackedPlace(const Json& json) {
    return {json[0].get<std::string>(), json[1].get<int>(), json[2].get<int>(),
            json[3].get<int>(),         json[4].get<int>(), json[5].get<int>()};
}

std::string packed(const CheckResult& result) {
    Json reports = Json::array();
    for (const Report& report : result.reports)
        reports.push_back(Json::array({packedPlace(report.place), report.message, report.detail}));
    Json warnings = Json::array();
    for (const Finding& finding : result.warnings)
        warnings.push_back(Json::array({static_cast<int>(finding.warning), packedPlace(finding.place), finding.text}));
    const Json json = Json::array({result.status, result.reason, result.parentFailed, result.blocks, result.errors,
                                   std::move(reports), std::move(warnings), result.files});
    std::string bytes;
    Json::to_cbor(json, bytes);
    return bytes;
}

CheckResult unpacked(const std::string& bytes) {
    const Json json = Json::from_cbor(bytes);
    CheckResult result;
    result.status = json[0].get<Status>();
    result.reason = json[1].get<std::string>();
    result.parentFailed = json[2].get<bool>();
    result.blocks = json[3].get<size_t>();
    result.errors = json[4].get<size_t>();
    for (const Json& report : json[5])
        result.reports.push_back(
            {unpackedPlace(report[0]), report[1].get<std::string>(), report[2].get<std::string>()});
    for (const Json& warning : json[6])
        result.warnings.push_back(
            {static_cast<Warning>(warning[0].get<int>()), unpackedPlace(warning[1]), warning[2].get<std::string>()});
    result.files = json[7].get<std::vector<std::string>>();
    return result;
}

bool hasFailed(const CheckResult& result, bool warningsAreErrors) {
    return result.status != Fine || (warningsAreErrors && !result.warnings.empty());
}

std::string textLine(const CheckResult& result) {
    const std::string warnings = result.warnings.empty() ? "" : ", " + counted(result.warnings.size(), "warning");
    return printable(result.input) + ": " + counted(result.blocks, "block") + ", no errors" + warnings + "\n";
}

static const char* statusName(const CheckResult& result) {
    if (result.status == Unusable) return "unusable";
    return result.status == Faulty ? "errors" : result.warnings.empty() ? "good" : "warnings";
}

static std::string codeOf(const Finding& finding) {
    return std::string(warningRules()[static_cast<size_t>(finding.warning)].code);
}

static Json jsonOf(const CheckResult& result) {
    Json json;
    json["input"] = result.input;
    json["status"] = statusName(result);
    json["reason"] = orNull(result.reason);
    json["blocks"] = result.status == Fine ? Json(result.blocks) : Json();
    json["errors"] = Json::array();
    for (const Report& report : result.reports) {
        Json& item = json["errors"].emplace_back();
        item["message"] = report.message;
        item["detail"] = orNull(report.detail);
        item["location"] = jsonOf(report.place);
    }
    json["warnings"] = Json::array();
    for (const Finding& finding : result.warnings) {
        Json& item = json["warnings"].emplace_back();
        item["code"] = codeOf(finding);
        item["message"] = finding.text;
        item["location"] = jsonOf(finding.place);
    }
    json["files"] = result.files;
    return json;
}

std::string jsonDocument(const std::vector<CheckResult>& results, int exitStatus) {
    Json json = jsonHead("check");
    json["exitStatus"] = exitStatus;
    json["inputs"] = Json::array();
    for (const CheckResult& result : results) json["inputs"].push_back(jsonOf(result));
    return jsonText(json);
}

// In a rule for make, blanks, "#" and ":" are kept by a backslash, which is doubled only in front of these.
static std::string makeName(const std::string& path) {
    std::string result;
    size_t backslashes = 0;
    for (const char c : path) {
        const bool special = c == ' ' || c == '\t' || c == '#' || c == ':';
        if (special) result += std::string(backslashes + 1, '\\');
        if (c == '$') result += '$';
        backslashes = c == '\\' ? backslashes + 1 : 0;
        result += c;
    }
    return result;
}

std::string makeRules(const std::string& target, const std::vector<CheckResult>& results) {
    std::string text;
    std::set<std::string> all;
    for (const CheckResult& result : results) {
        std::vector<std::string> files = {result.input};
        files.insert(files.end(), result.files.begin(), result.files.end());
        text += makeName(target) + ":";
        std::set<std::string> written;
        for (const std::string& file : files) {
            if (!written.insert(file).second) continue;
            text += " \\\n  " + makeName(file);
            all.insert(file);
        }
        text += "\n";
    }
    for (const std::string& file : all) text += "\n" + makeName(file) + ":\n";
    return text;
}

} // namespace ntl
