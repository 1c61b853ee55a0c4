#include "hdnt/platform/ConfigBase.h"

#include "hdnt/platform/DataDirectory.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HUTFile.h"
#include "hdnt/platform/InputFile.h"

#include <libconfig.h++>

#include <algorithm>
#include <cerrno>
#include <new>
#include <set>
#include <sstream>
#include <string_view>
#include <unordered_map>

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '*'; }
bool isNameChar(char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_'; }

bool isName(std::string_view text) {
    return !text.empty() && isLetter(text.front()) && std::all_of(text.begin(), text.end(), isNameChar);
}

// Takes the first name off a path of names.
std::string_view takeName(std::string_view& path) {
    const std::size_t dot = std::min(path.find('.'), path.size());
    const std::string_view name = path.substr(0, dot);
    path.remove_prefix(std::min(dot + 1, path.size()));
    return name;
}

// libconfig takes further separators and indexes in paths, and skips doubled separators; names hold none of them.
bool isPath(std::string_view path) {
    if (path.ends_with('.')) return false;
    do
        if (!isName(takeName(path))) return false;
    while (!path.empty());
    return true;
}

[[noreturn]] void reject(const std::string& file, const std::string& reason) {
    throw HEXDataException("Invalid configuration file: " + file + reason);
}

// libconfig's scanner ends the process when it is given a directory, itself or through an include statement.
void refuseDirectories(const std::string& path, const std::string& includeDirectory, std::set<std::string>& seen) {
    constexpr std::string_view Keyword = "@include";
    if (!seen.insert(path).second) return;
    if (HUTFile(path).isDir()) reject(path, ": is a directory");
    std::string text;
    std::string why; // libconfig says it once more
    hdnt::platform::readInput(path, {}, text, why);
    std::istringstream lines(std::move(text));
    lines.exceptions(std::ios::badbit); // std::bad_alloc, which would else be taken for the end
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find_first_not_of(" \t");
        if (begin == std::string::npos || line.compare(begin, Keyword.size(), Keyword) != 0) continue;
        const std::size_t name = line.find('"', begin) + 1, end = line.find('"', name);
        if (name == 0 || end == std::string::npos) continue;
        refuseDirectories(includeDirectory + "/" + line.substr(name, end - name), includeDirectory, seen);
    }
}

} // namespace

// libconfig searches a group from its start, which a group with an entry for every block of a library cannot bear.
struct ConfigBase::Index {
    using Members = std::unordered_map<std::string_view, const libconfig::Setting*>;
    std::unordered_map<const libconfig::Setting*, Members> groups;
};

ConfigBase::ConfigBase(ConfigBase* parent)
    : parent_(parent), config_(std::make_unique<libconfig::Config>()), index_(std::make_unique<Index>()) {}
ConfigBase::~ConfigBase() = default;

void ConfigBase::readFile(const std::string& fileName, const std::string& section) {
    auto fresh = std::make_unique<libconfig::Config>();
    const std::string path = hdnt::platform::findConfiguration(fileName);
    if (!path.empty()) {
        const std::string directory = HUTPathUtils::directoryOf(path);
        std::set<std::string> seen;
        refuseDirectories(path, directory, seen);
        fresh->setIncludeDir(directory.c_str());
        errno = 0;
        try {
            fresh->readFile(path.c_str());
        } catch (const libconfig::ParseException& e) {
            const std::string file = e.getFile() ? e.getFile() : path;
            reject(file, ":" + std::to_string(e.getLine()) + ": " + (e.getError() ? e.getError() : "syntax error"));
        } catch (const libconfig::FileIOException&) {
            const int reason = errno;
            if (reason == ENOMEM) throw std::bad_alloc();
            reject(path, ": cannot be read");
        }
    }
    index_->groups.clear();
    config_ = std::move(fresh);
    section_ = section;
    ++generation_;
}

const libconfig::Setting* ConfigBase::root() const {
    if (section_.empty()) return &config_->getRoot();
    return config_->exists(section_) ? &config_->lookup(section_) : nullptr;
}

std::string ConfigBase::fullPath(const std::string& path) const {
    return section_.empty() ? path : section_ + "." + path;
}

const libconfig::Setting* ConfigBase::memberOf(const libconfig::Setting& group, std::string_view name) const {
    constexpr int large = 32; // from here on a search costs more than a look-up with its share of the index
    if (!group.isGroup() || !isName(name)) return nullptr; // libconfig takes a name with separators for a path
    if (group.getLength() < large) {
        const std::string text(name);
        return group.exists(text) ? &group[text.c_str()] : nullptr;
    }
    const auto [entry, fresh] = index_->groups.try_emplace(&group);
    if (fresh)
        for (const libconfig::Setting& member : group) entry->second.emplace(member.getName(), &member);
    const auto found = entry->second.find(name);
    return found == entry->second.end() ? nullptr : found->second;
}

const libconfig::Setting* ConfigBase::findOwn(std::string_view path) const {
    const libconfig::Setting* setting = &config_->getRoot();
    while (setting && !path.empty()) setting = memberOf(*setting, takeName(path));
    return setting;
}

const libconfig::Setting* ConfigBase::find(std::initializer_list<std::string_view> names) const {
    const libconfig::Setting* setting = findOwn(section_);
    for (const std::string_view name : names) setting = setting ? memberOf(*setting, name) : nullptr;
    return setting || !parent_ ? setting : parent_->find(names);
}

const libconfig::Setting* ConfigBase::lookup(const std::string& path) const {
    if (!isPath(path)) return nullptr;
    if (const libconfig::Setting* const setting = findOwn(fullPath(path))) return setting;
    return parent_ ? parent_->lookup(path) : nullptr;
}

std::string ConfigBase::findValidPartPath(const std::string& key, const CommonPart::PartSpec*) const {
    std::string full = fullPath(key);
    return isPath(key) && findOwn(full) ? full : std::string();
}

bool ConfigBase::isValidName(const std::string& name) { return isName(name); }

std::string ConfigBase::getDataLocation(const std::string& name) { return hdnt::platform::findData(name); }
