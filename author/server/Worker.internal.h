#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace hdnt::author::server {

/// A process that works beside this one and sends what it finds, message by message. Faults of the work, and what it
/// takes too much of, end that process alone. Whoever starts another one, or lets go of this, ends it.
class Worker {
public:
    using Send = std::function<void(std::string_view)>;

    Worker() = default;
    ~Worker() { end(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// The work runs in a copy of this process, which has none of its descriptors but standard error. False when there
    /// is no room for one.
    bool start(const std::function<void(const Send&)>& work);
    /// At once, and without a trace.
    void end();

    bool isRunning() const { return process_ > 0; }
    /// Readable when there is something to receive; -1 without a process.
    int descriptor() const { return readEnd_; }
    /// Takes what is there and returns the messages that are whole. At the end of the process it is not running any
    /// more, and accident() says whether something went wrong.
    std::vector<std::string> receive();
    /// "killed by signal 9 (Killed)" or the like; empty when the process ended well.
    const std::string& accident() const { return accident_; }

private:
    void finish();
    std::vector<std::string> takeMessages();

    pid_t process_ = -1;
    int readEnd_ = -1;
    std::string bytes_; ///< received, and not a whole message yet
    std::string accident_;
};

} // namespace hdnt::author::server
