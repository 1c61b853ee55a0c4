#include "hdnt/platform/ConfigBase.h"

#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/Location.h"

#include <libconfig.h++>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string_view>

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '*'; }
bool isNameChar(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_'; }

bool isName(std::string_view text) {
    return !text.empty() && isLetter(text.front()) && std::all_of(text.begin(), text.end(), isNameChar);
}

// libconfig takes further separators and indexes in paths, and skips doubled separators; names hold none of them.
bool isPath(std::string_view path) {
    for (;;) {
        const std::size_t dot = path.find('.');
        if (!isName(path.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        path.remove_prefix(dot + 1);
    }
}

[[noreturn]] void reject(const std::string& file, const std::string& reason) {
    throw HEXDataException("Invalid configuration file: " + file + reason);
}

// libconfig's scanner ends the process when it is given a directory, itself or through an include statement.
void refuseDirectories(const std::string& path, const std::string& includeDirectory, std::set<std::string>& seen) {
    constexpr std::string_view Keyword = "@include";
    if (!seen.insert(path).second) return;
    if (HUTFile(path).isDir()) reject(path, ": is a directory");
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::size_t begin = line.find_first_not_of(" \t");
        if (begin == std::string::npos || line.compare(begin, Keyword.size(), Keyword) != 0) continue;
        const std::size_t name = line.find('"', begin) + 1, end = line.find('"', name);
        if (name == 0 || end == std::string::npos) continue;
        refuseDirectories(includeDirectory + "/" + line.substr(name, end - name), includeDirectory, seen);
    }
}

} // namespace

ConfigBase::ConfigBase(ConfigBase* parent) : parent_(parent), config_(std::make_unique<libconfig::Config>()) {}
ConfigBase::~ConfigBase() = default;

void ConfigBase::readFile(const std::string& fileName, const std::string& section) {
    auto fresh = std::make_unique<libconfig::Config>();
    const std::string path =
        HUTPathUtils::findInPath(std::getenv("HDNT_CONFIG_PATH"), hdnt::platform::shareDirectory(), fileName);
    if (!path.empty()) {
        const std::string directory = HUTPathUtils::directoryOf(path);
        std::set<std::string> seen;
        refuseDirectories(path, directory, seen);
        fresh->setIncludeDir(directory.c_str());
        try {
            fresh->readFile(path.c_str());
        } catch (const libconfig::ParseException& e) {
            const std::string file = e.getFile() ? e.getFile() : path;
            reject(file, ":" + std::to_string(e.getLine()) + ": " + (e.getError() ? e.getError() : "syntax error"));
        } catch (const libconfig::FileIOException&) {
            reject(path, ": cannot be read");
        }
    }
    config_ = std::move(fresh);
    section_ = section;
}

std::string ConfigBase::fullPath(const std::string& path) const {
    return section_.empty() ? path : section_ + "." + path;
}

const libconfig::Setting* ConfigBase::lookup(const std::string& path) const {
    if (!isPath(path)) return nullptr;
    if (const std::string full = fullPath(path); config_->exists(full)) return &config_->lookup(full);
    return parent_ ? parent_->lookup(path) : nullptr;
}

std::string ConfigBase::findValidPartPath(const std::string& key, const CommonPart::PartSpec*) const {
    std::string full = fullPath(key);
    return isPath(key) && config_->exists(full) ? full : std::string();
}

bool ConfigBase::isValidName(const std::string& name) { return isName(name); }

std::string ConfigBase::getDataLocation(const std::string& name) {
    return HUTPathUtils::findInPath(std::getenv("HDNT_DATA_PATH"), hdnt::platform::shareDirectory(), name);
}
