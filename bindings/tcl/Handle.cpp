#include "bindings/tcl/Handle.h"

#include "bindings/tcl/Convert.h"
#include "bindings/tcl/Subcommand.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

namespace wpx::tcltasks {

native_caches& tcl_native_cache::libraries() {
    static auto* const caches = new native_caches;
    return *caches;
}

} // namespace wpx::tcltasks

namespace hdnt::tcl {

using wpx::tcltasks::tcl_native_cache;

static constexpr std::string_view root = "::hdnt::";

// Lives that are there now. With the lock.
static std::set<SharedLibrary*>& lives() {
    static auto* const all = new std::set<SharedLibrary*>;
    return *all;
}

SharedLibrary::SharedLibrary(HDNTLibrary& library, std::shared_ptr<SharedLibrary> parentLife)
    : OpenLibrary(static_cast<native_handle&>(*this), parentLife.get()), below(std::move(parentLife)) {
    tcl_native_cache::libraries().of(HDNTNodeKind::Library).enter(library, *this);
    lives().insert(this);
}

SharedLibrary::~SharedLibrary() {
    lives().erase(this);
    tcl_native_cache::libraries().of(HDNTNodeKind::Library).drop(*this);
}

const char* wordOf(HDNTNodeKind kind) {
    switch (kind) {
    case HDNTNodeKind::Library: return "library";
    case HDNTNodeKind::Block: return "block";
    case HDNTNodeKind::FunctionDecl: return "function";
    case HDNTNodeKind::Bus: return "bus";
    case HDNTNodeKind::Pin: return "pin";
    case HDNTNodeKind::Property: return "property";
    case HDNTNodeKind::Netlist: return "netlist";
    case HDNTNodeKind::BlockPinName: return "pin_ref";
    case HDNTNodeKind::BlockInst: return "instance";
    case HDNTNodeKind::Connect: return "connect";
    case HDNTNodeKind::Signal: return "signal";
    case HDNTNodeKind::AssignBlockProperty: return "block_assign";
    case HDNTNodeKind::AssignPinProperty: return "pin_assign";
    case HDNTNodeKind::IfStmt: return "if";
    case HDNTNodeKind::StmtBlock: return "statements";
    case HDNTNodeKind::FunctionCall: return "call";
    case HDNTNodeKind::CompoundExpr: return "operation";
    case HDNTNodeKind::IntConstant: return "int";
    case HDNTNodeKind::DoubleConstant: return "double";
    case HDNTNodeKind::BoolConstant: return "bool";
    case HDNTNodeKind::StringConstant: return "string";
    default: return nullptr;
    }
}

// Ends with the interpreter, or with its thread: an exit does not delete interpreters.
static void threadEnds(ClientData session) { static_cast<Session*>(session)->end(); }

static void interpEnds(ClientData held, Tcl_Interp*) {
    const std::unique_ptr<std::shared_ptr<Session>> session(static_cast<std::shared_ptr<Session>*>(held));
    Tcl_DeleteThreadExitHandler(threadEnds, session->get());
    (*session)->end();
}

Session::Session(Tcl_Interp* of) : interp_(of) {}
Session::~Session() = default;

Session* Session::of(Tcl_Interp* interp) {
    void* const held = Tcl_GetAssocData(interp, "hdnt", nullptr);
    return held ? static_cast<std::shared_ptr<Session>*>(held)->get() : nullptr;
}

void beginSession(Tcl_Interp* interp) {
    if (Session::of(interp)) return;
    auto held = std::make_unique<std::shared_ptr<Session>>(std::make_shared<Session>(interp));
    Tcl_CreateThreadExitHandler(threadEnds, held->get());
    Tcl_SetAssocData(interp, "hdnt", interpEnds, held.release());
}

static void remove(std::unique_ptr<HDNTLibrary> last) {
    const LoadSection section(LoadSection::Quiet, scriptLock());
    last.reset();
}

void Session::end() {
    const Locked lock;
    ended_ = true;
    for (const std::shared_ptr<SharedLibrary>& life : owned_) life->closed = true;
    while (!owned_.empty()) { // those over others came later
        const std::shared_ptr<SharedLibrary> life = std::move(owned_.back());
        owned_.pop_back();
        life->close(remove);
    }
}

std::shared_ptr<SharedLibrary> Session::lifeOf(HDNTLibrary& library) {
    if (auto* const known = tcl_native_cache::libraries().of(HDNTNodeKind::Library).find(library))
        if (std::shared_ptr<SharedLibrary> life = static_cast<SharedLibrary*>(known)->weak_from_this().lock())
            return life;
    HDNTLibrary* const below = library.getParentLibrary();
    return std::make_shared<SharedLibrary>(library, below ? lifeOf(*below) : nullptr);
}

std::shared_ptr<SharedLibrary> Session::lifeOf(const HDNTDecl& declared, std::shared_ptr<SharedLibrary> life) {
    while (life && life->node() != declared.getParent()) life = life->below;
    return life;
}

std::shared_ptr<SharedLibrary> Session::own(std::unique_ptr<HDNTLibrary> library) {
    std::shared_ptr<SharedLibrary> life = lifeOf(*library);
    life->owned = std::move(library);
    owned_.push_back(life);
    return life;
}

void Session::close(SharedLibrary& life) {
    life.closed = true;
    sweepWanted_ = true;
    std::vector<std::shared_ptr<SharedLibrary>> gone;
    const auto kept =
        std::stable_partition(owned_.begin(), owned_.end(), [](const auto& one) { return !one->isGone(); });
    std::move(kept, owned_.end(), std::back_inserter(gone));
    owned_.erase(kept, owned_.end());
    for (; !gone.empty(); gone.pop_back()) gone.back()->close(remove);
}

bool Session::closeManaged() {
    for (const SharedLibrary* life : lives())
        if (life->path.empty() && life->running > 0) return false;
    for (SharedLibrary* life : lives())
        if (life->path.empty()) life->closed = true;
    return true;
}

std::vector<std::shared_ptr<SharedLibrary>> Session::libraries() const { return owned_; }

Handle* Session::create(HDNTNode& node, const std::shared_ptr<SharedLibrary>& life) {
    const HDNTNodeKind kind = node.getKind();
    const std::string name = std::string(root) + wordOf(kind) + std::to_string(++numbers_[static_cast<size_t>(kind)]);
    auto handle = std::make_unique<Handle>();
    handle->session = shared_from_this();
    handle->life = life;
    handle->kind = kind;
    caches_.of(kind).enter(node, *handle);
    Handle* const made = handle.release();
    made->name = Tcl_NewStringObj(name.data(), static_cast<int>(name.size()));
    Tcl_IncrRefCount(made->name);
    made->behind = first_;
    if (first_) first_->before = made;
    first_ = made;
    made->command = Tcl_CreateObjCommand(interp_, name.c_str(), run, made, commandGone);
    Tcl_CmdInfo info;
    if (!made->command || !Tcl_GetCommandInfoFromToken(made->command, &info)) { // the interpreter is going
        if (!made->command) commandGone(made);
        throw Gone("the interpreter is ending");
    }
    made->home = info.namespacePtr;
    return made;
}

Tcl_Obj* Session::nameOf(Handle& handle) {
    Tcl_CmdInfo info;
    if (!Tcl_GetCommandInfoFromToken(handle.command, &info)) return handle.name;
    const char* const known = Tcl_GetString(handle.name);
    const char* const tail = Tcl_GetCommandName(interp_, handle.command);
    const size_t length = std::strlen(tail);
    const auto knownLength = static_cast<size_t>(handle.name->length);
    const bool same = info.namespacePtr == handle.home && knownLength > length &&
                      known[knownLength - length - 1] == ':' && std::strcmp(known + knownLength - length, tail) == 0;
    if (same) return handle.name;
    Tcl_Obj* const name = Tcl_NewObj();
    Tcl_IncrRefCount(name);
    Tcl_GetCommandFullName(interp_, handle.command, name);
    Tcl_DecrRefCount(handle.name);
    handle.name = name;
    handle.home = info.namespacePtr;
    return name;
}

Tcl_Obj* Session::wrap(HDNTNode* node, const std::shared_ptr<SharedLibrary>& from) {
    if (!node) return Tcl_NewObj();
    if (auto* const known = static_cast<Handle*>(caches_.of(node->getKind()).find(*node))) return nameOf(*known);
    if (ended_ || !wordOf(node->getKind())) throw Gone("there is no handle for this");
    std::shared_ptr<SharedLibrary> life = from;
    const bool isDeclared = node->getKind() == HDNTNodeKind::Block || node->getKind() == HDNTNodeKind::FunctionDecl;
    if (isDeclared) life = lifeOf(static_cast<HDNTDecl&>(*node), life);
    if (node->getKind() == HDNTNodeKind::Library) life = lifeOf(static_cast<HDNTLibrary&>(*node));
    if (!life) throw Gone("the library of a block or function is not open");
    return nameOf(*create(*node, life));
}

bool Session::wasHandle(const std::string& name) const {
    if (!name.starts_with(root)) return false;
    const size_t digits = name.find_first_of("0123456789");
    if (digits == std::string::npos || name.find_first_not_of("0123456789", digits) != std::string::npos) return false;
    const std::string word = name.substr(root.size(), digits - root.size());
    const unsigned long number = std::strtoul(name.c_str() + digits, nullptr, 10);
    for (size_t kind = 0; kind < numbers_.size(); ++kind) {
        const char* const known = wordOf(static_cast<HDNTNodeKind>(kind));
        if (known && word == known) return number > 0 && number <= numbers_[kind] && name[digits] != '0';
    }
    return false;
}

// With the lock.
void Session::forget(Handle* handle) {
    if (--handle->uses > 0) return;
    Session& session = *handle->session;
    session.caches_.of(handle->kind).drop(*handle);
    if (handle->before) handle->before->behind = handle->behind;
    else session.first_ = handle->behind;
    if (handle->behind) handle->behind->before = handle->before;
    Tcl_DecrRefCount(handle->name);
    const std::unique_ptr<Handle> last(handle);
}

void Session::commandGone(ClientData data) {
    const Locked lock;
    auto* const handle = static_cast<Handle*>(data);
    handle->command = nullptr;
    const std::shared_ptr<Session> session = handle->session;
    session->caches_.of(handle->kind).drop(*handle); // the next question makes a new command
    const std::shared_ptr<SharedLibrary> life = handle->life;
    const bool closes = handle->kind == HDNTNodeKind::Library && !life->path.empty() && !life->closed;
    forget(handle);
    if (closes) session->close(*life);
}

void Session::sweep() {
    std::vector<Handle*> dead;
    {
        const Locked lock;
        if (!sweepWanted_ && sweptAt_ == caches_.emptied()) return;
        sweepWanted_ = false;
        sweptAt_ = caches_.emptied();
        for (Handle* handle = first_; handle; handle = handle->behind)
            if (handle->isDead()) {
                ++handle->uses;
                dead.push_back(handle);
            }
        for (const std::shared_ptr<SharedLibrary>& life : std::vector(owned_))
            if (life->isGone()) close(*life);
        sweepWanted_ = false;
    }
    for (Handle* handle : dead) {
        if (handle->command) Tcl_DeleteCommandFromToken(interp_, handle->command);
        const Locked lock;
        forget(handle);
    }
}

HandleInUse::HandleInUse(Handle& handle) : handle_(handle), life_(handle.life) {
    if (handle.kind >= HDNTNodeKind::Netlist) LoadSection::waitForChanges(scriptLock());
    node_ = handle.node();
    if (handle.isDead()) {
        handle.session->wantSweep();
        throw DeadHandle(wordOf(handle.kind), Tcl_GetString(handle.name));
    }
    ++handle_.uses;
    life_->begin();
}

HandleInUse::~HandleInUse() {
    life_->end(remove);
    Session::forget(&handle_);
}

int Session::run(ClientData data, Tcl_Interp* interp, int count, Tcl_Obj* const words[]) {
    auto* const handle = static_cast<Handle*>(data);
    const std::shared_ptr<Session> session = handle->session;
    Tcl_Preserve(interp);
    const int status = guarded(interp, [&]() -> Tcl_Obj* {
        const Locked lock;
        const HandleInUse use(*handle);
        return runSubcommand({*session, use.node(), use.life(), count, words, 1});
    });
    session->sweep();
    Tcl_Release(interp);
    return status;
}

Handle* handleAt(Tcl_Interp* interp, Tcl_Obj* word) {
    Tcl_CmdInfo info;
    const Tcl_Command command = Tcl_GetCommandFromObj(interp, word);
    if (!command || !Tcl_GetCommandInfoFromToken(command, &info) || info.objProc != Session::run) return nullptr;
    return static_cast<Handle*>(info.objClientData);
}

} // namespace hdnt::tcl
