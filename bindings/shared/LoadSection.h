#pragma once

#include "hdnt/diagnostics/Diagnostic.h"
#include "hdnt/diagnostics/HDNTError.h"
#include "hdnt/netlist/HDNTFunctionTable.h"
#include "hdnt/platform/HEX.h"

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

class HDNTBlock;
class HDNTLibrary;
class HDNTNetlist;

namespace hdnt::scripts {

/// The lock under which a language runs what scripts do to handles: one thread at a time. A section gives it up.
class ScriptLock {
public:
    virtual ~ScriptLock() = default;
    /// The result goes back to takeBack.
    virtual void* giveUp() = 0;
    virtual void takeBack(void* given) = 0;
};

/// The time in which this thread has the library's loading side to itself: the script lock is given up, then the load
/// lock is taken. Errors are counted from 0, kept and not printed, and at the end the count is what it was before.
///
/// In a section of the same thread another one changes nothing about locks, so callbacks may load, too.
class LoadSection : private HDNTErrorListener {
public:
    /// What can happen to mappings of other libraries meanwhile: nothing, or they may be replaced.
    enum Kind { Quiet, Changes };

    /// With the script lock.
    LoadSection(Kind kind, ScriptLock& lock);
    ~LoadSection() override;
    LoadSection(const LoadSection&) = delete;
    LoadSection& operator=(const LoadSection&) = delete;

    int errors() const { return HDNTError::numErrors; }
    std::vector<Diagnostic> takeDiagnostics() { return std::move(diagnostics_); }

    /// Whether a section could begin at once. Other threads may change that.
    static bool isFree();
    /// Returns when no other thread is in a section that changes mappings. With the script lock.
    static void waitForChanges(ScriptLock& lock);

private:
    bool report(const HDNTReport& report) override;
    void notice(const HDNTNotice& notice) override;
    bool silencesOutput() const override { return true; }

    Kind kind_;
    ScriptLock& lock_;
    bool outermost_ = false;
    void* given_ = nullptr;
    int countBefore_ = 0;
    HDNTErrorListener* listenerBefore_ = nullptr;
    std::vector<Diagnostic> diagnostics_;
};

/// A load, or something that may load, failed.
class LoadFailure : public std::runtime_error {
public:
    LoadFailure(std::string path, const std::string& reason, std::vector<Diagnostic> diagnostics)
        : std::runtime_error(reason), path_(std::move(path)), diagnostics_(std::move(diagnostics)) {}
    const std::string& path() const { return path_; }
    const std::vector<Diagnostic>& diagnostics() const { return diagnostics_; }

private:
    std::string path_;
    std::vector<Diagnostic> diagnostics_;
};

/// Runs something in a section. What the library throws, and errors in a text, become a LoadFailure that says `of`.
template <typename Work>
void inSection(ScriptLock& lock, LoadSection::Kind kind, const std::string& of, Work&& work,
               std::vector<Diagnostic>* notices = nullptr) {
    std::string reason;
    std::vector<Diagnostic> said;
    bool failed = false;
    {
        LoadSection section(kind, lock);
        try {
            work();
            failed = section.errors() > 0;
        } catch (const HEXAll& error) {
            failed = true;
            reason = error.what();
        }
        said = section.takeDiagnostics();
    }
    if (failed) throw LoadFailure(of, reason, std::move(said));
    if (notices) *notices = std::move(said);
}

/// While this lives, the thread reads mappings and may call back into scripts: what they load must not replace any.
class Reading {
public:
    Reading();
    ~Reading();
    Reading(const Reading&) = delete;
    /// Throws runtime_error "OF: WHAT from a visitor or a function" in a thread that reads.
    static void mustNotBe(const std::string& of, const char* what);
    /// The same where map libraries are in use: a mapping of one may replace what is being read.
    static void mustNotAskMapLibrary(const HDNTBlock& block);
};

/// Runs something that may call functions of scripts, in a section. Then `raise` throws what a function raised, if any
/// did; what else came of the work is a runtime_error that says `of`.
template <typename Work, typename Raise>
void withFunctions(ScriptLock& lock, LoadSection::Kind kind, HDNTFunctionTable& table, const std::string& of,
                   Work&& work, Raise&& raise) {
    std::string reason;
    bool failed = false;
    {
        const LoadSection section(kind, lock);
        const HDNTFunctionTable::Scope scope(table);
        const Reading reading;
        try {
            work();
        } catch (const std::exception& error) {
            failed = true;
            reason = error.what();
        }
    }
    raise();
    if (failed) throw std::runtime_error(of.empty() ? reason : of + ": " + reason);
}

/// The mapping of a block, for an architecture or, without one, the one that is attached or in force; null when there
/// is none. It may be loaded for that, which throws LoadFailure, and runtime_error while the thread is Reading.
HDNTNetlist* netlistOf(ScriptLock& lock, HDNTBlock& block, const std::string* architecture);

struct LoadRequest {
    HDNTLibrary* parent = nullptr;
    bool check = false;     ///< whether its content is checked
    bool untrusted = false; ///< whether HDNTLimits::forUntrusted() hold
};
/// A library of its own from a file or folder.
/// In a section. Throws LoadFailure, and over a parent while the thread is Reading, since mappings of the parent may be
/// replaced. What is said of a good library goes to `warnings`.
std::unique_ptr<HDNTLibrary> loadFrom(const std::string& path, const LoadRequest& request,
                                      std::vector<Diagnostic>& warnings);

/// Where the command-line tool is, seen from the library; empty when that is not known.
std::string toolPath();

} // namespace hdnt::scripts
