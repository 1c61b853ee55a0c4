#pragma once

#include "hdnt/platform/InputFile.internal.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace hdnt::diagnostics {

struct SourceText;

/// Reads a whole source file, compressed or not, within the limits in force. False with a reason when that fails.
bool readSource(const std::string& path, std::string& out, std::string& reason);

/// Whether there is something to read: a file, or a text in its place.
bool sourceExists(const std::string& path);

/// While it lives, the thread that made it reads these texts, which are not owned, instead of the files. Paths that
/// differ only in how they are written ("a/../b", relative or not) are one; links are not followed.
class TextsInPlace {
public:
    explicit TextsInPlace(const std::map<std::string, std::string>& texts);
    ~TextsInPlace();
    TextsInPlace(const TextsInPlace&) = delete;
    TextsInPlace& operator=(const TextsInPlace&) = delete;

    /// Null when the file itself counts.
    static const std::string* find(const std::string& path);

private:
    std::map<std::string, const std::string*> byPath_;
    const TextsInPlace* before_;
};

/// Reads many files. Small texts stand one behind the other in large pages: a small page that is new to the process
/// costs more than what is read into it. The memory of a text goes with the last one that shares it.
class SharedTexts {
public:
    /// So many are to come, more or less.
    explicit SharedTexts(std::size_t files) : files_(files) {}

    /// As readSource(). Large ones have memory of their own, and all where an address sanitizer looks on.
    bool read(const std::string& path, SourceText& text, std::string& reason);

private:
    char* take(std::size_t size);

    std::size_t files_;
    platform::OpenFolder folder_;
    std::shared_ptr<char[]> block_;
    std::size_t used_ = 0;
    std::size_t size_ = 0;
};

/// Replaces `out` by a copy of the text.
void copySource(std::string_view text, std::string& out);

/// Whether a path, links resolved, is below a folder.
bool isBelow(const std::string& folder, const std::string& path);

/// Whether a path that a text names may be opened: everything may, unless a root folder is set and the path, links
/// resolved, is not below it. False with a reason.
bool isInsideRoot(const std::string& path, std::string& reason);

} // namespace hdnt::diagnostics
