#include "author/server/Workspace.internal.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace hdnt::author::server {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view scheme = "file://";

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/-._~").find(c) != std::string_view::npos;
}

// What is no escape stands for itself.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = text.data() + i + 1;
        const bool isEscape =
            text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        result += isEscape ? static_cast<char>(byte) : text[i];
        if (isEscape) i += 2;
    }
    return result;
}

std::vector<std::string> textsIn(const fs::path& folder) {
    std::vector<std::string> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code broken;
        if (entry->path().extension() == ".btl" && entry->is_regular_file(broken))
            files.push_back(entry->path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

std::string pathOf(const std::string& uri) {
    std::string_view rest = uri;
    if (!rest.starts_with(scheme)) return "";
    rest.remove_prefix(scheme.size());
    rest.remove_prefix(std::min(rest.find('/'), rest.size())); // a host
    return fs::path(unescaped(rest)).lexically_normal().string();
}

std::string uriOf(const std::string& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri(scheme);
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(c)) uri += c;
        else uri.append({'%', digits[byte >> 4U], digits[byte & 15U]});
    }
    return uri;
}

std::vector<std::string> textsAt(const std::string& path) {
    std::error_code error;
    if (path.empty()) return {};
    return fs::is_directory(path, error) ? textsIn(path) : std::vector{path};
}

LibraryFolder libraryOf(const std::string& path) {
    const bool isText = fs::path(path).extension() == ".btl";
    for (fs::path folder = fs::path(path).parent_path(); !folder.empty(); folder = folder.parent_path()) {
        std::vector<std::string> files = textsIn(folder);
        if (isText || !files.empty()) return {folder.string(), std::move(files)};
        if (folder == folder.parent_path()) break;
    }
    return {};
}

} // namespace hdnt::author::server
