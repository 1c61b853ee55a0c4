#pragma once

#include "author/lint/Baseline.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace ntl {

/// Whether findings have to say what they are part of.
bool usesBaseline(const Settings& settings);

/// --baseline and --write-baseline of a run.
class Baselines {
public:
    /// Throws Failure(Unusable) when the baseline cannot be read.
    explicit Baselines(const Settings& settings);

    /// Takes what is known out of the findings of an input.
    void take(CheckResult& result);
    /// Writes what was found, and says how much of what was known is no longer there. Throws Failure(Unusable).
    void finish();

private:
    bool isThorough_;
    std::optional<hdnt::author::Baseline> known_;
    std::optional<hdnt::author::Baseline> written_;
    std::string knownPath_;
    std::string writtenPath_;
    std::vector<std::string> files_; ///< of inputs that were judged
    bool isWhole_ = true;            ///< every input was judged
};

} // namespace ntl
