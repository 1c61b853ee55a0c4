#include "hdnt/platform/DataDirectory.h"

#include "hdnt/platform/HUTFile.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifndef HDNT_DATA_RELDIR
#define HDNT_DATA_RELDIR "../share/hdnt/data"
#endif

namespace fs = std::filesystem;

namespace hdnt::platform {
namespace {

const char Anchor = 0;

fs::path loadedObject() {
    std::error_code error;
    Dl_info info{};
    if (dladdr(&Anchor, &info) != 0 && info.dli_fname) {
        // A program found through PATH is known to the loader by its bare name only.
        if (fs::path path = fs::canonical(info.dli_fname, error); !error) return path;
    }
    return fs::read_symlink("/proc/self/exe", error);
}

} // namespace

const std::string& shareDirectory() {
    static const std::string* const directory = [] {
        const fs::path wanted = loadedObject().parent_path() / HDNT_DATA_RELDIR;
        std::error_code error;
        const fs::path real = fs::weakly_canonical(wanted, error);
        return new std::string((error ? wanted.lexically_normal() : real).string());
    }();
    return *directory;
}

static std::string find(const char* variable, const std::string& name) {
    return HUTPathUtils::findInPath(std::getenv(variable), shareDirectory(), name);
}

std::string findData(const std::string& name) { return find("HDNT_DATA_PATH", name); }
std::string findConfiguration(const std::string& name) { return find("HDNT_CONFIG_PATH", name); }

} // namespace hdnt::platform
