#pragma once

#include <chrono>
#include <cstdint>

namespace ntl {

/// A bar on standard error, while more than a second of work seems to be left. Nothing in a pipe or a file.
class Progress {
public:
    explicit Progress(std::uintmax_t total);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uintmax_t done);
    /// Takes the bar away, so that something else can be written.
    void clear();

private:
    bool enabled_;
    bool drawn_ = false;
    std::uintmax_t total_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace ntl
