// Each operation of the libraries over a small rich library, and each allocation of it fails once: what comes is
// std::bad_alloc, or the right result all the same; the next run in that process is right, and leaves no more memory
// taken than runs without a fault. Each try is a process of its own, which begins with nothing loaded.
//
//   allocations DATA RICH [--seconds S] [--at OPERATION N]
//     S      for all operations together; of more tries than fit, every so many-th. 0: all of them
//     --at   that one try in this process, for a debugger; says where the memory was asked for
#include "author/author.h"
#include "hdnt/hdnt.h"
#include "tests/harden/allocationFaults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string dataFolder;
std::string richFolder;
std::string scratch; ///< a folder of this process, for what is written

/// A library over the common one of the data folder.
hdnt::Loaded loadRich(const char* file = "rich.btl") {
    hdnt::LoadOptions options;
    options.parent = HDNTLibraryMgr::getCommonLibrary();
    options.searchDirectories = {richFolder};
    return hdnt::load(richFolder + "/" + file, options);
}

std::string textOf(const std::vector<hdnt::Diagnostic>& diagnostics) {
    std::string text;
    for (const hdnt::Diagnostic& one : diagnostics)
        text += std::to_string(one.place.line) + ":" + std::string(one.code) + ":" + one.message + "\n";
    return text;
}

std::string loading() {
    const hdnt::Loaded loaded = loadRich();
    return textOf(loaded.diagnostics) + (loaded ? "loaded" : "refused");
}

std::string loadingFaulty() {
    return textOf(hdnt::load(dataFolder + "/../three_faults.btl").diagnostics) +
           textOf(hdnt::load(dataFolder + "/tessels").diagnostics);
}

std::string managing() {
    std::string text;
    for (HDNTLibrary* const library : {HDNTLibraryMgr::getCommonLibrary(), HDNTLibraryMgr::getSimulationLibrary()})
        for (HDNTBlock* const block : hdnt::author::blocksOf(*library, true)) text += block->getName() + "\n";
    HDNTLibraryMgr::releaseLibraries();
    return text;
}

std::string linting() {
    const hdnt::Loaded loaded = loadRich();
    return textOf(hdnt::lint(*loaded.library)) +
           textOf(hdnt::author::lintConfiguration(*loaded.library, hdnt::author::ConfigScope::Whole));
}

/// What is written to a stream, whose buffer needs no memory.
std::string written(const std::function<void(FILE*)>& write) {
    static std::array<char, 1U << 16> bytes;
    static std::array<char, 4096> buffer;
    bytes = {};
    FILE* const stream = fmemopen(bytes.data(), bytes.size(), "w");
    if (!stream) throw std::bad_alloc();
    std::setvbuf(stream, buffer.data(), _IOFBF, buffer.size());
    try {
        write(stream);
    } catch (...) {
        std::fclose(stream);
        throw;
    }
    const bool isWhole = std::ferror(stream) == 0;
    return (std::fclose(stream) == 0 && isWhole) ? bytes.data() : "not written";
}

std::string printing() {
    const hdnt::Loaded loaded = loadRich();
    return written([&](FILE* stream) { loaded.library->print(stream); });
}

std::string printingSource() {
    const hdnt::Loaded loaded = loadRich();
    return written([&](FILE* stream) { loaded.library->printSource(stream, nullptr); });
}

std::string expanding() {
    const hdnt::Loaded loaded = loadRich();
    HDNTBlock& block = *loaded.library->findBlock("RICH_CELL");
    HDNTExpansion expansion(block, "rill");
    std::string reason;
    expansion.setPropertyText("STAGES", "3", reason);
    expansion.setPropertyText("EDGE", "FALL", reason);
    expansion.connect("EN", reason);
    expansion.expand(true);
    hdnt::SourcePlaces places;
    hdnt::author::BriefPlaces briefPlaces;
    std::string text = hdnt::author::expansionText({expansion, {}, {"EN"}, places, briefPlaces});
    for (const auto& outcome : hdnt::author::outcomesOf(block).list) text += outcome.setting + outcome.text;
    return text + hdnt::author::expansionDot(expansion) + reason;
}

std::string comparing() {
    const hdnt::Loaded before = loadRich();
    const hdnt::Loaded after = loadRich("changed.btl");
    std::string text;
    for (const HDNTDifference& one : HDNTComparison::compare(*before.library, *after.library))
        text += one.path + ": " + one.oldValue + " -> " + one.newValue + "\n";
    return text;
}

std::string formatting() {
    std::string text;
    std::string reason;
    std::string laidOut;
    HDNTFormatProblem problem;
    if (!hdnt::platform::readInput(richFolder + "/rich.btl", {}, text, reason)) return reason;
    HDNTFormatter::format(text, laidOut, problem);
    return laidOut;
}

