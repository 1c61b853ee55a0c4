#include "bindings/python/LoadSection.h"

#include "bindings/python/Convert.h"
#include "hdnt/frontend/Scanner.h"
#include "hdnt/manager/HDNTLibraryMgr.h"

#include <unistd.h>

#include <atomic>
#include <thread>

namespace hdnt::python {

static thread_local int depth = 0;
static int changing = 0; // with the interpreter lock
static std::atomic<bool> ending = false;
static std::thread::id endingThread;

bool isEnding() { return ending; }

void beginEnd() {
    endingThread = std::this_thread::get_id();
    ending = true;
}

[[noreturn]] static void stop() {
    for (;;) pause();
}

// An interpreter that ends makes a thread that asks for its lock exit on the spot, which no C++ stack survives: the
// thread stops instead. Python throws nothing of C++, so what arrives in the handler is that exit; it must not leave
// the handler. Nothing with a destructor stands between the call and the handler.
template <typename Call>
static auto callOrStop(Call&& call) {
    try {
        return call();
    } catch (...) {
        stop();
    }
}

// Without the lock.
static void stopIfEnding() {
    if (ending && std::this_thread::get_id() != endingThread) stop();
}

static void takeLockBack(PyThreadState* thread) {
    stopIfEnding();
    callOrStop([&] { PyEval_RestoreThread(thread); });
}

InterpreterLock::InterpreterLock() {
    stopIfEnding();
    callOrStop([&] { lock_.emplace(); });
}

py::object callBack(py::handle function, const py::tuple& arguments) {
    PyObject* const result = callOrStop([&] { return PyObject_CallObject(function.ptr(), arguments.ptr()); });
    if (!result) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(result);
}

bool LoadSection::isFree() {
    const std::unique_lock lock(HDNTLibraryMgr::loadMutex(), std::try_to_lock);
    return lock.owns_lock();
}

LoadSection::LoadSection(Kind kind) : kind_(kind) {
    if (depth++ == 0) {
        if (kind_ == Changes) ++changing;
        thread_ = PyEval_SaveThread();
        HDNTLibraryMgr::loadMutex().lock();
    }
    countBefore_ = HDNTError::numErrors;
    HDNTError::numErrors = 0;
    listenerBefore_ = HDNTError::setListener(this);
}

LoadSection::~LoadSection() {
    HDNTError::setListener(listenerBefore_);
    HDNTError::numErrors = countBefore_;
    --depth;
    if (!thread_) return;
    HDNTLibraryMgr::loadMutex().unlock();
    takeLockBack(thread_);
    if (kind_ == Changes) --changing;
}

void LoadSection::waitForChanges() {
    while (changing > 0 && depth == 0) {
        PyThreadState* const thread = PyEval_SaveThread();
        HDNTLibraryMgr::loadMutex().lock();
        HDNTLibraryMgr::loadMutex().unlock();
        takeLockBack(thread);
    }
}

static Said saidAt(bool isError, const char* code, const yyltype* at, std::string_view message,
                   std::string_view detail) {
    Said said{isError, code, "", 0, 0, 0, std::string(message), std::string(detail), ""};
    if (!at) return said;
    said.file = at->fileName ? at->fileName : "";
    said.line = at->fileLine;
    said.column = at->first_column;
    said.lastColumn = at->last_column;
    if (at->first_line > 0)
        said.text = NtlGetLineNumbered(static_cast<unsigned long>(at->first_line + at->storeOffset));
    return said;
}

bool LoadSection::report(const HDNTReport& report) {
    said_.push_back(saidAt(true, "error", report.location, report.message, report.detail));
    return true;
}

void LoadSection::notice(const HDNTNotice& notice) {
    struct Wording {
        const char* code;
        const char* before;
        const char* after;
    };
    // In the order of HDNTNotice::Kind.
    static constexpr Wording wordings[] = {
        {"include-skipped", "file \"", "\" was included before and is skipped"},
        {"include-not-found", "file \"", "\" is not found"},
        {"include-not-opened", "file \"", "\" cannot be opened"},
        {"unterminated-string", "string is not closed on its line: ", ""},
        {"unterminated-comment", "comment is not closed", ""},
        {"dropped-mapping", "mapping of block \"", "\" is dropped"},
    };
    const Wording& wording = wordings[static_cast<size_t>(notice.kind)];
    std::string message = wording.before;
    if (notice.kind != HDNTNotice::Kind::UnterminatedComment) message.append(notice.text).append(wording.after);
    said_.push_back(saidAt(false, wording.code, &notice.location, message, notice.detail));
}

py::tuple diagnosticsOf(const std::vector<Said>& all) {
    if (all.empty()) return py::tuple();
    py::tuple diagnostics(all.size());
    const py::object make = dataClass("Diagnostic");
    for (size_t i = 0; i < all.size(); ++i) {
        const Said& said = all[i];
        diagnostics[i] = make(said.isError ? "error" : "warning", said.code, orNone(said.file), orNone(said.line),
                              orNone(said.column), orNone(said.lastColumn), textObject(said.message),
                              textObject(said.detail), textObject(said.text));
    }
    return diagnostics;
}

} // namespace hdnt::python
