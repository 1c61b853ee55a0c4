#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace ntl {

/// A bar on standard error, while more than a second of work seems to be left. Nothing in a pipe or a file.
class Progress {
public:
    explicit Progress(std::uintmax_t total);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// What is worked on stands behind the bar, as far as it fits in the line.
    void show(std::uintmax_t done, const std::string& what = {});
    /// Takes the bar away, so that something else can be written.
    void clear();

private:
    bool enabled_;
    bool drawn_ = false;
    std::uintmax_t total_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// How many of its blocks each input is through with, which the processes of the inputs tell the one that began them.
class BlocksDone {
public:
    struct Count {
        std::size_t done;
        std::size_t all; ///< 0: not known yet
    };

    /// Without memory to share it knows nothing, ever.
    explicit BlocksDone(std::size_t inputs);
    ~BlocksDone();
    BlocksDone(const BlocksDone&) = delete;
    BlocksDone& operator=(const BlocksDone&) = delete;

    void set(std::size_t input, Count count);
    Count of(std::size_t input) const;

private:
    struct Shared;
    std::size_t bytes_;
    Shared* shared_;
};

} // namespace ntl
