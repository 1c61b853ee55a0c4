#pragma once

#include "author/server/Document.internal.h"
#include "author/server/Found.internal.h"
#include "author/server/Workspace.internal.h"

#include <functional>
#include <map>
#include <string>

namespace hdnt::author::server {

/// The most diagnostics that are shown of one file: all of them go with each key stroke.
inline constexpr std::size_t mostDiagnostics = 500;

/// A library to be judged.
struct JudgeTask {
    LibraryFolder library;
    std::string document;                     ///< path of the text that changed; what has no place is said of it
    std::map<std::string, std::string> texts; ///< that are open, by path
    Encoding encoding = Encoding::utf16;
};

/// Judges a library as `ntl lint` does, and sends what was found: first without trying mappings, then all. For a
/// process of its own, which it changes for good.
void judgeFolder(JudgeTask task, const std::function<void(const FoundInLibrary&)>& send);

} // namespace hdnt::author::server
