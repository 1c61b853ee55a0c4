#pragma once

#include "author/exchange/importBlocks.h"

#include <string>

// The forms of importBlocks().
namespace hdnt::author {

/// The bytes of a file, of an archive those of the file in it. Throws HEXDataException, which names it.
std::string fileText(const std::string& file);

Imported importJson(const std::vector<std::string>& files);

} // namespace hdnt::author