std::string treeing() {
    hdnt::author::SyntaxTree tree;
    tree.read("library \"L\" { block \"GATE_AND_2\" { pin \"A\" input; pin ; property int \"P\" { min 3 } } ");
    std::string text;
    for (const auto& message : tree.messages()) text += message.text + "\n";
    return text;
}

std::string exporting(const char* form) {
    const hdnt::Loaded loaded = loadRich();
    std::string text;
    hdnt::author::ExportOptions options;
    options.isSplit = true;
    for (const auto& file : hdnt::author::exportBlocks(*loaded.library, form, options).files)
        text += file.name + "\n" + file.text;
    return text;
}

std::string importing() { return hdnt::author::importBlocks("json", {scratch + "/rich.json"}).text; }

std::string guiding() {
    const hdnt::Loaded loaded = loadRich();
    const auto guide = hdnt::author::writeGuide(*loaded.library, scratch + "/guide");
    return std::to_string(guide.pages) + " pages, " + std::to_string(guide.drawings) + " drawings";
}

struct Operation {
    std::string name;
    std::function<std::string()> run;
    /// The JSON library takes memory when it destroys a value, and ends the process when there is none; optimized, it
    /// destroys values that were not made for lack of memory.
    bool isOfJson = false;
};

std::vector<Operation> operations() {
    std::vector<Operation> all = {{"load", loading},           {"load-faulty", loadingFaulty},
                                  {"manager", managing},       {"lint", linting},
                                  {"print", printing},         {"print-source", printingSource},
                                  {"expand", expanding},       {"compare", comparing},
                                  {"format", formatting},      {"tree", treeing},
                                  {"import", importing, true}, {"guide", guiding, true}};
    for (const auto& form : hdnt::author::exportForms())
        all.push_back({std::string("export-") + form.name, [name = form.name] { return exporting(name); }, true});
    return all;
}

/// What a try tells, in memory that both processes see.
struct Outcome {
    bool isDone;         ///< it came to its end
    bool hasFailed;      ///< the allocation was reached
    std::size_t counted; ///< allocations of the first run
    long live[2];        ///< pieces of memory that are taken behind the second and the third run
    std::size_t results[2];
    bool isRefused;      ///< the first run threw std::bad_alloc
    char complaint[200]; ///< it threw something else
};

void attemptOnly(const Operation& operation, std::size_t n) {
    faults::arm(n);
    try {
        operation.run();
    } catch (const std::exception&) {
    }
    faults::disarm();
}

/// The operation with the n-th allocation failing, and twice more without.
void attempt(const Operation& operation, std::size_t n, Outcome& outcome) {
    const std::hash<std::string> sum;
    try { // the first exception of a process takes memory for good
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
    }
    const long before = faults::live();
    faults::arm(n);
    try {
        std::string result = operation.run();
        outcome.hasFailed = faults::disarm();
        outcome.results[0] = sum(result);
    } catch (const std::bad_alloc&) {
        outcome.hasFailed = faults::disarm();
        outcome.isRefused = true;
    } catch (const std::exception& error) {
        outcome.hasFailed = faults::disarm();
        std::snprintf(outcome.complaint, sizeof outcome.complaint, "%s", error.what());
    }
    outcome.counted = faults::counted();
    outcome.results[1] = sum(operation.run());
    outcome.live[0] = faults::live() - before;
    operation.run(); // what the libraries keep for the next time may take two runs
    outcome.live[1] = faults::live() - before;
    outcome.isDone = true;
}

class Sweep {
public:
    explicit Sweep(const Operation& operation) : operation_(operation) {
        clean_ = tried(0);
        if (!clean_.isDone || clean_.results[0] != clean_.results[1])
            find(0, "without a fault, it does not come to the same result twice");
    }

    /// Every so many-th, as many as the time allows. The number of findings.
    std::size_t run(double seconds) {
        using Clock = std::chrono::steady_clock;
        const auto begin = Clock::now();
        std::size_t tries = 0;
        constexpr std::size_t sample = 8;
        std::size_t stride = seconds > 0 ? std::max<std::size_t>(clean_.counted / sample, 1) : 1;
        for (std::size_t n = 1; n <= clean_.counted; n += stride) {
            judge(n);
            if (++tries != sample || seconds <= 0) continue;
            const double each = std::chrono::duration<double>(Clock::now() - begin).count() / sample;
            stride = std::max<std::size_t>(static_cast<std::size_t>(clean_.counted * each / seconds), 1) | 1U;
            n = 1;
        }
        const double took = std::chrono::duration<double>(Clock::now() - begin).count();
        std::printf("%-22s %7zu allocations, %6zu failed in turn, %3zu ended by JSON, %zu findings, %.1f s\n",
                    operation_.name.c_str(), clean_.counted, tries, ended_, findings_, took);
        std::fflush(stdout);
        return findings_;
    }

private:
    void find(std::size_t n, const std::string& what) {
        ++findings_;
        std::printf("%s: allocation %zu: %s\n", operation_.name.c_str(), n, what.c_str());
    }

