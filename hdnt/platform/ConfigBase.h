#pragma once

#include "hdnt/platform/Export.h"
#include "hdnt/platform/HCTMutex.h"
#include "hdnt/platform/PartSpec.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace libconfig {
class Config;
class Setting;
} // namespace libconfig

/// A configuration file in libconfig's format, and where the host's files are.
///
/// Looking something up creates libconfig's wrapper objects, also through const access. So whoever shares an object
/// between threads holds mutex() around every operation on it, getLibConfig() and the settings it hands out included;
/// the operations do not lock by themselves.
///
/// A path is names separated by dots. A name that libconfig cannot hold has no entry: it must begin with a letter or
/// '*' and go on with letters, digits, '-', '_' and '*'. No look-up throws but for lack of memory.
class HDNT_API ConfigBase {
public:
    /// An empty configuration. What it does not hold is looked up in the parent, which may be null, is not owned and
    /// must outlive it; the two share one mutex.
    explicit ConfigBase(ConfigBase* parent = nullptr);
    ~ConfigBase();
    ConfigBase(const ConfigBase&) = delete;
    ConfigBase& operator=(const ConfigBase&) = delete;

    /// Reads the first existing file of that name in the directories of HDNT_CONFIG_PATH (colon-separated), then in the
    /// directory of the library's own data; an absolute name is read as it stands. No such file gives an empty
    /// configuration. A file that cannot be read or is malformed throws HEXDataException with file, line and reason,
    /// and leaves the configuration as it was. Settings handed out before are gone. Included files are sought beside
    /// it. When a section is given, look-ups begin in that group of the file.
    void readFile(const std::string& fileName, const std::string& section = "");
    /// How often that was done: what was found before is gone when the number is another one.
    std::size_t generation() const { return generation_; }

    /// Where look-ups begin: the section, or the whole. Null when the file has no such section.
    const libconfig::Setting* root() const;
    /// Null when there is no such setting. The settings belong to this object, or to the parent.
    const libconfig::Setting* lookup(const std::string& path) const;
    /// The same for a path that is given name by name. A large group is indexed at the first look-up in it; only small
    /// ones are searched from their start.
    const libconfig::Setting* find(std::initializer_list<std::string_view> names) const;
    bool exists(const std::string& path) const { return lookup(path) != nullptr; }
    /// The path under which getLibConfig() holds the key; empty when it does not. The parent is not asked. The part may
    /// be null; there are no entries for single parts.
    std::string findValidPartPath(const std::string& key, const CommonPart::PartSpec* part) const;
    /// The configuration itself, without parent and section; valid until the next readFile.
    const libconfig::Config& getLibConfig() const { return *config_; }

    HCTMutex& mutex() { return parent_ ? parent_->mutex() : mutex_; }

    /// Whether libconfig can hold a setting of this name. Names with a dot are none, though they make valid paths.
    static bool isValidName(const std::string& name);

    /// The first existing <directory>/<name> in the directories of HDNT_DATA_PATH (colon-separated), then in the
    /// directory of the library's own data. Empty when there is none. The environment is read at every call.
    static std::string getDataLocation(const std::string& name);

private:
    struct Index;

    HDNT_LOCAL const libconfig::Setting* memberOf(const libconfig::Setting& group, std::string_view name) const;
    HDNT_LOCAL const libconfig::Setting* findOwn(std::string_view path) const;
    HDNT_LOCAL std::string fullPath(const std::string& path) const;

    ConfigBase* parent_;
    std::unique_ptr<libconfig::Config> config_;
    std::unique_ptr<Index> index_; ///< of large groups, filled by look-ups
    std::string section_;
    std::size_t generation_ = 0;
    HCTMutex mutex_;
};
