#pragma once

#include "bindings/shared/OpenLibrary.h"
#include "bindings/tcl/Lock.h"
#include "hdnt/diagnostics/Diagnostic.h"

#include <tcl.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace hdnt::tcl {

using scripts::Gone;

/// A library that some interpreter knows: one for all of them.
struct SharedLibrary : wpx::tcltasks::native_handle, scripts::OpenLibrary, std::enable_shared_from_this<SharedLibrary> {
    SharedLibrary(HDNTLibrary& library, std::shared_ptr<SharedLibrary> below);
    ~SharedLibrary();

    std::shared_ptr<SharedLibrary> below;
    std::string path; ///< what it was loaded from; empty for a library of the manager
    std::vector<Diagnostic> warnings;

    HDNTLibrary* library() const { return static_cast<HDNTLibrary*>(node()); }
};

class Session;

/// What a command such as ::hdnt::block7 stands for. Lives as long as the command and what uses it.
struct Handle : wpx::tcltasks::native_handle {
    std::shared_ptr<Session> session;
    std::shared_ptr<SharedLibrary> life; ///< of its library, or of itself
    HDNTNodeKind kind = HDNTNodeKind::Other;
    Tcl_Command command = nullptr; ///< null once that is deleted
    Tcl_Namespace* home = nullptr;
    Tcl_Obj* name = nullptr;
    Handle* before = nullptr;
    Handle* behind = nullptr;
    unsigned uses = 1;

    bool isDead() const { return !node() || life->isGone(); }
};

/// "block" and so on, as in the names of handles; null for a kind that has none.
const char* wordOf(HDNTNodeKind kind);

/// What the package keeps for one interpreter. Belongs to the interpreter's thread.
class Session : public std::enable_shared_from_this<Session> {
public:
    explicit Session(Tcl_Interp* of);
    ~Session();
    Session(const Session&) = delete;

    /// Null before the package is loaded, and while the interpreter goes.
    static Session* of(Tcl_Interp* interp);

    Tcl_Interp* interp() const { return interp_; }

    // With the lock.

    /// The name of the object's command, which is made when there is none; the empty text for null.
    Tcl_Obj* wrap(HDNTNode* node, const std::shared_ptr<SharedLibrary>& life);
    /// The one for all interpreters.
    static std::shared_ptr<SharedLibrary> lifeOf(HDNTLibrary& library);
    /// Of the library that a block or function belongs to: this one or one below it; null when it is none of them.
    static std::shared_ptr<SharedLibrary> lifeOf(const HDNTDecl& declared, std::shared_ptr<SharedLibrary> life);
    /// Takes a library over.
    std::shared_ptr<SharedLibrary> own(std::unique_ptr<HDNTLibrary> library);
    /// Ends a library of this interpreter and those over it: its memory goes with the last operation that is under way.
    void close(SharedLibrary& life);
    /// Closes all libraries of the manager. False, with nothing done, while one of them is in use.
    static bool closeManaged();
    std::vector<std::shared_ptr<SharedLibrary>> libraries() const;

    /// Whether the word is the name of a handle that was there once.
    bool wasHandle(const std::string& name) const;
    size_t size() const { return caches_.size(); }
    void wantSweep() { sweepWanted_ = true; }

    // Without the lock.

    /// Deletes the commands of objects that are gone.
    void sweep();
    /// The end: closes what it owns.
    void end();

    static int run(ClientData handle, Tcl_Interp* interp, int count, Tcl_Obj* const words[]);

private:
    friend class HandleInUse;
    static void commandGone(ClientData handle);
    static void forget(Handle* handle);
    Handle* create(HDNTNode& node, const std::shared_ptr<SharedLibrary>& life);
    Tcl_Obj* nameOf(Handle& handle);

    Tcl_Interp* interp_;
    wpx::tcltasks::native_caches caches_;
    std::array<unsigned long, static_cast<size_t>(HDNTNodeKind::StringConstant) + 1> numbers_{};
    std::vector<std::shared_ptr<SharedLibrary>> owned_;
    Handle* first_ = nullptr;
    size_t sweptAt_ = 0;
    bool sweepWanted_ = false;
    bool ended_ = false;
};

/// A use of something that is gone, with the name that the script used.
class DeadHandle : public Gone {
public:
    DeadHandle(std::string word, std::string name)
        : Gone("the " + word + " that \"" + name +
               "\" stood for is gone: its library was closed, it was replaced, or its command was deleted"),
          word_(std::move(word)), name_(std::move(name)) {}
    const std::string& word() const { return word_; }
    const std::string& name() const { return name_; }

private:
    std::string word_;
    std::string name_;
};

/// Keeps a handle, and its library from being deleted by a script, while an operation is under way, also when that
/// calls back into Tcl. Throws DeadHandle. Made and destroyed with the lock.
class HandleInUse {
public:
    explicit HandleInUse(Handle& handle);
    ~HandleInUse();
    HandleInUse(const HandleInUse&) = delete;

    HDNTNode& node() const { return *node_; }
    const std::shared_ptr<SharedLibrary>& life() const { return life_; }

private:
    Handle& handle_;
    std::shared_ptr<SharedLibrary> life_;
    HDNTNode* node_;
};

/// The handle behind a command; null when the word names none of these.
Handle* handleAt(Tcl_Interp* interp, Tcl_Obj* word);

} // namespace hdnt::tcl

namespace wpx::tcltasks {

/// Tcl's object caches, beside those that each interpreter has of its own: the libraries that any of them knows.
class tcl_native_cache {
public:
    /// Never destroyed, since objects of the model may die after everything else of the process.
    static native_caches& libraries();
};

} // namespace wpx::tcltasks
