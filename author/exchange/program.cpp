#include "author/exchange/program.internal.h"
#include "hdnt/platform/HEX.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <thread>

namespace hdnt::author {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& what, int error) {
    throw HEXDataException(path + ": " + what + ": " + std::strerror(error));
}

/// Inputs and outputs of a program, its group, and no signals held back.
class SpawnPlan {
public:
    explicit SpawnPlan(const std::string& folder) {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_addchdir_np(&files_, folder.c_str());
        open(STDIN_FILENO, "/dev/null", O_RDONLY);
        open(STDOUT_FILENO, "out", O_WRONLY | O_CREAT | O_TRUNC);
        open(STDERR_FILENO, "err", O_WRONLY | O_CREAT | O_TRUNC);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    /// 0 when there is no such program.
    pid_t start(std::vector<std::string>& words) const {
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        pid_t process = 0;
        const int error = posix_spawnp(&process, arguments[0], &files_, &attributes_, arguments.data(), environ);
        if (error == ENOENT) return 0;
        if (error != 0) fail(words.front(), "cannot be started", error);
        return process;
    }

private:
    void open(int descriptor, const char* path, int mode) {
        posix_spawn_file_actions_addopen(&files_, descriptor, path, mode, 0600);
    }

    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

/// The status; none while it runs. A host that ignores its children is not told one.
std::optional<int> statusOf(pid_t process, int options) {
    int status = 0;
    pid_t ended = 0;
    do ended = waitpid(process, &status, options);
    while (ended < 0 && errno == EINTR);
    if (ended == 0) return std::nullopt;
    return ended == process && WIFEXITED(status) ? WEXITSTATUS(status) : ended < 0 ? 0 : -1;
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::error_code error;
    const fs::path base = fs::temp_directory_path(error);
    path_ = ((error ? fs::path("/tmp") : base) / "ntl-XXXXXX").string();
    if (!mkdtemp(path_.data())) fail(path_, "cannot be made", errno);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void TemporaryFolder::write(const std::string& name, const std::string& text) const {
    errno = 0;
    std::ofstream file(path_ + "/" + name, std::ios::binary);
    file << text;
    file.close();
    if (!file) fail(path_ + "/" + name, "cannot be written", errno);
}

std::string TemporaryFolder::read(const std::string& name) const {
    std::ifstream file(path_ + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void TemporaryFolder::link(const std::string& name, const std::string& target) const {
    std::error_code error;
    fs::create_symlink(target, path_ + "/" + name, error);
    if (error) fail(path_ + "/" + name, "cannot be made", error.value());
}

ProgramEnd runProgram(std::vector<std::string> words, const TemporaryFolder& folder, int seconds) {
    using Clock = std::chrono::steady_clock;
    const pid_t process = SpawnPlan(folder.path()).start(words);
    if (process == 0) return ProgramEnd::Missing;
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    for (auto pause = std::chrono::milliseconds(1); Clock::now() < end; std::this_thread::sleep_for(pause)) {
        if (const auto status = statusOf(process, WNOHANG)) return *status == 0 ? ProgramEnd::Fine : ProgramEnd::Failed;
        pause = std::min(pause * 2, std::chrono::milliseconds(20));
    }
    kill(-process, SIGKILL);
    statusOf(process, 0);
    return ProgramEnd::TooLong;
}

} // namespace hdnt::author
