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

// The owner first: a change of it may clear bits of the mode.
void copyOwnerAndMode(int descriptor, const struct stat& status) {
    mode_t mode = status.st_mode & 07777U;
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0 && fchown(descriptor, -1, status.st_gid) != 0)
        mode &= 0777U;
    fchmod(descriptor, mode);
}

void syncDirectory(const std::string& path) {
    const Descriptor directory(open(path.substr(0, path.rfind('/') + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.number() != -1) fsync(directory.number());
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
    const std::unique_ptr<char, void (*)(void*)> target(realpath(path_.c_str(), nullptr), std::free);
    struct stat status {};
    if (!target || stat(target.get(), &status) != 0) fail(path_, "cannot be replaced");
    if (!S_ISREG(status.st_mode)) throw Failure(Unusable, path_ + ": is no regular file and cannot be replaced");
    if (access(target.get(), W_OK) != 0) fail(path_, "cannot be written");
    const std::string targetPath = target.get();
    std::string temporary = targetPath + ".XXXXXX";
    const SignalsHeld held;
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.number() == -1) fail(path_, "cannot make a file beside it");
    copyOwnerAndMode(file.number(), status);
    errno = writeAll(file.number(), text);
    bool done = errno == 0 && fsync(file.number()) == 0 && file.close();
    const bool unchanged = stat(targetPath.c_str(), &status) == 0 && stampOf(status) == stamp_;
    if (done && unchanged) done = rename(temporary.c_str(), targetPath.c_str()) == 0;
    if (!done || !unchanged) {
        const int error = errno;
        unlink(temporary.c_str());
        errno = error;
        if (!done) fail(path_, "cannot be written");
        throw Failure(Unusable, path_ + ": was changed meanwhile; left alone");
    }
    syncDirectory(targetPath);
}

} // namespace ntl
