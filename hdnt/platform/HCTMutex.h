#pragma once

#include "hdnt/platform/Export.h"

#include <pthread.h>

/// Mutex that notices misuse: locking twice in one thread, or unlocking what this thread does not hold, throws
/// HCTThreadException instead of hanging or passing. Constant-initialised, so a static one serves static initialisers.
class HDNT_API HCTMutex {
public:
    constexpr HCTMutex() noexcept = default;
    ~HCTMutex() = default; // trivial: a static mutex must still work while the process ends
    HCTMutex(const HCTMutex&) = delete;
    HCTMutex& operator=(const HCTMutex&) = delete;

    /// Tries, and waits when another thread holds it. Any other outcome throws HCTThreadException with the code.
    void lock();
    /// True when it was free and is now held; false when any thread, this one included, holds it. Throws on other
    /// codes.
    bool try_lock();
    /// Throws HCTThreadException when this thread does not hold it.
    void unlock();

private:
    pthread_mutex_t mutex_ = PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP;
};

/// Holds a mutex for a scope. unlock() gives it back early and throws like the mutex; the destructor gives it back
/// silently, since it may run while another exception is under way.
class HDNT_API HCTLock {
public:
    explicit HCTLock(HCTMutex& mutex);
    ~HCTLock();
    HCTLock(const HCTLock&) = delete;
    HCTLock& operator=(const HCTLock&) = delete;
    /// A second call does nothing.
    void unlock();

private:
    HCTMutex* mutex_;
};
