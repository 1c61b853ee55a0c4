#pragma once

#include "tools/ntl/Settings.h"

namespace ntl {

// The commands. Each writes its result to standard output, the rest to standard error, and returns the exit status, or
// throws Failure with it.
int runCheck(const Settings& settings);
int runLint(const Settings& settings);
int runExplain(const Settings& settings);
int runList(const Settings& settings);
int runShow(const Settings& settings);
int runExpand(const Settings& settings);
int runPrint(const Settings& settings);
int runDiff(const Settings& settings);
int runFormat(const Settings& settings);
int runCompareModels(const Settings& settings);
int runExport(const Settings& settings);
int runGuide(const Settings& settings);
int runImport(const Settings& settings);
int runServe(const Settings& settings);
int runHelp(const Settings& settings);

/// `ntl lint --list-rules`.
int listRules();

} // namespace ntl
