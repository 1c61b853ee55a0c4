// Input and output that fail when told to: a library to be preloaded. Calls on what is below the folder HDNT_IO_FOLDER
// count, over all processes that a process forks, and one of them fails, the one that HDNT_IO_FAULT="NUMBER HOW" names:
//   a number of the system (5)   it is not done, and returns that error; a close is done, and returns it
//   short                        a read or a write does half of what it was asked for
//   kill, alarm                  the process gets SIGKILL or SIGALRM before it; a write does its first half
// The file HDNT_IO_REPORT gets a line for it: its kind, a tab, its path. With number 0 nothing fails, and each gets
// one.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h> // NOLINT: renameat2, fopencookie
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

enum class Fault { None, Error, Short, Signal };

struct Plan {
    std::atomic<long>* passed = nullptr; ///< shared with forked processes
    std::string folder;
    long failing = 0;
    Fault fault = Fault::Error;
    int number = 0; ///< of the error or of the signal
    int report = -1;

    Plan() {
        const char* const wish = std::getenv("HDNT_IO_FAULT");
        const char* const path = std::getenv("HDNT_IO_FOLDER");
        if (!wish || !path) return;
        char* how = nullptr;
        failing = std::strtol(wish, &how, 10);
        how += *how == ' ';
        fault = std::strcmp(how, "short") == 0 ? Fault::Short : std::strchr("ka", *how) ? Fault::Signal : Fault::Error;
        number = *how == 'k' ? SIGKILL : *how == 'a' ? SIGALRM : std::atoi(how);
        const char* const file = std::getenv("HDNT_IO_REPORT");
        if (file) report = static_cast<int>(syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_APPEND | O_CLOEXEC));
        void* const page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (page != MAP_FAILED) passed = new (page) std::atomic<long>(0);
        folder = std::string(path) + "/";
    }
};

// Made by the first call, which may come before the initialisers of this library.
const Plan& plan() {
    static const Plan* const made = new Plan;
    return *made;
}

std::string pathOf(int file) {
    char path[PATH_MAX];
    const ssize_t length = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    return {path, length > 0 ? static_cast<size_t>(length) : 0};
}
std::string pathAt(int folder, const char* name) {
    if (*name == '/') return name;
    char path[PATH_MAX];
    return (folder != AT_FDCWD ? pathOf(folder) : getcwd(path, sizeof path) ? path : "") + "/" + name;
}

Fault faultOf(const char* kind, const std::string& path) {
    const Plan& now = plan();
    if (!now.passed || !path.starts_with(now.folder)) return Fault::None;
    const bool isNow = ++*now.passed == now.failing;
    const std::string line = std::string(kind) + "\t" + path + "\n";
    if (now.report != -1 && (isNow || now.failing == 0)) syscall(SYS_write, now.report, line.data(), line.size());
    if (!isNow) return Fault::None;
    if (now.fault == Fault::Signal && std::strcmp(kind, "write") != 0) raise(now.number);
    errno = now.number;
    return now.fault;
}
bool fails(const char* kind, const std::string& path) {
    const int before = errno;
    if (faultOf(kind, path) == Fault::Error) return true;
    errno = before;
    return false;
}

} // namespace

// The next of that name, behind this library.
#define NEXT(name) (reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name)))

#define OPENING(name)                                                                                                  \
    int name(const char* path, int flags, ...) {                                                                       \
        va_list more;                                                                                                  \
        va_start(more, flags);                                                                                         \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                                         \
        va_end(more);                                                                                                  \
        static const auto next = NEXT(name);                                                                           \
        return fails("open", pathAt(AT_FDCWD, path)) ? -1 : next(path, flags, mode);                                   \
    }
#define OPENING_AT(name)                                                                                               \
    int name(int folder, const char* path, int flags, ...) {                                                           \
        va_list more;                                                                                                  \
        va_start(more, flags);                                                                                         \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                                         \
        va_end(more);                                                                                                  \
        static const auto next = NEXT(name);                                                                           \
        return fails("open", pathAt(folder, path)) ? -1 : next(folder, path, flags, mode);                             \
    }
// A call that fails with RESULT: name(PARAMETERS), done by next(ARGUMENTS), counted as KIND of the file PATH.
#define CALL(Type, name, PARAMETERS, ARGUMENTS, KIND, PATH, RESULT)                                                    \
    Type name PARAMETERS {                                                                                             \
        static const auto next = NEXT(name);                                                                           \
        return fails(KIND, PATH) ? RESULT : next ARGUMENTS;                                                            \
    }

extern "C" {

OPENING(open)
OPENING(open64)
OPENING_AT(openat)
OPENING_AT(openat64)
CALL(FILE*, fopen, (const char* path, const char* mode), (path, mode), "open", pathAt(AT_FDCWD, path), nullptr)
CALL(FILE*, fopen64, (const char* path, const char* mode), (path, mode), "open", pathAt(AT_FDCWD, path), nullptr)
CALL(DIR*, opendir, (const char* path), (path), "open", pathAt(AT_FDCWD, path), nullptr)
CALL(dirent*, readdir, (DIR * folder), (folder), "readdir", pathOf(dirfd(folder)) + "/", nullptr)
CALL(dirent64*, readdir64, (DIR * folder), (folder), "readdir", pathOf(dirfd(folder)) + "/", nullptr)
CALL(int, mkostemp, (char* path, int flags), (path, flags), "make", pathAt(AT_FDCWD, path), -1)
CALL(int, mkostemp64, (char* path, int flags), (path, flags), "make", pathAt(AT_FDCWD, path), -1)
CALL(char*, mkdtemp, (char* path), (path), "make", pathAt(AT_FDCWD, path), nullptr)
CALL(int, mkdir, (const char* path, mode_t mode), (path, mode), "make", pathAt(AT_FDCWD, path), -1)
CALL(int, fsync, (int file), (file), "sync", pathOf(file), -1)
CALL(int, ftruncate, (int file, off_t size), (file, size), "truncate", pathOf(file), -1)
CALL(int, ftruncate64, (int file, off64_t size), (file, size), "truncate", pathOf(file), -1)
CALL(int, fchmod, (int file, mode_t mode), (file, mode), "mode", pathOf(file), -1)
CALL(int, fchmodat, (int folder, const char* path, mode_t mode, int flags), (folder, path, mode, flags), "mode",
     pathAt(folder, path), -1)
CALL(int, rename, (const char* from, const char* to), (from, to), "rename", pathAt(AT_FDCWD, to), -1)
CALL(int, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
     (fromFolder, from, toFolder, to, flags), "rename", pathAt(toFolder, to), -1)
CALL(int, unlink, (const char* path), (path), "remove", pathAt(AT_FDCWD, path), -1)
CALL(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), "remove", pathAt(folder, path),
     -1)
CALL(int, rmdir, (const char* path), (path), "remove", pathAt(AT_FDCWD, path), -1)
CALL(int, remove, (const char* path), (path), "remove", pathAt(AT_FDCWD, path), -1)

int close(int file) {
    const bool failing = file > STDERR_FILENO && fails("close", pathOf(file));
    const int error = errno;
    const int result = static_cast<int>(syscall(SYS_close, file));
    if (failing) errno = error;
    return failing ? -1 : result;
}
int fclose(FILE* stream) {
    static const auto next = NEXT(fclose);
    const bool failing = fails("close", fileno(stream) == -1 ? "" : pathOf(fileno(stream)));
    const int error = errno;
    const int result = next(stream);
    if (failing) errno = error;
    return failing ? EOF : result;
}
ssize_t read(int file, void* bytes, size_t size) {
    const Fault fault = faultOf("read", pathOf(file));
    if (fault == Fault::Error) return -1;
    return syscall(SYS_read, file, bytes, fault == Fault::Short ? (size + 1) / 2 : size);
}
ssize_t write(int file, const void* bytes, size_t size) {
    const Fault fault = faultOf("write", pathOf(file));
    if (fault == Fault::Error) return -1;
    const ssize_t written = syscall(SYS_write, file, bytes, fault == Fault::None ? size : (size + 1) / 2);
    if (fault == Fault::Signal) raise(plan().number);
    return written;
}
ssize_t writev(int file, const iovec* parts, int count) {
    for (; count > 1 && parts->iov_len == 0; --count) ++parts;
    const Fault fault = faultOf("write", pathOf(file));
    if (fault == Fault::Error) return -1;
    if (fault == Fault::None) return syscall(SYS_writev, file, parts, count);
    const ssize_t written = syscall(SYS_write, file, parts->iov_base, (parts->iov_len + 1) / 2);
    if (fault == Fault::Signal) raise(plan().number);
    return written;
}

// The C library's own streams write past a preloaded write(); these go through it.
static ssize_t writeCookie(void* file, const char* bytes, size_t size) {
    const ssize_t written = write(static_cast<int>(reinterpret_cast<intptr_t>(file)), bytes, size);
    return written < 0 ? 0 : written;
}
static int closeCookie(void* file) { return close(static_cast<int>(reinterpret_cast<intptr_t>(file))); }
FILE* fdopen(int file, const char* mode) {
    static const auto next = NEXT(fdopen);
    if (!plan().passed || *mode != 'w') return next(file, mode);
    return fopencookie(reinterpret_cast<void*>(static_cast<intptr_t>(file)), mode,
                       {nullptr, writeCookie, nullptr, closeCookie});
}

} // extern "C"
