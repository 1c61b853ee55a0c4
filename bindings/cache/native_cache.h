#pragma once

#include "hdnt/model/HDNTNode.h"
#include "hdnt/model/HDNTNodeWatch.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <unordered_map>

/// The object caches of scripting languages. A language keeps a handle for each model object that a script holds: the
/// same one for the same object as long as the script holds it, and an empty one once the object is gone.
///
/// The caches keep neither objects nor handles alive. They know nothing of any language; what a handle is beyond its
/// object is the language's own.
namespace wpx::tcltasks {

/// What a language's object or command refers to. Empty once the model object died, and for good.
class native_handle {
public:
    native_handle() = default;
    native_handle(const native_handle&) = delete;
    native_handle& operator=(const native_handle&) = delete;

    /// Null when the object is gone. The answer holds as long as nobody deletes the object, for which the language has
    /// to care.
    HDNTNode* node() const { return node_.load(std::memory_order_acquire); }

private:
    friend class native_cache;
    std::atomic<HDNTNode*> node_ = nullptr;
};

/// The handles of the objects of one type, in one language. Any thread, except as said.
class native_cache {
public:
    native_cache() = default;
    native_cache(const native_cache&) = delete;
    native_cache& operator=(const native_cache&) = delete;

    /// The handle of an object; null when there is none. Valid until the language drops it.
    native_handle* find(const HDNTNode& node) const;
    /// Gives an object that has none a handle, and watches it from now on.
    void enter(HDNTNode& node, native_handle& handle);
    /// Must come before the handle's memory goes. Nothing happens for an empty one.
    void drop(native_handle& handle);
    /// Empties the handle of an object that dies. False when it has none.
    bool forget(const HDNTNode& node) noexcept;
    /// Empties all handles.
    void clear();
    std::size_t size() const;

private:
    mutable std::mutex mutex_;
    std::unordered_map<const HDNTNode*, native_handle*> handles_;
};

/// All caches of one language, or of one of its interpreters: one for each type of model object. Hears of objects that
/// die from its construction to its destruction.
class native_caches : private HDNTNodeWatch::Observer {
public:
    native_caches();
    ~native_caches() override;

    native_cache& of(HDNTNodeKind kind) { return caches_[static_cast<std::size_t>(kind)]; }
    /// Handles of all types together.
    std::size_t size() const;
    void clear();
    /// How many handles were emptied so far since their objects died.
    std::size_t emptied() const { return emptied_.load(std::memory_order_acquire); }

private:
    void nodeDies(const HDNTNode& node) noexcept override;

    std::array<native_cache, static_cast<std::size_t>(HDNTNodeKind::StringConstant) + 1> caches_;
    std::atomic<std::size_t> emptied_ = 0;
};

} // namespace wpx::tcltasks
