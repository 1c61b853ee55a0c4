#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ntl {

/// What became of one worker process.
struct WorkerResult {
    std::string bytes;    ///< what the work returned; empty when it did not come to its end
    std::string accident; ///< "killed by signal 9 (Killed)" or the like; empty when the process ended well
};

struct WorkerTasks {
    size_t count = 0;
    int atOnce = 1;
    /// Runs in a process of its own, which inherits everything from this one. What it writes to standard error is
    /// collected. It must not throw.
    std::function<std::string(size_t)> work;
    /// Called in the order of the tasks: any number of pieces of what a task wrote, then its result.
    std::function<void(size_t, std::string_view)> said;
    std::function<void(size_t, const WorkerResult&)> done;
    /// Called now and then, with the number of finished tasks as they finish.
    std::function<void(size_t)> tick;
};

/// Returns when all tasks are done. Throws std::system_error when no process can be started at all.
void runWorkers(const WorkerTasks& tasks);

} // namespace ntl
