#include "hdnt/platform/HUTFile.h"

#include "hdnt/platform/HEX.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

HUTFileIter::HUTFileIter(std::vector<std::string> paths) : paths_(std::move(paths)) {}
HUTFileIter::~HUTFileIter() = default;

void HUTFileIter::next() {
    if (!hasNext()) throw HEXAlgException("HUTFileIter::next called on iterator with no next value");
    ++read_;
}

const std::string& HUTFileIter::current() const {
    if (read_ == 0) throw HEXAlgException("HUTFileIter::current called on iterator with no current value");
    return paths_[read_ - 1];
}

HUTFile::HUTFile(std::string path) : path_(std::move(path)) {}

bool HUTFile::exists() const { return HUTPathUtils::exists(path_); }

bool HUTFile::isDir() const {
    std::error_code error;
    return fs::is_directory(path_, error);
}

HUTFileIter* HUTFile::createFileIter() const {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path_.c_str()), closedir);
    if (directory) errno = 0; // the end is told from a fault by it
    while (const dirent* const entry = directory ? readdir(directory.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    if (errno == ENOMEM) throw std::bad_alloc();
    if (errno != 0)
        throw HEXDataException("Could not read directory " + path_ + ": " + std::generic_category().message(errno));
    std::sort(names.begin(), names.end());
    for (std::string& name : names) name = HUTPathUtils::join(path_, name);
    return new HUTFileIter(std::move(names));
}

// Asked for each block that may have a map library; a std::filesystem::path is taken apart in memory of its own.
bool HUTPathUtils::exists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

std::string HUTPathUtils::join(const std::string& directory, const std::string& name) {
    if (directory.empty() || name.starts_with('/')) return name;
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    path += directory;
    if (!path.ends_with('/')) path += '/';
    return path += name;
}

std::string HUTPathUtils::replaceExtension(const std::string& path, const std::string& extension) {
    const std::size_t begin = path.rfind('/') + 1; // of the last part; npos + 1 is 0
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != path.npos && dot > begin && path.substr(begin) != "..";
    std::string replaced = path.substr(0, hasExtension ? dot : path.size());
    if (!extension.empty() && !extension.starts_with('.')) replaced += '.';
    return replaced += extension;
}

std::string HUTPathUtils::directoryOf(const std::string& path) { return fs::path(path).parent_path().string(); }

std::string HUTPathUtils::leafOf(const std::string& path) { return path.substr(path.rfind('/') + 1); } // npos + 1 is 0

std::string HUTPathUtils::findInPath(const char* list, const std::string& lastDirectory, const std::string& name) {
    if (name.empty()) return {};
    std::string_view rest = list ? list : "";
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        const std::string directory(rest.substr(0, colon));
        rest.remove_prefix(colon == std::string_view::npos ? rest.size() : colon + 1);
        if (directory.empty()) continue;
        if (std::string path = join(directory, name); exists(path)) return path;
    }
    if (std::string path = join(lastDirectory, name); !lastDirectory.empty() && exists(path)) return path;
    return {};
}
