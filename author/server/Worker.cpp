#include "author/server/Worker.internal.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <new>
#include <utility>

namespace hdnt::author::server {

namespace {

using Length = std::uint64_t;

enum Status : int { Well, OutOfMemory, Failed };

#ifdef HDNT_SANITIZED
constexpr bool reservesAddresses = true; // far more than anything takes
#else
constexpr bool reservesAddresses = false;
#endif

void limit(int resource, rlim_t most) {
    rlimit limits{};
    const auto which = static_cast<__rlimit_resource>(resource);
    if (getrlimit(which, &limits) != 0 || limits.rlim_cur <= most) return;
    limits.rlim_cur = most;
    setrlimit(which, &limits);
}

rlim_t addressesInUse() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Reading may take time without taking the processor, as from a pipe that a text names.
void limitAll() {
    constexpr rlim_t processorSeconds = 30;
    constexpr unsigned seconds = 120;
    constexpr rlim_t bytes = rlim_t{4} << 30U;
    limit(RLIMIT_CPU, processorSeconds);
    limit(RLIMIT_CORE, 0);
    if (!reservesAddresses) limit(RLIMIT_AS, addressesInUse() + bytes);
    alarm(seconds);
}

// A worker does not outlive who started it, and holds nothing open that others wait for the end of.
int moveTo(int end) {
    constexpr int kept = STDERR_FILENO + 1;
    const int nowhere = open("/dev/null", O_RDWR); // NOLINT(cppcoreguidelines-pro-type-vararg)
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO}) dup2(nowhere, standard);
    if (end != kept) dup2(end, kept);
    close_range(kept + 1, ~0U, 0);
    return kept;
}

bool writeAll(int end, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(end, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

[[noreturn]] void beWorker(int end, pid_t starter, const std::function<void(const Worker::Send&)>& work) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // NOLINT(cppcoreguidelines-pro-type-vararg)
    if (getppid() != starter) _exit(Failed);
    end = moveTo(end);
    limitAll();
    const auto send = [end](std::string_view message) {
        const Length length = message.size();
        if (!writeAll(end, reinterpret_cast<const char*>(&length), sizeof length) ||
            !writeAll(end, message.data(), message.size()))
            _exit(Failed);
    };
    try {
        work(send);
    } catch (const std::bad_alloc&) {
        _exit(OutOfMemory);
    } catch (...) {
        _exit(Failed);
    }
    _exit(Well);
}

std::string accidentOf(int status) {
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        if (signal == SIGXCPU || signal == SIGALRM) return "it took too long";
        return "killed by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    if (WEXITSTATUS(status) == OutOfMemory) return "out of memory";
    return WEXITSTATUS(status) == Well ? "" : "ended early, with status " + std::to_string(WEXITSTATUS(status));
}

// Zero when there was nothing to wait for.
int awaitEnd(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) == -1 && errno == EINTR) {
    }
    return status;
}

} // namespace

bool Worker::start(const std::function<void(const Send&)>& work) {
    end();
    accident_.clear();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    const pid_t starter = getpid();
    const pid_t process = fork();
    if (process == 0) beWorker(ends[1], starter, work);
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        return false;
    }
    process_ = process;
    readEnd_ = ends[0];
    return true;
}

void Worker::end() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    finish();
    accident_.clear();
}

void Worker::finish() {
    accident_ = accidentOf(awaitEnd(process_));
    process_ = -1;
    close(readEnd_);
    readEnd_ = -1;
    bytes_.clear();
}

std::vector<std::string> Worker::receive() {
    if (process_ <= 0) return {};
    constexpr std::size_t atOnce = std::size_t{1} << 16;
    const std::size_t before = bytes_.size();
    bytes_.resize(before + atOnce);
    const ssize_t count = read(readEnd_, bytes_.data() + before, atOnce);
    bytes_.resize(before + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count > 0) return takeMessages();
    if (count == 0 || errno != EINTR) finish();
    return {};
}

std::vector<std::string> Worker::takeMessages() {
    std::vector<std::string> messages;
    Length length = 0;
    std::size_t begin = 0;
    while (bytes_.size() - begin >= sizeof length) {
        std::memcpy(&length, bytes_.data() + begin, sizeof length);
        if (bytes_.size() - begin - sizeof length < length) break;
        messages.push_back(bytes_.substr(begin + sizeof length, length));
        begin += sizeof length + length;
    }
    bytes_.erase(0, begin);
    return messages;
}

} // namespace hdnt::author::server
