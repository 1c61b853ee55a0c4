#pragma once

#include <map>
#include <string>
#include <string_view>

namespace hdnt::diagnostics {

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

/// Replaces `out` by a copy of the text.
void copySource(std::string_view text, std::string& out);

/// Whether a path that a text names may be opened: everything may, unless a root folder is set and the path, links
/// resolved, is not below it. False with a reason.
bool isInsideRoot(const std::string& path, std::string& reason);

} // namespace hdnt::diagnostics
