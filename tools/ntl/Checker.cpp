#include "tools/ntl/Checker.h"

#include "hdnt/loading/HDNTLibraryMgr.h"
#include "hdnt/platform/HEX.h"
#include "hdnt/platform/HPAParamMgr.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"
#include "tools/ntl/RuleOptions.h"
#include "tools/ntl/TextFile.h"

#include <algorithm>
#include <filesystem>
#include <thread>
#include <utility>

namespace ntl {

using hdnt::author::ConfigScope;

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

static std::uintmax_t sizeOf(const Input& input) {
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

static std::uintmax_t sizeOf(const std::vector<Input>& inputs) {
    std::uintmax_t sum = 0;
    for (const Input& input : inputs) sum += sizeOf(input);
    return sum;
}

bool fails(CheckResult& result, const Settings& settings) {
    const bool failed = hasFailed(result, allWarningsAreErrors(settings));
    if (failed && result.status == Fine)
        result.reason =
            result.input + ": " + counted(countOf(result.warnings, hdnt::Severity::warning), "warning") + " (--werror)";
    return failed;
}

void write(const CheckResult& result, bool failed, const Settings& settings) {
    if (settings.format == "short") return writeOutput(shortLines(result));
    std::string lines = faultLines(result, static_cast<size_t>(settings.mostErrors));
    for (const hdnt::Diagnostic& warning : result.warnings) lines += warningLine(warning);
    writeError(lines);
    if (failed) complain(result.reason);
    else if (settings.format == "text" && !settings.quiet) writeOutput(textLine(result));
}

Checker::Checker(const Settings& settings, Judge judge)
    : settings_(settings), judge_(std::move(judge)), baselines_(settings), inputs_(inputsOf(settings)),
      isText_(settings.format == "text"), isShort_(settings.format == "short"), totalSize_(sizeOf(inputs_)),
      progress_(totalSize_) {}

int Checker::run() {
    if (!settings_.parent.empty() && !parentIsGood()) {
        inputs_.clear();
        return finish();
    }
    if (settings_.inputs.empty()) runOneByOne();
    else runTasks();
    return finish();
}

// A broken parent is reported once, not for each input.
bool Checker::parentIsGood() {
    std::vector<Input> wanted = {{settings_.parent, {}, parentPaths(settings_.parent), ConfigScope::None, true}};
    wanted.swap(inputs_);
    isParent_ = true;
    runTasks();
    isParent_ = false;
    wanted.swap(inputs_);
    return status_ == Fine;
}

// The shipped libraries stand on each other: a fault of the one below is said once.
void Checker::runOneByOne() {
    std::vector<Input> inputs;
    inputs.swap(inputs_);
    for (const Input& input : inputs) {
        inputs_ = {input};
        if (errorFree_) runTasks();
        else skip(input);
    }
    inputs_.swap(inputs);
}

void Checker::skip(const Input& input) {
    CheckResult result;
    result.input = input.name;
    result.status = Faulty;
    result.reason = input.name + ": not checked, since the library below it has errors";
    write(result, true);
    results_.push_back(std::move(result));
}

// Of the library's own reports, those that no form of output says here: in text they were printed as they came, and the
// short form has better words for some. They may be as many as the text has lines.
std::string Checker::pack(CheckResult result) const {
    if (isText_) result.errors.clear();
    size_t index = 0;
    if (isShort_)
        std::erase_if(result.errors, [&](const hdnt::Diagnostic&) {
            return std::binary_search(result.saidBetter.begin(), result.saidBetter.end(), index++);
        });
    if (isText_ || isShort_) result.saidBetter.clear();
    return packed(result);
}

void Checker::runTasks() {
    WorkerTasks tasks;
    tasks.count = inputs_.size();
    const unsigned processors = std::max(std::thread::hardware_concurrency(), 1U);
    tasks.atOnce = settings_.jobs > 0 ? settings_.jobs : static_cast<int>(processors);
    BlocksDone blocks(inputs_.size());
    tasks.work = [&](size_t i) {
        return pack(judge_(inputs_[i], [&blocks, i](size_t done, size_t all) { blocks.set(i, {done, all}); }));
    };
    tasks.said = [&](size_t, std::string_view text) { pass(text); };
    tasks.done = [&](size_t i, const WorkerResult& worker) { take(i, worker); };
    tasks.tick = [&](size_t finished) { showProgress(finished, blocks); };
    runWorkers(tasks);
    progress_.clear();
}

// Of those that are not finished, the first one that has begun is named.
void Checker::showProgress(size_t finished, const BlocksDone& blocks) {
    double inputs = 0;
    std::string what;
    for (size_t i = 0; i < inputs_.size(); ++i) {
        const BlocksDone::Count count = blocks.of(i);
        if (count.all == 0) continue;
        inputs += static_cast<double>(count.done) / static_cast<double>(count.all);
        if (what.empty() && count.done < count.all)
            what = printable(inputs_[i].name) + ": " + grouped(count.done) + " of " + grouped(count.all) +
                   (count.all == 1 ? " block" : " blocks");
    }
    const double part = std::max(inputs, static_cast<double>(finished)) / static_cast<double>(inputs_.size());
    progress_.show(static_cast<std::uintmax_t>(static_cast<double>(totalSize_) * part), what);
}

int Checker::finish() {
    writeDepfile();
    baselines_.finish();
    if (isText_ && !settings_.quiet && inputs_.size() > 1 && !settings_.inputs.empty())
        writeOutput(sumLine(inputs_.size(), failed_, warnings_));
    if (settings_.format == "json") writeOutput(jsonDocument(jsonHead("check"), results_, status_));
    if (settings_.format == "sarif") writeOutput(sarifDocument(results_));
    return status_;
}

void Checker::pass(std::string_view text) {
    progress_.clear();
    writeError(text);
}

void Checker::take(size_t i, const WorkerResult& worker) {
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
    errorFree_ = errorFree_ && (result.status == Fine || result.isLoaded);
    baselines_.take(result);
    const bool failed = fails(result, settings_);
    if (failed) ++failed_;
    warnings_ += countOf(result.warnings, hdnt::Severity::warning);
    status_ = std::max<int>(status_, failed ? std::max(result.status, Faulty) : Fine);
    write(result, failed);
    if (!settings_.depfile.empty() || !isText_) results_.push_back(std::move(result));
}

void Checker::write(const CheckResult& result, bool failed) {
    progress_.clear();
    ntl::write(result, failed, settings_);
}

void Checker::writeDepfile() const {
    if (settings_.depfile.empty()) return;
    writeWholeFile(settings_.depfile,
                   makeRules(settings_.depTarget.empty() ? settings_.depfile : settings_.depTarget, results_));
}

} // namespace ntl