    void judge(std::size_t n) {
        const Outcome one = tried(n);
        const long allowed = std::max(clean_.live[0], clean_.live[1]);
        const int signal = WIFSIGNALED(status_) ? WTERMSIG(status_) : 0;
        if (!one.isDone && operation_.isOfJson && (signal == SIGABRT || signal == SIGSEGV)) ++ended_;
        else if (!one.isDone) find(n, end_);
        else if (one.complaint[0] != '\0') find(n, std::string("thrown: ") + one.complaint);
        else if (one.hasFailed && !one.isRefused && one.results[0] != clean_.results[0]) find(n, "another result");
        else if (one.results[1] != clean_.results[1]) find(n, "another result of the next run");
        else if (one.live[1] > allowed && tried(n, repeats).live[1] >= one.live[1] + repeats)
            find(n, std::to_string(one.live[1] - allowed) + " pieces of memory lost each time");
    }

    // What is kept for the next time depends on how far the first one came; what is lost is lost each time.
    static constexpr int repeats = 5;

    Outcome tried(std::size_t n, int more = 0) {
        static auto* const shared = static_cast<Outcome*>(
            mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        *shared = Outcome();
        std::fflush(nullptr);
        const pid_t process = fork();
        if (process == 0) {
            const int nowhere = open("/dev/null", O_WRONLY);
            dup2(nowhere, STDOUT_FILENO);
            dup2(nowhere, STDERR_FILENO);
            alarm(60);
            for (int i = 0; i < more; ++i) attemptOnly(operation_, n);
            attempt(operation_, n, *shared);
            _exit(0);
        }
        int& status = status_;
        waitpid(process, &status, 0);
        end_ = WIFSIGNALED(status) ? std::string("ended by ") + strsignal(WTERMSIG(status))
                                   : "ended with status " + std::to_string(WEXITSTATUS(status));
        return *shared;
    }

    const Operation& operation_;
    Outcome clean_;
    std::string end_;
    int status_ = 0;
    std::size_t ended_ = 0; ///< by the JSON library
    std::size_t findings_ = 0;
};

int attemptHere(const std::string& name, std::size_t n) {
    for (const Operation& operation : operations()) {
        if (operation.name != name) continue;
        Outcome outcome{};
        faults::tellWhere(true);
        attempt(operation, n, outcome);
        std::printf("failed: %d, std::bad_alloc: %d, %s\n", outcome.hasFailed, outcome.isRefused, outcome.complaint);
        std::fflush(stdout);
        _exit(0); // what is still taken can be seen
        return 0;
    }
    return 2;
}

/// What the import reads; in a process of its own, so that this one begins with nothing loaded.
void prepare() {
    char path[] = "/tmp/allocations.XXXXXX";
    if (!mkdtemp(path)) std::exit(3);
    scratch = path;
    const pid_t process = fork();
    if (process == 0) {
        const hdnt::Loaded loaded = loadRich();
        FILE* const file = std::fopen((scratch + "/rich.json").c_str(), "w");
        std::fputs(hdnt::author::exportBlocks(*loaded.library, "json").files.front().text.c_str(), file);
        _exit(std::fclose(file) == 0 ? 0 : 3);
    }
    int status = 0;
    waitpid(process, &status, 0);
    if (status != 0) std::exit(3);
}

} // namespace

int main(int count, char** arguments) {
    if (count < 3) return 2;
    dataFolder = arguments[1];
    richFolder = arguments[2];
    setenv("HDNT_DATA_PATH", arguments[1], 1);
    setenv("HDNT_CONFIG_PATH", arguments[1], 1);
    setenv("HDNT_CELLVIEWS", (richFolder + "/cells.csv").c_str(), 1); // others are numbered anew by each load
    prepare();
    const std::string option = count > 3 ? arguments[3] : "";
    const double seconds = option == "--seconds" && count > 4 ? std::strtod(arguments[4], nullptr) : 0;
    std::size_t findings = 0;
    int status = 0;
    if (option == "--at" && count > 5) {
        status = attemptHere(arguments[4], std::strtoul(arguments[5], nullptr, 10));
    } else {
        const std::vector<Operation> all = operations();
        for (const Operation& operation : all)
            findings += Sweep(operation).run(seconds / static_cast<double>(all.size()));
        status = findings > 0 ? 1 : 0;
    }
    std::error_code error;
    fs::remove_all(scratch, error);
    return status;
}
