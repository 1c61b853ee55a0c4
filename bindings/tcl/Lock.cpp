#include "bindings/tcl/Lock.h"

#include <cstdint>
#include <mutex>

namespace hdnt::tcl {

// Never destroyed: threads may be there until the very end.
static std::mutex& mutex() {
    static auto* const one = new std::mutex;
    return *one;
}
static thread_local std::intptr_t held = 0; ///< how often by this thread

namespace {

class Lock : public scripts::ScriptLock {
public:
    void* giveUp() override {
        const std::intptr_t before = std::exchange(held, 0);
        if (before > 0) mutex().unlock();
        return reinterpret_cast<void*>(before);
    }
    void takeBack(void* given) override {
        const auto before = reinterpret_cast<std::intptr_t>(given);
        if (before > 0) mutex().lock();
        held = before;
    }
};

} // namespace

scripts::ScriptLock& scriptLock() {
    static auto* const lock = new Lock;
    return *lock;
}

Locked::Locked() {
    if (held++ == 0) mutex().lock();
}
Locked::~Locked() {
    if (--held == 0) mutex().unlock();
}

} // namespace hdnt::tcl
