#include "author/lint/Waivers.h"
#include "author/lint/lint.h"
#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "tools/ntl/BaselineOptions.h"
#include "tools/ntl/CheckPlan.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/Progress.h"
#include "tools/ntl/RuleOptions.h"
#include "tools/ntl/Workers.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

namespace ntl {

namespace {

using hdnt::author::ConfigScope;
using hdnt::author::Judged;

/// One library to check: the paths it stands on, then its own, which are more than one for the common library.
struct Input {
    std::string name;
    std::vector<std::string> parents;
    std::vector<std::string> paths;
    ConfigScope configuration = ConfigScope::None;
};

std::vector<Input> inputsOf(const Settings& settings) {
    std::vector<Input> inputs;
    const std::vector<std::string> parents = parentPaths(settings.parent);
    for (const std::string& name : settings.inputs)
        inputs.push_back({name, parents, {pathOfInput(name)}, ConfigScope::OwnCells});
    if (!inputs.empty()) return inputs;
    if (!settings.parent.empty()) throw Failure(Unusable, "--parent needs an INPUT");
    const std::vector<std::string> common = commonLibraryPaths();
    try {
        const std::string simulation = HDNTLibraryMgr::getDataFileName(true);
        // Without the test features, much of what the configuration speaks of is not there.
        const bool isWhole = HPAParamMgr::getParamMgr()->getValueAsBool("arch.enableTestFeatures");
        const ConfigScope withCommon = isWhole ? ConfigScope::None : ConfigScope::OwnCells;
        const ConfigScope withAll = isWhole ? ConfigScope::Whole : ConfigScope::OwnCells;
        return {{common.front(), {}, common, withCommon}, {simulation, common, {simulation}, withAll}};
    } catch (const HEXDataException& error) {
        throw Failure(Unusable, error.what());
    }
}

void append(std::vector<hdnt::Diagnostic>& list, const std::vector<hdnt::Diagnostic>& more) {
    list.insert(list.end(), more.begin(), more.end());
}

// The work itself, in the worker's process.
void checkInput(const Input& input, const CheckPlan& plan, Loader& loader, CheckResult& result) {
    plan.enter();
    result.files = plan.files();
    HDNTLibrary* library = nullptr;
    result.parentFailed = true;
    for (const std::string& path : plan.parents(input.parents)) library = loader.load(path, library);
    result.parentFailed = false;
    loader.forget();
    const hdnt::LintOptions options = plan.lintOptions();
    for (const std::string& path : input.paths) {
        library = loader.load(path, library);
        result.blocks += library->getNumTypeBlocks(false);
        std::vector<hdnt::Diagnostic> findings = hdnt::lint(*library, options);
        append(findings, loader.diagnostics());
        hdnt::author::sortByPlace(findings);
        hdnt::author::applyWaivers(findings, loader.files(),
                                   {hdnt::author::today(), options.isThorough ? Judged::AllRules : Judged::QuickRules});
        append(findings, hdnt::author::lintConfiguration(*library, input.configuration));
        append(result.warnings, findings);
        result.files.insert(result.files.end(), loader.files().begin(), loader.files().end());
        loader.forget();
    }
}

CheckResult judgedInput(const Input& input, const CheckPlan& plan) {
    CheckResult result;
    Loader loader;
    try {
        checkInput(input, plan, loader, result);
    } catch (const Failure& failure) {
        result.status = failure.status();
        result.reason = failure.what();
    } catch (const std::bad_alloc&) {
        result.status = Faulty;
        result.reason = input.name + ": out of memory";
    } catch (const std::exception& error) {
        result.status = Faulty;
        result.reason = input.name + ": " + error.what();
    }
    if (result.status == Fine) return result;
    std::vector<hdnt::Diagnostic> warnings;
    for (const hdnt::Diagnostic& one : loader.diagnostics())
        (one.severity == hdnt::Severity::error ? result.errors : warnings).push_back(one);
    hdnt::author::sortByPlace(warnings);
    hdnt::author::applyWaivers(warnings, loader.files(), {hdnt::author::today(), Judged::Nothing});
    append(result.warnings, warnings);
    result.files.insert(result.files.end(), loader.files().begin(), loader.files().end());
    return result;
}

CheckResult checkedInput(const Input& input, const CheckPlan& plan) {
    CheckResult result = judgedInput(input, plan);
    plan.control(result.warnings);
    return result;
}

std::uintmax_t sizeOf(const Input& input) {
    namespace fs = std::filesystem;
    std::uintmax_t bytes = 1;
    std::error_code error;
    for (const std::string& path : input.paths) {
        const std::uintmax_t size = fs::is_regular_file(path, error) ? fs::file_size(path, error) : 0;
        bytes += error ? 0 : size;
        if (!fs::is_directory(path, error)) continue;
        for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
            const std::uintmax_t entrySize = entry->is_regular_file(error) ? entry->file_size(error) : 0;
            bytes += error ? 0 : entrySize;
        }
    }
    return bytes;
}

/// Carries out a check and writes what comes of it, in the order of the inputs.
class Checker {
public:
    explicit Checker(const Settings& settings)
        : settings_(settings), plan_(settings), baselines_(settings), inputs_(inputsOf(settings)),
          isText_(settings.format == "text"), totalSize_(totalSize()), progress_(totalSize_) {
        for (const std::string& input : settings.inputs) plans_.try_emplace(input, settings, input);
    }

