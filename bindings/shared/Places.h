#pragma once

#include "hdnt/diagnostics/Diagnostic.h"

namespace hdnt::scripts {

/// Where a model object stands, in characters of its file. The file that was asked for last is kept until the next
/// load, since scripts walk libraries in order. With the script lock.
Place placeOf(const yyltype& location);
void forgetFiles();

} // namespace hdnt::scripts
