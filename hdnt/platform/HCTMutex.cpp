#include "hdnt/platform/HCTMutex.h"

#include "hdnt/platform/HEX.h"

#include <cerrno>
#include <utility>

bool HCTMutex::try_lock() {
    const int code = pthread_mutex_trylock(&mutex_);
    if (code != 0 && code != EBUSY) throw HCTThreadException(code);
    return code == 0;
}

void HCTMutex::lock() {
    if (try_lock()) return;
    if (const int code = pthread_mutex_lock(&mutex_)) throw HCTThreadException(code);
}

void HCTMutex::unlock() {
    if (const int code = pthread_mutex_unlock(&mutex_)) throw HCTThreadException(code);
}

HCTLock::HCTLock(HCTMutex& mutex) : mutex_(&mutex) { mutex.lock(); }

HCTLock::~HCTLock() {
    try {
        unlock();
    } catch (const HCTThreadException&) { // the owner released the mutex behind this guard's back: nothing is held
    }
}

void HCTLock::unlock() {
    if (HCTMutex* mutex = std::exchange(mutex_, nullptr)) mutex->unlock();
}
