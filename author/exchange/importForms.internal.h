#pragma once

#include "author/exchange/importBlocks.h"

#include <string>

// The forms of importBlocks().
namespace hdnt::author {

/// The bytes of a file, of an archive those of the file in it. Throws HEXDataException, which names it.
std::string fileText(const std::string& file);

/// As HDNTFormatter does it. Throws HEXDataException, which names the file that it is made of.
std::string laidOut(const std::string& file, const std::string& text);

Imported importJson(const std::vector<std::string>& files);
Imported importVerilog(const std::vector<std::string>& files);

} // namespace hdnt::author
