// Any bytes as a project's file, as a library's configuration and as a text with waivers: taken, or refused by name.
#include "author/lint/Waivers.h"
#include "author/project/Project.h"
#include "hdnt/platform/ConfigBase.h"
#include "hdnt/platform/HEX.h"
#include "tests/fuzz/quiet.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

using fuzz::require;

// libconfig loses a text that stands before a fault.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:libconfig++\n";
} // NOLINT(bugprone-reserved-identifier)

namespace {

/// A folder of its own, with a file to be included.
class Folder {
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("hdnt_fuzz_config." + std::to_string(getpid()))) {
        std::filesystem::create_directory(path_);
        write("part.cfg", "budget = 3;\n");
        fuzz::beQuiet();
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    std::string write(const char* name, const std::string& text) const {
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

void readAsProject(const std::string& path, const std::string& text) {
    try {
        hdnt::author::readProject(path);
    } catch (const HEXDataException& error) {
        require(std::string_view(error.what()).find(".ntl.cfg") != std::string_view::npos, "refused without a place",
                text);
    }
}

void readAsConfiguration(const std::string& path, const std::string& text) {
    ConfigBase parent, config(&parent);
    try {
        config.readFile(path);
        parent.readFile(path, "rules");
    } catch (const HEXDataException& error) {
        require(std::string_view(error.what()).starts_with("Invalid configuration file: "), error.what(), text);
    }
    for (const char* const name : {"rules.severity", "rules", "a", "*", "budget", "exceptions.path"})
        require(config.exists(name) == (config.lookup(name) != nullptr), "there and not there", text);
    for (const std::string& word : {text.substr(0, 40), text.substr(0, text.find_first_of(" =:{"))})
        config.findValidPartPath(word, nullptr);
}

void readAsWaivers(const std::string& path, const std::string& text) {
    hdnt::Diagnostic one;
    one.place.file = path;
    one.place.line = 2;
    one.code = "no-group";
    std::vector<hdnt::Diagnostic> findings(3, one);
    hdnt::author::WaiverOptions options;
    options.today = std::chrono::year_month_day{std::chrono::year{2026}, std::chrono::month{5}, std::chrono::day{1}};
    options.texts[path] = text;
    hdnt::author::applyWaivers(findings, {path}, options);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    const std::string text(reinterpret_cast<const char*>(data), size);
    // Other people's files are no test's.
    if (text.find("@include") != text.npos && text.find('/') != text.npos) return 0;
    const std::string path = folder.write(".ntl.cfg", text);
    readAsProject(path, text);
    readAsConfiguration(path, text);
    readAsWaivers(path, text);
    return 0;
}
