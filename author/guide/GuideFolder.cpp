#include "author/exchange/fileNames.internal.h"
#include "author/guide/GuideFolder.internal.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/InputFile.h"

#include <fcntl.h>
#include <stdio.h> // NOLINT: renameat2 is no part of <cstdio>
#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace hdnt::author::guide {

namespace {

namespace fs = std::filesystem;

constexpr const char* listName = "guide.files"; ///< a line for each file: its sum in hexadecimal, a blank, its name

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw HEXDataException(path + ": " + reason);
}

std::string contentOf(const fs::path& path) {
    std::string text;
    std::string why;
    if (!platform::readInput(path.string(), {}, text, why)) fail(path.string(), "cannot be read: " + why);
    return text;
}

std::map<std::string, std::uint64_t> listOf(const fs::path& folder) {
    std::map<std::string, std::uint64_t> list;
    if (!fs::exists(folder / listName)) return list;
    std::istringstream lines(contentOf(folder / listName));
    lines.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        std::uint64_t sum = 0;
        if (blank != line.npos && std::from_chars(line.data(), line.data() + blank, sum, 16).ec == std::errc())
            list[line.substr(blank + 1)] = sum;
    }
    return list;
}

// Folders count by what is in them.
void requireOwn(const fs::path& folder) {
    const std::map<std::string, std::uint64_t> own = listOf(folder);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).generic_string();
        if (name == listName || (entry.is_directory() && !entry.is_symlink())) continue;
        const auto found = own.find(name);
        if (found == own.end() || !entry.is_regular_file() || entry.is_symlink())
            fail(folder.string(), "holds '" + name + "', which no guide wrote; name an empty or a new folder");
        if (sumOf(contentOf(entry.path())) != found->second)
            fail(folder.string(), "'" + name + "' was changed since a guide wrote it; name an empty or a new folder");
    }
}

// Through symbolic links, so that the link stays.
fs::path placeOf(const std::string& path) {
    if (path.empty()) fail("OUT", "is empty; name a folder");
    const fs::path place = fs::weakly_canonical(fs::absolute(path));
    return place.has_filename() ? place : place.parent_path();
}

bool isAround(const fs::path& folder, const fs::path& other) {
    const fs::path way = other.lexically_relative(folder);
    return !way.empty() && *way.begin() != "..";
}

} // namespace

GuideFolder::GuideFolder(const std::string& path) : path_(path) {
    try {
        const fs::path place = placeOf(path);
        path_ = place.string();
        if (fs::exists(place) && !fs::is_directory(place)) fail(path, "is no folder");
        if (isAround(place, fs::current_path()))
            fail(path, "holds the working directory, which would be gone; name it from another one");
        if (fs::exists(place)) requireOwn(place);
        fs::create_directories(place.parent_path());
        std::string draft = (place.parent_path() / ("." + place.filename().string() + ".XXXXXX")).string();
        if (!mkdtemp(draft.data())) fail(draft, std::strerror(errno));
        draft_ = draft;
        const mode_t mask = umask(0);
        umask(mask);
        fs::permissions(draft_, static_cast<fs::perms>(0777U & ~mask));
    } catch (const fs::filesystem_error& error) {
        if (std::error_code ignored; !draft_.empty()) fs::remove_all(draft_, ignored);
        fail(path, error.code().message());
    }
}

GuideFolder::~GuideFolder() {
    std::error_code error;
    if (!draft_.empty()) fs::remove_all(draft_, error);
}

void GuideFolder::write(const std::string& name, std::string_view bytes) {
    const fs::path path = fs::path(draft_) / name;
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    errno = 0;
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) fail(path_ + "/" + name, std::strerror(errno));
    written_[name] = sumOf(bytes);
}

void GuideFolder::finish() {
    std::ostringstream list;
    list << std::hex;
    for (const auto& [name, sum] : written_) list << sum << ' ' << name << '\n';
    write(listName, list.str());
    std::error_code error;
    // The draft is the older one then.
    if (renameat2(AT_FDCWD, draft_.c_str(), AT_FDCWD, path_.c_str(), RENAME_EXCHANGE) == 0) return;
    if (errno == ENOENT) fs::rename(draft_, path_, error);
    else if (errno != EINVAL && errno != ENOSYS) fail(path_, std::strerror(errno));
    else {
        // The file system cannot exchange; only an empty folder can be replaced then.
        const std::string older = draft_ + ".old";
        fs::rename(path_, older, error);
        if (error) fail(path_, error.message());
        fs::rename(draft_, path_, error);
        if (std::error_code ignored; error) fs::rename(older, path_, ignored);
        else draft_ = older;
    }
    if (error) fail(path_, error.message());
}

std::string GuideFolder::removeOlder() {
    std::error_code error;
    fs::remove_all(draft_, error);
    const std::string left = std::exchange(draft_, std::string());
    return error ? left + ": the older pages cannot be removed: " + error.message() : std::string();
}

} // namespace hdnt::author::guide
