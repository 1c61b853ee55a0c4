#pragma once

#include "hdnt/hdnt.h"

#include <memory>
#include <string>

namespace bench {

using LibraryPointer = std::unique_ptr<HDNTLibrary>;

/// Text to model, not finalized, in a library over `parent`. Any report ends the program.
LibraryPointer parseFile(const std::string& path, HDNTLibrary* parent = nullptr);
LibraryPointer parseText(const std::string& text);
/// Text to finalized library.
LibraryPointer loadFile(const std::string& path, HDNTLibrary* parent = nullptr);
LibraryPointer loadFolder(const std::string& path);
LibraryPointer loadText(const std::string& text);
/// Ends the program when there was any report.
void expectNoReports();

} // namespace bench
