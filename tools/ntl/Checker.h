#pragma once

#include "author/lint/lint.h"
#include "tools/ntl/BaselineOptions.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Progress.h"
#include "tools/ntl/Settings.h"
#include "tools/ntl/Workers.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ntl {

/// One library to check: the paths it stands on, then its own, which are more than one for the common library.
struct Input {
    std::string name;
    std::vector<std::string> parents;
    std::vector<std::string> paths;
    hdnt::author::ConfigScope configuration = hdnt::author::ConfigScope::None;
    bool isParent = false; ///< of other inputs: it has to load, what else is said of it is its own affair
};

/// Those of the command line; without any, the shipped libraries.
std::vector<Input> inputsOf(const Settings& settings);

/// Whether the input fails; when by --werror alone, the result gets that for its reason.
bool fails(CheckResult& result, const Settings& settings);
/// Says what has become of an input, in the forms of output that have something for each.
void write(const CheckResult& result, bool failed, const Settings& settings);

/// Judges inputs, each in a process of its own, and writes what comes of it, in the order of the inputs.
class Checker {
public:
    /// Runs in the process of the input, and tells how many of its blocks are done. Must not throw.
    using Judge = std::function<CheckResult(const Input& input, std::function<void(size_t done, size_t all)> progress)>;

    Checker(const Settings& settings, Judge judge);

    /// The exit status.
    int run();

private:
    bool parentIsGood();
    void runOneByOne();
    void skip(const Input& input);
    std::string pack(CheckResult result) const;
    void runTasks();
    void showProgress(size_t finished, const BlocksDone& blocks);
    int finish();
    void pass(std::string_view text);
    void take(size_t i, const WorkerResult& worker);
    void write(const CheckResult& result, bool failed);
    void writeDepfile() const;

    const Settings& settings_;
    Judge judge_;
    Baselines baselines_;
    std::vector<Input> inputs_;
    bool isText_;
    bool isShort_;
    std::uintmax_t totalSize_;
    Progress progress_;
    std::vector<CheckResult> results_;
    size_t failed_ = 0;
    size_t warnings_ = 0;
    int status_ = Fine;
    bool isParent_ = false;
    bool errorFree_ = true;
};

} // namespace ntl
