// Holds the library's scanner against the generated one, on files and on generated texts.
#include "tests/oracle/ScanRun.h"
#include "tests/oracle/TextGenerator.h"
#include "tests/platform/TempDir.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Options {
    std::uint64_t count = 100000;
    std::uint64_t first = 0;
    std::uint64_t seed = 1;
    bool showText = false;
    std::vector<std::string> roots; ///< folders of .btl files
};

void prepare(const oracle::GeneratedText& made, const TempDir& scratch) {
    for (const std::string& name : made.folders) scratch.makeDir(name);
    for (const auto& [name, bytes] : made.files) scratch.write(name, bytes);
}

void tidy(const oracle::GeneratedText& made, const TempDir& scratch) {
    for (const auto& file : made.files) fs::remove(scratch.path(file.first));
    for (const std::string& name : made.folders) fs::remove(scratch.path(name));
}

void show(const oracle::GeneratedText& made) {
    std::printf("text: \"%s\"\n", oracle::readable(made.text).c_str());
    for (const auto& [name, bytes] : made.files)
        std::printf("file %s: \"%s\"\n", name.c_str(), oracle::readable(bytes).c_str());
}

int compareGenerated(const Options& options) {
    TempDir scratch;
    oracle::addSearchDirectory(scratch.path("absent"));
    oracle::addSearchDirectory(scratch.path());
    oracle::TextGenerator generator(options.seed);
    int differences = 0;
    for (std::uint64_t index = options.first; index < options.first + options.count && differences < 5; ++index) {
        const oracle::GeneratedText made = generator.make(index);
        if (options.showText) show(made);
        oracle::ScanInput input{made.text, std::nullopt};
        if (made.named) input.fileName = "text" + std::to_string(index) + ".btl";
        prepare(made, scratch);
        const unsigned feeds = 1u << index % 4 | 1u << (index / 4) % 4;
        const std::string difference = oracle::compareScanners(input, feeds, index % 3 == 0);
        tidy(made, scratch);
        if (difference.empty()) continue;
        ++differences;
        std::printf("text %llu of seed %llu: %s", static_cast<unsigned long long>(index),
                    static_cast<unsigned long long>(options.seed), difference.c_str());
        show(made);
    }
    if (!differences) std::printf("%llu texts agree\n", static_cast<unsigned long long>(options.count));
    return differences != 0;
}

std::vector<fs::path> filesBelow(const std::vector<std::string>& roots) {
    std::vector<fs::path> files;
    for (const std::string& root : roots) {
        if (!fs::is_directory(root)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(root))
            if (entry.is_regular_file() && entry.path().extension() == ".btl") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

int compareFiles(const Options& options) {
    const std::vector<fs::path> files = filesBelow(options.roots);
    int differences = 0;
    for (const fs::path& path : files) {
        std::ifstream stream(path, std::ios::binary);
        oracle::ScanInput input{std::string(std::istreambuf_iterator<char>(stream), {}), path.string()};
        const std::string difference = oracle::compareScanners(input, (1u << oracle::NumFeeds) - 1, false);
        if (difference.empty()) continue;
        ++differences;
        std::printf("%s: %s", path.c_str(), difference.c_str());
    }
    if (files.empty()) std::printf("no .btl file found\n");
    else if (!differences) std::printf("%zu files agree\n", files.size());
    return files.empty() || differences != 0;
}

[[noreturn]] void usage() {
    std::fprintf(stderr, "oracle_compare [--count N] [--first K] [--seed S] | --text-of K [--seed S] | [--search "
                         "FOLDER] --files FOLDER...\n");
    std::exit(2);
}

Options read(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string name = arguments[i];
        if (name == "--files") {
            options.roots.assign(arguments + i + 1, arguments + count);
            if (options.roots.empty()) usage();
            return options;
        }
        if (i + 1 == count) usage();
        if (name == "--search") {
            oracle::addSearchDirectory(arguments[++i]);
            continue;
        }
        char* end = nullptr;
        const std::uint64_t value = std::strtoull(arguments[++i], &end, 10);
        if (*end || end == arguments[i]) usage();
        if (name == "--count") options.count = value;
        else if (name == "--first") options.first = value;
        else if (name == "--seed") options.seed = value;
        else if (name == "--text-of") {
            options.first = value;
            options.count = 1;
            options.showText = true;
        } else usage();
    }
    if (options.count == 0) usage();
    return options;
}

} // namespace

int main(int count, char** arguments) {
    const Options options = read(count, arguments);
    return options.roots.empty() ? compareGenerated(options) : compareFiles(options);
}
