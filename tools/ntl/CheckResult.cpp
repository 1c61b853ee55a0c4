#include "tools/ntl/CheckResult.h"

#include "tools/ntl/Json.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Packing.h"

#include <algorithm>
#include <set>

namespace hdnt {

template <typename Archive>
static void fields(Archive& archive, Place& place) {
    archive(place.file, place.line, place.column, place.endColumn, place.offset, place.endOffset, place.textLine,
            place.order, place.text);
}

template <typename Archive>
static void fields(Archive& archive, RelatedPlace& related) {
    archive(related.place, related.message);
}

template <typename Archive>
static void fields(Archive& archive, Diagnostic& one) {
    archive(one.severity, one.code, one.place, one.message, one.detail, one.related, one.element);
}

} // namespace hdnt

namespace ntl {

template <typename Archive>
static void fields(Archive& archive, CheckResult& result) {
    archive(result.input, result.status, result.reason, result.parentFailed, result.isLoaded, result.blocks,
            result.errors, result.saidBetter, result.faults, result.warnings, result.files);
}

std::string packed(const CheckResult& result) {
    Packer packer;
    packer(result);
    return std::move(packer.bytes);
}

CheckResult unpacked(const std::string& bytes) {
    CheckResult result;
    Unpacker{bytes}(result);
    return result;
}

std::vector<hdnt::Diagnostic> CheckResult::findings() const {
    std::vector<hdnt::Diagnostic> all = faults;
    all.insert(all.end(), warnings.begin(), warnings.end());
    return all;
}

void CheckResult::take(std::vector<hdnt::Diagnostic> findings) {
    faults.clear();
    warnings.clear();
    for (hdnt::Diagnostic& one : findings)
        (one.severity == hdnt::Severity::error ? faults : warnings).push_back(std::move(one));
    if (!isLoaded) return;
    status = faults.empty() ? Fine : Faulty;
    reason = faults.empty() ? "" : input + ": " + counted(faults.size(), "error");
}

std::string faultLines(const CheckResult& result, size_t most) {
    const size_t number = most == 0 ? result.faults.size() : std::min(most, result.faults.size());
    std::string lines;
    for (size_t i = 0; i < number; ++i) lines += errorLines(result.faults[i]);
    const size_t left = result.faults.size() - number;
    return left == 0 ? lines
                     : lines + printable(result.input) + ": " + counted(left, "more error") +
                           " left out; --max-errors 0 says all\n";
}

size_t countOf(const std::vector<hdnt::Diagnostic>& list, hdnt::Severity severity) {
    const auto isIt = [&](const hdnt::Diagnostic& one) { return one.severity == severity; };
    return static_cast<size_t>(std::count_if(list.begin(), list.end(), isIt));
}

bool hasFailed(const CheckResult& result, bool warningsAreErrors) {
    return result.status != Fine || (warningsAreErrors && countOf(result.warnings, hdnt::Severity::warning) > 0);
}

std::string textLine(const CheckResult& result) {
    const size_t count = countOf(result.warnings, hdnt::Severity::warning);
    const std::string warnings = count == 0 ? "" : ", " + counted(count, "warning");
    return printable(result.input) + ": " + counted(result.blocks, "block") + ", no errors" + warnings + "\n";
}

std::string sumLine(size_t libraries, size_t failed, size_t warnings) {
    const std::string errors = failed == 0 ? "no errors" : grouped(failed) + " with errors";
    const std::string more = warnings == 0 ? "" : ", " + grouped(warnings) + (warnings == 1 ? " warning" : " warnings");
    return grouped(libraries) + (libraries == 1 ? " library: " : " libraries: ") + errors + more + "\n";
}

static const char* statusName(const CheckResult& result) {
    if (result.status == Unusable) return "unusable";
    return result.status == Faulty                                  ? "errors"
           : countOf(result.warnings, hdnt::Severity::warning) == 0 ? "good"
                                                                    : "warnings";
}

static Json jsonOf(const CheckResult& result) {
    Json json;
    json["input"] = result.input;
    json["status"] = statusName(result);
    json["reason"] = orNull(result.reason);
    json["blockCount"] = result.status == Fine ? Json(result.blocks) : Json();
    json["diagnostics"] = Json::array();
    for (const auto* list : {&result.errors, &result.faults, &result.warnings})
        for (const hdnt::Diagnostic& one : *list) json["diagnostics"].push_back(jsonOf(one));
    json["files"] = result.files;
    return json;
}

std::string jsonDocument(Json json, const std::vector<CheckResult>& results, int exitStatus) {
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

// Nothing that make could compare.
static bool isStandardInput(const std::string& file) { return file == "-" || file == "/dev/stdin"; }

std::string makeRules(const std::string& target, const std::vector<CheckResult>& results) {
    std::string text;
    std::set<std::string> all;
    for (const CheckResult& result : results) {
        std::vector<std::string> files = {result.input};
        files.insert(files.end(), result.files.begin(), result.files.end());
        text += makeName(target) + ":";
        std::set<std::string> written;
        for (const std::string& file : files) {
            if (isStandardInput(file) || !written.insert(file).second) continue;
            text += " \\\n  " + makeName(file);
            all.insert(file);
        }
        text += "\n";
    }
    for (const std::string& file : all) text += "\n" + makeName(file) + ":\n";
    return text;
}

} // namespace ntl
