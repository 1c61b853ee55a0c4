#pragma once

#include "hdnt/platform/Export.h"

class HDNTNode;

/// Tells when model objects die, for those who keep something about them elsewhere, such as the wrappers of a scripting
/// language. Only objects that somebody asked to watch are told of; every other one costs a test of a flag when it is
/// deleted. All operations may run in any thread.
class HDNT_API HDNTNodeWatch {
public:
    HDNTNodeWatch() = delete;

    class HDNT_API Observer {
    public:
        virtual ~Observer();
        /// Comes from the destructor of any watched object, in the thread that deletes it. Of the object nothing is
        /// left but its address and getKind(). Must not watch, delete model objects, or add or remove observers.
        virtual void nodeDies(const HDNTNode& node) noexcept = 0;
    };

    /// Not owned; must live until it is removed.
    static void addObserver(Observer& observer);
    /// Returns when no call to the observer is under way any more.
    static void removeObserver(Observer& observer);

    /// From now on the end of this object is told to all observers. There is no way back. A copy of the object is not
    /// watched. The object must not be deleted meanwhile.
    static void watch(const HDNTNode& node);
};
