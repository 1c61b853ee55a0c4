#pragma once

#include <atomic>
#include <thread>

namespace hdnt::platform {

/// For sections of a few instructions that threads rarely meet in; a std::mutex costs more than what it would guard.
class SpinLock {
public:
    void lock() noexcept {
        while (taken_.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    void unlock() noexcept { taken_.clear(std::memory_order_release); }

private:
    std::atomic_flag taken_;
};

} // namespace hdnt::platform
