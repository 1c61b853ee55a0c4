#pragma once

#include "author/server/Document.internal.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace hdnt::author::server {

/// Texts of files as trees, read when they are asked for first, and again when they are not as they were.
class Files {
public:
    /// Null when there is no such file or it cannot be read; else it stays where it is until newRequest().
    const Document* at(const std::string& path);

    /// Drops what was not asked for in many requests.
    void newRequest();

    /// The texts of the common library; empty when it is not there.
    const std::vector<std::string>& common();

private:
    struct Entry {
        Document document;
        std::uintmax_t size = 0;
        std::filesystem::file_time_type time;
        std::size_t request = 0; ///< that asked for it last
    };
    std::unordered_map<std::string, std::unique_ptr<Entry>> entries_;
    std::size_t request_ = 0;
    std::vector<std::string> common_;
    bool knowsCommon_ = false;
};

} // namespace hdnt::author::server
