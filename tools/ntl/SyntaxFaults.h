#pragma once

#include "author/lint/lint.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Loading.h"

#include <string>

class HDNTLibrary;

namespace ntl {

/// A library that did not load, and what its loader has kept of that load alone.
struct FailedLoad {
    std::string path;
    HDNTLibrary* parent = nullptr;
    const Loader& loader;
    hdnt::author::ConfigScope configuration = hdnt::author::ConfigScope::None;
    const hdnt::LintOptions& options;
};

/// Completes the result, which has the errors and warnings of the load, when they are about syntax: says every fault
/// of syntax in the files that were read, loads what is left without the faulty blocks, and judges that. Prints
/// nothing.
void judgeSyntax(const FailedLoad& failed, CheckResult& result);

} // namespace ntl
