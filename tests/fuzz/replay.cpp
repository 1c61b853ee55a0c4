// Runs a fuzz target over files and folders of files. Fails when a path is missing or there is nothing to run.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

static bool isInput(const fs::path& path) {
    return fs::is_regular_file(path) && path.filename().string().front() != '.';
}

static bool collect(const fs::path& path, std::vector<fs::path>& files) {
    if (fs::is_directory(path)) {
        for (const auto& entry : fs::recursive_directory_iterator(path))
            if (isInput(entry.path())) files.push_back(entry.path());
        return true;
    }
    files.push_back(path);
    return fs::is_regular_file(path);
}

int main(int count, char** arguments) {
    std::vector<fs::path> files;
    for (int i = 1; i < count; ++i) {
        if (collect(arguments[i], files)) continue;
        std::fprintf(stderr, "%s: no such file or folder\n", arguments[i]);
        return 1;
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& path : files) {
        std::fprintf(stderr, "%s\n", path.c_str());
        std::ifstream stream(path, std::ios::binary);
        if (!stream) return std::perror("cannot read it"), 1;
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
