#pragma once

#include "hdnt/diagnostics/HDNTError.h"

#include <string>

namespace hdnt::scripts {

/// A report or notice, kept.
struct Said {
    bool isError;
    const char* code; ///< as `ntl check` has it, or "error"
    std::string file;
    int line;
    int column;
    int lastColumn;
    std::string message;
    std::string detail;
    std::string text; ///< the source line
};

// While the text that they are about is being read.
Said saidBy(const HDNTReport& report);
Said saidBy(const HDNTNotice& notice);

} // namespace hdnt::scripts