    int run() {
        if (!settings_.parent.empty() && !parentIsGood()) {
            inputs_.clear();
            return finish();
        }
        if (settings_.inputs.empty()) runOneByOne();
        else runTasks();
        return finish();
    }

private:
    // A broken parent is reported once, not for each input.
    bool parentIsGood() {
        std::vector<Input> wanted = {{settings_.parent, {}, parentPaths(settings_.parent)}};
        wanted.swap(inputs_);
        isParent_ = true;
        runTasks();
        isParent_ = false;
        wanted.swap(inputs_);
        return status_ == Fine;
    }

    // The shipped libraries stand on each other: a fault of the one below is said once.
    void runOneByOne() {
        std::vector<Input> inputs;
        inputs.swap(inputs_);
        for (const Input& input : inputs) {
            inputs_ = {input};
            if (errorFree_) runTasks();
            else skip(input);
        }
        inputs_.swap(inputs);
    }

    void skip(const Input& input) {
        CheckResult result;
        result.input = input.name;
        result.status = Faulty;
        result.reason = input.name + ": not checked, since the library below it has errors";
        complain(result.reason);
        results_.push_back(std::move(result));
    }

    void runTasks() {
        WorkerTasks tasks;
        tasks.count = inputs_.size();
        const unsigned processors = std::max(std::thread::hardware_concurrency(), 1U);
        tasks.atOnce = settings_.jobs > 0 ? settings_.jobs : static_cast<int>(processors);
        tasks.work = [&](size_t i) { return packed(checkedInput(inputs_[i], planOf(inputs_[i]))); };
        tasks.said = [&](size_t, std::string_view text) { pass(text); };
        tasks.done = [&](size_t i, const WorkerResult& worker) { take(i, worker); };
        tasks.tick = [&](size_t finished) { progress_.show(totalSize_ * finished / inputs_.size()); };
        runWorkers(tasks);
        progress_.clear();
    }

    int finish() {
        writeDepfile();
        baselines_.finish();
        if (isText_ && !settings_.quiet && inputs_.size() > 1 && !settings_.inputs.empty())
            writeOutput(sumLine(inputs_.size(), failed_, warnings_));
        if (settings_.format == "json") writeOutput(jsonDocument(results_, status_));
        if (settings_.format == "sarif") writeOutput(sarifDocument(results_));
        return status_;
    }

    std::uintmax_t totalSize() const {
        std::uintmax_t sum = 0;
        for (const Input& input : inputs_) sum += sizeOf(input);
        return sum;
    }

    void pass(std::string_view text) {
        progress_.clear();
        writeError(text);
    }

    void take(size_t i, const WorkerResult& worker) {
        CheckResult result;
        if (worker.accident.empty()) {
            result = unpacked(worker.bytes);
        } else {
            result.status = Faulty;
            result.reason = inputs_[i].name + ": " + worker.accident;
        }
        result.input = inputs_[i].name;
        if (isParent_ && result.status == Fine) return;
        if (result.parentFailed) result.reason = result.input + ": parent library: " + result.reason;
        errorFree_ = errorFree_ && result.status == Fine;
        baselines_.take(result);
        const bool failed = hasFailed(result, allWarningsAreErrors(settings_));
        if (failed && result.status == Fine) result.reason = result.input + ": " + whyFailed(result.warnings);
        if (failed) ++failed_;
        warnings_ += countOf(result.warnings, hdnt::Severity::warning);
        status_ = std::max<int>(status_, failed ? std::max(result.status, Faulty) : Fine);
        write(result, failed);
        if (!settings_.depfile.empty() || !isText_) results_.push_back(std::move(result));
    }

    void write(const CheckResult& result, bool failed) {
        progress_.clear();
        std::string lines;
        for (const hdnt::Diagnostic& warning : result.warnings) lines += warningLine(warning);
        writeError(lines);
        if (failed) complain(result.reason);
        else if (isText_ && !settings_.quiet) writeOutput(textLine(result));
    }

    void writeDepfile() const {
        if (settings_.depfile.empty()) return;
        errno = 0;
        std::ofstream file(settings_.depfile, std::ios::binary);
        file << makeRules(settings_.depTarget.empty() ? settings_.depfile : settings_.depTarget, results_);
        file.close();
        if (!file) throw Failure(Unusable, "cannot write " + settings_.depfile + ": " + std::strerror(errno));
    }

    // The shipped libraries, and a parent of the command line, have no project file.
    const CheckPlan& planOf(const Input& input) const {
        const auto found = isParent_ ? plans_.end() : plans_.find(input.name);
        return found == plans_.end() ? plan_ : found->second;
    }

    const Settings& settings_;
    CheckPlan plan_;
    std::map<std::string, CheckPlan> plans_;
    Baselines baselines_;
    std::vector<Input> inputs_;
    bool isText_;
    std::uintmax_t totalSize_;
    Progress progress_;
    std::vector<CheckResult> results_;
    size_t failed_ = 0;
    size_t warnings_ = 0;
    int status_ = Fine;
    bool isParent_ = false;
    bool errorFree_ = true;
};

} // namespace

int runCheck(const Settings& settings) {
    enableByDefault(settings, "ntl.enableDiagnostics");
    enableByDefault(settings, "arch.enableTestFeatures");
    return Checker(settings).run();
}

int runLint(const Settings& settings) {
    if (settings.listRules) return listRules();
    Settings thorough = settings;
    thorough.isThorough = true;
    enableByDefault(settings, "ntl.enableMapLib");
    return runCheck(thorough);
}

} // namespace ntl
