#include "bindings/python/LoadSection.h"

#include "bindings/python/Convert.h"

#include <unistd.h>

#include <atomic>
#include <thread>

namespace hdnt::python {

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

namespace {

class Lock : public scripts::ScriptLock {
public:
    void* giveUp() override { return PyEval_SaveThread(); }
    void takeBack(void* thread) override {
        stopIfEnding();
        callOrStop([&] { PyEval_RestoreThread(static_cast<PyThreadState*>(thread)); });
    }
};

} // namespace

scripts::ScriptLock& interpreterLock() {
    static auto* const lock = new Lock;
    return *lock;
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

static py::object relatedTo(const Diagnostic& diagnostic) {
    py::tuple related(diagnostic.related.size());
    for (size_t i = 0; i < diagnostic.related.size(); ++i)
        related[i] = dataClass("RelatedPlace")(py::reinterpret_steal<py::object>(toPython(diagnostic.related[i].place)),
                                               textObject(diagnostic.related[i].message));
    return related;
}

py::tuple diagnosticsOf(const std::vector<Diagnostic>& all) {
    if (all.empty()) return py::tuple();
    py::tuple diagnostics(all.size());
    const py::object make = dataClass("Diagnostic");
    for (size_t i = 0; i < all.size(); ++i) {
        const Diagnostic& one = all[i];
        const Place& place = one.place;
        diagnostics[i] = make(textObject(nameOf(one.severity)), textObject(one.code), orNone(place.file),
                              orNone(place.line), orNone(place.column), orNone(place.endColumn),
                              textObject(one.message), textObject(one.detail), textObject(place.text), relatedTo(one));
    }
    return diagnostics;
}

} // namespace hdnt::python
