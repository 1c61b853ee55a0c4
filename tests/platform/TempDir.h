#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

/// A directory of its own for one test, removed at the end.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "hdnt-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::filesystem::filesystem_error("mkdtemp", std::error_code());
        path_ = std::filesystem::canonical(pattern);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name = "") const {
        return name.empty() ? path_.string() : (path_ / name).string();
    }
    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }
    std::string makeDir(const std::string& name) const {
        std::filesystem::create_directories(path_ / name);
        return path(name);
    }

private:
    std::filesystem::path path_;
};
