#pragma once

#include "bindings/shared/LoadSection.h"

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <vector>

namespace hdnt::python {

namespace py = pybind11;

using scripts::LoadFailure;

/// The interpreter lock, as sections give it up.
scripts::ScriptLock& interpreterLock();

/// To call back into Python from a section, take an InterpreterLock.
class LoadSection : public scripts::LoadSection {
public:
    explicit LoadSection(Kind kind) : scripts::LoadSection(kind, interpreterLock()) {}
    static void waitForChanges() { scripts::LoadSection::waitForChanges(interpreterLock()); }
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

/// Runs something in a section. What the library throws, and errors in a text, become a LoadFailure that says `of`.
template <typename Work>
void inSection(LoadSection::Kind kind, const std::string& of, Work&& work, std::vector<Diagnostic>* notices = nullptr) {
    scripts::inSection(interpreterLock(), kind, of, std::forward<Work>(work), notices);
}

/// Tuple of hdnt.Diagnostic.
py::tuple diagnosticsOf(const std::vector<Diagnostic>& all);

} // namespace hdnt::python
