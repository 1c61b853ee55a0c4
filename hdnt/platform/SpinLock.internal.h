#pragma once

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include <atomic>
#include <thread>

namespace hdnt::platform {

/// Whether the process has no other thread: what it changes then needs no atomic operation, each of which costs as much
/// as looking up a name. Only the caller itself can change a yes, by starting a thread.
inline bool isOnlyThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

/// For sections of a few instructions that threads rarely meet in; a std::mutex costs more than what it would guard.
/// Sections must not start threads.
class SpinLock {
public:
    void lock() noexcept {
        if (!isOnlyThread() && taken_.test_and_set(std::memory_order_acquire)) waitForIt();
    }
    // Always: whether there are other threads may have changed meanwhile, by the end of the last of them.
    void unlock() noexcept { taken_.clear(std::memory_order_release); }

private:
    [[gnu::noinline]] void waitForIt() noexcept {
        do std::this_thread::yield();
        while (taken_.test_and_set(std::memory_order_acquire));
    }

    std::atomic_flag taken_;
};

} // namespace hdnt::platform
