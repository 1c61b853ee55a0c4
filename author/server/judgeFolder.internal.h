#pragma once

#include "author/server/FolderLoader.internal.h"
#include "author/server/Found.internal.h"

#include <cstddef>
#include <functional>

namespace hdnt::author::server {

/// The most diagnostics that are shown of one file: all of them go with each key stroke.
inline constexpr std::size_t mostDiagnostics = 500;

/// Judges a library as `ntl lint` does, and sends what was found: first without trying mappings, then all. For a
/// process of its own, which it changes for good.
void judgeFolder(LibraryTask task, const std::function<void(const FoundInLibrary&)>& send);

} // namespace hdnt::author::server
