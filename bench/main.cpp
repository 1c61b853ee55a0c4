// The benchmark programs' main function. By itself such a program is one of Google Benchmark; with --once, it runs one
// subject in a process of its own and prints times, peak memory and allocations as a line of JSON:
//   hdnt_bench --once SUBJECT [REPEAT]     such as load/10: the subject and the megabytes
//   hdnt_bench --subjects                  the names there are
#include "bench/Subject.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <new>

namespace {

size_t allocations = 0;

} // namespace

// Counted for the library, too: its calls bind to these.
void* operator new(size_t size) {
    ++allocations;
    if (void* const block = std::malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }

/// The part that is measured, by a name that a profiler can be told.
extern "C" [[gnu::noinline]] void hdnt_bench_measured(const bench::Work& work) { work.run(); }

namespace bench {

std::string Corpus::path(const std::string& form) const {
    return HDNT_BENCH_CORPUS "/" + std::to_string(megabytes_) + "." + form;
}

bool Corpus::exists() const { return std::ifstream(path("btl")).good(); }

std::string Corpus::text(const std::string& form) const { return readFile(path(form)); }

size_t Corpus::bytes() const {
    std::ifstream file(path("btl"), std::ios::binary | std::ios::ate);
    return file ? static_cast<size_t>(file.tellg()) : 0;
}

std::string readFile(const std::string& path) {
    FILE* const file = std::fopen(path.c_str(), "rb");
    if (!file) fail("cannot open " + path);
    std::fseek(file, 0, SEEK_END);
    std::string text(static_cast<size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    if (std::fread(text.data(), 1, text.size(), file) != text.size()) fail("cannot read " + path);
    std::fclose(file);
    return text;
}

void fail(const std::string& reason) {
    std::fprintf(stderr, "hdnt_bench: %s\n", reason.c_str());
    std::exit(1);
}

namespace {

struct Run {
    double seconds;
    size_t allocations;
    size_t peak; ///< of the process so far, in bytes
};

/// Of processor time, the system's part included: a machine that others use as well disturbs it least.
double now() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

size_t peakKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6));
    return 0;
}

Run runOnce(const Work& work) {
    if (work.prepare) work.prepare();
    const size_t allocated = allocations;
    const double begin = now();
    hdnt_bench_measured(work);
    const double seconds = now() - begin;
    const Run run = {seconds, allocations - allocated, peakKiB() * 1024};
    if (work.drop) work.drop();
    return run;
}

std::vector<int> sizesOf(const Subject& subject) {
    switch (subject.sizes) {
    case Subject::Sizes::UpToThousand: return {1, 10, 100, 1000};
    case Subject::Sizes::All: return {1, 10, 100};
    case Subject::Sizes::UpToTen: return {1, 10};
    case Subject::Sizes::Ten: return {10};
    case Subject::Sizes::One: return {1};
    }
    return {};
}

void measure(const std::string& name, int repeat) {
    for (const Subject& subject : allSubjects()) {
        for (const int size : sizesOf(subject)) {
            if (subject.name + "/" + std::to_string(size) != name) continue;
            const Corpus corpus(size);
            const Work work = subject.make(corpus);
            const Run first = runOnce(work);
            Run last = first;
            std::string seconds = std::to_string(first.seconds);
            for (int i = 1; i < repeat; ++i) {
                last = runOnce(work);
                seconds += ", " + std::to_string(last.seconds);
            }
            std::printf("{\"subject\": \"%s\", \"bytes\": %zu, \"seconds\": [%s], \"peak\": %zu, \"allocations\": %zu, "
                        "\"items\": %zu}\n",
                        name.c_str(), corpus.bytes(), seconds.c_str(), first.peak, last.allocations, work.items);
            return;
        }
    }
    fail("no subject is called " + name);
}

void runSubject(benchmark::State& state, const Subject& subject, int size) {
    const Corpus corpus(size);
    const Work work = subject.make(corpus);
    for (auto _ : state) state.SetIterationTime(runOnce(work).seconds);
    const auto runs = static_cast<size_t>(state.iterations());
    if (work.items > 0) state.SetItemsProcessed(static_cast<int64_t>(runs * work.items));
    else state.SetBytesProcessed(static_cast<int64_t>(runs * corpus.bytes()));
}

void registerSubjects() {
    for (const Subject& subject : allSubjects())
        for (const int size : sizesOf(subject))
            if (Corpus(size).exists())
                benchmark::RegisterBenchmark((subject.name + "/" + std::to_string(size)).c_str(),
                                             [=](benchmark::State& state) { runSubject(state, subject, size); })
                    ->UseManualTime()
                    ->Unit(benchmark::kMillisecond);
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    if (argc > 2 && !std::strcmp(argv[1], "--once")) {
        const int repeat = argc > 3 ? std::atoi(argv[3]) : 1;
        bench::measure(argv[2], repeat > 0 ? repeat : 1);
        return 0;
    }
    if (argc == 2 && !std::strcmp(argv[1], "--subjects")) {
        for (const bench::Subject& subject : bench::allSubjects())
            for (const int size : bench::sizesOf(subject)) std::printf("%s/%d\n", subject.name.c_str(), size);
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    bench::registerSubjects();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
