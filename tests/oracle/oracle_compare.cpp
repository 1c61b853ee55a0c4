// Holds the library's scanner against the generated one, on files and on generated texts.
#include "tests/oracle/ScanRun.h"
#include "tests/oracle/TextGenerator.h"

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

/// Where the generated texts find the files they include; gone at the end.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = (fs::temp_directory_path() / "oracle.XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            std::perror("mkdtemp");
            std::exit(3);
        }
        path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

bool writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream stream(path, std::ios::binary);
    stream << bytes;
    return stream.good();
}

void prepare(const oracle::GeneratedText& made, const fs::path& folder) {
    for (const std::string& name : made.folders) fs::create_directory(folder / name);
    for (const auto& [name, bytes] : made.files) {
        if (writeFile(folder / name, bytes)) continue;
        std::fprintf(stderr, "cannot write %s\n", (folder / name).c_str());
        std::exit(3);
    }
}

void tidy(const oracle::GeneratedText& made, const fs::path& folder) {
    for (const auto& file : made.files) fs::remove(folder / file.first);
    for (const std::string& name : made.folders) fs::remove(folder / name);
}

void show(const oracle::GeneratedText& made) {
    std::printf("text: \"%s\"\n", oracle::readable(made.text).c_str());
    for (const auto& [name, bytes] : made.files)
        std::printf("file %s: \"%s\"\n", name.c_str(), oracle::readable(bytes).c_str());
}

int compareGenerated(const Options& options) {
    ScratchFolder scratch;
    oracle::addSearchDirectory((scratch.path() / "absent").string());
    oracle::addSearchDirectory(scratch.path().string());
    oracle::TextGenerator generator(options.seed);
    int differences = 0;
    for (std::uint64_t index = options.first; index < options.first + options.count && differences < 5; ++index) {
        const oracle::GeneratedText made = generator.make(index);
        if (options.showText) show(made);
        oracle::ScanInput input{made.text, std::nullopt};
        if (made.named) input.fileName = "text" + std::to_string(index) + ".btl";
        prepare(made, scratch.path());
        const unsigned feeds = 1u << index % 4 | 1u << (index / 4) % 4;
        const std::string difference = oracle::compareScanners(input, feeds, index % 3 == 0);
        tidy(made, scratch.path());
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
    if (files.empty())
        std::printf("no .btl file found\n");
    else if (!differences)
        std::printf("%zu files agree\n", files.size());
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
        if (name == "--count")
            options.count = value;
        else if (name == "--first")
            options.first = value;
        else if (name == "--seed")
            options.seed = value;
        else if (name == "--text-of") {
            options.first = value;
            options.count = 1;
            options.showText = true;
        } else
            usage();
    }
    if (options.count == 0) usage();
    return options;
}

} // namespace

int main(int count, char** arguments) {
    const Options options = read(count, arguments);
    return options.roots.empty() ? compareGenerated(options) : compareFiles(options);
}
