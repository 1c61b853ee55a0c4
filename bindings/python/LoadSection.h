#pragma once

#include "hdnt/frontend/HDNTError.h"
#include "hdnt/platform/HEX.h"

#include <pybind11/pybind11.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace hdnt::python {

namespace py = pybind11;

/// A report or notice, taken without the interpreter lock.
struct Said {
    bool isError;
    const char* code; ///< as `ntl check` has it, or "error"
    std::string file;
    int line;
    int column;
    int lastColumn;
    std::string message;
    std::string detail;
    std::string text; ///< the source line
};

/// The time in which this thread has the library's loading side to itself: the interpreter lock is given up, then the
/// load lock is taken. Errors are counted from 0, kept and not printed, and at the end the count is what it was before.
///
/// In a section of the same thread another one changes nothing about locks, so callbacks may load, too. To call back
/// into Python, take an InterpreterLock.
class LoadSection : private HDNTErrorListener {
public:
    /// What can happen to mappings of other libraries meanwhile: nothing, or they may be replaced.
    enum Kind { Quiet, Changes };

    explicit LoadSection(Kind kind);
    ~LoadSection() override;
    LoadSection(const LoadSection&) = delete;
    LoadSection& operator=(const LoadSection&) = delete;

    int errors() const { return HDNTError::numErrors; }
    std::vector<Said> takeSaid() { return std::move(said_); }

    /// Whether a section could begin at once. Other threads may change that.
    static bool isFree();
    /// Returns when no other thread is in a section that changes mappings. With the interpreter lock.
    static void waitForChanges();

private:
    bool report(const HDNTReport& report) override;
    void notice(const HDNTNotice& notice) override;

    Kind kind_;
    PyThreadState* thread_ = nullptr;
    int countBefore_ = 0;
    HDNTErrorListener* listenerBefore_ = nullptr;
    std::vector<Said> said_;
};

/// Takes the interpreter lock in a section, to call back into Python.
class InterpreterLock {
public:
    InterpreterLock();
    InterpreterLock(const InterpreterLock&) = delete;

private:
    std::optional<py::gil_scoped_acquire> lock_;
};

/// Calls into Python from below a section. With the interpreter lock.
py::object callBack(py::handle function, const py::tuple& arguments);

/// Whether the interpreter is ending. Threads that it does not wait for stop where they would need its lock.
bool isEnding();
/// Once, from the thread that ends the interpreter, before it does.
void beginEnd();

/// A load, or something that may load, failed.
class LoadFailure : public std::runtime_error {
public:
    LoadFailure(std::string path, const std::string& reason, std::vector<Said> said)
        : std::runtime_error(reason), path_(std::move(path)), said_(std::move(said)) {}
    const std::string& path() const { return path_; }
    const std::vector<Said>& said() const { return said_; }

private:
    std::string path_;
    std::vector<Said> said_;
};

/// Runs something in a section. What the library throws, and errors in a text, become a LoadFailure that says `of`.
template <typename Work>
void inSection(LoadSection::Kind kind, const std::string& of, Work&& work, std::vector<Said>* notices = nullptr) {
    std::string reason;
    std::vector<Said> said;
    bool failed = false;
    {
        LoadSection section(kind);
        try {
            work();
            failed = section.errors() > 0;
        } catch (const HEXAll& error) {
            failed = true;
            reason = error.what();
        }
        said = section.takeSaid();
    }
    if (failed) throw LoadFailure(of, reason, std::move(said));
    if (notices) *notices = std::move(said);
}

/// Tuple of hdnt.Diagnostic.
py::tuple diagnosticsOf(const std::vector<Said>& said);

/// load, common, simulation, release
void addLoading(py::module_& module);

} // namespace hdnt::python
