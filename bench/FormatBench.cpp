// What it costs to lay a text out, its proof included.
#include "bench/LibraryText.h"
#include "hdnt/hdnt.h"

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

void Format(benchmark::State& state) {
    const std::string text = bench::libraryText(static_cast<int>(state.range(0)) * 660, state.range(1) != 0);
    std::string out;
    HDNTFormatProblem problem;
    for (auto _ : state)
        if (!HDNTFormatter::format(text, out, problem)) std::abort();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(Format)
    ->ArgNames({"MB", "oneLine"})
    ->Args({1, 0})
    ->Args({10, 0})
    ->Args({10, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace
