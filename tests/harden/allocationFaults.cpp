#include "tests/harden/allocationFaults.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// What these do without memory is not ours to mend: they write to address zero, or call exit().
constexpr const char* sparedLibraries[] = {"libconfig",   "libgvc",      "libcgraph", "libcdt",
                                           "libpathplan", "libgvplugin", "libltdl",   "ld-linux"};

std::atomic<long> livePieces{0};
std::atomic<std::size_t> passed{0};
std::atomic<std::size_t> failing{0};
std::atomic<bool> isArmed{false};
std::atomic<bool> hasFailed{false};
bool tells = false;
thread_local bool isInside = false; // looking for the caller may allocate

bool isSpared(void* caller) {
    Dl_info info{};
    if (dladdr(caller, &info) == 0 || !info.dli_fname) return false;
    const char* const slash = std::strrchr(info.dli_fname, '/');
    const char* const name = slash ? slash + 1 : info.dli_fname;
    for (const char* const spared : sparedLibraries)
        if (std::strncmp(name, spared, std::strlen(spared)) == 0) return true;
    return false;
}

void reportTo(const char* text) {
    const char* const path = std::getenv("HDNT_FAULT_REPORT");
    const int file = path ? open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600) : -1;
    if (file == -1) return;
    [[maybe_unused]] const ssize_t written = write(file, text, std::strlen(text));
    close(file);
}

void tellCallers() {
    void* callers[64];
    if (tells) backtrace_symbols_fd(callers, backtrace(callers, 64), STDERR_FILENO);
}

/// Whether this one fails.
bool fails(void* caller) {
    if (!isArmed.load(std::memory_order_relaxed) || isInside) return false;
    isInside = true;
    const bool fault = !isSpared(caller) && ++passed == failing;
    if (fault) {
        hasFailed = true;
        reportTo("failed");
        tellCallers();
    }
    isInside = false;
    return fault;
}

void* taken(void* place) {
    if (place) ++livePieces;
    return place;
}

} // namespace

namespace faults {

void arm(std::size_t count) {
    passed = 0;
    failing = count;
    hasFailed = false;
    isArmed = true;
}

bool disarm() {
    isArmed = false;
    return hasFailed;
}

std::size_t counted() { return passed; }
long live() { return livePieces; }
void tellWhere(bool wanted) { tells = wanted; }

} // namespace faults

namespace {

/// Arms what is preloaded.
struct FromEnvironment {
    FromEnvironment() {
        const char* const count = std::getenv("HDNT_FAIL_ALLOCATION");
        if (!count) return;
        faults::tellWhere(std::getenv("HDNT_TELL_WHERE") != nullptr);
        faults::arm(std::strtoul(count, nullptr, 10));
    }
    ~FromEnvironment() {
        if (!isArmed || hasFailed) return;
        char text[32];
        std::snprintf(text, sizeof text, "%zu", passed.load());
        faults::disarm();
        reportTo(text);
    }
} fromEnvironment;

} // namespace

#ifdef HDNT_SANITIZED // malloc is the sanitizer's

static void* newMemory(std::size_t size, std::size_t alignment, void* caller) {
    if (fails(caller)) return nullptr;
    return taken(alignment == 0 ? std::malloc(size)
                                : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment));
}
static void* orThrow(void* place) {
    if (!place) throw std::bad_alloc();
    return place;
}
static void giveBack(void* place) {
    if (place) --livePieces;
    std::free(place);
}

void* operator new(std::size_t size) { return orThrow(newMemory(size, 0, __builtin_return_address(0))); }
void* operator new[](std::size_t size) { return orThrow(newMemory(size, 0, __builtin_return_address(0))); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return newMemory(size, 0, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return newMemory(size, 0, __builtin_return_address(0));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return orThrow(newMemory(size, static_cast<std::size_t>(alignment), __builtin_return_address(0)));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return orThrow(newMemory(size, static_cast<std::size_t>(alignment), __builtin_return_address(0)));
}
void operator delete(void* place) noexcept { giveBack(place); }
void operator delete[](void* place) noexcept { giveBack(place); }
void operator delete(void* place, std::size_t) noexcept { giveBack(place); }
void operator delete[](void* place, std::size_t) noexcept { giveBack(place); }
void operator delete(void* place, std::align_val_t) noexcept { giveBack(place); }
void operator delete[](void* place, std::align_val_t) noexcept { giveBack(place); }
void operator delete(void* place, std::size_t, std::align_val_t) noexcept { giveBack(place); }
void operator delete[](void* place, std::size_t, std::align_val_t) noexcept { giveBack(place); }
void operator delete(void* place, const std::nothrow_t&) noexcept { giveBack(place); }
void operator delete[](void* place, const std::nothrow_t&) noexcept { giveBack(place); }

#else

// operator new is the standard library's, which asks malloc; a failing one of it is the failing malloc.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

static void* withoutMemory() {
    errno = ENOMEM;
    return nullptr;
}

void* malloc(std::size_t size) {
    return fails(__builtin_return_address(0)) ? withoutMemory() : taken(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
    return fails(__builtin_return_address(0)) ? withoutMemory() : taken(__libc_calloc(count, size));
}
void* realloc(void* place, std::size_t size) {
    if (fails(__builtin_return_address(0))) return withoutMemory();
    void* const moved = __libc_realloc(place, size);
    if (!place && moved) ++livePieces;
    if (place && size == 0 && !moved) --livePieces;
    return moved;
}
void* memalign(std::size_t alignment, std::size_t size) {
    return fails(__builtin_return_address(0)) ? withoutMemory() : taken(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return fails(__builtin_return_address(0)) ? withoutMemory() : taken(__libc_memalign(alignment, size));
}
int posix_memalign(void** place, std::size_t alignment, std::size_t size) {
    if (fails(__builtin_return_address(0))) return ENOMEM;
    *place = taken(__libc_memalign(alignment, size));
    return *place ? 0 : ENOMEM;
}
// By itself, since the standard library's would be the caller of malloc, and not who asked for the copy.
static char* copyFor(void* caller, const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    void* const place = fails(caller) ? withoutMemory() : taken(__libc_malloc(size));
    return place ? static_cast<char*>(std::memcpy(place, text, size)) : nullptr;
}
char* strdup(const char* text) { return copyFor(__builtin_return_address(0), text); }
char* __strdup(const char* text) { return copyFor(__builtin_return_address(0), text); }
void free(void* place) {
    if (place) --livePieces;
    const int error = errno;
    __libc_free(place);
    errno = error;
}

void* mmap(void* place, std::size_t size, int protection, int flags, int file, off_t offset) {
    if ((flags & MAP_ANONYMOUS) != 0 && fails(__builtin_return_address(0))) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void*>(syscall(SYS_mmap, place, size, protection, flags, file, offset));
}

} // extern "C"

#endif
