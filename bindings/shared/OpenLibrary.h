#pragma once

#include "bindings/cache/native_cache.h"
#include "hdnt/model/HDNTLibrary.h"

#include <memory>
#include <stdexcept>

namespace hdnt::scripts {

/// Use of a handle whose object is gone.
class Gone : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A library in the hands of scripts, and when it may be deleted: not while an operation on it, or on a library over
/// it, is under way. All of it belongs to whoever holds the script lock.
struct OpenLibrary {
    /// Both borrowed; they outlive this. The parent may be null.
    OpenLibrary(const wpx::tcltasks::native_handle& handle, OpenLibrary* below) : native(handle), parent(below) {}

    const wpx::tcltasks::native_handle& native;
    OpenLibrary* parent;
    std::unique_ptr<HDNTLibrary> owned; ///< null for a library of the manager
    bool closed = false;
    unsigned running = 0; ///< operations that use the library or one built over it

    /// Whether it, or one that it is built over, is closed or dead.
    bool isGone() const {
        for (const OpenLibrary* library = this; library; library = library->parent)
            if (library->closed || !library->native.node()) return true;
        return false;
    }
    void begin() {
        for (OpenLibrary* library = this; library; library = library->parent) ++library->running;
    }
    /// Hands those libraries to `remove` that were closed meanwhile.
    template <typename Remove>
    void end(Remove&& remove) {
        for (OpenLibrary* library = this; library; library = library->parent)
            if (--library->running == 0 && library->closed && library->owned) remove(std::move(library->owned));
    }
    template <typename Remove>
    void close(Remove&& remove) {
        closed = true;
        if (running == 0 && owned) remove(std::move(owned));
    }
};

} // namespace hdnt::scripts
