#include "tools/ntl/BaselineOptions.h"

#include "hdnt/platform/HEX.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"
#include "tools/ntl/TextFile.h"

namespace ntl {

bool usesBaseline(const Settings& settings) { return !settings.baseline.empty() || !settings.newBaseline.empty(); }

Baselines::Baselines(const Settings& settings)
    : isThorough_(settings.isThorough), knownPath_(settings.baseline), writtenPath_(settings.newBaseline) {
    if (!writtenPath_.empty()) written_.emplace(writtenPath_);
    if (knownPath_.empty()) return;
    known_.emplace(knownPath_);
    orUnusable([&] { known_->read(); });
}

void Baselines::take(CheckResult& result) {
    isWhole_ = isWhole_ && result.isLoaded;
    if (!result.isLoaded || (!known_ && !written_)) return;
    files_.insert(files_.end(), result.files.begin(), result.files.end());
    std::vector<hdnt::Diagnostic> findings = result.findings();
    if (written_) written_->add(findings);
    (written_ ? written_ : known_)->hide(findings);
    result.take(std::move(findings));
}

static std::string entries(size_t count) { return std::to_string(count) + (count == 1 ? " entry" : " entries"); }

void Baselines::finish() {
    const size_t missing = known_ && !written_ ? known_->missing(files_, isThorough_) : 0;
    if (missing > 0)
        complain(knownPath_ + ": " + entries(missing) + (missing == 1 ? " no longer occurs" : " no longer occur") +
                 "; --write-baseline writes it without");
    if (!written_) return;
    if (!isWhole_) return complain(writtenPath_ + ": not written, since an input has errors");
    writeWholeFile(writtenPath_, written_->text());
    complain(writtenPath_ + ": " + entries(written_->size()) + " written");
}

} // namespace ntl
