#pragma once

#include <string>
#include <string_view>

namespace hdnt::diagnostics {

/// Reads a whole source file, compressed or not, within the limits in force. False with a reason when that fails.
bool readSource(const std::string& path, std::string& out, std::string& reason);

/// Replaces `out` by a copy of the text.
void copySource(std::string_view text, std::string& out);

/// Whether a path that a text names may be opened: everything may, unless a root folder is set and the path, links
/// resolved, is not below it. False with a reason.
bool isInsideRoot(const std::string& path, std::string& reason);

} // namespace hdnt::diagnostics
