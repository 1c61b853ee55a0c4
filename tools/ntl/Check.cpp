#include "author/judge/judge.h"
#include "author/lint/Waivers.h"
#include "author/lint/lint.h"
#include "hdnt/diagnostics/HDNTLimits.h"
#include "hdnt/model/HDNTLibrary.h"
#include "hdnt/platform/InputFile.h"
#include "tools/ntl/CheckPlan.h"
#include "tools/ntl/CheckResult.h"
#include "tools/ntl/Checker.h"
#include "tools/ntl/Commands.h"
#include "tools/ntl/GlobalOptions.h"
#include "tools/ntl/Loading.h"
#include "tools/ntl/Output.h"

#include <filesystem>
#include <functional>
#include <map>
#include <new>
#include <utility>

namespace ntl {

namespace {

void append(std::vector<hdnt::Diagnostic>& list, const std::vector<hdnt::Diagnostic>& more) {
    list.insert(list.end(), more.begin(), more.end());
}

// Standard input and pipes can be read once, and their text is wanted again when it has faults.
void keepTexts(const Input& input, bool isQuiet, Loader& loader) {
    namespace fs = std::filesystem;
    std::map<std::string, std::string> texts;
    const HDNTLimits& limits = HDNTLimits::get();
    for (const std::string& path : input.paths) {
        std::error_code error;
        const fs::file_status status = fs::status(path, error);
        if (error || fs::is_regular_file(status) || fs::is_directory(status)) continue;
        std::string text;
        std::string reason;
        if (!hdnt::platform::readInput(path, {limits.inputBytes, limits.expansionRatio, limits.expansionFloor}, text,
                                       reason)) {
            if (!isQuiet) HDNTError::BadFileName(path, reason);
            throw Failure(Unusable, std::string(path).append(": cannot be opened: ").append(reason));
        }
        texts.emplace(path, std::move(text));
    }
    loader.replace(std::move(texts));
}

/// The work itself, in the worker's process.
class InputJudge {
public:
    InputJudge(const Input& input, const CheckPlan& plan, bool isQuiet,
               std::function<void(size_t done, size_t all)> progress)
        : input_(input), plan_(plan), options_(plan.lintOptions()), isQuiet_(isQuiet), loader_(isQuiet) {
        options_.progress = std::move(progress);
    }

    CheckResult run() {
        result_.input = input_.name;
        try {
            judge();
        } catch (const Failure& failure) {
            refuse(failure.status(), failure.what());
        } catch (const std::bad_alloc&) {
            refuse(Faulty, input_.name + ": out of memory");
        } catch (const std::exception& error) {
            refuse(Faulty, input_.name + ": " + error.what());
        }
        return std::move(result_);
    }

private:
    void judge() {
        plan_.enter();
        result_.files = plan_.files();
        keepTexts(input_, isQuiet_, loader_);
        options_.texts = loader_.texts();
        result_.parentFailed = true;
        for (const std::string& path : plan_.parents(input_.parents)) library_ = loader_.load(path, library_);
        result_.parentFailed = false;
        loader_.forget();
        for (const std::string& path : input_.paths) {
            path_ = path;
            library_ = loader_.load(path, library_);
            result_.blocks += library_->getNumTypeBlocks(false);
            if (input_.isParent) continue;
            append(result_.warnings, hdnt::author::judgeLoaded(*library_, loader_.diagnostics(), loader_.files(),
                                                               options_, input_.configuration));
            result_.files.insert(result_.files.end(), loader_.files().begin(), loader_.files().end());
            loader_.forget();
        }
        result_.isLoaded = true;
        settle();
    }

    // Which findings are said, and as what, is the author's choice; it decides whether the input is in order.
    void settle() {
        std::vector<hdnt::Diagnostic> findings = result_.findings();
        plan_.control(findings, loader_.texts());
        result_.take(std::move(findings));
    }

    void refuse(Status status, const std::string& reason) {
        result_.isLoaded = false;
        result_.status = status;
        result_.reason = reason;
        std::vector<hdnt::Diagnostic> warnings;
        for (const hdnt::Diagnostic& one : loader_.diagnostics())
            (one.severity == hdnt::Severity::error ? result_.errors : warnings).push_back(one);
        hdnt::author::sortByPlace(warnings);
        append(result_.warnings, warnings);
        result_.files.insert(result_.files.end(), loader_.files().begin(), loader_.files().end());
        if (result_.parentFailed) return;
        try {
            judgeSyntax();
            hdnt::author::applyWaivers(result_.warnings, loader_.files(),
                                       {hdnt::author::today(), hdnt::author::Judged::Nothing, loader_.texts()});
            settle();
        } catch (const std::exception& error) {
            result_.reason += std::string(" (broken off: ") + error.what() + ")";
        }
    }

    void judgeSyntax() {
        const hdnt::author::FailedLoad failed = {
            path_, library_, loader_.texts(), loader_.files(), input_.configuration, options_};
        if (!hdnt::author::judgeSyntax(failed, result_) || result_.status != Faulty) return;
        const size_t errors = result_.errors.size() - result_.saidBetter.size() + result_.faults.size();
        result_.reason = path_ + ": " + counted(errors, "error");
    }

    const Input& input_;
    const CheckPlan& plan_;
    hdnt::LintOptions options_;
    bool isQuiet_;
    Loader loader_;
    CheckResult result_;
    std::string path_; ///< of the load that is under way
    HDNTLibrary* library_ = nullptr;
};

} // namespace

// The shipped libraries, and a parent of the command line, have no project file.
static int runJudges(const Settings& settings) {
    enableByDefault(settings, "ntl.enableDiagnostics");
    enableByDefault(settings, "arch.enableTestFeatures");
    const bool isQuiet = settings.format == "short";
    const CheckPlan plan(settings);
    std::map<std::string, CheckPlan> plans;
    for (const std::string& input : settings.inputs) plans.try_emplace(input, settings, input);
    const auto judge = [&](const Input& input, std::function<void(size_t done, size_t all)> progress) {
        const auto found = input.isParent ? plans.end() : plans.find(input.name);
        return InputJudge(input, found == plans.end() ? plan : found->second, isQuiet, std::move(progress)).run();
    };
    return Checker(settings, judge).run();
}

int runCheck(const Settings& settings) { return runJudges(settings); }

int runLint(const Settings& settings) {
    if (settings.listRules) return listRules();
    enableByDefault(settings, "ntl.enableMapLib");
    Settings thorough = settings;
    thorough.isThorough = true;
    return runJudges(thorough);
}

} // namespace ntl
