#pragma once

#include "tools/ntl/Warnings.h"

#include <vector>

class HDNTLibrary;

namespace ntl {

/// Which entries of the configuration a check judges.
enum class ConfigScope {
    None,
    OwnCells, ///< those about blocks of the library itself
    Whole,    ///< all; the library and its parents have to be all that the configuration speaks of. Of files that came
              ///< with the tool, while the common library did not: only those about blocks that are there
};

/// What is doubtful in the two configuration files that the library answers from, in the order of the files. Locks each
/// while it is read. Places have no column.
std::vector<Finding> judgeConfiguration(const HDNTLibrary& library, ConfigScope scope);

} // namespace ntl
