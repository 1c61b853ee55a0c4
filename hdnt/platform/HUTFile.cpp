#include "hdnt/platform/HUTFile.h"

#include "hdnt/platform/HEX.h"

#include <algorithm>
#include <filesystem>
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
    std::error_code error;
    fs::directory_iterator entry(path_, error);
    while (!error && entry != fs::directory_iterator()) {
        names.push_back(entry->path().filename().string());
        entry.increment(error);
    }
    if (error) throw HEXDataException("Could not read directory " + path_ + ": " + error.message());
    std::sort(names.begin(), names.end());
    for (std::string& name : names) name = HUTPathUtils::join(path_, name);
    return new HUTFileIter(std::move(names));
}

bool HUTPathUtils::exists(const std::string& path) {
    std::error_code error;
    return fs::exists(path, error);
}

std::string HUTPathUtils::join(const std::string& directory, const std::string& name) {
    return (fs::path(directory) / name).string();
}

std::string HUTPathUtils::replaceExtension(const std::string& path, const std::string& extension) {
    return fs::path(path).replace_extension(extension).string();
}

std::string HUTPathUtils::directoryOf(const std::string& path) { return fs::path(path).parent_path().string(); }

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
