#pragma once

#include "hdnt/platform/Export.h"

#include <string>

/// Appends a map library's text to `out`, without the lines of "#ifArch" sections that do not name `arch`.
///
/// A directive stands in column 1; "#endif" ends any section; sections do not nest; an empty `arch` drops every
/// section. True when an "#ifArch" line was reached outside a dropped section. The file may be compressed. Throws
/// HEXAlgException "Failed to open file " + path.
HDNT_API bool slurpAndFilterFile(const std::string& path, const std::string& arch, std::string& out);
