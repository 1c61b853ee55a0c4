// The library's scanner against the generated one. Two percent signs stand for a number that differs from run to run:
// a file is included by name only once a process, and an input has to do the same wherever it is run.
#include "tests/oracle/ScanRun.h"
#include "tests/platform/TempDir.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

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
const TempDir& folder() {
    static const TempDir made;
    return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > LongestText) return 0;
    static unsigned runs = 0;
    if (runs == 0) oracle::addSearchDirectory(folder().path());
    const std::string number = std::to_string(100000 + ++runs);
    oracle::ScanInput input{std::string(reinterpret_cast<const char*>(data), size), std::nullopt};
    if (size / 16 % 2) input.fileName = "top.btl";

    const bool withFiles = input.text.find("%%") != std::string::npos;
    if (withFiles) {
        input.text = numbered(input.text, number);
        for (const File& file : Files) folder().write(numbered(file.name, number), numbered(file.content, number));
    }
    const std::string difference = oracle::compareScanners(input, 1u << size % 4 | 1u << size / 4 % 4, size % 3 == 0);
    if (withFiles)
        for (const File& file : Files) std::filesystem::remove(folder().path(numbered(file.name, number)));
    if (!difference.empty()) {
        std::fprintf(stderr, "%stext: \"%s\"\n", difference.c_str(), oracle::readable(input.text).c_str());
        std::abort();
    }
    return 0;
}
