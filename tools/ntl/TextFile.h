#pragma once

#include <sys/stat.h>

#include <string>

namespace ntl {

/// A file that is read and perhaps replaced. What goes wrong is thrown as Failure(Unusable).
class TextFile {
public:
    /// Reads the file, or standard input for "-", byte by byte as it is. No more than the limit inputBytes.
    explicit TextFile(std::string path);

    const std::string& bytes() const { return bytes_; }

    /// Puts a new text in the place of the file, all or nothing: a temporary file beside it is written in full and
    /// renamed. Mode, and where possible owner and group, stay; of a symbolic link, the target is replaced. Refused
    /// when the file is no regular one, may not be written, or was changed since it was read.
    void replace(const std::string& text) const;

private:
    /// What tells whether a file was changed.
    struct Stamp {
        unsigned long device = 0;
        unsigned long number = 0;
        long size = 0;
        long seconds = 0;
        long nanoseconds = 0;
        bool operator==(const Stamp& other) const = default;
    };
    static Stamp stampOf(const struct ::stat& status);

    std::string path_;
    std::string bytes_;
    Stamp stamp_;
};

/// Writes a file, new or in the place of an older one, all or nothing as TextFile::replace() does. What is no regular
/// file, such as a pipe, is written to. Throws Failure(Unusable).
void writeWholeFile(const std::string& path, const std::string& text);

} // namespace ntl
