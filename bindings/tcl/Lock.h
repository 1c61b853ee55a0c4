#pragma once

#include "bindings/shared/LoadSection.h"

namespace hdnt::tcl {

/// The lock under which commands of this package touch the model and what interpreters share. Any number of
/// interpreters in as many threads may be there; Tcl itself has no lock of the kind.
scripts::ScriptLock& scriptLock();

/// Has the lock, also when the thread has it already.
class Locked {
public:
    Locked();
    ~Locked();
    Locked(const Locked&) = delete;
};

/// Has no lock, to call back into Tcl, which may wait for another thread.
class Unlocked {
public:
    Unlocked() : given_(scriptLock().giveUp()) {}
    ~Unlocked() { scriptLock().takeBack(given_); }
    Unlocked(const Unlocked&) = delete;

private:
    void* given_;
};

using scripts::LoadSection;

template <typename Work>
void inSection(LoadSection::Kind kind, const std::string& of, Work&& work, std::vector<Diagnostic>* notices = nullptr) {
    scripts::inSection(scriptLock(), kind, of, std::forward<Work>(work), notices);
}

} // namespace hdnt::tcl
