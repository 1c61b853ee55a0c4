#pragma once

#include "author/exchange/exportBlocks.h"
#include "hdnt/platform/Export.h"

#include <string>
#include <vector>

// What other tools know of blocks, as NTL.
namespace hdnt::author {

/// All that importBlocks() can read, by name.
HDNT_API std::vector<ExchangeForm> importForms();

struct Imported {
    std::string text;                 ///< one library, laid out as HDNTFormatter does
    std::vector<std::string> leftOut; ///< what is not in it: "FILE: WHERE: why"
};

/// Writes what files in a form describe as NTL. The text reads back, but is not checked: what it says of blocks may be
/// wrong, such as a default that is out of its range. Throws HEXDataException, which names the file, when there is no
/// such form, or when a file cannot be read or is none of the form. The loading thread's, outside of a load.
HDNT_API Imported importBlocks(const std::string& form, const std::vector<std::string>& files);

} // namespace hdnt::author
