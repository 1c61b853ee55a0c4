#include "tools/ntl/TextFile.h"

#include "hdnt/diagnostics/HDNTLimits.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Status.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace ntl {

namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ > STDERR_FILENO) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }
    /// False when what was written may not have arrived.
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

/// Signals that end the program wait, so that none leaves a temporary file behind.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &before_);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t before_{};
};

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    throw Failure(Unusable, path + ": " + what + ": " + std::strerror(errno));
}

// False, with errno, when the file has another mode then. Where a file system has only one, it need not be set.
bool setMode(int descriptor, mode_t mode) {
    if (fchmod(descriptor, mode) == 0) return true;
    const int error = errno;
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && (status.st_mode & 07777U) == mode) return true;
    errno = error;
    return false;
}

// The owner first: a change of it may clear bits of the mode.
bool copyOwnerAndMode(int descriptor, const struct stat& status) {
    mode_t mode = status.st_mode & 07777U;
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0 && fchown(descriptor, -1, status.st_gid) != 0)
        mode &= 0777U;
    return setMode(descriptor, mode);
}

void syncDirectory(const std::string& path) {
    const Descriptor directory(open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number() != -1) fsync(directory.number());
}

// Behind symbolic links; empty, with errno, when nothing is there.
std::string targetOf(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> target(realpath(path.c_str(), nullptr), std::free);
    return target ? target.get() : "";
}

mode_t modeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

// A temporary file is written in full and renamed, when the older one, of that status if there is any, may go then.
template <typename MayGo>
void putInPlace(const std::string& path, const std::string& target, const struct stat* older, const std::string& text,
                MayGo&& mayGo) {
    if (older && access(target.c_str(), W_OK) != 0) fail(path, "cannot be written");
    std::string temporary = target + ".XXXXXX";
    const SignalsHeld held;
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.number() == -1) fail(path, "cannot make a file beside it");
    bool done = older ? copyOwnerAndMode(file.number(), *older) : setMode(file.number(), modeOfNewFiles());
    if (done) errno = writeAll(file.number(), text);
    done = done && errno == 0 && fsync(file.number()) == 0 && file.close();
    const bool goes = mayGo();
    if (done && goes) done = rename(temporary.c_str(), target.c_str()) == 0;
    if (!done || !goes) {
        const int error = errno;
        unlink(temporary.c_str());
        errno = error;
        if (!done) fail(path, "cannot be written");
        throw Failure(Unusable, path + ": was changed meanwhile; left alone");
    }
    syncDirectory(target);
}

} // namespace

TextFile::Stamp TextFile::stampOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

TextFile::TextFile(std::string path) : path_(std::move(path)) {
    const Descriptor file(path_ == "-" ? STDIN_FILENO : open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (file.number() == -1 || fstat(file.number(), &status) != 0) fail(path_, "cannot be opened");
    stamp_ = stampOf(status);
    if (S_ISREG(status.st_mode)) bytes_.reserve(static_cast<size_t>(status.st_size));
    std::array<char, 65536> buffer;
    while (const ssize_t count = read(file.number(), buffer.data(), buffer.size())) {
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(path_, "cannot be read");
        bytes_.append(buffer.data(), static_cast<size_t>(count));
        if (bytes_.size() > HDNTLimits::get().inputBytes)
            throw Failure(Unusable, path_ + ": longer than the limit inputBytes");
    }
}

void TextFile::replace(const std::string& text) const {
    struct stat status {};
    const std::string target = targetOf(path_);
    if (target.empty() || stat(target.c_str(), &status) != 0) fail(path_, "cannot be replaced");
    if (!S_ISREG(status.st_mode)) throw Failure(Unusable, path_ + ": is no regular file and cannot be replaced");
    const auto isUnchanged = [&] { return stat(target.c_str(), &status) == 0 && stampOf(status) == stamp_; };
    putInPlace(path_, target, &status, text, isUnchanged);
}

void writeWholeFile(const std::string& path, const std::string& text) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return putInPlace(path, path.find('/') == path.npos ? "./" + path : path, nullptr, text, [] { return true; });
    if (S_ISREG(status.st_mode)) return putInPlace(path, targetOf(path), &status, text, [] { return true; });
    Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.number() == -1) fail(path, "cannot be written");
    errno = writeAll(file.number(), text);
    if (errno != 0 || !file.close()) fail(path, "cannot be written");
}

} // namespace ntl
