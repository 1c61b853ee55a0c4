// The library's scanner against the generated one. Two percent signs stand for a number that differs from run to run:
// a file is included by name only once a process, and an input has to do the same wherever it is run.
#include "tests/oracle/ScanRun.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t LongestText = 65536; // the generated scanner is quadratic on long lines

struct File {
    const char* name;
    const char* content;
};
constexpr File Files[] = {{"%%a", ""},
                          {"%%b", "\n\n"},
                          {"%%c", "pin \"x\""},
                          {"%%d", "INLINE %%b;\nINCLUDE %%c;\nx\n"},
                          {"%%e", "int\n/* open\n"},
                          {"%%f", "block\nINCLUDE "},
                          {"%%g", "y\nINLINE %%g;\n"}};

std::string numbered(std::string text, const std::string& number) {
    for (std::size_t at = text.find("%%"); at != std::string::npos; at = text.find("%%", at + number.size()))
        text.replace(at, 2, number);
    return text;
}

/// A folder for the files, the only search directory.
const fs::path& folder() {
    static const fs::path path = [] {
        std::string pattern = (fs::temp_directory_path() / "fuzz_scanner.XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            std::perror("mkdtemp");
            std::exit(3);
        }
        oracle::addSearchDirectory(pattern);
        std::atexit([] {
            std::error_code error;
            fs::remove_all(folder(), error);
        });
        return fs::path(pattern);
    }();
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > LongestText) return 0;
    static unsigned runs = 0;
    const std::string number = std::to_string(100000 + ++runs);
    oracle::ScanInput input{std::string(reinterpret_cast<const char*>(data), size), std::nullopt};
    if (size / 16 % 2) input.fileName = "top.btl";

    const bool withFiles = input.text.find("%%") != std::string::npos;
    folder();
    if (withFiles) {
        input.text = numbered(input.text, number);
        for (const File& file : Files)
            std::ofstream(folder() / numbered(file.name, number)) << numbered(file.content, number);
    }
    const std::string difference = oracle::compareScanners(input, 1u << size % 4 | 1u << size / 4 % 4, size % 3 == 0);
    if (withFiles)
        for (const File& file : Files) fs::remove(folder() / numbered(file.name, number));
    if (!difference.empty()) {
        std::fprintf(stderr, "%stext: \"%s\"\n", difference.c_str(), oracle::readable(input.text).c_str());
        std::abort();
    }
    return 0;
}
