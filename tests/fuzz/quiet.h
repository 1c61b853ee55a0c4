#pragma once

#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/diagnostics/HDNTLimits.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Once a process: no output, and no file of the machine that an input names.
inline void beQuiet(HDNTLimits limits = {}) {
    struct Silence : HDNTErrorListener {
        bool report(const HDNTReport&) override { return true; }
    };
    static Silence silence;
    if (!std::freopen("/dev/null", "w", stdout)) std::exit(3);
    HDNTError::setListener(&silence);
    limits.rootFolder = "/nowhere";
    HDNTLimits::set(limits);
}

/// Ends the process, as a finding, when something does not hold of a text.
inline void require(bool ok, const char* what, const std::string& text) {
    if (ok) return;
    std::fprintf(stderr, "%s\n%s\n", what, text.c_str());
    std::abort();
}

} // namespace fuzz
