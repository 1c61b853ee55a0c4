#pragma once

#include "hdnt/platform/Export.h"

#include <cstddef>
#include <string>
#include <vector>

/// The paths of a directory's entries, in byte order of their names; a snapshot taken when it was created.
/// next() advances to the item that current() then reads, so it comes before the first read.
class HDNT_API HUTFileIter {
public:
    explicit HUTFileIter(std::vector<std::string> paths);
    virtual ~HUTFileIter();
    HUTFileIter(const HUTFileIter&) = delete;
    HUTFileIter& operator=(const HUTFileIter&) = delete;

    bool hasNext() const { return read_ < paths_.size(); }
    /// Throws HEXAlgException when there is no next entry.
    void next();
    /// Valid as long as the iterator. Throws HEXAlgException before the first next().
    const std::string& current() const;

private:
    std::vector<std::string> paths_;
    std::size_t read_ = 0;
};

/// A path and what is found there at the moment of each call. Links are followed.
class HDNT_API HUTFile {
public:
    explicit HUTFile(std::string path);

    const std::string& path() const { return path_; }
    /// False also when the path cannot be looked at.
    bool exists() const;
    bool isDir() const;
    /// The directory's entries, without "." and ".."; the caller owns the iterator. Each is the path given here, a
    /// slash and the entry's name. Throws HEXDataException when the path is no directory or cannot be read.
    HUTFileIter* createFileIter() const;

private:
    std::string path_;
};

/// Operations on path texts.
class HDNT_API HUTPathUtils {
public:
    static bool exists(const std::string& path);
    /// The directory, a slash unless it ends in one, and the name. An empty directory gives the name; an absolute name
    /// is its own answer.
    static std::string join(const std::string& directory, const std::string& name);
    /// The path with what follows the last dot of its last component replaced, or appended when there is none. The
    /// extension is given without its dot.
    static std::string replaceExtension(const std::string& path, const std::string& extension);
    static std::string directoryOf(const std::string& path);
    /// What follows the last slash: the whole text without one.
    static std::string leafOf(const std::string& path);
    /// The first existing <directory>/<name>, for the directories of a colon-separated list (null or empty: none; empty
    /// items are skipped) and then lastDirectory; empty when there is none, or when name is empty.
    static std::string findInPath(const char* list, const std::string& lastDirectory, const std::string& name);
};
