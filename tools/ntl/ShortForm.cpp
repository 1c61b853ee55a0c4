// What was said of an input in lines for editors and the matchers of build logs.
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Output.h"

#include <algorithm>
#include <tuple>

namespace ntl {

static std::string lineOf(const hdnt::Place& place, std::string_view severity, const std::string& text,
                          const hdnt::Diagnostic& one, const CheckResult& result) {
    const std::string& file = place.file.empty() ? result.input : place.file;
    return printable(file) + ":" + std::to_string(std::max(place.line, 1)) + ":" +
           std::to_string(std::max(place.column, 1)) + ": " + std::string(severity) + ": " + printable(text) + " [" +
           one.code + "]\n";
}

// Of a text that does not end in its line, the library has the warning, the tree the error.
static bool isSaidBetter(const hdnt::Diagnostic& warning, const CheckResult& result) {
    return warning.code == "unterminated-string" &&
           std::any_of(result.faults.begin(), result.faults.end(), [&](const hdnt::Diagnostic& fault) {
               return fault.place.file == warning.place.file && fault.place.line == warning.place.line;
           });
}

std::string shortLines(const CheckResult& result) {
    std::vector<const hdnt::Diagnostic*> all;
    for (size_t i = 0; i < result.errors.size(); ++i)
        if (!std::binary_search(result.saidBetter.begin(), result.saidBetter.end(), i))
            all.push_back(&result.errors[i]);
    for (const hdnt::Diagnostic& fault : result.faults) all.push_back(&fault);
    for (const hdnt::Diagnostic& warning : result.warnings)
        if (!isSaidBetter(warning, result)) all.push_back(&warning);
    hdnt::Diagnostic whole;
    whole.code = unusableRule;
    whole.message = result.reason;
    const auto isError = [](const hdnt::Diagnostic* one) { return one->severity == hdnt::Severity::error; };
    if (result.status != Fine && std::none_of(all.begin(), all.end(), isError)) all.push_back(&whole);
    const auto key = [](const hdnt::Diagnostic* one) {
        return std::tie(one->place.file, one->place.line, one->place.column);
    };
    std::stable_sort(all.begin(), all.end(), [&](const auto* a, const auto* b) { return key(a) < key(b); });
    std::string lines;
    for (const hdnt::Diagnostic* one : all) {
        lines += lineOf(one->place, nameOf(one->severity), textOf(*one), *one, result);
        for (const hdnt::RelatedPlace& related : one->related)
            lines += lineOf(related.place, "note", related.message, *one, result);
    }
    return lines;
}

} // namespace ntl
