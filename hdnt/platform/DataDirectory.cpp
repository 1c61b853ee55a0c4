#include "hdnt/platform/DataDirectory.h"

#include "hdnt/platform/HUTFile.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifndef HDNT_DATA_FROM_LIB
#define HDNT_DATA_FROM_LIB "../share/hdnt/data"
#define HDNT_DATA_FROM_BIN "../share/hdnt/data"
#endif

namespace fs = std::filesystem;

namespace hdnt::platform {
namespace {

const char Anchor = 0;

/// Seen from the shared library, or from the program that holds the library.
fs::path wantedDirectory() {
    std::error_code error;
    Dl_info info{};
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (dladdr(&Anchor, &info) != 0 && info.dli_fname) {
        // A program found through PATH is known to the loader by its bare name only.
        const fs::path object = fs::canonical(info.dli_fname, error);
        if (!error && object != program) return object.parent_path() / HDNT_DATA_FROM_LIB;
    }
    return program.parent_path() / HDNT_DATA_FROM_BIN;
}

} // namespace

const std::string& shareDirectory() {
    static const std::string* const directory = [] {
        const fs::path wanted = wantedDirectory();
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
// Asked for each block that may have a map library. Where there is one directory, the file says whether it is there.
std::string findData(const std::string& directory, const std::string& file) {
    const char* const list = std::getenv("HDNT_DATA_PATH");
    const std::string found = list && *list ? findData(directory) : HUTPathUtils::join(shareDirectory(), directory);
    if (found.empty()) return {};
    std::string path = HUTPathUtils::join(found, file);
    return HUTPathUtils::exists(path) ? path : std::string();
}
std::string findConfiguration(const std::string& name) { return find("HDNT_CONFIG_PATH", name); }

} // namespace hdnt::platform
