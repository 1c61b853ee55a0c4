#pragma once

#include "author/judge/judge.h"
#include "hdnt/diagnostics/Diagnostic.h"
#include "tools/ntl/Json.h"
#include "tools/ntl/Settings.h"
#include "tools/ntl/Status.h"

#include <string>
#include <vector>

namespace ntl {

/// Stands for an input that cannot be opened, or whose check was broken off.
constexpr const char* unusableRule = "unusable-input";

/// What a check found out about one input.
struct CheckResult : hdnt::author::Judgement {
    std::string input;    ///< as named on the command line; the data's path for a shipped library
    Status status = Fine; ///< without regard to warnings
    std::string reason;   ///< what the one line about a failed input says
    bool parentFailed = false;
    bool isLoaded = false; ///< whatever its faults, the library is there
    size_t blocks = 0;

    /// Faults and warnings.
    std::vector<hdnt::Diagnostic> findings() const;
    /// Puts others in their place. They decide about the status of a library that was loaded.
    void take(std::vector<hdnt::Diagnostic> findings);
};

// From the worker's process to this one. Texts pass byte for byte.
std::string packed(const CheckResult& result);
CheckResult unpacked(const std::string& bytes);

/// The faults as lines for standard error, up to so many of them (0: all), and then how many there are more.
std::string faultLines(const CheckResult& result, size_t most);

// The forms of standard output.
std::string textLine(const CheckResult& result);
/// "1,000 libraries: 3 with errors, 12 warnings"
std::string sumLine(size_t libraries, size_t failed, size_t warnings);
std::string jsonDocument(Json head, const std::vector<CheckResult>& results, int exitStatus);
std::string sarifDocument(const std::vector<CheckResult>& results);
/// A line for each error, warning and note, by place.
std::string shortLines(const CheckResult& result);

/// Rules for make: the target depends on each input and the files it was read from, one rule an input. An empty rule
/// for each file keeps make going when the file is gone.
std::string makeRules(const std::string& target, const std::vector<CheckResult>& results);

size_t countOf(const std::vector<hdnt::Diagnostic>& list, hdnt::Severity severity);
/// Whether the input counts as failed.
bool hasFailed(const CheckResult& result, bool warningsAreErrors);

} // namespace ntl
